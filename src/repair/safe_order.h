#pragma once

#include <cstddef>
#include <vector>

#include "repair/repair_plan.h"
#include "repair/switch_graph.h"

namespace fabscope::internal {

// An order of steps in which each comes after those that it waits for, and cuts no switch with
// hosts off from the others while its cables are unplugged, as far as there is such an order and it
// does not take too long to find.
// `waitsFor` by step; there are no circles in it.
std::vector<std::size_t> FindSafeOrder(const SwitchGraph& graph,
                                       const std::vector<const RepairStep*>& steps,
                                       const std::vector<std::vector<std::size_t>>& waitsFor);

}  // namespace fabscope::internal
