#include "reference/random_faults.h"

#include <array>

namespace fabscope::internal::reference {
namespace {

using Fault = void (*)(FabricSketch& sketch, const Tree& tree);

int AnyOf(RandomSource& random, const std::vector<int>& nodes) {
  return nodes.empty() ? -1 : random.Pick(nodes);
}

int AnySwitch(FabricSketch& sketch) { return AnyOf(sketch.random, sketch.NodesOfType(2)); }

const std::vector<int>& AnyRank(FabricSketch& sketch, const Tree& tree) {
  return tree
      .ranks[static_cast<std::size_t>(sketch.random.Below(static_cast<int>(tree.ranks.size())))];
}

void CableIfAny(FabricSketch& sketch, int a, int b) {
  if (a >= 0 && b >= 0) sketch.Cable(a, b);
}

// A random cable between switches, from a random one of its ends; node -1 if there is none.
CableEnd AnySwitchCable(FabricSketch& sketch) {
  const std::vector<CableEnd> cables = sketch.SwitchCables();
  if (cables.empty()) return {};
  const CableEnd end = sketch.random.Pick(cables);
  return sketch.random.Chance(50) ? end : sketch.FarEnd(end);
}

void RemoveCable(FabricSketch& sketch, const Tree&) {
  const CableEnd end = AnySwitchCable(sketch);
  if (end.node >= 0) sketch.Cut(end);
}

void MoveCable(FabricSketch& sketch, const Tree&) {
  const CableEnd end = AnySwitchCable(sketch);
  if (end.node < 0) return;
  sketch.Cut(end);
  sketch.Cable(end.node, AnySwitch(sketch));
}

void SwapCables(FabricSketch& sketch, const Tree&) {
  const CableEnd first = AnySwitchCable(sketch);
  if (first.node < 0) return;
  const CableEnd firstFar = sketch.FarEnd(first);
  sketch.Cut(first);
  const CableEnd second = AnySwitchCable(sketch);
  if (second.node < 0) return;
  const CableEnd secondFar = sketch.FarEnd(second);
  sketch.Cut(second);
  sketch.Cable(first.node, secondFar.node);
  sketch.Cable(second.node, firstFar.node);
}

void AddCableInsideRank(FabricSketch& sketch, const Tree& tree) {
  const std::vector<int>& rank = AnyRank(sketch, tree);
  const int a = AnyOf(sketch.random, rank);
  const int b = AnyOf(sketch.random, rank);
  const int cables = sketch.random.Chance(25) ? 2 : 1;
  for (int i = 0; i < cables && a != b; ++i) CableIfAny(sketch, a, b);
}

void AddCableBetweenRoots(FabricSketch& sketch, const Tree& tree) {
  const int a = AnyOf(sketch.random, tree.ranks.front());
  const int b = AnyOf(sketch.random, tree.ranks.front());
  CableIfAny(sketch, a, b);
}

void AddCableAnywhere(FabricSketch& sketch, const Tree&) {
  const int a = AnySwitch(sketch);
  const int b = AnySwitch(sketch);
  if (a != b) CableIfAny(sketch, a, b);
}

// Between neighbouring ranks, mostly into another group.
void AddCrossCable(FabricSketch& sketch, const Tree& tree) {
  if (tree.ranks.size() < 2) return;
  const auto upper =
      static_cast<std::size_t>(sketch.random.Below(static_cast<int>(tree.ranks.size()) - 1));
  const int a = AnyOf(sketch.random, tree.ranks[upper]);
  const int b = AnyOf(sketch.random, tree.ranks[upper + 1]);
  CableIfAny(sketch, a, b);
}

void AddSelfCable(FabricSketch& sketch, const Tree&) {
  const int node = AnySwitch(sketch);
  CableIfAny(sketch, node, node);
}

void KillSwitch(FabricSketch& sketch, const Tree& tree) {
  const int node = AnyOf(sketch.random, AnyRank(sketch, tree));
  if (node < 0) return;
  for (const CableEnd end : sketch.CablesOf(node)) {
    // Both ends of a cable to itself are in the list.
    if (sketch.Port(end).remoteNode >= 0) sketch.Cut(end);
  }
}

void RemoveHosts(FabricSketch& sketch, const Tree& tree) {
  const int leaf = AnyOf(sketch.random, tree.ranks.back());
  if (leaf < 0) return;
  const bool all = sketch.random.Chance(50);
  for (const CableEnd end : sketch.CablesOf(leaf)) {
    if (sketch.Node(sketch.FarEnd(end).node).type != 1) continue;
    sketch.Cut(end);
    if (!all) return;
  }
}

void AddHostAnywhere(FabricSketch& sketch, const Tree&) {
  const int count = sketch.random.Between(1, 4);
  const int node = AnySwitch(sketch);
  for (int i = 0; i < count && node >= 0; ++i) sketch.Cable(node, sketch.AddHost("extra host"));
}

void MakeHostSpecial(FabricSketch& sketch, const Tree&) {
  const int host = AnyOf(sketch.random, sketch.NodesOfType(1));
  if (host >= 0) sketch.Node(host).special = true;
}

void AddRouter(FabricSketch& sketch, const Tree& tree) {
  const int node = AnyOf(sketch.random, AnyRank(sketch, tree));
  if (node >= 0) sketch.Cable(sketch.AddNode(3, "router"), node);
}

void AddUnlinkedSwitch(FabricSketch& sketch, const Tree&) {
  const int node = sketch.AddSwitch("lonely");
  if (sketch.random.Chance(50)) sketch.Cable(node, sketch.AddHost("lonely host"));
}

void MarkPort(FabricSketch& sketch, CableEnd end, int kind) {
  PlainPort& port = sketch.Port(end);
  if (kind == 0) port.fnm = true;
  if (kind == 1) port.fnm1 = true;
  if (kind == 2) port.symmetric = false;
  if (kind == 3) port.inSubFabric = false;
}

void MarkCable(FabricSketch& sketch, const Tree&) {
  const std::vector<CableEnd> cables =
      sketch.random.Chance(80) ? sketch.SwitchCables() : sketch.Cables();
  if (cables.empty()) return;
  const int kind = sketch.random.Below(4);
  const CableEnd end = sketch.random.Pick(cables);
  const int sides = sketch.random.Below(3);
  if (sides != 1) MarkPort(sketch, end, kind);
  if (sides != 0) MarkPort(sketch, sketch.FarEnd(end), kind);
}

// A switch that looks away from all of its cables but is looked at.
void MarkAllPortsOfSwitch(FabricSketch& sketch, const Tree& tree) {
  const int node = AnyOf(sketch.random, AnyRank(sketch, tree));
  if (node < 0) return;
  const int kind = sketch.random.Below(3);
  const bool farSide = sketch.random.Chance(30);
  for (const CableEnd end : sketch.CablesOf(node)) {
    MarkPort(sketch, farSide ? sketch.FarEnd(end) : end, kind);
  }
}

}  // namespace

void AddFault(FabricSketch& sketch, const Tree& tree) {
  static constexpr std::array<Fault, 24> faults{
      RemoveCable,     RemoveCable,   RemoveCable,        MoveCable,           MoveCable,
      SwapCables,      SwapCables,    AddCableInsideRank, AddCableInsideRank,  AddCableBetweenRoots,
      AddCrossCable,   AddCrossCable, AddCrossCable,      AddCableAnywhere,    AddSelfCable,
      KillSwitch,      RemoveHosts,   AddHostAnywhere,    AddRouter,           AddUnlinkedSwitch,
      MakeHostSpecial, MarkCable,     MarkCable,          MarkAllPortsOfSwitch};
  const int which = sketch.random.Below(static_cast<int>(faults.size()));
  faults[static_cast<std::size_t>(which)](sketch, tree);
}

void AddOddNames(FabricSketch& sketch) {
  RandomSource& random = sketch.random;
  const std::vector<std::string> names{
      "/A",       "/U",         "",     "sw/U1/A2", "sw/A2/U1", "sw/U1",
      "a, b",     "say \"hi\"", "\"",   "größe",    "交换机-1", "back\\slash",
      " blanks ", "-E- root-1", "same", "same",     "root",     "mid-1🌳"};
  const int percent = random.Between(5, 60);
  for (int index = 0; index < sketch.NodeCount(); ++index) {
    if (!random.Chance(percent)) continue;
    PlainNode& node = sketch.Node(index);
    const int what = random.Below(3);
    const std::string name = random.Pick(names);
    if (what != 1) node.name = name;
    if (what != 0) node.displayName = name;
    if (random.Chance(10)) node.asic = random.Pick<std::string>({"1", "/A", "A 2", "\""});
  }
}

void AddFlids(FabricSketch& sketch, const Tree& tree) {
  RandomSource& random = sketch.random;
  const int range = random.Pick<int>({1, 3, 20, 65535});
  for (const int leaf : tree.ranks.back()) {
    const int count = random.Below(3);
    for (int i = 0; i < count; ++i) sketch.Node(leaf).flids.insert(random.Between(0, range));
  }
  const int others = random.Below(4);
  for (int i = 0; i < others; ++i) {
    const int node = AnySwitch(sketch);
    if (node >= 0) sketch.Node(node).flids.insert(random.Between(0, range));
  }
}

void AddPortOddities(FabricSketch& sketch) {
  RandomSource& random = sketch.random;
  const int percent = random.Between(1, 20);
  for (int index = 0; index < sketch.NodeCount(); ++index) {
    if (!random.Chance(percent)) continue;
    // Any port, also one without a cable or behind all others.
    PlainPort& port = sketch.Port({index, random.Between(1, 12)});
    const int what = random.Below(8);
    if (what == 0) port.state = static_cast<std::uint32_t>(random.Below(6));
    if (what == 1) port.speed = random.Pick<std::uint32_t>({0, 0x1, 0x800, 77});
    if (what == 2) port.group = random.Between(-2, 2);
    if (what == 3) port.planeMultiplicity = random.Between(-1, 4);
    if (what == 4) port.inSubFabric = false;
    if (what == 5) port.symmetric = false;
    if (what == 6) port.fnm = true;
    if (what == 7 && port.aport < 0) {
      port.aport = sketch.AddAPort(random.Chance(50) ? 7 : 0);
      port.planeMultiplicity = 2;
    }
  }
}

}  // namespace fabscope::internal::reference
