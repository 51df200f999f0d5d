#pragma once

#include <vector>

#include "repair/repair_plan.h"
#include "repair/tree_reading.h"

namespace fabscope::internal {

// By switch of the graph: the number of hops down to the leaves, 0 for a leaf, as a tree has it
// that a few wrong cables cannot mislead.
using Heights = std::vector<int>;

// Where no leaf is in reach.
inline constexpr int UnknownHeight = TreeRanks::none;

Heights FindHeights(const TreeReading& reading);

}  // namespace fabscope::internal
