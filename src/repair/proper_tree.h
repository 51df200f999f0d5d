#pragma once

#include "fat_tree/topology.h"

namespace fabscope::internal {

// Whether a topology that is built has no misfits: CountMisfits would answer 0. This asks only
// that, and is much quicker. False also where ports of a cable do not agree on whether it counts.
bool IsProperTree(const FTTopology& topology);

}  // namespace fabscope::internal
