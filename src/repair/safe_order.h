#pragma once

#include <cstddef>
#include <vector>

#include "repair/repair_plan.h"
#include "repair/switch_graph.h"

namespace fabscope::internal {

// An order of steps in which each comes after those that it waits for. Of those that may come next
// it takes one that cuts no switch with hosts off while its cables are unplugged. It never goes
// back on a step: where none is safe, an order that avoids that may still exist.
// `waitsFor` by step; there are no circles in it.
std::vector<std::size_t> FindSafeOrder(const SwitchGraph& graph,
                                       const std::vector<const RepairStep*>& steps,
                                       const std::vector<std::vector<std::size_t>>& waitsFor);

}  // namespace fabscope::internal
