#pragma once

#include <string>
#include <vector>

#include "reference/fabric_sketch.h"

namespace fabscope::internal::reference {

// A proper fat tree. Height 1 is a leaf; a block of height h is some blocks of the height below,
// joined by new switches on top: every top switch of a block gets `up` new switches, and each of
// those is cabled to that place of every block.
struct TreeShape {
  struct Level {
    int blocks = 2;
    int up = 2;
    int cables = 1;  // parallel ones
  };
  std::vector<Level> levels;  // from the leaves upwards; one less than there are ranks
  int hostsPerLeaf = 2;
};

// The nodes of a tree, as indices.
struct Tree {
  std::vector<std::vector<int>> ranks;  // rank 0 the roots, the last one the leaves
  std::vector<int> hosts;
};

// Two to four ranks, of a few to some dozens of switches.
TreeShape RandomTreeShape(RandomSource& random, int ranks);

// Names are "root-3", "upper-1", "mid-7", "leaf-12", "host-40", each with the suffix behind.
Tree AddTree(FabricSketch& sketch, const TreeShape& shape, const std::string& suffix);
void AddHosts(FabricSketch& sketch, Tree& tree, int leaf, int count, const std::string& suffix);

// One tree for each plane, of the same shape; switches of the same place form one system, often of
// the multi-ASIC family, and hosts reach all planes. Some ports of a system are aggregated.
std::vector<Tree> AddPlanes(FabricSketch& sketch, const TreeShape& shape, int planes);

// Puts the switches of a tree on two planes at random, some on both, and some of them into the
// multi-ASIC family; some have all of their ports in one aggregated port.
void MixPlanes(FabricSketch& sketch, const Tree& tree);

// A tree with one more switch that only leaves of the second plane see.
Tree AddTreeWithHiddenSwitch(FabricSketch& sketch);

// A tree with cables between leaves of one pod, or from a leaf back to itself.
Tree AddTreeWithPodCable(FabricSketch& sketch);

// Leaves under the switches of two ranks, where each lower switch reaches a set of upper ones that
// nearly or not at all agrees with the others': nested, overlapping, mutated and random sets.
Tree AddOverlappingGroups(FabricSketch& sketch);

// One wide group in which some switches have fewer cables, up to three different counts.
Tree AddUnevenGroup(FabricSketch& sketch);

// A tree with so many switches in all, a few of them strays below one of its leaves: sizes at which
// the threshold of the distance classes changes.
Tree AddTreeWithStrays(FabricSketch& sketch, int switches, int mostStrays);

// A few roots, one rank of that many switches, leaves; as two ranks without the few roots.
Tree AddHugeRank(FabricSketch& sketch, int switches, bool withRootsAbove);

// Switches and hosts cabled at random; all switches are on one "rank".
Tree AddRandomGraph(FabricSketch& sketch);

}  // namespace fabscope::internal::reference
