#include "labelled_fabric.h"

#include <algorithm>
#include <array>
#include <functional>
#include <numeric>
#include <string_view>

#include "random_shape.h"
#include "synthetic/random.h"
#include "synthetic/tree_shape.h"

namespace fabscope::internal {
namespace {

constexpr std::uint32_t hdr = 0x400;
constexpr std::uint64_t spineHostGuids = 0x0200000400000000;
constexpr std::string_view mixed = "mixed";

using Indices = std::vector<std::size_t>;

const std::vector<FaultKind>& CableFaults() {
  static const std::vector<FaultKind> kinds{FaultKind::MissingLink, FaultKind::SwappedCables,
                                            FaultKind::MovedCable, FaultKind::SameRankLink,
                                            FaultKind::RootLink};
  return kinds;
}

// --- Shapes.

// Leaves have more hosts than cables up, and every switch has ports to spare.
TreeShape SpareShape(int levels, unsigned parallel, Random& random) {
  const auto between = [&](unsigned least, unsigned greatest) {
    return Between(least, greatest, random);
  };
  TreeShape shape;
  switch (levels) {
    case 2:
      shape.children = {1, between(4, 24)};
      shape.parents = {1, between(2, 12)};
      break;
    case 3:
      shape.children = {1, between(3, 10), between(3, 12)};
      shape.parents = {1, between(2, 6), between(2, 6)};
      break;
    default:
      shape.children = {1, between(2, 6), between(2, 4), between(3, 6)};
      shape.parents = {1, between(2, 4), between(2, 4), between(2, 3)};
  }
  shape.parallel = parallel;
  shape.children.front() = shape.parents[1] * parallel + between(1, 6);
  AddSparePorts(between(2, 8), shape);
  return shape;
}

// As many cables up as down on all switches below the roots, and no port without a cable.
TreeShape FullShape(int levels, Random& random) {
  constexpr std::array<unsigned, 3> largestRadix{12, 12, 8};
  const unsigned largest = largestRadix.at(static_cast<std::size_t>(levels - 2));
  const unsigned radix = 2 * Between(2, largest / 2, random);
  return RadixTree(static_cast<unsigned>(levels), radix, 0, 0);
}

// --- What is changed before faults are done.

void ShufflePorts(FabricPlan& plan, Random& random) {
  FabricPlan shuffled;
  shuffled.nodes = plan.nodes;
  shuffled.levels = plan.levels;
  std::vector<std::vector<std::uint8_t>> portOf(plan.nodes.size());
  for (std::size_t i = 0; i < plan.nodes.size(); ++i) {
    portOf[i].resize(plan.nodes[i].spec.numPorts);
    std::iota(portOf[i].begin(), portOf[i].end(), std::uint8_t{1});
    if (plan.IsSwitch(i)) random.Shuffle(portOf[i]);
  }
  for (PlannedCable cable : plan.cables) {
    for (PlannedEnd* end : {&cable.upper, &cable.lower}) {
      end->port = portOf[end->node][end->port - 1U];
    }
    shuffled.AddCable(cable);
  }
  plan = std::move(shuffled);
}

void RemoveHostsOf(std::size_t leaf, FabricPlan& plan) {
  for (const std::size_t cable : plan.CablesOf(leaf)) {
    const std::size_t below = plan.cables[cable].lower.node;
    if (!plan.IsSwitch(below)) plan.RemoveNode(below);
  }
}

void EmptyLeaves(FabricPlan& plan, Random& random) {
  Indices leaves = plan.SwitchesOnRank(plan.levels - 1);
  random.Shuffle(leaves);
  leaves.resize((leaves.size() * 3 + 9) / 10);
  for (const std::size_t leaf : leaves) RemoveHostsOf(leaf, plan);
}

void EmptyPod(FabricPlan& plan, Random& random) {
  const Indices leaves = plan.SwitchesOnRank(plan.levels - 1);
  const std::size_t pod = plan.nodes[random.Pick(leaves)].pod;
  for (const std::size_t leaf : leaves) {
    if (plan.nodes[leaf].pod == pod) RemoveHostsOf(leaf, plan);
  }
}

void AddHostsToSpines(FabricPlan& plan) {
  std::uint64_t count = 0;
  for (int rank = 0; rank + 1 < plan.levels; ++rank) {
    for (const std::size_t spine : plan.SwitchesOnRank(rank)) {
      PlannedNode host;
      host.spec.guid = spineHostGuids + ++count;
      host.spec.type = NodeTypeCA;
      host.spec.name = "spine-host" + std::to_string(count);
      host.spec.numPorts = 1;
      plan.nodes.push_back(host);
      plan.AddCable({{spine, plan.FreePort(spine)}, {plan.nodes.size() - 1, 1}, hdr});
    }
  }
}

// --- Faults at a certain place, which chance would seldom find.

GuidEnd EndOf(const FabricPlan& plan, const PlannedEnd& end) {
  return {plan.nodes[end.node].spec.guid, end.port};
}

Indices LeafUplinks(const FabricPlan& plan) {
  Indices found;
  for (std::size_t i = 0; i < plan.cables.size(); ++i) {
    const PlannedCable& cable = plan.cables[i];
    if (!cable.removed && plan.nodes[cable.lower.node].rank == plan.levels - 1) found.push_back(i);
  }
  return found;
}

void Replace(const Indices& cables, const std::vector<PlannedCable>& by, FaultKind kind,
             LabelledFabric& made) {
  InjectedFault fault;
  fault.kind = kind;
  for (const std::size_t index : cables) {
    fault.before.push_back(made.plan.cables[index]);
    made.plan.RemoveCable(index);
  }
  for (const PlannedCable& cable : by) {
    fault.after.push_back(cable);
    made.plan.AddCable(cable);
  }
  made.faults.push_back(fault);
}

// Two leaves of other pods, or of one pod, exchange the upper ends of a cable.
bool SwapLeafUplinks(bool inOnePod, LabelledFabric& made, Random& random) {
  Indices cables = LeafUplinks(made.plan);
  const std::size_t first = random.Pick(cables);
  const PlannedCable a = made.plan.cables[first];
  const auto groupOf = [&](const PlannedCable& cable) {
    return made.plan.nodes[cable.lower.node].leafGroup;
  };
  std::erase_if(cables, [&](std::size_t i) {
    const PlannedCable& b = made.plan.cables[i];
    return b.lower.node == a.lower.node || b.upper.node == a.upper.node ||
           (groupOf(a) == groupOf(b)) != inOnePod;
  });
  if (cables.empty()) return false;
  const std::size_t second = random.Pick(cables);
  const PlannedCable b = made.plan.cables[second];
  Replace({first, second}, {{b.upper, a.lower, a.speed}, {a.upper, b.lower, b.speed}},
          FaultKind::SwappedCables, made);
  return true;
}

bool SwapBetweenPods(LabelledFabric& made, Random& random) {
  return SwapLeafUplinks(false, made, random);
}

bool SwapInsidePod(LabelledFabric& made, Random& random) {
  return SwapLeafUplinks(true, made, random);
}

bool RemoveHalfATrunk(LabelledFabric& made, Random& random) {
  const auto& cables = made.plan.cables;
  Indices trunk;
  for (std::size_t i = 0; i < cables.size(); ++i) {
    if (made.plan.IsSwitch(cables[i].lower.node)) trunk.push_back(i);
  }
  const PlannedCable one = cables[random.Pick(trunk)];
  std::erase_if(trunk, [&](std::size_t i) {
    return cables[i].upper.node != one.upper.node || cables[i].lower.node != one.lower.node;
  });
  random.Shuffle(trunk);
  trunk.resize(trunk.size() / 2);
  Replace(trunk, {}, FaultKind::MissingLink, made);
  return true;
}

bool MoveToAnotherSpine(LabelledFabric& made, Random& random) {
  const Indices cables = LeafUplinks(made.plan);
  const std::size_t moved = random.Pick(cables);
  const PlannedCable cable = made.plan.cables[moved];
  Indices spines;
  for (const std::size_t i : cables) {
    const PlannedCable& other = made.plan.cables[i];
    if (other.lower.node != cable.lower.node || other.upper.node == cable.upper.node) continue;
    if (made.plan.FreePort(other.upper.node) != 0) spines.push_back(other.upper.node);
  }
  if (spines.empty()) return false;
  const std::size_t spine = random.Pick(spines);
  const PlannedEnd end{spine, made.plan.FreePort(spine)};
  Replace({moved}, {{end, cable.lower, cable.speed}}, FaultKind::MovedCable, made);
  return true;
}

// The neighbors of a switch on one side, if at least two others of their rank, which have other
// neighbors there, show that the port should not be empty.
std::optional<Witnesses> WitnessesOf(std::size_t dead, bool below, FabricPlan& plan) {
  Witnesses found;
  int rank = -1;
  for (const std::size_t index : plan.CablesOf(dead)) {
    const PlannedCable& cable = plan.cables[index];
    const PlannedEnd& far = below ? cable.lower : cable.upper;
    if (far.node == dead || !plan.IsSwitch(far.node)) continue;
    rank = plan.nodes[far.node].rank;
    const auto [guid, port] = EndOf(plan, far);
    found.switches.insert(guid);
    found.ports.insert(port);
  }
  if (rank < 0 || plan.SwitchesOnRank(rank).size() < found.switches.size() + 2) {
    return std::nullopt;
  }
  return found;
}

bool KillShownSwitch(LabelledFabric& made, Random& random) {
  FabricPlan& plan = made.plan;
  Indices switches;
  for (std::size_t i = 0; i < plan.nodes.size(); ++i) {
    if (plan.IsSwitch(i)) switches.push_back(i);
  }
  const std::size_t dead = random.Pick(switches);
  for (const bool below : {true, false}) {
    if (const auto found = WitnessesOf(dead, below, plan)) made.witnesses.push_back(*found);
  }
  if (made.witnesses.empty()) return false;
  InjectedFault fault;
  fault.kind = FaultKind::DeadSwitch;
  fault.nodes.push_back(dead);
  for (const std::size_t cable : plan.CablesOf(dead)) fault.before.push_back(plan.cables[cable]);
  plan.RemoveNode(dead);
  made.faults.push_back(fault);
  return true;
}

// --- Faults by chance.

bool Inject(const Cell& cell, LabelledFabric& made, Random& random) {
  FaultInjector injector(made.plan, random);
  for (int i = 0; i < cell.faults; ++i) {
    const FaultKind kind =
        cell.kind == mixed ? random.Pick(CableFaults()) : FaultOfName(cell.kind).value();
    if (injector.Inject(kind, made.faults.emplace_back())) return false;
  }
  return true;
}

bool InjectMixed(int faults, LabelledFabric& made, Random& random) {
  return Inject({"", std::string(mixed), 0, faults, 0}, made, random);
}

// --- Sets.

struct CommonSet {
  std::string_view name;
  std::function<TreeShape(int levels, Random& random)> shape;
  bool isShuffled = false;
};

const std::vector<CommonSet>& CommonSets() {
  static const auto spare = [](int levels, Random& random) {
    return SpareShape(levels, 1, random);
  };
  static const auto trunks = [](int levels, Random& random) {
    return SpareShape(levels, 2, random);
  };
  static const std::vector<CommonSet> sets{{"spare", spare, false},
                                           {"full", FullShape, false},
                                           {"trunks", trunks, false},
                                           {"shuffled", spare, true},
                                           {"full-shuffled", FullShape, true}};
  return sets;
}

struct SpecialKind {
  std::string_view name;
  std::vector<int> levels;
  std::vector<int> faults;
  std::function<bool(LabelledFabric& made, int faults, Random& random)> damage;
};

using Damage = bool (*)(LabelledFabric&, Random&);

// One fault of a certain place.
SpecialKind Once(std::string_view name, std::vector<int> levels, Damage damage) {
  return {name, std::move(levels), {1}, [damage](LabelledFabric& made, int, Random& random) {
            return damage(made, random);
          }};
}

// Trees that look unusual before anything is wrong with them, without and with faults.
SpecialKind Unusual(std::string_view name, std::vector<int> levels,
                    const std::function<void(FabricPlan&, Random&)>& change) {
  return {name,
          std::move(levels),
          {0, 1, 4},
          [change](LabelledFabric& made, int faults, Random& random) {
            change(made.plan, random);
            return InjectMixed(faults, made, random);
          }};
}

const std::vector<SpecialKind>& SpecialKinds() {
  static const std::vector<SpecialKind> kinds{
      Once("pod-swap", {3, 4}, SwapBetweenPods),
      Once("trunk-swap", {2, 3, 4}, SwapInsidePod),
      Once("half-trunk", {2, 3, 4}, RemoveHalfATrunk),
      Once("other-spine", {2, 3, 4}, MoveToAnotherSpine),
      Once("dead-switch", {3, 4}, KillShownSwitch),
      Unusual("empty-leaves", {2, 3, 4}, EmptyLeaves),
      Unusual("empty-pod", {3, 4}, EmptyPod),
      Unusual("spine-hosts", {2, 3, 4}, [](FabricPlan& plan, Random&) { AddHostsToSpines(plan); }),
      {"clean", {2, 3, 4}, {0}, [](LabelledFabric&, int, Random&) { return true; }}};
  return kinds;
}

TreeShape SpecialShape(const Cell& cell, Random& random) {
  if (cell.kind == "clean") {
    const std::size_t set = random.Below(CommonSets().size() + 1);
    if (set == CommonSets().size()) return RandomShape(cell.levels, random);
    return CommonSets()[set].shape(cell.levels, random);
  }
  unsigned parallel = 1;
  if (cell.kind == "trunk-swap") parallel = 2;
  if (cell.kind == "half-trunk") parallel = random.Below(2) == 0 ? 2 : 4;
  TreeShape shape = SpareShape(cell.levels, parallel, random);
  // Of two pods one without hosts could as well be above the other.
  if (cell.kind == "empty-pod") shape.children.back() = std::max(3U, shape.children.back());
  return shape;
}

TreeShape ShapeOf(const Cell& cell, Random& random) {
  for (const CommonSet& set : CommonSets()) {
    if (set.name == cell.set) return set.shape(cell.levels, random);
  }
  return cell.set == "roots" ? RandomShape(cell.levels, random) : SpecialShape(cell, random);
}

bool AreShuffled(const Cell& cell, Random& random) {
  if (cell.kind == "clean") return random.Below(3) == 0;
  return std::any_of(CommonSets().begin(), CommonSets().end(),
                     [&](const CommonSet& set) { return set.name == cell.set && set.isShuffled; });
}

bool Damaged(const Cell& cell, LabelledFabric& made, Random& random) {
  if (cell.set != "special") return Inject(cell, made, random);
  for (const SpecialKind& kind : SpecialKinds()) {
    if (kind.name == cell.kind) return kind.damage(made, cell.faults, random);
  }
  return false;
}

// Where most cables are wrong, nothing tells what was meant. A fault touches up to two.
bool IsLargeEnough(const FabricPlan& plan, int faults) {
  constexpr long cablesPerFault = 8;
  const long cables = std::count_if(plan.cables.begin(), plan.cables.end(), [&](const auto& cable) {
    return plan.IsSwitch(cable.lower.node);
  });
  return cablesPerFault * faults <= cables;
}

GuidCables MeantCables(const FabricPlan& meant, const FabricPlan& faulty) {
  const auto stands = [&](const PlannedEnd& end) {
    return meant.IsSwitch(end.node) && !faulty.nodes[end.node].removed;
  };
  GuidCables cables;
  for (const PlannedCable& cable : meant.cables) {
    if (!stands(cable.upper) || !stands(cable.lower)) continue;
    cables.insert(CableBetween(EndOf(meant, cable.upper), EndOf(meant, cable.lower)));
  }
  return cables;
}

}  // namespace

GuidCable CableBetween(const GuidEnd& a, const GuidEnd& b) { return std::minmax(a, b); }

std::vector<Cell> AllCells() {
  constexpr int countOfRoots = 200;
  constexpr int countOfOthers = 50;
  std::vector<Cell> cells;
  const auto add = [&](std::string_view set, std::string_view kind, const auto& levels,
                       const auto& faults, int count) {
    for (const int height : levels) {
      for (const int number : faults) {
        cells.push_back({std::string(set), std::string(kind), height, number, count});
      }
    }
  };
  for (const FaultKind kind : MeasuredKinds()) {
    add("roots", FaultName(kind), measuredLevels, measuredFaults, countOfRoots);
  }
  for (const CommonSet& set : CommonSets()) {
    for (const FaultKind kind : CableFaults()) {
      add(set.name, FaultName(kind), measuredLevels, measuredFaults, countOfOthers);
    }
    add(set.name, mixed, measuredLevels, measuredFaults, countOfOthers);
  }
  for (const SpecialKind& kind : SpecialKinds()) {
    add("special", kind.name, kind.levels, kind.faults, countOfOthers);
  }
  return cells;
}

std::optional<LabelledFabric> MakeFabric(const Cell& cell, std::uint64_t seed) {
  Random random = RandomOf(seed, cell.levels, cell.faults);
  LabelledFabric made;
  made.plan = PlanTree(ShapeOf(cell, random), hdr);
  if (AreShuffled(cell, random)) ShufflePorts(made.plan, random);
  const FabricPlan meant = made.plan;
  if (cell.set != "roots" && !IsLargeEnough(meant, cell.faults)) return std::nullopt;
  if (!Damaged(cell, made, random)) return std::nullopt;
  made.truth = MeantCables(meant, made.plan);
  return made;
}

}  // namespace fabscope::internal
