#include "reference/random_trees.h"

#include <algorithm>
#include <utility>

namespace fabscope::internal::reference {
namespace {

const char* RoleName(std::size_t rank, std::size_t ranks) {
  if (rank + 1 == ranks) return "leaf-";
  if (rank == 0) return "root-";
  return rank + 2 == ranks ? "mid-" : "upper-";
}

int AddToRank(FabricSketch& sketch, Tree& tree, std::size_t rank, const std::string& suffix) {
  const std::string number = std::to_string(tree.ranks[rank].size());
  const int node = sketch.AddSwitch(RoleName(rank, tree.ranks.size()) + number + suffix);
  tree.ranks[rank].push_back(node);
  return node;
}

void AddCables(FabricSketch& sketch, int a, int b, int count) {
  for (int i = 0; i < count; ++i) sketch.Cable(a, b);
}

// The top switches of a new block.
std::vector<int> AddBlock(FabricSketch& sketch, Tree& tree, const TreeShape& shape,
                          std::size_t height, const std::string& suffix) {
  const std::size_t rank = tree.ranks.size() - height;
  if (height == 1) {
    const int leaf = AddToRank(sketch, tree, rank, suffix);
    AddHosts(sketch, tree, leaf, shape.hostsPerLeaf, suffix);
    return {leaf};
  }
  const TreeShape::Level& level = shape.levels[height - 2];
  std::vector<std::vector<int>> blocks;
  for (int i = 0; i < level.blocks; ++i) {
    blocks.push_back(AddBlock(sketch, tree, shape, height - 1, suffix));
  }
  std::vector<int> tops;
  for (std::size_t place = 0; place < blocks.front().size(); ++place) {
    for (int i = 0; i < level.up; ++i) {
      const int top = AddToRank(sketch, tree, rank, suffix);
      tops.push_back(top);
      for (const std::vector<int>& block : blocks) {
        AddCables(sketch, block[place], top, level.cables);
      }
    }
  }
  return tops;
}

Tree TreeOfRanks(std::size_t ranks) {
  Tree tree;
  tree.ranks.resize(ranks);
  return tree;
}

}  // namespace

TreeShape RandomTreeShape(RandomSource& random, int ranks) {
  TreeShape shape;
  const int mostBlocks = ranks == 2 ? 10 : 7 - ranks;
  const int mostUp = ranks == 2 ? 6 : 6 - ranks;
  for (int rank = 1; rank < ranks; ++rank) {
    TreeShape::Level& level = shape.levels.emplace_back();
    level.blocks = random.Between(random.Chance(5) ? 1 : 2, mostBlocks);
    level.up = random.Between(1, mostUp);
    level.cables = random.Chance(25) ? random.Between(2, 3) : 1;
  }
  shape.hostsPerLeaf = random.Chance(10) ? 0 : random.Between(1, 4);
  return shape;
}

void AddHosts(FabricSketch& sketch, Tree& tree, int leaf, int count, const std::string& suffix) {
  for (int i = 0; i < count; ++i) {
    const int host = sketch.AddHost("host-" + std::to_string(tree.hosts.size()).append(suffix));
    tree.hosts.push_back(host);
    sketch.Cable(leaf, host);
  }
}

Tree AddTree(FabricSketch& sketch, const TreeShape& shape, const std::string& suffix) {
  Tree tree = TreeOfRanks(shape.levels.size() + 1);
  AddBlock(sketch, tree, shape, tree.ranks.size(), suffix);
  return tree;
}

Tree AddTreeWithPodCable(FabricSketch& sketch) {
  RandomSource& random = sketch.random;
  TreeShape shape = RandomTreeShape(random, random.Between(3, 4));
  TreeShape::Level& pod = shape.levels.front();
  pod.blocks = random.Between(3, 4);
  shape.hostsPerLeaf = random.Between(1, 2);
  Tree tree = AddTree(sketch, shape, "");
  // The leaf with most hosts is tried first: often one that sees the cable from its side.
  const auto leaf = [&] {
    return tree.ranks.back()[static_cast<std::size_t>(random.Below(pod.blocks))];
  };
  AddHosts(sketch, tree, leaf(), 1, "");
  const int cables = random.Between(1, 2);
  for (int i = 0; i < cables; ++i) {
    const int a = leaf();
    sketch.Cable(a, leaf());
  }
  return tree;
}

Tree AddOverlappingGroups(FabricSketch& sketch) {
  RandomSource& random = sketch.random;
  const bool withLeaves = random.Chance(50);
  Tree tree = TreeOfRanks(withLeaves ? 3 : 2);
  const int upperCount = random.Between(2, 12);
  const int lowerCount = random.Between(2, 16);
  const int pattern = random.Below(5);
  const int groups = random.Between(1, 4);
  const int width = random.Between(1, upperCount);
  const int stray = random.Below(30);
  for (int u = 0; u < upperCount; ++u) AddToRank(sketch, tree, 0, "");

  const auto belongs = [&](int lower, int upper) {
    switch (pattern) {
      case 0:  // groups side by side
        return lower % groups == upper % groups;
      case 1:  // each set holds the one before
        return upper <= lower % upperCount;
      case 2:  // windows, each a step farther
        return upper >= lower % upperCount && upper < lower % upperCount + width;
      case 3:  // two groups that share some switches
        return lower % 4 == 0 ? upper <= width : upper >= width - 1;
      default:
        return random.Chance(50);
    }
  };
  for (int lower = 0; lower < lowerCount; ++lower) {
    const int node = AddToRank(sketch, tree, 1, "");
    for (int upper = 0; upper < upperCount; ++upper) {
      const bool isReached = belongs(lower, upper);
      if (isReached == random.Chance(stray)) continue;
      const int cables = random.Chance(10) ? 2 : 1;
      AddCables(sketch, node, tree.ranks[0][static_cast<std::size_t>(upper)], cables);
    }
    if (!withLeaves) {
      AddHosts(sketch, tree, node, random.Below(4), "");
      continue;
    }
    const int leaves = random.Below(3);
    for (int i = 0; i < leaves; ++i) {
      const int leaf = AddToRank(sketch, tree, 2, "");
      sketch.Cable(leaf, node);
      if (random.Chance(60)) sketch.Cable(leaf, random.Pick(tree.ranks[1]));
      AddHosts(sketch, tree, leaf, random.Below(3), "");
    }
  }
  return tree;
}

Tree AddUnevenGroup(FabricSketch& sketch) {
  RandomSource& random = sketch.random;
  Tree tree = TreeOfRanks(2);
  const int upperCount = random.Between(1, 5);
  const int most = random.Between(1, 4);
  for (int u = 0; u < upperCount; ++u) AddToRank(sketch, tree, 0, "");
  // How many leaves have `most` cables, one less, and so on: 8 and 16 fill their lines exactly.
  const std::vector<int> sizes{0, 1, 2, 7, 8, 9, 16, 17};
  for (int count = most; count >= std::max(most - 3, 0); --count) {
    const int leaves = count == most ? random.Between(1, 10) : random.Pick(sizes);
    for (int i = 0; i < leaves; ++i) {
      const int leaf = AddToRank(sketch, tree, 1, "");
      for (const int upper : tree.ranks[0]) {
        // The first root keeps even the last ones in the tree.
        const int cables = upper == tree.ranks[0].front() ? std::max(count, 1) : count;
        AddCables(sketch, leaf, upper, cables);
      }
      AddHosts(sketch, tree, leaf, random.Chance(70) ? 2 : random.Below(4), "");
    }
  }
  return tree;
}

Tree AddTreeWithStrays(FabricSketch& sketch, int switches, int mostStrays) {
  RandomSource& random = sketch.random;
  const int strays = std::min(mostStrays, switches / 3);
  const int left = switches - strays;
  const bool isFlat = left < 8 || (left < 100 && random.Chance(30));
  Tree tree = TreeOfRanks(isFlat ? 2 : 3);
  if (isFlat) {
    const int roots = random.Between(1, std::max(1, left / 3));
    for (int i = 0; i < roots; ++i) AddToRank(sketch, tree, 0, "");
    for (int i = roots; i < left; ++i) {
      const int leaf = AddToRank(sketch, tree, 1, "");
      for (const int root : tree.ranks[0]) sketch.Cable(leaf, root);
      AddHosts(sketch, tree, leaf, 1, "");
    }
  } else {
    // Pods of leaves under two middle switches each, which all reach the same few roots.
    const int roots = random.Between(1, 3);
    const int podLeaves = left > 300 ? 30 : random.Between(2, 4);
    for (int i = 0; i < roots; ++i) AddToRank(sketch, tree, 0, "");
    while (static_cast<int>(tree.ranks[1].size() + tree.ranks[2].size()) + roots < left) {
      const std::size_t inPod = tree.ranks[2].size() % static_cast<std::size_t>(podLeaves);
      const int rest = left - roots - static_cast<int>(tree.ranks[1].size()) -
                       static_cast<int>(tree.ranks[2].size());
      if (inPod == 0 && rest > 2) {
        for (int i = 0; i < 2; ++i) {
          const int mid = AddToRank(sketch, tree, 1, "");
          for (const int root : tree.ranks[0]) sketch.Cable(mid, root);
        }
      }
      const int leaf = AddToRank(sketch, tree, 2, "");
      const std::vector<int>& mids = tree.ranks[1];
      sketch.Cable(leaf, mids[mids.size() - 1]);
      sketch.Cable(leaf, mids[mids.size() - 2]);
      AddHosts(sketch, tree, leaf, 1, "");
    }
  }
  std::vector<int>& leaves = tree.ranks.back();
  int above = random.Pick(leaves);
  // With most hosts, or one below the other, they would not be strays among very many switches.
  const bool isLarge = switches > 300;
  const bool isChain = !isLarge && random.Chance(20);
  const int strayHosts = random.Between(0, isLarge ? 1 : 2);
  for (int i = 0; i < strays; ++i) {
    const int stray = sketch.AddSwitch("stray-" + std::to_string(i));
    sketch.Cable(stray, above);
    AddHosts(sketch, tree, stray, strayHosts, "");
    if (isChain) above = stray;
  }
  return tree;
}

Tree AddHugeRank(FabricSketch& sketch, int switches, bool withRootsAbove) {
  constexpr int widest = 230;
  Tree tree = TreeOfRanks(withRootsAbove ? 3 : 2);
  const std::size_t huge = withRootsAbove ? 1 : 0;
  for (int i = 0; i < switches; ++i) {
    const int node = AddToRank(sketch, tree, huge, "");
    if (withRootsAbove) {
      if (i % widest == 0) AddToRank(sketch, tree, 0, "");
      sketch.Cable(node, tree.ranks[0].back());
    }
    if (i % widest == 0) AddToRank(sketch, tree, huge + 1, "");
    sketch.Cable(tree.ranks[huge + 1].back(), node);
  }
  // Each leaf also reaches a few switches of the one before: shared, and too few to keep.
  const std::vector<int>& leaves = tree.ranks[huge + 1];
  for (std::size_t i = 1; i < leaves.size(); ++i) {
    for (std::size_t k = 1; k <= 5; ++k) {
      sketch.Cable(leaves[i], tree.ranks[huge][i * widest - k]);
    }
    AddHosts(sketch, tree, leaves[i], 1, "");
  }
  return tree;
}

Tree AddRandomGraph(FabricSketch& sketch) {
  RandomSource& random = sketch.random;
  Tree tree = TreeOfRanks(1);
  const int switches = random.Between(1, 25);
  const int cables = random.Below(3 * switches + 1);
  for (int i = 0; i < switches; ++i) AddToRank(sketch, tree, 0, "");
  for (int i = 0; i < cables; ++i) {
    const int a = random.Pick(tree.ranks[0]);
    const int b = random.Pick(tree.ranks[0]);
    if (a != b || random.Chance(20)) sketch.Cable(a, b);
  }
  const int hosts = random.Below(switches + 1);
  for (int i = 0; i < hosts; ++i) {
    AddHosts(sketch, tree, random.Pick(tree.ranks[0]), 1, "");
  }
  return tree;
}

}  // namespace fabscope::internal::reference
