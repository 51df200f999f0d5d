// In which order hands can do it.
//
// A cable can be plugged only where nothing is plugged. A move whose new port is still taken by a
// cable that itself moves must wait for it. Moves that wait for each other in a circle are swaps:
// two cables exchange their ends. A longer circle is told as several swaps, the first cable going
// round until all are in place.
//
// Among steps that can be done, one that cuts no host off goes first.

#include "repair/steps.h"

#include <algorithm>
#include <array>
#include <map>
#include <optional>
#include <utility>

#include "repair/safe_order.h"

namespace fabscope::internal {
namespace {

using End = CableTarget::End;
using Position = std::uint32_t;

Position PositionOf(const End& end) { return end.number << 8U | end.port; }

struct Ends {
  End upper;
  End lower;
};

class StepMaker {
 public:
  StepMaker(const TreeGroups& groups, const Changes& changes)
      : groups_(groups), targets_(changes.targets) {}

  std::vector<PlannedStep> Make() {
    FindPositions();
    FindCircles();
    for (std::size_t i = 0; i < targets_.size(); ++i) {
      if (!isDone_[i]) AddSingle(i);
    }
    FindDependencies();
    return InOrder();
  }

 private:
  static constexpr std::size_t nobody = ~std::size_t{0};

  std::optional<Ends> Before(std::size_t i) const {
    if (targets_[i].cable == SwitchGraph::none) return std::nullopt;
    const SwitchGraph::Cable& cable = groups_.graph.Cables()[targets_[i].cable];
    return Ends{{cable.a, cable.portA}, {cable.b, cable.portB}};
  }
  std::optional<Ends> After(std::size_t i) const {
    if (!targets_[i].upper) return std::nullopt;
    return Ends{*targets_[i].upper, *targets_[i].lower};
  }
  static bool Has(const std::optional<Ends>& ends, Position position) {
    return ends && (PositionOf(ends->upper) == position || PositionOf(ends->lower) == position);
  }
  RepairCable CableOf(const Ends& ends) const;
  void FindPositions();
  void FindCircles();
  RepairReason ReasonOf(const std::vector<std::size_t>& circle) const;
  std::vector<PlannedStep> SwapsOf(const std::vector<std::size_t>& circle) const;
  bool AreSensible(const std::vector<PlannedStep>& swaps) const;
  void AddCircle(std::vector<std::size_t> circle);
  void AddSingle(std::size_t i);
  void AddStep(std::size_t i, const std::optional<Ends>& before, const std::optional<Ends>& after);
  void FindDependencies();
  std::vector<PlannedStep> InOrder();

  const TreeGroups& groups_;
  const std::vector<CableTarget>& targets_;
  // By target: ports that its cable leaves, and those that it takes.
  std::vector<std::vector<End>> leaves_;
  std::vector<std::vector<End>> takes_;
  std::map<Position, std::size_t> whoLeaves_;
  std::vector<bool> isDone_;
  std::vector<PlannedStep> steps_;
  std::vector<std::vector<std::size_t>> waitsFor_;  // by step
  std::vector<std::size_t> previousInCircle_;       // by step, or nobody
};

RepairCable StepMaker::CableOf(const Ends& ends) const {
  const auto indexOf = [&](const End& end) { return groups_.graph.NodeOf(end.number).index; };
  const CableEnd a{indexOf(ends.upper), ends.upper.port};
  const CableEnd b{indexOf(ends.lower), ends.lower.port};
  const int rankA = groups_.ranks[ends.upper.number];
  const int rankB = groups_.ranks[ends.lower.number];
  const bool isInOrder = rankA != rankB ? rankA < rankB : a.node <= b.node;
  return isInOrder ? RepairCable{a, b} : RepairCable{b, a};
}

void StepMaker::FindPositions() {
  leaves_.resize(targets_.size());
  takes_.resize(targets_.size());
  isDone_.resize(targets_.size());
  for (std::size_t i = 0; i < targets_.size(); ++i) {
    const auto before = Before(i);
    const auto after = After(i);
    if (before) {
      for (const End& end : {before->upper, before->lower}) {
        if (Has(after, PositionOf(end))) continue;
        leaves_[i].push_back(end);
        whoLeaves_[PositionOf(end)] = i;
      }
    }
    if (after) {
      for (const End& end : {after->upper, after->lower}) {
        if (!Has(before, PositionOf(end))) takes_[i].push_back(end);
      }
    }
  }
}

void StepMaker::FindCircles() {
  std::vector<std::size_t> seenIn(targets_.size(), nobody);
  const auto next = [&](std::size_t i) {
    if (takes_[i].size() != 1 || leaves_[i].size() != 1) return nobody;
    const auto found = whoLeaves_.find(PositionOf(takes_[i].front()));
    return found == whoLeaves_.end() ? nobody : found->second;
  };
  for (std::size_t start = 0; start < targets_.size(); ++start) {
    std::size_t i = start;
    while (i != nobody && seenIn[i] == nobody) {
      seenIn[i] = start;
      i = next(i);
    }
    if (i == nobody || seenIn[i] != start || isDone_[i]) continue;
    std::vector<std::size_t> circle{i};
    for (std::size_t other = next(i); other != i && other != nobody; other = next(other)) {
      circle.push_back(other);
    }
    if (circle.size() > 1) AddCircle(std::move(circle));
  }
}

// What is true of each of the swaps.
RepairReason StepMaker::ReasonOf(const std::vector<std::size_t>& circle) const {
  const RepairReason first = targets_[circle.front()].reason;
  const bool areAlike = std::all_of(circle.begin(), circle.end(),
                                    [&](std::size_t i) { return targets_[i].reason == first; });
  if (circle.size() > 2) {
    return areAlike && first == RepairReason::WrongSpine ? first : RepairReason::Rotated;
  }
  return areAlike ? first : RepairReason::Exchanged;
}

// The cable of circle[0] goes to where that of circle[1] leaves, and so on; the last to where the
// first leaves.
std::vector<PlannedStep> StepMaker::SwapsOf(const std::vector<std::size_t>& circle) const {
  std::vector<PlannedStep> swaps;
  const RepairReason reason = ReasonOf(circle);
  const End firstLeft = leaves_[circle.front()].front();
  Ends moving = *Before(circle.front());
  for (std::size_t i = 0; i + 1 < circle.size(); ++i) {
    const std::size_t one = circle[i];
    const std::size_t other = circle[i + 1];
    const Ends otherBefore = *Before(other);
    Ends otherAfter = otherBefore;
    const bool isUpper = PositionOf(otherBefore.upper) == PositionOf(leaves_[other].front());
    (isUpper ? otherAfter.upper : otherAfter.lower) = firstLeft;
    PlannedStep step;
    step.step.action = RepairAction::Swap;
    step.step.reason = reason;
    step.step.cables.push_back({CableOf(moving), CableOf(*After(one))});
    step.step.cables.push_back({CableOf(otherBefore), CableOf(otherAfter)});
    step.targets = {one, other};
    swaps.push_back(std::move(step));
    moving = otherAfter;
  }
  return swaps;
}

// Whether every cable that a swap makes joins other switches than before, on neighboring ranks.
bool StepMaker::AreSensible(const std::vector<PlannedStep>& swaps) const {
  const auto rankOf = [&](const CableEnd& end) {
    return groups_.ranks[groups_.graph.NumberOf(end.node)];
  };
  return std::all_of(swaps.begin(), swaps.end(), [&](const PlannedStep& swap) {
    return std::all_of(
        swap.step.cables.begin(), swap.step.cables.end(), [&](const CableChange& change) {
          const bool isSame = change.before->upper.node == change.after->upper.node &&
                              change.before->lower.node == change.after->lower.node;
          return !isSame && rankOf(change.after->lower) - rankOf(change.after->upper) == 1;
        });
  });
}

// The cable that goes round may be any of the circle. Where none may, one is unplugged while the
// others move.
void StepMaker::AddCircle(std::vector<std::size_t> circle) {
  for (const std::size_t i : circle) isDone_[i] = true;
  // Of very long circles only some are tried.
  constexpr std::size_t mostSwaps = 1'000'000;
  const std::size_t turns = std::min(circle.size(), 1 + mostSwaps / circle.size());
  for (std::size_t turn = 0; turn < turns; ++turn) {
    std::vector<PlannedStep> swaps = SwapsOf(circle);
    if (AreSensible(swaps)) {
      for (std::size_t i = 0; i < swaps.size(); ++i) {
        previousInCircle_.push_back(i == 0 ? nobody : steps_.size() - 1);
        steps_.push_back(std::move(swaps[i]));
      }
      return;
    }
    std::rotate(circle.begin(), circle.begin() + 1, circle.end());
  }
  AddStep(circle.front(), Before(circle.front()), std::nullopt);
  for (std::size_t i = 1; i < circle.size(); ++i) AddSingle(circle[i]);
  AddStep(circle.front(), std::nullopt, After(circle.front()));
}

void StepMaker::AddSingle(std::size_t i) { AddStep(i, Before(i), After(i)); }

void StepMaker::AddStep(std::size_t i, const std::optional<Ends>& before,
                        const std::optional<Ends>& after) {
  PlannedStep step;
  step.step.action = !before  ? RepairAction::Connect
                     : !after ? RepairAction::Disconnect
                              : RepairAction::Move;
  step.step.reason = before ? targets_[i].reason : RepairReason::LinkLacking;
  CableChange change;
  if (before) change.before = CableOf(*before);
  if (after) change.after = CableOf(*after);
  step.step.cables.push_back(change);
  step.targets = {i};
  previousInCircle_.push_back(nobody);
  steps_.push_back(std::move(step));
}

void StepMaker::FindDependencies() {
  std::vector<std::size_t> stepOf(targets_.size(), nobody);
  for (std::size_t i = 0; i < steps_.size(); ++i) {
    // Of a cable that is unplugged for a while its first step makes room.
    for (const std::size_t target : steps_[i].targets) {
      if (stepOf[target] == nobody || steps_[i].step.action == RepairAction::Swap)
        stepOf[target] = i;
    }
  }
  waitsFor_.resize(steps_.size());
  for (std::size_t i = 0; i < steps_.size(); ++i) {
    if (previousInCircle_[i] != nobody) waitsFor_[i].push_back(previousInCircle_[i]);
    if (steps_[i].step.action == RepairAction::Swap) continue;
    const std::size_t first = stepOf[steps_[i].targets.front()];
    if (first != i) waitsFor_[i].push_back(first);
    if (!steps_[i].step.cables.front().after) continue;
    for (const End& end : takes_[steps_[i].targets.front()]) {
      const auto found = whoLeaves_.find(PositionOf(end));
      if (found != whoLeaves_.end() && stepOf[found->second] != i) {
        waitsFor_[i].push_back(stepOf[found->second]);
      }
    }
  }
}

std::vector<PlannedStep> StepMaker::InOrder() {
  std::vector<const RepairStep*> steps;
  steps.reserve(steps_.size());
  for (const PlannedStep& step : steps_) steps.push_back(&step.step);
  std::vector<PlannedStep> ordered;
  for (const std::size_t i : FindSafeOrder(groups_.graph, steps, waitsFor_)) {
    ordered.push_back(std::move(steps_[i]));
  }
  return ordered;
}

}  // namespace

std::vector<PlannedStep> OrderSteps(const TreeGroups& groups, const Changes& changes) {
  return StepMaker(groups, changes).Make();
}

}  // namespace fabscope::internal
