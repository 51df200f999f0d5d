#include "compare/cures.h"

#include <map>
#include <set>

#include "fat_tree/neighborhood.h"

namespace fabscope {
namespace {

// Steps by what they touch.
class StepIndex {
 public:
  using Steps = std::set<std::size_t>;

  explicit StepIndex(std::span<const RepairStep> steps) {
    for (std::size_t i = 0; i < steps.size(); ++i) {
      for (const CableChange& change : steps[i].cables) {
        for (const auto* cable : {&change.before, &change.after}) {
          if (!cable->has_value()) continue;
          ofSwitch_[(*cable)->upper.node].insert(i);
          ofSwitch_[(*cable)->lower.node].insert(i);
        }
      }
    }
  }

  Steps Curing(const GoneFinding& finding) {
    Steps steps;
    for (const Fault& fault : finding.faults) {
      for (const Place& place : fault.places) AddOf(*place.node, steps);
      for (const FTNeighborhood* group : fault.groups) {
        const Steps& curing = CuringGroup(*group);
        steps.insert(curing.begin(), curing.end());
      }
    }
    return steps;
  }

 private:
  void AddOf(const IBNode& node, Steps& steps) const {
    const auto found = ofSwitch_.find(node.index);
    if (found != ofSwitch_.end()) steps.insert(found->second.begin(), found->second.end());
  }
  // A group that blocks is cured where any of its switches is. Many findings may name one group.
  const Steps& CuringGroup(const FTNeighborhood& group) {
    const auto [known, isNew] = ofGroup_.try_emplace(&group);
    if (!isNew) return known->second;
    for (const IBNode* node : group.GetSpines()) AddOf(*node, known->second);
    for (const IBNode* node : group.GetLines()) AddOf(*node, known->second);
    return known->second;
  }

  std::map<std::uint32_t, Steps> ofSwitch_;  // by IBNode::index
  std::map<const FTNeighborhood*, Steps> ofGroup_;
};

}  // namespace

std::vector<std::vector<std::size_t>> CuresOf(std::span<const RepairStep> steps,
                                              const CheckedFabric& was, const CheckedFabric& is) {
  std::vector<std::vector<std::size_t>> cures(steps.size());
  StepIndex index(steps);
  const Counterparts nodes(was.topology.GetFabric(), is.topology.GetFabric());
  for (const GoneFinding& finding : FindGone(was, is, nodes)) {
    for (const std::size_t i : index.Curing(finding)) cures[i].push_back(finding.place);
  }
  return cures;
}

}  // namespace fabscope
