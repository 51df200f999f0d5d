#pragma once

#include <cstdint>
#include <vector>

#include "repair/neighbor_lists.h"

namespace fabscope::internal {

// Whether a tree of these ranks (by number in the graph; below 0 for none) has certainly at least
// that many misfits. False says nothing. This is much quicker than counting them where there are
// many.
bool HasAtLeastMisfits(const NeighborLists& neighbors, const std::vector<int>& ranks,
                       std::uint64_t count);

}  // namespace fabscope::internal
