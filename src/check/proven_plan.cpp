#include "check/proven_plan.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "repair/find_repairs.h"

namespace fabscope::internal {
namespace {

// Whether no switch with hosts has lost its place in the tree.
bool IsEachLeafInTree(const IBFabric& repaired, const TreeRanks& before,
                      const FTTopology& topology) {
  return std::all_of(repaired.switches.begin(), repaired.switches.end(), [&](const IBNode* node) {
    if (before.ofNode[node->index] == TreeRanks::none || topology.GetNodeRank(node) >= 0) {
      return true;
    }
    return std::none_of(node->ports.begin(), node->ports.end(), [](const IBPort& port) {
      const IBNode* host = port.get_remote_node();
      return host != nullptr && host->nodeType != NodeTypeSwitch;
    });
  });
}

// Whether all switches of a step are in the tree that was checked.
bool IsChecked(const RepairStep& step, const ProvenPlan& proven) {
  const auto isInTree = [&](const CableEnd& end) {
    return proven.after.topology->GetNodeRank(&proven.repaired->GetNodes()[end.node]) >= 0;
  };
  return std::all_of(step.cables.begin(), step.cables.end(), [&](const CableChange& change) {
    const auto isOfTree = [&](const std::optional<RepairCable>& cable) {
      return !cable || (isInTree(cable->upper) && isInTree(cable->lower));
    };
    return isOfTree(change.before) && isOfTree(change.after);
  });
}

}  // namespace

ProvenPlan ProvePlan(const IBFabric& fabric, RepairPlan plan, int mergePercent) {
  ProvenPlan proven;
  proven.plan = std::move(plan);
  proven.repaired = ApplySteps(fabric, proven.plan.steps);
  if (proven.repaired == nullptr) {
    proven.problem = "they cannot be done one after another";
    return proven;
  }
  proven.after = CheckTree(*proven.repaired, proven.plan.ranks, mergePercent);
  if (!proven.after.problem.empty())
    proven.problem = "with them the fabric would still be no tree: " + proven.after.problem;
  const FindingList& findings = proven.after.findings;
  proven.isProven = proven.problem.empty() &&
                    std::none_of(findings.begin(), findings.end(), IsAboutCables) &&
                    IsEachLeafInTree(*proven.repaired, proven.plan.ranks, *proven.after.topology);
  // What the check still complains of was not understood, and what it does not look at is not
  // proven.
  for (RepairStep& step : proven.plan.steps) {
    const bool isProven = proven.isProven && IsChecked(step, proven);
    if (step.trust == RepairClass::Sure && !isProven) step.trust = RepairClass::Likely;
  }
  return proven;
}

}  // namespace fabscope::internal
