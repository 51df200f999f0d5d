#pragma once

#include <cstddef>
#include <vector>

#include "repair/repair_plan.h"
#include "repair/switch_graph.h"

namespace fabscope::internal {

// An order of steps in which each comes after those that it waits for. Of those that may come next
// it takes one that cuts no switch with hosts off while its cables are unplugged. Where it comes to
// none that is safe, it looks through all orders of up to 16 steps for one that leaves no switch
// with hosts alone between two of them; that search has a limit on large fabrics.
// `waitsFor` by step; there are no circles in it.
std::vector<std::size_t> FindSafeOrder(const SwitchGraph& graph,
                                       const std::vector<const RepairStep*>& steps,
                                       const std::vector<std::vector<std::size_t>>& waitsFor);

}  // namespace fabscope::internal
