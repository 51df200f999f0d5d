#include "repairs/plain_steps.h"

#include <algorithm>
#include <set>

#include "repairs/plain_groups.h"

namespace fabscope::internal::plain {
namespace {

constexpr std::size_t mostStates = 1'000'000;

using Cables = std::map<Pair, int>;
using States = std::map<Cables, StepState>;

class Steps {
 public:
  explicit Steps(const StepState& from) : from_(from) {
    for (const auto& [pair, count] : from.cables) pairs_.push_back(pair);
    for (const auto& [guid, free] : from.freePorts) {
      if (free > 0) withFree_.push_back(guid);
    }
  }

  // Calls `use` with what every single step makes.
  template <typename Use>
  void ForEach(Use use) const {
    const auto tell = [&](const std::vector<Pair>& gone, const std::vector<Pair>& come) {
      const bool isLoop = std::any_of(come.begin(), come.end(),
                                      [](const Pair& pair) { return pair.first == pair.second; });
      if (!isLoop) use(Changed(gone, come));
    };
    for (std::size_t i = 0; i < withFree_.size(); ++i) {
      for (std::size_t k = i + 1; k < withFree_.size(); ++k) {
        tell({}, {{withFree_[i], withFree_[k]}});
      }
    }
    for (std::size_t i = 0; i < pairs_.size(); ++i) {
      const auto& [a, b] = pairs_[i];
      tell({pairs_[i]}, {});
      for (const std::uint64_t end : withFree_) {
        tell({pairs_[i]}, {std::minmax(a, end)});
        tell({pairs_[i]}, {std::minmax(b, end)});
      }
      for (std::size_t k = i + 1; k < pairs_.size(); ++k) {
        const auto& [c, d] = pairs_[k];
        tell({pairs_[i], pairs_[k]}, {std::minmax(a, d), std::minmax(c, b)});
        tell({pairs_[i], pairs_[k]}, {std::minmax(a, c), std::minmax(b, d)});
      }
    }
  }

 private:
  StepState Changed(const std::vector<Pair>& gone, const std::vector<Pair>& come) const {
    StepState state = from_;
    for (const Pair& pair : gone) {
      if (--state.cables.at(pair) == 0) state.cables.erase(pair);
      ++state.freePorts[pair.first];
      ++state.freePorts[pair.second];
    }
    for (const Pair& pair : come) {
      ++state.cables[pair];
      --state.freePorts[pair.first];
      --state.freePorts[pair.second];
    }
    return state;
  }

  const StepState& from_;
  std::vector<Pair> pairs_;
  std::vector<std::uint64_t> withFree_;
};

// By line: its cables to the rank above, by spine.
using UpLinks = std::map<std::uint64_t, std::map<std::uint64_t, int>>;

// Two lines have the same spines, with the same number of cables to each, or none in common.
bool AreProperGroups(const UpLinks& upLinks) {
  for (const auto& [line, up] : upLinks) {
    const int count = up.begin()->second;
    const auto isEven = [&](const auto& link) { return link.second == count; };
    if (!std::all_of(up.begin(), up.end(), isEven)) return false;
    for (const auto& other : upLinks) {
      const auto isShared = [&](const auto& link) { return other.second.contains(link.first); };
      if (up != other.second && std::any_of(up.begin(), up.end(), isShared)) return false;
    }
  }
  return true;
}

bool IsProper(const StepState& state, const std::map<std::uint64_t, int>& ranks) {
  std::map<int, UpLinks> byRank;
  for (const auto& [pair, count] : state.cables) {
    const int first = ranks.at(pair.first);
    const int second = ranks.at(pair.second);
    if (first < 0 || second < 0) continue;
    if (second == first + 1) {
      byRank[second][pair.second][pair.first] = count;
    } else if (first == second + 1) {
      byRank[first][pair.first][pair.second] = count;
    } else {
      return false;
    }
  }
  return std::all_of(byRank.begin(), byRank.end(),
                     [](const auto& rank) { return AreProperGroups(rank.second); });
}

}  // namespace

StepState StateOf(const Fabric& fabric) {
  StepState state;
  for (const Pair& pair : Cabling(fabric).PairsJoined()) ++state.cables[pair];
  for (const Switch& node : fabric.switches) state.freePorts[node.guid] = node.ports;
  for (const auto& [end, far] : fabric.cables) --state.freePorts[end.guid];
  for (const Socket& end : fabric.taken) --state.freePorts[end.guid];
  return state;
}

std::optional<bool> LeadsInFewer(const Fabric& fabric, std::size_t steps,
                                 const std::function<bool(const StepState&)>& isGoal) {
  if (steps == 0) return false;
  StepState start = StateOf(fabric);
  if (isGoal(start)) return true;
  std::set<Cables> known{start.cables};
  std::vector<StepState> last{std::move(start)};
  for (std::size_t done = 1; done < steps; ++done) {
    std::vector<StepState> next;
    bool isReached = false;
    for (const StepState& state : last) {
      Steps(state).ForEach([&](StepState made) {
        if (isReached || known.size() > mostStates || !known.insert(made.cables).second) return;
        isReached = isGoal(made);
        if (done + 1 < steps) next.push_back(std::move(made));
      });
      if (isReached) return true;
      if (known.size() > mostStates) return std::nullopt;
    }
    last = std::move(next);
  }
  return false;
}

std::optional<bool> HasCureInFewer(const Fabric& fabric, std::size_t steps) {
  const auto ranks = RanksOf(fabric);
  return LeadsInFewer(fabric, steps,
                      [&](const StepState& state) { return IsProper(state, ranks); });
}

}  // namespace fabscope::internal::plain
