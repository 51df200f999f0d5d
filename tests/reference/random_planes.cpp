#include "reference/random_trees.h"

namespace fabscope::internal::reference {
namespace {

// The switches of one place on every plane: the chips of one system.
using System = std::vector<int>;

void MakeSystem(FabricSketch& sketch, const System& system, int number, bool isMultiAsic,
                bool servesAllPlanes) {
  const int planes = static_cast<int>(system.size());
  const std::string name = sketch.Node(system.front()).name;
  const std::string systemName = name.substr(0, name.find(' '));
  const bool isNamedBySystem = sketch.random.Chance(50);
  for (int plane = 1; plane <= planes; ++plane) {
    PlainNode& chip = sketch.Node(system[static_cast<std::size_t>(plane) - 1]);
    chip.systemGuid = static_cast<std::uint64_t>(number);
    chip.planesNumber = planes;
    chip.suitablePlane = plane;
    chip.planes = {plane};
    if (isNamedBySystem) chip.displayName = systemName + "/U1/A" + std::to_string(plane);
    if (!isMultiAsic) continue;
    chip.multiAsic = true;
    chip.asic = std::to_string(plane);
    if (servesAllPlanes) {
      for (int other = 1; other <= planes; ++other) chip.planes.insert(other);
    }
  }
}

// Chips of one system are cabled to each other, as a rule through ports that carry no tree links.
void AddInnerCables(FabricSketch& sketch, const System& system) {
  RandomSource& random = sketch.random;
  for (std::size_t i = 1; i < system.size(); ++i) {
    if (!sketch.Cable(system[i - 1], system[i])) return;
    const int kind = random.Below(5);
    const CableEnd end = sketch.CablesOf(system[i]).back();
    for (const CableEnd side : {end, sketch.FarEnd(end)}) {
      if (kind <= 2) sketch.Port(side).fnm = true;
      if (kind == 3) sketch.Port(side).fnm1 = true;
    }
  }
}

// The ports of one number of all chips, or of a host's ports, as one aggregated port.
void Aggregate(FabricSketch& sketch, const std::vector<CableEnd>& ends) {
  RandomSource& random = sketch.random;
  const auto mark = random.Pick<std::uint64_t>({0, 0, 0, 1, 0x8000000000000000});
  const int aport = sketch.AddAPort(mark);
  const int multiplicity = random.Chance(90) ? static_cast<int>(ends.size()) : random.Below(3) - 1;
  for (const CableEnd end : ends) {
    PlainPort& port = sketch.Port(end);
    port.aport = aport;
    port.planeMultiplicity = multiplicity;
    if (random.Chance(5)) port.inSubFabric = false;
  }
}

void AggregateSystem(FabricSketch& sketch, const System& system, int percent) {
  for (const CableEnd first : sketch.CablesOf(system.front())) {
    if (!sketch.random.Chance(percent)) continue;
    std::vector<CableEnd> ends;
    for (const int chip : system) {
      if (sketch.Node(chip).ports.contains(first.num)) ends.push_back({chip, first.num});
    }
    Aggregate(sketch, ends);
  }
}

void AddPlaneHost(FabricSketch& sketch, Tree& tree, const System& leaves, int percent) {
  RandomSource& random = sketch.random;
  const int host = sketch.AddHost("host-" + std::to_string(tree.hosts.size()));
  tree.hosts.push_back(host);
  for (const int leaf : leaves) {
    const int cables = random.Chance(15) ? 2 : 1;  // twice on one plane: one host for a chip
    for (int i = 0; i < cables; ++i) sketch.Cable(leaf, host);
  }
  const std::vector<CableEnd> ends = sketch.CablesOf(host);
  const int grouping = random.Below(6);
  for (const CableEnd end : ends) {
    if (grouping <= 3) sketch.Port(end).group = grouping;
    if (grouping == 4) sketch.Port(end).group = random.Between(-1, 2);
  }
  if (random.Chance(percent)) Aggregate(sketch, ends);
}

}  // namespace

std::vector<Tree> AddPlanes(FabricSketch& sketch, const TreeShape& shape, int planes) {
  RandomSource& random = sketch.random;
  TreeShape bare = shape;
  bare.hostsPerLeaf = 0;
  std::vector<Tree> trees;
  for (int plane = 1; plane <= planes; ++plane) {
    trees.push_back(AddTree(sketch, bare, " p" + std::to_string(plane)));
  }
  const int family = random.Below(3);  // no chip, leaves only, all switches
  const int widePercent = random.Pick<int>({0, 0, 30, 100});
  const int innerPercent = random.Pick<int>({0, 50, 100});
  const int aggregatedPercent = random.Pick<int>({0, 30, 100});
  int number = 0;
  for (std::size_t rank = 0; rank < trees.front().ranks.size(); ++rank) {
    const bool isLeaf = rank + 1 == trees.front().ranks.size();
    for (std::size_t place = 0; place < trees.front().ranks[rank].size(); ++place) {
      System system;
      for (const Tree& tree : trees) system.push_back(tree.ranks[rank][place]);
      const bool servesAllPlanes = random.Chance(widePercent);
      MakeSystem(sketch, system, ++number, family == 2 || (family == 1 && isLeaf), servesAllPlanes);
      for (int i = 0; isLeaf && i < shape.hostsPerLeaf; ++i) {
        AddPlaneHost(sketch, trees.front(), system, aggregatedPercent);
      }
      if (isLeaf && random.Chance(innerPercent)) AddInnerCables(sketch, system);
      AggregateSystem(sketch, system, aggregatedPercent);
    }
  }
  return trees;
}

void MixPlanes(FabricSketch& sketch, const Tree& tree) {
  RandomSource& random = sketch.random;
  const int familyPercent = random.Pick<int>({20, 50, 100});
  const int widePercent = random.Pick<int>({20, 50, 80});
  // Often one rank only has switches of a single plane.
  const int narrowRank = random.Chance(50) ? random.Below(static_cast<int>(tree.ranks.size())) : -1;
  for (int rank = 0; rank < static_cast<int>(tree.ranks.size()); ++rank) {
    for (const int index : tree.ranks[static_cast<std::size_t>(rank)]) {
      PlainNode& node = sketch.Node(index);
      node.multiAsic = random.Chance(familyPercent);
      node.suitablePlane = random.Between(1, 2);
      node.planes = {node.suitablePlane};
      const bool isWide = narrowRank < 0 ? random.Chance(widePercent) : rank != narrowRank;
      if (isWide) node.planes = {1, 2};
      if (random.Chance(2)) node.planes.clear();
      const std::vector<CableEnd> ends = sketch.CablesOf(index);
      if (!ends.empty() && random.Chance(20)) Aggregate(sketch, ends);
    }
  }
}

Tree AddTreeWithHiddenSwitch(FabricSketch& sketch) {
  RandomSource& random = sketch.random;
  constexpr int pods = 3;
  TreeShape shape;
  shape.levels.resize(2);
  shape.levels[0].blocks = random.Between(2, 3);
  shape.levels[0].up = random.Between(1, 2);
  shape.levels[1].blocks = pods;
  shape.levels[1].up = random.Between(1, 2);
  shape.hostsPerLeaf = 1;
  Tree tree = AddTree(sketch, shape, "");
  for (std::size_t rank = 0; rank < tree.ranks.size(); ++rank) {
    for (const int index : tree.ranks[rank]) {
      PlainNode& node = sketch.Node(index);
      node.multiAsic = rank < 2;
      node.suitablePlane = random.Between(1, 2);
      node.planes = {1, 2};
    }
  }
  const int hidden = sketch.AddSwitch("hidden");
  sketch.Node(hidden).suitablePlane = 2;
  sketch.Node(hidden).planes = {2};
  if (random.Chance(50)) {
    // In the middle of the tree: leaves of both planes agree in all that is compared.
    sketch.Cable(hidden, random.Pick(tree.ranks[0]));
    return tree;
  }
  // A leaf. The numbers of hosts make it likely that leaves are tried in this order: one that does
  // not see it, one of its own pod, one far from it; then it is its turn.
  sketch.Cable(hidden, tree.ranks[1].front());
  const std::size_t perPod = tree.ranks[2].size() / pods;
  AddHosts(sketch, tree, tree.ranks[2][2 * perPod], 8, "");
  AddHosts(sketch, tree, tree.ranks[2][0], random.Between(3, 6), "");
  AddHosts(sketch, tree, tree.ranks[2][perPod], random.Between(3, 6), "");
  AddHosts(sketch, tree, hidden, random.Between(2, 4), "");
  sketch.Node(tree.ranks[2][2 * perPod]).suitablePlane = 1;
  if (random.Chance(50)) return tree;
  sketch.Node(tree.ranks[2][0]).suitablePlane = 2;
  sketch.Node(tree.ranks[2][perPod]).suitablePlane = 2;
  return tree;
}

}  // namespace fabscope::internal::reference
