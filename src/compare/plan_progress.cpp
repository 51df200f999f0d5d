// What was done of a plan.
//
// Each changed cable is looked up by the ports that the plan names. It is where the step puts it,
// or where it was; otherwise somebody has done something else, and what is plugged into the port
// that should have stayed tells what. A cable that had to go is gone as soon as its two ports are
// not joined any more, unless one of them leads to another switch that no step sends it to: then it
// was moved instead.
//
// Where more than two cables change places, a step takes the cable that an earlier one has made.
// The earlier step is done when the later one is, and the later one cannot be begun before it.
//
// A plan does not hold the fabric that it was made of, so what is new in a later one cannot be told
// cable by cable. What matters of it can: the repairs that are found now and were not planned.

#include "compare/plan_progress.h"

#include <algorithm>
#include <map>
#include <set>
#include <tuple>
#include <utility>

#include "compare/fabric_hash.h"

namespace fabscope::internal {
namespace {

using MaybeCable = std::optional<KeptCable>;

bool IsEndOf(const KeptEnd& end, const MaybeCable& cable) {
  return cable && ((*cable)[0] == end || (*cable)[1] == end);
}

class Progress {
 public:
  Progress(const RepairDocument& plan, const IBFabric& fabric) : fabric_(fabric) {
    for (const KeptStep& step : plan.steps) {
      for (const KeptChange& change : step.cables) {
        if (change.after) planned_.insert(KeyOf(*change.after));
      }
    }
    FollowCables(plan);
  }

  StepProgress Of(const KeptStep& step) const;

 private:
  using Key = std::array<std::pair<std::uint64_t, std::uint8_t>, 2>;

  static Key KeyOf(const KeptCable& cable) {
    Key key{{{cable[0].guid, cable[0].port}, {cable[1].guid, cable[1].port}}};
    std::sort(key.begin(), key.end());
    return key;
  }
  static Key KeyOf(const IBPort& port) {
    const IBPort& far = *port.remotePort;
    Key key{{{port.node->guid, port.num}, {far.node->guid, far.num}}};
    std::sort(key.begin(), key.end());
    return key;
  }

  void FollowCables(const RepairDocument& plan);
  bool IsAsPlanned(const KeptChange& change) const {
    return change.after && (IsThere(*change.after) || overtaken_.contains(&change));
  }
  bool IsAsBefore(const KeptChange& change) const {
    return change.before && (IsThere(*change.before) || waiting_.contains(&change));
  }
  EndNow Find(const KeptEnd& end) const;
  bool IsThere(const KeptCable& cable) const;
  StepState StateOf(const KeptChange& change) const;
  StepState StateOf(const KeptChanges& changes) const;
  // Of a change that was done otherwise: the ends that tell how.
  void AddEnds(const KeptChange& change, std::vector<EndNow>& ends) const;
  void AddMissing(const KeptChanges& changes, std::vector<EndNow>& ends) const;
  bool LeadsAstray(const KeptEnd& end) const;

  const IBFabric& fabric_;
  std::set<Key> planned_;
  std::set<const KeptChange*> overtaken_;  // a later change of their cable is done
  std::set<const KeptChange*> waiting_;    // the cable is still where an earlier change finds it
};

void Progress::FollowCables(const RepairDocument& plan) {
  // Of one cable, in the order of their steps.
  std::vector<std::pair<const KeptChange*, const KeptChange*>> successive;
  std::map<Key, const KeptChange*> maker;
  for (const KeptStep& step : plan.steps) {
    for (const KeptChange& change : step.cables) {
      if (!change.before) continue;
      const auto found = maker.find(KeyOf(*change.before));
      if (found != maker.end()) successive.emplace_back(found->second, &change);
    }
    for (const KeptChange& change : step.cables) {
      if (change.after) maker[KeyOf(*change.after)] = &change;
    }
  }
  for (const auto& [earlier, later] : successive) {
    if (IsAsBefore(*earlier)) waiting_.insert(later);
  }
  std::reverse(successive.begin(), successive.end());
  for (const auto& [earlier, later] : successive) {
    if (IsAsPlanned(*later)) overtaken_.insert(earlier);
  }
}

EndNow Progress::Find(const KeptEnd& end) const {
  const IBNode* node = fabric_.getNodeByGuid(end.guid);
  const bool exists =
      node != nullptr && node->nodeType == NodeTypeSwitch && end.port <= node->numPorts;
  if (!exists) return {&end, nullptr, nullptr};
  const IBPort* port = node->getPort(end.port);
  return {&end, node, port != nullptr ? port->remotePort : nullptr};
}

bool Progress::IsThere(const KeptCable& cable) const {
  const IBPort* far = Find(cable[0]).far;
  return far != nullptr && far->node->guid == cable[1].guid && far->num == cable[1].port;
}

// Whether it leads to a switch where no step sends it.
bool Progress::LeadsAstray(const KeptEnd& end) const {
  const IBPort* far = Find(end).far;
  return far != nullptr && far->node->nodeType == NodeTypeSwitch && !planned_.contains(KeyOf(*far));
}

StepState Progress::StateOf(const KeptChange& change) const {
  if (IsAsPlanned(change)) return StepState::Done;
  if (IsAsBefore(change)) return StepState::NotDone;
  if (!change.before) {
    const KeptCable& wanted = *change.after;
    const bool isEmpty = Find(wanted[0]).far == nullptr && Find(wanted[1]).far == nullptr;
    return isEmpty ? StepState::NotDone : StepState::DoneOtherwise;
  }
  if (change.after) return StepState::DoneOtherwise;
  const bool isMoved = LeadsAstray((*change.before)[0]) || LeadsAstray((*change.before)[1]);
  return isMoved ? StepState::DoneOtherwise : StepState::Done;
}

StepState Progress::StateOf(const KeptChanges& changes) const {
  const StepState first = StateOf(changes.front());
  const bool areAlike = std::all_of(changes.begin(), changes.end(), [&](const KeptChange& change) {
    return StateOf(change) == first;
  });
  return areAlike ? first : StepState::DoneOtherwise;
}

void Progress::AddEnds(const KeptChange& change, std::vector<EndNow>& ends) const {
  if (change.before && change.after) {
    const KeptCable& before = *change.before;
    const bool isFirstKept = IsEndOf(before[0], change.after) && !IsEndOf(before[1], change.after);
    ends.push_back(Find(before[isFirstKept ? 0 : 1]));
    return;
  }
  const KeptCable& cable = change.before ? *change.before : *change.after;
  for (const KeptEnd& end : cable) {
    const EndNow now = Find(end);
    const bool tells = change.before ? LeadsAstray(end) : now.far != nullptr;
    if (tells) ends.push_back(now);
  }
}

void Progress::AddMissing(const KeptChanges& changes, std::vector<EndNow>& ends) const {
  for (const KeptChange& change : changes) {
    for (const MaybeCable* cable : {&change.before, &change.after}) {
      if (!*cable) continue;
      for (const KeptEnd& end : **cable) {
        const auto isSame = [&](const EndNow& told) { return told.end->guid == end.guid; };
        const EndNow now = Find(end);
        if (now.node == nullptr && std::none_of(ends.begin(), ends.end(), isSame)) {
          ends.push_back(now);
        }
      }
    }
  }
}

StepProgress Progress::Of(const KeptStep& step) const {
  StepProgress progress{&step, StateOf(step.cables), std::nullopt, {}};
  if (progress.state == StepState::Done) return progress;
  for (std::size_t i = 0; i < step.alternatives.size(); ++i) {
    if (StateOf(step.alternatives[i]) != StepState::Done) continue;
    return {&step, StepState::Done, i, {}};
  }
  AddMissing(step.cables, progress.ends);
  if (!progress.ends.empty()) {
    progress.state = StepState::NotDone;
    return progress;
  }
  if (progress.state == StepState::NotDone) return progress;
  for (const KeptChange& change : step.cables) {
    if (StateOf(change) != StepState::Done) AddEnds(change, progress.ends);
  }
  return progress;
}

using Ends = std::set<std::pair<std::uint64_t, std::uint8_t>>;
// What is the same in two plans however their cables and ends are ordered.
using ChangeKey = std::multiset<std::pair<Ends, Ends>>;

Ends EndsOf(const MaybeCable& cable) {
  if (!cable) return {};
  return {{(*cable)[0].guid, (*cable)[0].port}, {(*cable)[1].guid, (*cable)[1].port}};
}

Ends EndsOf(const std::optional<RepairCable>& cable, const IBFabric& fabric) {
  if (!cable) return {};
  const std::vector<IBNode>& nodes = fabric.GetNodes();
  return {{nodes[cable->upper.node].guid, cable->upper.port},
          {nodes[cable->lower.node].guid, cable->lower.port}};
}

ChangeKey KeyOf(const KeptChanges& changes) {
  ChangeKey key;
  for (const KeptChange& change : changes) {
    key.insert({EndsOf(change.before), EndsOf(change.after)});
  }
  return key;
}

ChangeKey KeyOf(const CableChanges& changes, const IBFabric& fabric) {
  ChangeKey key;
  for (const CableChange& change : changes) {
    key.insert({EndsOf(change.before, fabric), EndsOf(change.after, fabric)});
  }
  return key;
}

}  // namespace

std::string WhyForeign(const RepairDocument& plan, const IBFabric& fabric) {
  std::set<std::uint64_t> switches(plan.switches.begin(), plan.switches.end());
  for (const KeptStep& step : plan.steps) {
    for (const KeptChange& change : step.cables) {
      for (const MaybeCable* cable : {&change.before, &change.after}) {
        for (const auto& [guid, port] : EndsOf(*cable)) switches.insert(guid);
      }
    }
  }
  const auto known = static_cast<std::size_t>(
      std::count_if(switches.begin(), switches.end(), [&](std::uint64_t guid) {
        const IBNode* node = fabric.getNodeByGuid(guid);
        return node != nullptr && node->nodeType == NodeTypeSwitch;
      }));
  if (known * 2 >= switches.size()) return {};
  return "the plan is for another fabric: of the " + std::to_string(switches.size()) +
         " switches that it names " + std::to_string(known) + " are there";
}

std::vector<StepProgress> FollowPlan(const RepairDocument& plan, const IBFabric& fabric) {
  std::vector<StepProgress> steps;
  steps.reserve(plan.steps.size());
  const bool isUnchanged = plan.fabric == FabricHash(fabric);
  const Progress progress(plan, fabric);
  for (const KeptStep& step : plan.steps) {
    steps.push_back(isUnchanged ? StepProgress{&step, StepState::NotDone, std::nullopt, {}}
                                : progress.Of(step));
  }
  return steps;
}

std::vector<const RepairStep*> StepsNotIn(const RepairDocument& plan,
                                          const std::vector<RepairStep>& steps,
                                          const IBFabric& fabric) {
  std::set<ChangeKey> planned;
  for (const KeptStep& step : plan.steps) {
    planned.insert(KeyOf(step.cables));
    for (const KeptChanges& changes : step.alternatives) planned.insert(KeyOf(changes));
  }
  std::vector<const RepairStep*> others;
  for (const RepairStep& step : steps) {
    if (!planned.contains(KeyOf(step.cables, fabric))) others.push_back(&step);
  }
  return others;
}

}  // namespace fabscope::internal
