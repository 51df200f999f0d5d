#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "fat_tree/containers/node_table.h"
#include "fat_tree/neighborhood.h"
#include "fat_tree/topology.h"

namespace fabscope::internal {

// Where the switches of a tree stand in a still picture: ranks are rows, the roots' on top, and the
// switches of a group stand side by side. Of a large tree the switches that a group has on a rank
// are folded into one mark.
//
// Units are those of the picture; marks are placed by their middle.
struct TreeLayout {
  struct Mark {
    std::vector<const IBNode*> nodes;  // one, or those that are folded
    std::size_t rank = 0;
    double x = 0;
    double y = 0;
  };
  // Around a neighborhood; of a connectivity group around its spines, as its lines are the spines
  // of many others.
  struct Box {
    const FTNeighborhood* group = nullptr;
    double left = 0;
    double right = 0;
    std::size_t topRank = 0;
    std::size_t bottomRank = 0;
  };

  std::vector<Mark> marks;  // by rank, from left to right
  std::vector<Box> boxes;
  std::vector<double> rowY;  // by rank
  bool isFolded = false;
  double labelHeight = 0;  // room for names above and below a row; 0 when folded
  double right = 0;        // where marks and boxes end
  NodeTable<std::int32_t> markOf{-1};
};

// How many characters of a name a picture shows.
constexpr std::size_t mostShownOfAName = 24;

// Of a tree that was built; without groups, as when it was not validated, switches stand in rows.
// `left` and `top` is where it begins.
TreeLayout LayOutTree(const FTTopology& topology, double left, double top);

}  // namespace fabscope::internal
