#include "compare/cures.h"

#include <map>
#include <set>

#include "fat_tree/neighborhood.h"

namespace fabscope {
namespace {

// Of switches: IBNode::index.
using Places = std::set<std::uint32_t>;

// A group that blocks is cured where any of its switches is.
Places SwitchesOf(const GoneFinding& finding) {
  Places switches;
  for (const Fault& fault : finding.faults) {
    for (const Place& place : fault.places) switches.insert(place.node->index);
    for (const FTNeighborhood* group : fault.groups) {
      for (const IBNode* node : group->GetSpines()) switches.insert(node->index);
      for (const IBNode* node : group->GetLines()) switches.insert(node->index);
    }
  }
  return switches;
}

// By switch: the steps that touch it.
using StepsAt = std::map<std::uint32_t, std::vector<std::size_t>>;

StepsAt IndexSteps(std::span<const RepairStep> steps) {
  StepsAt stepsAt;
  for (std::size_t i = 0; i < steps.size(); ++i) {
    for (const CableChange& change : steps[i].cables) {
      for (const auto* cable : {&change.before, &change.after}) {
        if (!cable->has_value()) continue;
        stepsAt[(*cable)->upper.node].push_back(i);
        stepsAt[(*cable)->lower.node].push_back(i);
      }
    }
  }
  return stepsAt;
}

}  // namespace

std::vector<std::vector<std::size_t>> CuresOf(std::span<const RepairStep> steps,
                                              const CheckedFabric& was, const CheckedFabric& is) {
  std::vector<std::vector<std::size_t>> cures(steps.size());
  const StepsAt stepsAt = IndexSteps(steps);
  const Counterparts nodes(was.topology.GetFabric(), is.topology.GetFabric());
  for (const GoneFinding& finding : FindGone(was, is, nodes)) {
    std::set<std::size_t> curing;
    for (const std::uint32_t node : SwitchesOf(finding)) {
      const auto found = stepsAt.find(node);
      if (found != stepsAt.end()) curing.insert(found->second.begin(), found->second.end());
    }
    for (const std::size_t i : curing) cures[i].push_back(finding.place);
  }
  return cures;
}

}  // namespace fabscope
