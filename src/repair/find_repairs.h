#pragma once

#include <memory>
#include <span>

#include "fabric/ib_fabric.h"
#include "repair/repair_plan.h"

namespace fabscope::internal {

// The repairs of a fabric whose ranks are inferred.
RepairPlan FindRepairs(const IBFabric& fabric);
// The same where the ranks are known.
RepairPlan FindRepairs(const IBFabric& fabric, TreeRanks ranks);

// The fabric as it is once the steps are done, one after another. Everything else stays, the order
// of the nodes included. A new cable has the speed of the one that went, or else of a sibling. Null
// when a step cannot be done: a cable is not there, or a port is taken.
std::unique_ptr<IBFabric> ApplySteps(const IBFabric& fabric, std::span<const RepairStep> steps);

}  // namespace fabscope::internal
