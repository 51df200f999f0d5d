// The fewest steps, by trial. Which port a cable is plugged into does not matter here, only that a
// switch has a free one.

#include "repairs/plain_bound.h"

#include <algorithm>
#include <map>
#include <vector>

namespace fabscope::internal::plain {
namespace {

constexpr std::size_t mostSwitches = 12;
constexpr std::size_t mostCables = 40;
constexpr std::size_t mostChangesOfTwoSteps = 8;  // two swaps

using FreePorts = std::map<std::uint64_t, int>;

struct State {
  Pairs pairs;
  FreePorts free;
};

State StateOf(const Fabric& fabric) {
  State state{Cabling(fabric).PairsJoined(), {}};
  for (const Switch& node : fabric.switches) state.free[node.guid] = node.ports;
  for (const auto& [end, far] : fabric.cables) --state.free[end.guid];
  for (const Socket& end : fabric.taken) --state.free[end.guid];
  return state;
}

std::vector<Pair> Minus(const Pairs& a, const Pairs& b) {
  std::vector<Pair> left;
  std::set_difference(a.begin(), a.end(), b.begin(), b.end(), std::back_inserter(left));
  return left;
}

Pair Ordered(std::uint64_t a, std::uint64_t b) { return std::minmax(a, b); }

bool IsSwap(const std::vector<Pair>& gone, std::vector<Pair> come) {
  std::sort(come.begin(), come.end());
  const auto& [a, b] = gone[0];
  const auto& [c, d] = gone[1];
  std::vector<Pair> one{Ordered(a, d), Ordered(c, b)};
  std::vector<Pair> other{Ordered(a, c), Ordered(b, d)};
  std::sort(one.begin(), one.end());
  std::sort(other.begin(), other.end());
  return come == one || come == other;
}

bool IsMove(const Pair& gone, const Pair& come, const FreePorts& free) {
  const auto canKeep = [&](std::uint64_t kept) {
    if (come.first != kept && come.second != kept) return false;
    return free.at(come.first == kept ? come.second : come.first) > 0;
  };
  return canKeep(gone.first) || canKeep(gone.second);
}

bool OneStepLeads(const State& from, const Pairs& target) {
  const std::vector<Pair> gone = Minus(from.pairs, target);
  const std::vector<Pair> come = Minus(target, from.pairs);
  if (gone.size() == 1 && come.empty()) return true;
  if (gone.empty() && come.size() == 1) {
    return from.free.at(come[0].first) > 0 && from.free.at(come[0].second) > 0;
  }
  if (gone.size() == 1 && come.size() == 1) return IsMove(gone[0], come[0], from.free);
  return gone.size() == 2 && come.size() == 2 && IsSwap(gone, come);
}

State Changed(State state, const std::vector<Pair>& gone, const std::vector<Pair>& come) {
  for (const Pair& pair : gone) {
    state.pairs.erase(state.pairs.find(pair));
    ++state.free[pair.first];
    ++state.free[pair.second];
  }
  for (const Pair& pair : come) {
    state.pairs.insert(pair);
    --state.free[pair.first];
    --state.free[pair.second];
  }
  return state;
}

// Whether any first step leaves one to be done.
bool TwoStepsLead(const State& from, const Pairs& target) {
  const std::vector<Pair> pairs(from.pairs.begin(), from.pairs.end());
  std::vector<std::uint64_t> withFree;
  for (const auto& [guid, free] : from.free) {
    if (free > 0) withFree.push_back(guid);
  }
  const auto leads = [&](const std::vector<Pair>& gone, const std::vector<Pair>& come) {
    const bool isLoop = std::any_of(come.begin(), come.end(),
                                    [](const Pair& pair) { return pair.first == pair.second; });
    return !isLoop && OneStepLeads(Changed(from, gone, come), target);
  };
  for (const std::uint64_t a : withFree) {
    for (const std::uint64_t b : withFree) {
      if (a < b && leads({}, {{a, b}})) return true;
    }
  }
  for (const Pair& pair : pairs) {
    if (leads({pair}, {})) return true;
    for (const std::uint64_t end : withFree) {
      if (leads({pair}, {Ordered(pair.first, end)})) return true;
      if (leads({pair}, {Ordered(pair.second, end)})) return true;
    }
  }
  for (std::size_t i = 0; i < pairs.size(); ++i) {
    for (std::size_t k = i + 1; k < pairs.size(); ++k) {
      const auto& [a, b] = pairs[i];
      const auto& [c, d] = pairs[k];
      if (leads({pairs[i], pairs[k]}, {Ordered(a, d), Ordered(c, b)})) return true;
      if (leads({pairs[i], pairs[k]}, {Ordered(a, c), Ordered(b, d)})) return true;
    }
  }
  return false;
}

}  // namespace

bool CanDoInFewer(const Fabric& fabric, const Pairs& target, std::size_t steps) {
  const State start = StateOf(fabric);
  if (steps > 0 && start.pairs == target) return true;
  if (steps > 1 && OneStepLeads(start, target)) return true;
  const bool isSmall = fabric.switches.size() <= mostSwitches && start.pairs.size() <= mostCables &&
                       Minus(start.pairs, target).size() + Minus(target, start.pairs).size() <=
                           mostChangesOfTwoSteps;
  return steps > 2 && isSmall && TwoStepsLead(start, target);
}

}  // namespace fabscope::internal::plain
