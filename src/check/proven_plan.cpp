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
  if (proven.problem.empty() && proven.after.records == 0) return proven;
  // What the check still complains of was not understood.
  for (RepairStep& step : proven.plan.steps) {
    if (step.trust == RepairClass::Sure) step.trust = RepairClass::Likely;
  }
  return proven;
}

}  // namespace fabscope
