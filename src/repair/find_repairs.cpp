#include "repair/find_repairs.h"

#include <algorithm>
#include <utility>

#include "repair/changes.h"
#include "repair/evidence.h"
#include "repair/inferred_ranks.h"
#include "repair/notes.h"
#include "repair/steps.h"
#include "repair/switch_graph.h"
#include "repair/tree_groups.h"
#include "repair/trust.h"

namespace fabscope::internal {
namespace {

// A step takes away at most two cables and brings at most two. What is done for seats alone could
// be left out.
std::size_t BoundOf(const Changes& changes) {
  std::size_t extras = 0;
  std::size_t lacks = 0;
  for (const CableTarget& target : changes.targets) {
    if (target.isForSeat) continue;
    extras += target.cable != SwitchGraph::none ? 1 : 0;
    lacks += target.upper ? 1 : 0;
  }
  return std::max<std::size_t>(1, (std::max(extras, lacks) + 1) / 2);
}

// Of a swap the cable of the earlier switch comes first, for those who read it.
void PutInOrder(CableChanges& changes) {
  if (changes.size() != 2 || !changes[0].before || !changes[1].before) return;
  const auto place = [](const CableChange& change) {
    return std::pair(change.before->upper.node, change.before->upper.port);
  };
  if (place(changes[1]) < place(changes[0])) std::swap(changes[0], changes[1]);
}

}  // namespace

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
  plan.notes = FindNotes(groups, changes);
  if (plan.misfits == 0) return plan;
  const auto abstain = [&](const char* why) {
    plan.status = RepairStatus::Abstained;
    plan.message = why;
    return plan;
  };
  if (changes.AreTooMany(graph)) {
    return abstain("more than a quarter of the cables between switches do not fit the tree");
  }
  std::vector<PlannedStep> steps = OrderSteps(groups, changes);
  constexpr const char* noPort = "links are missing, but no port is free for them";
  if (steps.empty()) return abstain(noPort);
  JudgeSteps(fabric, groups, changes, steps);
  for (PlannedStep& step : steps) {
    PutInOrder(step.step.cables);
    for (CableChanges& alternative : step.step.alternatives) PutInOrder(alternative);
    plan.steps.push_back(std::move(step.step));
  }
  plan.lowerBound = BoundOf(changes);
  if (!changes.uncertain.empty()) return abstain(noPort);
  plan.status = RepairStatus::Repairs;
  return plan;
}

}  // namespace fabscope::internal
