#include "compare/cures.h"

#include <algorithm>
#include <map>
#include <utility>

#include "fat_tree/neighborhood.h"

namespace fabscope::internal {
namespace {

// IBNode::index of two switches, the lesser first.
using Pair = std::pair<std::uint32_t, std::uint32_t>;
using Steps = std::vector<std::size_t>;

// Of a link that no cable of a step joins, so many steps near it are named. Each of them may have
// moved a switch to another group; all of them for each of a million links would be too many.
constexpr std::size_t mostNearLink = 16;

// By what they change.
class StepIndex {
 public:
  explicit StepIndex(std::span<const RepairStep> steps) {
    for (std::size_t i = 0; i < steps.size(); ++i) {
      for (const CableChange& change : steps[i].cables) {
        for (const auto* cable : {&change.before, &change.after}) {
          if (cable->has_value()) Add(i, (*cable)->upper.node, (*cable)->lower.node);
        }
      }
    }
  }

  // Those that plug or unplug a cable between the two.
  const Steps& Joining(const IBNode& a, const IBNode& b) const {
    return Find(joining_, std::minmax(a.index, b.index));
  }
  // Those that change a cable at the switch.
  const Steps& At(const IBNode& node) const { return Find(at_, node.index); }

 private:
  void Add(std::size_t step, std::uint32_t a, std::uint32_t b) {
    for (Steps* steps : {&at_[a], &at_[b], &joining_[std::minmax(a, b)]}) {
      if (steps->empty() || steps->back() != step) steps->push_back(step);
    }
  }
  template <typename Map, typename Key>
  static const Steps& Find(const Map& map, const Key& key) {
    static const Steps none;
    const auto found = map.find(key);
    return found == map.end() ? none : found->second;
  }

  std::map<std::uint32_t, Steps> at_;
  std::map<Pair, Steps> joining_;
};

// In the order of the plan, each once.
class CureSearch {
 public:
  CureSearch(std::span<const RepairStep> steps, const FaultList& faults)
      : index_(steps), faults_(faults) {}

  Steps CuringOf(const GoneFinding& finding) {
    Steps curing;
    for (std::size_t i = finding.firstFault; i < finding.endFault; ++i) {
      const Fault fault = faults_[i];
      if (!fault.groups.empty()) {
        for (const FTNeighborhood* group : fault.groups) Append(curing, AtGroup(*group));
      } else if (fault.places.size() == 2) {
        Append(curing, OfLink(*fault.places[0].node, *fault.places[1].node));
      } else {
        Append(curing, index_.At(*fault.places[0].node));
      }
    }
    Settle(curing);
    return curing;
  }

 private:
  static void Append(Steps& steps, const Steps& more) {
    steps.insert(steps.end(), more.begin(), more.end());
  }
  static void Settle(Steps& steps) {
    std::sort(steps.begin(), steps.end());
    steps.erase(std::unique(steps.begin(), steps.end()), steps.end());
  }

  Steps OfLink(const IBNode& a, const IBNode& b) const {
    if (const Steps& joining = index_.Joining(a, b); !joining.empty()) return joining;
    Steps near;
    for (const IBNode* node : {&a, &b}) {
      const Steps& at = index_.At(*node);
      near.insert(near.end(), at.begin(),
                  at.begin() + static_cast<std::ptrdiff_t>(std::min(at.size(), mostNearLink)));
    }
    Settle(near);
    near.resize(std::min(near.size(), mostNearLink));
    return near;
  }

  // A group that blocks is cured where any of its switches is.
  const Steps& AtGroup(const FTNeighborhood& group) {
    const auto [entry, isNew] = atGroups_.try_emplace(&group);
    if (isNew) {
      for (const NodeSet* nodes : {&group.GetSpines(), &group.GetLines()}) {
        for (const IBNode* node : *nodes) Append(entry->second, index_.At(*node));
      }
      Settle(entry->second);
    }
    return entry->second;
  }

  const StepIndex index_;
  const FaultList& faults_;
  std::map<const FTNeighborhood*, Steps> atGroups_;
};

}  // namespace

std::vector<std::vector<std::size_t>> CuresOf(std::span<const RepairStep> steps,
                                              const CheckedFabric& was, const CheckedFabric& is) {
  std::vector<std::vector<std::size_t>> cures(steps.size());
  const Counterparts nodes(was.topology.GetFabric(), is.topology.GetFabric());
  const FaultList faults(was);
  CureSearch search(steps, faults);
  for (const GoneFinding& finding : FindGone(was, faults, is, nodes)) {
    for (const std::size_t i : search.CuringOf(finding)) cures[i].push_back(finding.place);
  }
  return cures;
}

}  // namespace fabscope::internal
