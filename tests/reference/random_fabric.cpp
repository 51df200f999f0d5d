#include "reference/random_fabric.h"

#include <array>

#include "reference/fabric_sketch.h"
#include "reference/random_faults.h"
#include "reference/random_source.h"
#include "reference/random_trees.h"

namespace fabscope::internal::reference {
namespace {

// Fabrics that cost a second rather than a millisecond come once in this many seeds.
constexpr std::uint64_t seedsForOneLarge = 1000;

struct Kind {
  const char* name;
  int weight;
  int automaticPercent;  // how often the roots are not given
  // Answers the trees of the sketch; several when there are several planes or fabrics.
  std::vector<Tree> (*make)(FabricSketch& sketch);
};

void AddFaults(FabricSketch& sketch, const std::vector<Tree>& trees, int least, int most) {
  const int count = sketch.random.Between(least, most);
  for (int i = 0; i < count; ++i) AddFault(sketch, sketch.random.Pick(trees));
}

TreeShape AnyShape(FabricSketch& sketch) {
  const int ranks = sketch.random.Pick<int>({2, 2, 3, 3, 3, 4});
  return RandomTreeShape(sketch.random, ranks);
}

std::vector<Tree> MakeCleanTree(FabricSketch& sketch) {
  return {AddTree(sketch, AnyShape(sketch), "")};
}

std::vector<Tree> MakeFaultyTree(FabricSketch& sketch) {
  std::vector<Tree> trees = MakeCleanTree(sketch);
  AddFaults(sketch, trees, 1, 8);
  return trees;
}

// Four ranks: where classifications have most to tell apart.
std::vector<Tree> MakeDeepTree(FabricSketch& sketch) {
  std::vector<Tree> trees{AddTree(sketch, RandomTreeShape(sketch.random, 4), "")};
  AddFaults(sketch, trees, 1, 3);
  return trees;
}

std::vector<Tree> MakePlanes(FabricSketch& sketch) {
  const int ranks = sketch.random.Pick<int>({2, 2, 3});
  TreeShape shape = RandomTreeShape(sketch.random, ranks);
  for (TreeShape::Level& level : shape.levels) {
    if (level.blocks > 3) level.blocks = 3;
    if (level.up > 2) level.up = 2;
  }
  std::vector<Tree> trees = AddPlanes(sketch, shape, sketch.random.Between(2, 4));
  if (sketch.random.Chance(50)) AddFaults(sketch, trees, 1, 4);
  return trees;
}

std::vector<Tree> MakeMixedPlanes(FabricSketch& sketch) {
  std::vector<Tree> trees = MakeCleanTree(sketch);
  MixPlanes(sketch, trees.front());
  if (sketch.random.Chance(50)) AddFaults(sketch, trees, 1, 3);
  return trees;
}

std::vector<Tree> MakeTreeWithHiddenSwitch(FabricSketch& sketch) {
  return {AddTreeWithHiddenSwitch(sketch)};
}

std::vector<Tree> MakeTreeWithPodCable(FabricSketch& sketch) {
  return {AddTreeWithPodCable(sketch)};
}

std::vector<Tree> MakeOverlappingGroups(FabricSketch& sketch) {
  std::vector<Tree> trees{AddOverlappingGroups(sketch)};
  if (sketch.random.Chance(30)) AddFaults(sketch, trees, 1, 3);
  return trees;
}

std::vector<Tree> MakeUnevenGroup(FabricSketch& sketch) {
  std::vector<Tree> trees{AddUnevenGroup(sketch)};
  if (sketch.random.Chance(20)) AddFaults(sketch, trees, 1, 3);
  return trees;
}

std::vector<Tree> MakeThresholdTree(FabricSketch& sketch) {
  const int edge = sketch.random.Pick<int>({5, 6, 25, 26, 50, 51, 100, 101});
  const int switches = edge + sketch.random.Pick<int>({0, 0, 0, -1, 1});
  const int strays = sketch.random.Pick<int>({0, 1, 2, 3, 4, 5, 9, 10, 11, 12});
  return {AddTreeWithStrays(sketch, switches, strays)};
}

std::vector<Tree> MakeSeveralFabrics(FabricSketch& sketch) {
  std::vector<Tree> trees;
  const int count = sketch.random.Between(2, 3);
  for (int i = 0; i < count; ++i) {
    const std::string suffix = sketch.random.Chance(50) ? "" : "." + std::to_string(i);
    const int ranks = sketch.random.Between(2, 3);
    trees.push_back(AddTree(sketch, RandomTreeShape(sketch.random, ranks), suffix));
  }
  if (sketch.random.Chance(50)) AddFaults(sketch, trees, 1, 3);
  return trees;
}

std::vector<Tree> MakeRandomGraph(FabricSketch& sketch) { return {AddRandomGraph(sketch)}; }

// A switch or two, perhaps without ports; or none.
std::vector<Tree> MakeNextToNothing(FabricSketch& sketch) {
  Tree tree;
  tree.ranks.resize(1);
  const int switches = sketch.random.Below(4);
  for (int i = 0; i < switches; ++i) {
    tree.ranks[0].push_back(sketch.AddSwitch("root-" + std::to_string(i)));
  }
  const int hosts = sketch.random.Below(3);
  for (int i = 0; i < hosts; ++i) {
    if (switches == 0) {
      tree.hosts.push_back(sketch.AddHost("host"));
    } else {
      AddHosts(sketch, tree, tree.ranks[0].front(), 1, "");
    }
  }
  if (sketch.random.Chance(50)) AddFaults(sketch, {tree}, 1, 2);
  return {tree};
}

constexpr std::array<Kind, 13> kinds{{{"clean tree", 8, 45, MakeCleanTree},
                                      {"faulty tree", 24, 45, MakeFaultyTree},
                                      {"deep tree", 6, 90, MakeDeepTree},
                                      {"planes", 10, 45, MakePlanes},
                                      {"mixed planes", 7, 80, MakeMixedPlanes},
                                      {"hidden switch", 2, 90, MakeTreeWithHiddenSwitch},
                                      {"pod cable", 2, 90, MakeTreeWithPodCable},
                                      {"overlapping groups", 16, 15, MakeOverlappingGroups},
                                      {"uneven group", 6, 45, MakeUnevenGroup},
                                      {"threshold tree", 8, 70, MakeThresholdTree},
                                      {"several fabrics", 4, 45, MakeSeveralFabrics},
                                      {"random graph", 9, 20, MakeRandomGraph},
                                      {"next to nothing", 3, 45, MakeNextToNothing}}};

const Kind& AnyKind(RandomSource& random) {
  int total = 0;
  for (const Kind& kind : kinds) total += kind.weight;
  int draw = random.Below(total);
  std::size_t index = 0;
  while (draw >= kinds[index].weight) draw -= kinds[index++].weight;
  return kinds[index];
}

void GiveSmdbRanks(FabricSketch& sketch, const std::vector<Tree>& trees) {
  RandomSource& random = sketch.random;
  const int way = random.Below(10);
  const bool firstTreeOnly = trees.size() > 1 && random.Chance(30);
  for (const Tree& tree : trees) {
    if (way == 0 || (firstTreeOnly && &tree != &trees.front())) break;
    for (std::size_t rank = 0; rank < tree.ranks.size(); ++rank) {
      for (const int node : tree.ranks[rank]) {
        // One tree of one rank is a random graph: a third of its switches may serve as roots.
        const bool isPicked = way == 1 || tree.ranks.size() == 1 ? random.Chance(30) : rank == 0;
        sketch.Node(node).smdbRank = isPicked ? 0 : static_cast<int>(rank) + 1;
      }
    }
  }
  if (way == 2) {
    // One root was forgotten: the tree grows a rank of its own around it.
    const std::vector<int>& roots = trees.front().ranks.front();
    if (!roots.empty()) sketch.Node(random.Pick(roots)).smdbRank = 1;
  }
}

std::string AnyRegex(RandomSource& random) {
  return random.Pick<std::string>({"^root-", "^root-", "^root-", "root", "^(root|upper)-",
                                   "^root-[0-3]", "root-[0-9]+$", "root.*p1", "^root.* p2",
                                   "^nothing$", ".*", ".", "^mid-|^root-1", "leaf-(1|2)+$",
                                   "[02468]$", "same"});
}

PlainOptions AnyOptions(RandomSource& random, int automaticPercent) {
  PlainOptions options;
  if (!random.Chance(automaticPercent)) {
    options.roots = random.Chance(55) ? PlainRoots::Smdb : PlainRoots::Regex;
  }
  if (options.roots == PlainRoots::Regex) options.rootRegex = AnyRegex(random);
  options.retries = random.Pick<int>({0, 1, 2, 10, 10, 10, 10});
  options.equal = random.Pick<int>({1, 2, 2, 2, 2, 3, 4});
  // 66 tells whether a third, 33.3 percent, is rounded.
  options.mergePercent = random.Pick<int>({0, 10, 50, 66, 66, 70, 70, 70, 90, 100});
  if (random.Chance(10)) options.mergePercent = random.Between(0, 100);
  options.showGuid = random.Below(3);
  return options;
}

void AddOddities(FabricSketch& sketch, const std::vector<Tree>& trees) {
  RandomSource& random = sketch.random;
  if (random.Chance(25)) AddOddNames(sketch);
  for (const Tree& tree : trees) {
    if (random.Chance(40)) AddFlids(sketch, tree);
  }
  if (random.Chance(15)) AddPortOddities(sketch);
}

PlainCase FinishCase(FabricSketch& sketch, const PlainOptions& options, const std::string& kind,
                     int shufflePercent) {
  const bool shuffled = sketch.random.Chance(shufflePercent);
  return {sketch.Finish(shuffled), options, kind};
}

PlainCase HugeRankCase(FabricSketch& sketch, int switches, bool withRootsAbove) {
  const std::vector<Tree> trees{AddHugeRank(sketch, switches, withRootsAbove)};
  for (const int root : trees.front().ranks.front()) sketch.Node(root).smdbRank = 0;
  PlainOptions options;
  options.roots = PlainRoots::Smdb;
  return FinishCase(sketch, options, "huge rank", 0);
}

// The threshold of distance classes is here half the port count of the first switch, 40; strays are
// ignored up to so many, and with 1000 switches up to 10.
PlainCase LargeTreeCase(FabricSketch& sketch, std::uint64_t which) {
  struct Size {
    int switches;
    int strays;
  };
  constexpr std::array<Size, 5> sizes{{{1001, 0}, {1001, 25}, {1040, 60}, {1000, 25}, {1001, 40}}};
  const Size& size = sizes[which % sizes.size()];
  const std::vector<Tree> trees{AddTreeWithStrays(sketch, size.switches, size.strays)};
  for (const int node : sketch.NodesOfType(2)) {
    sketch.Node(node).numPorts = node == trees.front().ranks[0].front() ? 80 : 120;
  }
  AddOddities(sketch, trees);
  PlainOptions options;
  options.retries = 3;
  return FinishCase(sketch, options, "large tree", 0);
}

}  // namespace

PlainCase RandomCase(std::uint64_t seed) {
  RandomSource random(seed);
  FabricSketch sketch(random);
  if (seed == FullRankSeed) return HugeRankCase(sketch, 2048, false);
  if (seed == OverfullRankSeed) return HugeRankCase(sketch, 2049, true);
  if (seed % seedsForOneLarge == seedsForOneLarge / 2) {
    return LargeTreeCase(sketch, seed / seedsForOneLarge);
  }

  sketch.scatterPorts = random.Chance(20);
  sketch.speed = random.Pick<std::uint32_t>({0x400, 0x800, 0x100, 0});
  sketch.mixedSpeeds = random.Chance(20) ? 30 : 0;
  const Kind& kind = AnyKind(random);
  const std::vector<Tree> trees = kind.make(sketch);
  GiveSmdbRanks(sketch, trees);
  AddOddities(sketch, trees);
  PlainOptions options = AnyOptions(random, kind.automaticPercent);
  // Where classifications differ, only more of them show all that may happen.
  const bool isMixed = kind.make == MakeMixedPlanes || kind.make == MakeTreeWithHiddenSwitch;
  if (isMixed && random.Chance(60)) options.equal = random.Between(3, 4);
  return FinishCase(sketch, options, kind.name, 80);
}

PlainCase RandomTreeCase(std::uint64_t seed, int mostFaults) {
  RandomSource random(seed);
  FabricSketch sketch(random);
  TreeShape shape = AnyShape(sketch);
  for (TreeShape::Level& level : shape.levels) level.cables = 1;
  const std::vector<Tree> trees{AddTree(sketch, shape, "")};
  AddFaults(sketch, trees, 0, mostFaults);
  for (const int root : trees.front().ranks.front()) sketch.Node(root).smdbRank = 0;
  PlainOptions options;
  options.roots = PlainRoots::Smdb;
  options.mergePercent = random.Pick<int>({50, 70, 90, 100});
  return FinishCase(sketch, options, "tree", 80);
}

}  // namespace fabscope::internal::reference
