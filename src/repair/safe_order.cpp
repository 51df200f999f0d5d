#include "repair/safe_order.h"

#include <algorithm>
#include <array>
#include <map>
#include <set>
#include <unordered_map>
#include <utility>

namespace fabscope {
namespace {

// The cables as they are after the steps that were done.
class Cabling {
 public:
  explicit Cabling(const SwitchGraph& graph)
      : graph_(graph), isGone_(graph.Cables().size()), sideOf_(graph.Count()) {
    // Cables of the graph are found by their first end.
  }

  void Unplug(const RepairCable& cable) {
    const auto [a, b] = EndsOf(cable);
    const auto added = std::find(added_.begin(), added_.end(), std::pair(cable.upper, cable.lower));
    if (added != added_.end()) {
      added_.erase(added);
      Forget(a, b);
      return;
    }
    for (const std::uint32_t i : graph_.CablesOf(a)) {
      const SwitchGraph::Cable& it = graph_.Cables()[i];
      if (isGone_[i] || it.Other(a) != b || it.PortAt(a) != cable.upper.port) continue;
      isGone_[i] = true;
      return;
    }
  }
  void Plug(const RepairCable& cable) {
    const auto [a, b] = EndsOf(cable);
    added_.emplace_back(cable.upper, cable.lower);
    more_[a].push_back(b);
    more_[b].push_back(a);
  }
  // Whether somebody with hosts at one end would no more reach somebody with hosts at the other.
  bool IsCut(const RepairCable& cable) {
    const auto [a, b] = EndsOf(cable);
    return !AreJoined(a, b) && HasHosts(1) && HasHosts(2);
  }

 private:
  std::pair<std::uint32_t, std::uint32_t> EndsOf(const RepairCable& cable) const {
    return {graph_.NumberOf(cable.upper.node), graph_.NumberOf(cable.lower.node)};
  }
  void Forget(std::uint32_t a, std::uint32_t b) {
    for (const auto& [from, to] : {std::pair(a, b), std::pair(b, a)}) {
      std::vector<std::uint32_t>& far = more_[from];
      far.erase(std::find(far.begin(), far.end(), to));
    }
  }
  template <typename Visit>
  void ForEachNeighbor(std::uint32_t i, Visit visit) const {
    for (const std::uint32_t cable : graph_.CablesOf(i)) {
      if (!isGone_[cable]) visit(graph_.Cables()[cable].Other(i));
    }
    if (const auto found = more_.find(i); found != more_.end()) {
      for (const std::uint32_t other : found->second) visit(other);
    }
  }
  // Looks from both sides in turn, the smaller one first: in a tree the two meet after a few hops.
  // Leaves the switches that were reached in reached_.
  bool AreJoined(std::uint32_t a, std::uint32_t b) {
    for (const auto& reached : reached_) {
      for (const std::uint32_t i : reached) sideOf_[i] = 0;
    }
    reached_ = {std::vector{a}, std::vector{b}};
    if (a == b) return true;
    sideOf_[a] = 1;
    sideOf_[b] = 2;
    std::array<std::size_t, 2> next{0, 0};
    while (true) {
      const bool isOpen0 = next[0] < reached_[0].size();
      const bool isOpen1 = next[1] < reached_[1].size();
      if (!isOpen0 || !isOpen1) return FinishSides(next);
      const std::size_t side = reached_[0].size() <= reached_[1].size() ? 0 : 1;
      const std::uint32_t i = reached_[side][next[side]++];
      bool hasMet = false;
      ForEachNeighbor(i, [&](std::uint32_t other) { hasMet |= Reach(side, other); });
      if (hasMet) return true;
    }
  }
  bool Reach(std::size_t side, std::uint32_t i) {
    const auto mark = static_cast<std::uint8_t>(side + 1);
    if (sideOf_[i] == mark) return false;
    if (sideOf_[i] != 0) return true;
    sideOf_[i] = mark;
    reached_[side].push_back(i);
    return false;
  }
  // One side is whole; the other is looked at to its end as well.
  bool FinishSides(std::array<std::size_t, 2> next) {
    for (std::size_t side = 0; side < 2; ++side) {
      while (next[side] < reached_[side].size()) {
        ForEachNeighbor(reached_[side][next[side]++],
                        [&](std::uint32_t other) { Reach(side, other); });
      }
    }
    return false;
  }
  bool HasHosts(std::uint8_t mark) const {
    const auto& reached = reached_[mark - 1];
    return std::any_of(reached.begin(), reached.end(),
                       [&](std::uint32_t i) { return graph_.Hosts(i) != 0; });
  }

  const SwitchGraph& graph_;
  std::vector<bool> isGone_;
  std::unordered_map<std::uint32_t, std::vector<std::uint32_t>> more_;
  std::vector<std::pair<CableEnd, CableEnd>> added_;
  std::vector<std::uint8_t> sideOf_;  // 0, or the side that reached it
  std::array<std::vector<std::uint32_t>, 2> reached_;
};

bool IsSafe(Cabling& cabling, const RepairStep& step) {
  for (const CableChange& change : step.cables) {
    if (change.before) cabling.Unplug(*change.before);
  }
  const bool isSafe = std::none_of(
      step.cables.begin(), step.cables.end(),
      [&](const CableChange& change) { return change.before && cabling.IsCut(*change.before); });
  for (const CableChange& change : step.cables) {
    if (change.before) cabling.Plug(*change.before);
  }
  return isSafe;
}

class Scheduler {
 public:
  Scheduler(const SwitchGraph& graph, const std::vector<const RepairStep*>& steps,
            const std::vector<std::vector<std::size_t>>& waitsFor)
      : steps_(steps), cabling_(graph), missing_(steps.size()), waiting_(steps.size()) {
    for (std::size_t i = 0; i < steps.size(); ++i) {
      missing_[i] = waitsFor[i].size();
      for (const std::size_t other : waitsFor[i]) waiting_[other].push_back(i);
      if (missing_[i] == 0) ready_.insert(Entry(i));
    }
  }

  std::vector<std::size_t> Run() {
    while (!ready_.empty() || !unsafe_.empty()) {
      const bool isForced = ready_.empty();
      auto& from = isForced ? unsafe_ : ready_;
      const std::size_t i = from.begin()->second;
      from.erase(from.begin());
      if (!isForced && !IsSafe(cabling_, *steps_[i])) {
        unsafe_.insert(Entry(i));
        continue;
      }
      Do(i);
      // What was unsafe may be safe by now.
      if (!isForced && steps_[i]->action == RepairAction::Disconnect) continue;
      ready_.insert(unsafe_.begin(), unsafe_.end());
      unsafe_.clear();
    }
    return std::move(order_);
  }

 private:
  // What adds a cable cuts nobody off and may be what another step needs.
  std::pair<int, std::size_t> Entry(std::size_t i) const {
    const RepairAction action = steps_[i]->action;
    const bool isLast = action == RepairAction::Disconnect;
    return {action == RepairAction::Connect ? 0 : (isLast ? 2 : 1), i};
  }
  void Do(std::size_t i) {
    order_.push_back(i);
    for (const CableChange& change : steps_[i]->cables) {
      if (change.before) cabling_.Unplug(*change.before);
    }
    for (const CableChange& change : steps_[i]->cables) {
      if (change.after) cabling_.Plug(*change.after);
    }
    for (const std::size_t other : waiting_[i]) {
      if (--missing_[other] == 0) ready_.insert(Entry(other));
    }
  }

  const std::vector<const RepairStep*>& steps_;
  Cabling cabling_;
  std::vector<std::size_t> missing_;               // by step: how many it still waits for
  std::vector<std::vector<std::size_t>> waiting_;  // by step: who waits for it
  std::set<std::pair<int, std::size_t>> ready_;
  std::set<std::pair<int, std::size_t>> unsafe_;
  std::vector<std::size_t> order_;
};

}  // namespace

std::vector<std::size_t> FindSafeOrder(const SwitchGraph& graph,
                                       const std::vector<const RepairStep*>& steps,
                                       const std::vector<std::vector<std::size_t>>& waitsFor) {
  return Scheduler(graph, steps, waitsFor).Run();
}

}  // namespace fabscope
