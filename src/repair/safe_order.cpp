#include "repair/safe_order.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <set>
#include <utility>

namespace fabscope::internal {
namespace {

// The cables as they are after the steps that were done.
class Cabling {
 public:
  explicit Cabling(const SwitchGraph& graph)
      : graph_(graph),
        isGone_(graph.Cables().size()),
        more_(graph.Count()),
        sideOf_(graph.Count()),
        workLeft_(10'000'000 + 100 * graph.Cables().size()) {}

  void Unplug(const RepairCable& cable) {
    const auto [a, b] = EndsOf(cable);
    if (added_.erase(KeyOf(cable)) != 0) {
      Forget(a, b);
      return;
    }
    if (const auto i = FindCable(cable, false); i != SwitchGraph::none) isGone_[i] = true;
  }
  void Plug(const RepairCable& cable) {
    // One that was there from the start, perhaps.
    if (const auto i = FindCable(cable, true); i != SwitchGraph::none) {
      isGone_[i] = false;
      return;
    }
    const auto [a, b] = EndsOf(cable);
    added_.insert(KeyOf(cable));
    more_[a].push_back(b);
    more_[b].push_back(a);
  }
  void Do(const RepairStep& step) {
    for (const CableChange& change : step.cables) {
      if (change.before) Unplug(*change.before);
    }
    for (const CableChange& change : step.cables) {
      if (change.after) Plug(*change.after);
    }
  }
  void Undo(const RepairStep& step) {
    for (const CableChange& change : step.cables) {
      if (change.after) Unplug(*change.after);
    }
    for (const CableChange& change : step.cables) {
      if (change.before) Plug(*change.before);
    }
  }
  // Whether somebody with hosts at one end would no more reach somebody with hosts at the other.
  bool IsCut(const RepairCable& cable) {
    const auto [a, b] = EndsOf(cable);
    return !AreJoined(a, b) && ReachesHosts(0) && ReachesHosts(1);
  }
  // The only switch with hosts that those at this place can reach; none if there are more, or none.
  std::uint32_t OnlyHostsAround(std::uint32_t start) {
    ForgetSides();
    reached_[0] = {start};
    sideOf_[start] = 1;
    std::uint32_t only = SwitchGraph::none;
    std::size_t next = 0;
    while (next < reached_[0].size()) {
      const std::uint32_t number = reached_[0][next++];
      if (graph_.Hosts(number) != 0) {
        if (only != SwitchGraph::none) return SwitchGraph::none;
        only = number;
      }
      ForEachNeighbor(number, [&](std::uint32_t other) { Reach(0, other); });
    }
    return only;
  }
  std::array<std::uint32_t, 2> SwitchesOf(const RepairCable& cable) const {
    const auto [a, b] = EndsOf(cable);
    return {a, b};
  }
  // In a tree two ends meet after a few hops, in what is hardly more than a ring after thousands.
  // Who looks so far too often must stop.
  bool IsTired() const { return workLeft_ == 0; }

 private:
  using Key = std::array<std::uint32_t, 4>;

  static Key KeyOf(const RepairCable& cable) {
    return {cable.upper.node, cable.upper.port, cable.lower.node, cable.lower.port};
  }
  std::pair<std::uint32_t, std::uint32_t> EndsOf(const RepairCable& cable) const {
    return {graph_.NumberOf(cable.upper.node), graph_.NumberOf(cable.lower.node)};
  }
  std::uint32_t FindCable(const RepairCable& cable, bool isGone) const {
    const auto [a, b] = EndsOf(cable);
    for (const std::uint32_t i : graph_.CablesOf(a)) {
      const SwitchGraph::Cable& it = graph_.Cables()[i];
      if (isGone_[i] != isGone || it.Other(a) != b) continue;
      if (it.PortAt(a) == cable.upper.port && it.PortAt(b) == cable.lower.port) return i;
    }
    return SwitchGraph::none;
  }
  void Forget(std::uint32_t a, std::uint32_t b) {
    for (const auto& [from, to] : {std::pair(a, b), std::pair(b, a)}) {
      std::vector<std::uint32_t>& far = more_[from];
      far.erase(std::find(far.begin(), far.end(), to));
    }
  }
  template <typename Visit>
  void ForEachNeighbor(std::uint32_t i, Visit visit) {
    const auto cables = graph_.CablesOf(i);
    workLeft_ -= std::min<std::uint64_t>(workLeft_, 1 + cables.size() + more_[i].size());
    for (const std::uint32_t cable : cables) {
      if (!isGone_[cable]) visit(graph_.Cables()[cable].Other(i));
    }
    for (const std::uint32_t other : more_[i]) visit(other);
  }
  void ForgetSides() {
    for (auto& reached : reached_) {
      for (const std::uint32_t i : reached) sideOf_[i] = 0;
      reached.clear();
    }
  }
  // Looks from both sides in turn, the smaller one first: in a tree the two meet after a few hops.
  // Leaves the switches that were reached in reached_; where the two are not joined, those of one
  // side are all there.
  bool AreJoined(std::uint32_t a, std::uint32_t b) {
    ForgetSides();
    reached_ = {std::vector{a}, std::vector{b}};
    next_ = {0, 0};
    if (a == b) return true;
    sideOf_[a] = 1;
    sideOf_[b] = 2;
    while (next_[0] < reached_[0].size() && next_[1] < reached_[1].size()) {
      if (MeetsOther(reached_[0].size() <= reached_[1].size() ? 0 : 1)) return true;
    }
    return false;
  }
  // Goes on from the next switch of a side.
  bool MeetsOther(std::size_t side) {
    bool hasMet = false;
    ForEachNeighbor(reached_[side][next_[side]++],
                    [&](std::uint32_t other) { hasMet |= Reach(side, other); });
    return hasMet;
  }
  bool Reach(std::size_t side, std::uint32_t i) {
    const auto mark = static_cast<std::uint8_t>(side + 1);
    if (sideOf_[i] == mark) return false;
    if (sideOf_[i] != 0) return true;
    sideOf_[i] = mark;
    reached_[side].push_back(i);
    return false;
  }
  bool ReachesHosts(std::size_t side) {
    for (std::size_t i = 0; i < reached_[side].size(); ++i) {
      if (graph_.Hosts(reached_[side][i]) != 0) return true;
      while (i + 1 == reached_[side].size() && next_[side] < reached_[side].size()) {
        MeetsOther(side);
      }
    }
    return false;
  }

  const SwitchGraph& graph_;
  std::vector<bool> isGone_;
  std::set<Key> added_;
  std::vector<std::vector<std::uint32_t>> more_;  // by switch: where added cables lead
  std::vector<std::uint8_t> sideOf_;              // 0, or the side that reached it
  std::array<std::vector<std::uint32_t>, 2> reached_;
  std::array<std::size_t, 2> next_{};  // by side: how many of reached_ were gone on from
  std::uint64_t workLeft_;
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

// Takes of the steps that may come next one that cuts nobody off while its cables are unplugged,
// and never goes back on one.
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
      wasForced_ |= isForced;
      if (!isForced && !cabling_.IsTired() && !IsSafe(cabling_, *steps_[i])) {
        unsafe_.insert(Entry(i));
        continue;
      }
      Do(i);
      // What was unsafe may be safe by now.
      if (!isForced && steps_[i]->action == RepairAction::Disconnect) continue;
      if (cabling_.IsTired()) continue;
      ready_.insert(unsafe_.begin(), unsafe_.end());
      unsafe_.clear();
    }
    return std::move(order_);
  }
  bool WasForced() const { return wasForced_; }

 private:
  // What adds a cable cuts nobody off and may be what another step needs.
  std::pair<int, std::size_t> Entry(std::size_t i) const {
    const RepairAction action = steps_[i]->action;
    const bool isLast = action == RepairAction::Disconnect;
    return {action == RepairAction::Connect ? 0 : (isLast ? 2 : 1), i};
  }
  void Do(std::size_t i) {
    order_.push_back(i);
    cabling_.Do(*steps_[i]);
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
  bool wasForced_ = false;  // to take a step that cuts somebody off
};

// Looks through all orders for one in which, after each step, every switch with hosts reaches
// another one, unless it is alone before the first step or after the last.
class OrderSearch {
 public:
  static constexpr std::size_t mostSteps = 16;

  // `known`: an order that can be done.
  OrderSearch(const SwitchGraph& graph, const std::vector<const RepairStep*>& steps,
              const std::vector<std::vector<std::size_t>>& waitsFor,
              const std::vector<std::size_t>& known)
      : graph_(graph),
        steps_(steps),
        known_(known),
        cabling_(graph),
        needs_(steps.size()),
        mayBeAlone_(graph.Count()),
        isTried_(std::size_t{1} << steps.size()) {
    for (std::size_t i = 0; i < steps.size(); ++i) {
      for (const std::size_t other : waitsFor[i]) needs_[i] |= 1U << other;
    }
    NoteWhoIsAlone();
    for (const std::size_t i : known) cabling_.Do(*steps[i]);
    NoteWhoIsAlone();
    std::for_each(known.rbegin(), known.rend(), [&](std::size_t i) { cabling_.Undo(*steps_[i]); });
  }

  // Among several, the first one by the steps' places in the known order. That order itself if
  // there is none, or if it takes too long to find.
  std::vector<std::size_t> Run() {
    Continue(0);
    return order_.size() == known_.size() ? order_ : known_;
  }

 private:
  bool Continue(std::uint32_t done) {
    if (order_.size() == known_.size()) return true;
    if (isTried_[done] || cabling_.IsTired()) return false;
    isTried_[done] = true;
    return std::any_of(known_.begin(), known_.end(),
                       [&](std::size_t i) { return ContinueWith(i, done); });
  }
  bool ContinueWith(std::size_t i, std::uint32_t done) {
    const std::uint32_t bit = 1U << i;
    if ((done & bit) != 0 || (done & needs_[i]) != needs_[i]) return false;
    cabling_.Do(*steps_[i]);
    order_.push_back(i);
    if (!CutsOff(*steps_[i]) && Continue(done | bit)) return true;
    order_.pop_back();
    cabling_.Undo(*steps_[i]);
    return false;
  }
  // Only where a cable went can somebody be alone who was not.
  bool CutsOff(const RepairStep& step) {
    for (const CableChange& change : step.cables) {
      if (!change.before) continue;
      for (const std::uint32_t end : cabling_.SwitchesOf(*change.before)) {
        const std::uint32_t only = cabling_.OnlyHostsAround(end);
        if (only != SwitchGraph::none && !mayBeAlone_[only]) return true;
      }
    }
    return false;
  }
  void NoteWhoIsAlone() {
    for (std::uint32_t i = 0; i < graph_.Count() && !cabling_.IsTired(); ++i) {
      if (graph_.Hosts(i) != 0 && cabling_.OnlyHostsAround(i) == i) mayBeAlone_[i] = true;
    }
  }

  const SwitchGraph& graph_;
  const std::vector<const RepairStep*>& steps_;
  const std::vector<std::size_t>& known_;
  Cabling cabling_;
  std::vector<std::uint32_t> needs_;  // by step: those that it waits for, a bit for each
  std::vector<bool> mayBeAlone_;      // by switch
  std::vector<bool> isTried_;         // by the steps that are done
  std::vector<std::size_t> order_;
};

}  // namespace

std::vector<std::size_t> FindSafeOrder(const SwitchGraph& graph,
                                       const std::vector<const RepairStep*>& steps,
                                       const std::vector<std::vector<std::size_t>>& waitsFor) {
  Scheduler scheduler(graph, steps, waitsFor);
  std::vector<std::size_t> order = scheduler.Run();
  if (!scheduler.WasForced() || steps.size() > OrderSearch::mostSteps) return order;
  return OrderSearch(graph, steps, waitsFor, order).Run();
}

}  // namespace fabscope::internal
