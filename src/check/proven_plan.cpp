#include "check/proven_plan.h"

#include <utility>

#include "repair/find_repairs.h"

namespace fabscope {

ProvenPlan ProvePlan(const IBFabric& fabric, RepairPlan plan, int mergePercent) {
  ProvenPlan proven;
  proven.plan = std::move(plan);
  proven.repaired = ApplySteps(fabric, proven.plan.steps);
  if (proven.repaired == nullptr) {
    proven.problem = "the repairs cannot be done one after another";
    return proven;
  }
  proven.after = CheckTree(*proven.repaired, proven.plan.ranks, mergePercent);
  if (!proven.after.problem.empty()) proven.problem = "after the repairs: " + proven.after.problem;
  return proven;
}

}  // namespace fabscope
