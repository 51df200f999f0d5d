#include "compare/cures.h"

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

bool IsAt(const RepairStep& step, const Places& switches) {
  for (const CableChange& change : step.cables) {
    for (const auto* cable : {&change.before, &change.after}) {
      if (!cable->has_value()) continue;
      if (switches.contains((*cable)->upper.node)) return true;
      if (switches.contains((*cable)->lower.node)) return true;
    }
  }
  return false;
}

}  // namespace

std::vector<std::vector<std::size_t>> CuresOf(std::span<const RepairStep> steps,
                                              const CheckedFabric& was, const CheckedFabric& is) {
  std::vector<std::vector<std::size_t>> cures(steps.size());
  const Counterparts nodes(was.topology.GetFabric(), is.topology.GetFabric());
  for (const GoneFinding& finding : FindGone(was, is, nodes)) {
    const Places switches = SwitchesOf(finding);
    for (std::size_t i = 0; i < steps.size(); ++i) {
      if (IsAt(steps[i], switches)) cures[i].push_back(finding.place);
    }
  }
  return cures;
}

}  // namespace fabscope
