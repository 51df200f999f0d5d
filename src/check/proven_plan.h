#pragma once

#include <memory>
#include <string>

#include "check/checked_tree.h"
#include "fabric/ib_fabric.h"
#include "repair/repair_plan.h"

namespace fabscope::internal {

// A plan, and what a check says of the fabric once it is carried out.
struct ProvenPlan {
  RepairPlan plan;
  std::string problem;                       // why nothing could be checked; empty if it could
  bool isProven = false;                     // no cable between switches is wrong afterwards
  std::shared_ptr<const IBFabric> repaired;  // null when the steps cannot be done
  CheckedTree after;                         // of `repaired`
};

// Carries the plan out on a copy of the fabric, and checks that with the roots of the plan. Unless
// it is proven no step stays sure.
ProvenPlan ProvePlan(const IBFabric& fabric, RepairPlan plan, int mergePercent);

}  // namespace fabscope::internal
