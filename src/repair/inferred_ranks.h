#pragma once

#include <cstdint>

#include "fabric/ib_fabric.h"
#include "repair/repair_plan.h"
#include "repair/tree_reading.h"

namespace fabscope::internal {

// Ranks found from all cables at once, which a few wrong ones cannot mislead. `levels` is 0 when
// the fabric has no tree at all (no switch, or none that leads to a host or to another switch).
TreeRanks InferRanks(const IBFabric& fabric);
TreeRanks InferRanks(const IBFabric& fabric, const TreeReading& reading);

// How far the fabric is from a proper fat tree of these ranks: cables between switches that must
// go, plus cables that lack, with the groups that are found. A cable that should be elsewhere
// counts twice. 0 exactly for a proper tree, and never too few; where much is wrong, other groups
// may need fewer.
std::uint64_t CountMisfits(const IBFabric& fabric, const TreeRanks& ranks);
// Leaves the misfits in `reading`, for InferRanks.
std::uint64_t CountMisfits(const TreeRanks& ranks, TreeReading& reading);

}  // namespace fabscope::internal
