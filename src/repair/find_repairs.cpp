#include "repair/find_repairs.h"

#include <algorithm>
#include <utility>

#include "repair/changes.h"
#include "repair/evidence.h"
#include "repair/inferred_ranks.h"
#include "repair/steps.h"
#include "repair/switch_graph.h"
#include "repair/tree_groups.h"

namespace fabscope {

RepairPlan FindRepairs(const IBFabric& fabric) { return FindRepairs(fabric, InferRanks(fabric)); }

RepairPlan FindRepairs(const IBFabric& fabric, TreeRanks ranks) {
  RepairPlan plan;
  plan.ranks = std::move(ranks);
  const SwitchGraph graph(fabric);
  std::vector<int> ofSwitch(graph.Count());
  for (std::uint32_t i = 0; i < graph.Count(); ++i) {
    ofSwitch[i] = plan.ranks.ofNode[graph.NodeOf(i).index];
  }
  TreeGroups groups(graph, ofSwitch);
  DecideTies(groups);
  const Changes changes = FindChanges(groups);
  plan.misfits = changes.extras + changes.lacks;
  plan.lowerBound = static_cast<std::size_t>((std::max(changes.extras, changes.lacks) + 1) / 2);
  for (PlannedStep& step : OrderSteps(groups, changes)) {
    step.step.trust = RepairClass::Sure;
    plan.steps.push_back(std::move(step.step));
  }
  if (!plan.steps.empty()) plan.status = RepairStatus::Repairs;
  return plan;
}

}  // namespace fabscope
