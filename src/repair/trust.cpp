// How far a step may be trusted.
//
// A proof is necessary, not sufficient: a repair can make a proper tree that nobody meant. What goes
// wrong is nearly always a switch in the wrong group. So each switch that a step touches is asked how
// much dearer its next best group would be, and how much more the ports say for its own.
//
//   sure    two changes dearer, or as dear and clearly worse by the ports
//   ask     as dear and as likely: the other repair is told as an alternative
//   likely  all between, and all that touches a part of the tree of which much is wrong

#include "repair/trust.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "repair/evidence.h"
#include "repair/find_repairs.h"

namespace fabscope {
namespace {

class Judge {
 public:
  Judge(const IBFabric& fabric, const TreeGroups& groups, const Changes& changes,
        std::vector<PlannedStep>& steps)
      : fabric_(fabric), groups_(groups), changes_(changes), steps_(steps), evidence_(groups) {}

  void Run() {
    FindDamage();
    std::vector<std::size_t> ambiguous;
    for (std::size_t i = 0; i < steps_.size(); ++i) {
      steps_[i].step.trust = ClassOf(i);
      if (steps_[i].step.trust == RepairClass::Ask) ambiguous.push_back(i);
    }
    for (std::size_t i = 0; i < ambiguous.size(); ++i) {
      RepairStep& step = steps_[ambiguous[i]].step;
      // Who has so much to decide looks at the fabric, not at alternatives.
      if (i < mostAlternatives) FindAlternative(ambiguous[i]);
      if (step.alternatives.empty()) step.trust = RepairClass::Likely;
    }
  }

 private:
  static constexpr std::size_t mostAlternatives = 8;
  static constexpr int clearEvidence = 3;

  struct Member {
    std::uint32_t number;
    Side side;
    Margin margin;
  };

  std::vector<Member> MembersOf(std::size_t step) const;
  void FindDamage();
  bool IsDamaged(std::uint32_t upper) const;
  bool IsRooted(std::uint32_t number, Side side) const;
  bool IsAtHome(std::uint32_t number) const;
  // Whether it is a cable that only goes, or one that only comes.
  static bool IsHalf(const CableTarget& target) {
    return target.cable == SwitchGraph::none || !target.upper;
  }
  std::size_t RankOf(const CableTarget& target) const;
  RepairClass ClassOf(std::size_t step) const;
  void FindAlternative(std::size_t step);

  const IBFabric& fabric_;
  const TreeGroups& groups_;
  const Changes& changes_;
  std::vector<PlannedStep>& steps_;
  Evidence evidence_;
  // By upper rank and group: wrong and lacking cables, and how many there should be.
  std::vector<std::vector<std::uint64_t>> wrong_;
  std::vector<bool> hasBothHalves_;  // by upper rank
};

// The switches whose groups a step believes in.
std::vector<Judge::Member> Judge::MembersOf(std::size_t step) const {
  std::vector<Member> members;
  const auto add = [&](std::uint32_t number, Side side) {
    const int group = side == SpineSide ? groups_.GroupBelow(number) : groups_.GroupAbove(number);
    const bool isKnown = std::any_of(members.begin(), members.end(), [&](const Member& member) {
      return member.number == number && member.side == side;
    });
    if (group == Grouping::none || isKnown) return;
    members.push_back({number, side, evidence_.MarginOf(number, side)});
  };
  for (const std::size_t i : steps_[step].targets) {
    const CableTarget& target = changes_.targets[i];
    if (target.cable != SwitchGraph::none) {
      const SwitchGraph::Cable& cable = groups_.graph.Cables()[target.cable];
      if (groups_.JoinsNeighbors(cable)) {
        add(groups_.UpperOf(cable), SpineSide);
        add(groups_.LowerOf(cable), LineSide);
      }
    }
    if (!target.upper) continue;
    add(target.upper->number, SpineSide);
    add(target.lower->number, LineSide);
  }
  return members;
}

void Judge::FindDamage() {
  wrong_.resize(groups_.groupings.size());
  for (std::size_t rank = 0; rank < wrong_.size(); ++rank) {
    wrong_[rank].assign(groups_.groupings[rank].Count(), 0);
  }
  const auto count = [&](std::uint32_t upper) {
    const int group = groups_.GroupBelow(upper);
    if (group == Grouping::none) return;
    ++wrong_[static_cast<std::size_t>(groups_.ranks[upper])][static_cast<std::size_t>(group)];
  };
  for (const CableTarget& target : changes_.targets) {
    if (target.cable != SwitchGraph::none) {
      const SwitchGraph::Cable& cable = groups_.graph.Cables()[target.cable];
      if (groups_.JoinsNeighbors(cable)) count(groups_.UpperOf(cable));
    }
    if (target.upper) count(target.upper->number);
  }
  std::vector<bool> goes(wrong_.size() + 1);
  std::vector<bool> comes(wrong_.size() + 1);
  for (const CableTarget& target : changes_.targets) {
    if (!IsHalf(target)) continue;
    const bool isWithin = target.reason == RepairReason::SameRank;
    if (target.cable == SwitchGraph::none) comes[RankOf(target)] = true;
    if (target.cable != SwitchGraph::none && !isWithin) goes[RankOf(target)] = true;
  }
  for (std::size_t rank = 0; rank < goes.size(); ++rank) {
    hasBothHalves_.push_back(goes[rank] && comes[rank]);
  }
}

// The rank of its upper end.
std::size_t Judge::RankOf(const CableTarget& target) const {
  const std::uint32_t upper = target.cable == SwitchGraph::none
                                  ? target.upper->number
                                  : groups_.UpperOf(groups_.graph.Cables()[target.cable]);
  return static_cast<std::size_t>(groups_.ranks[upper]);
}

// Whether a switch looks like its rank: leaves lead to hosts, others down, all but roots up.
bool Judge::IsAtHome(std::uint32_t number) const {
  const int rank = groups_.ranks[number];
  if (rank > 0 && groups_.GroupAbove(number) == Grouping::none) return false;
  if (rank == groups_.LastRank()) return groups_.graph.Hosts(number) != 0;
  return groups_.GroupBelow(number) != Grouping::none;
}

// Whether more than a third of a group is wrong.
bool Judge::IsDamaged(std::uint32_t upper) const {
  const int group = groups_.GroupBelow(upper);
  if (group == Grouping::none) return true;
  const auto place = static_cast<std::size_t>(group);
  const auto rank = static_cast<std::size_t>(groups_.ranks[upper]);
  const Grouping& grouping = groups_.groupings[rank];
  const std::uint64_t cables = std::uint64_t{grouping.multiplicity[place]} *
                               grouping.size[SpineSide][place] * grouping.size[LineSide][place];
  return 3 * wrong_[rank][place] > cables && wrong_[rank][place] > 2;
}

// Whether more than half of the cables that a switch should have in its group are there.
bool Judge::IsRooted(std::uint32_t number, Side side) const {
  const int group = side == SpineSide ? groups_.GroupBelow(number) : groups_.GroupAbove(number);
  const auto rank = static_cast<std::size_t>(groups_.ranks[number] - (side == LineSide ? 1 : 0));
  const Grouping& grouping = groups_.groupings[rank];
  const auto place = static_cast<std::size_t>(group);
  const RankPair& pair = groups_.pairs[rank];
  std::uint64_t kept = 0;
  const std::uint32_t i = groups_.place[number];
  for (const RankPair::Link& link : side == SpineSide ? pair.OfSpine(i) : pair.OfLine(i)) {
    if (grouping.groupOf[OtherSide(side)][link.far] != group) continue;
    kept += std::min(link.count, grouping.multiplicity[place]);
  }
  const std::uint64_t wanted =
      std::uint64_t{grouping.multiplicity[place]} * grouping.size[OtherSide(side)][place];
  // One of two is enough where the other group has no more.
  return 2 * kept > wanted || (2 * kept == wanted && wanted > 1);
}

RepairClass Judge::ClassOf(std::size_t step) const {
  bool isSure = true;
  bool isTied = false;
  for (const Member& member : MembersOf(step)) {
    const Margin& margin = member.margin;
    if (margin.cost <= 0 && margin.evidence <= noEvidence) isTied = true;
    if (margin.cost < 2 && (margin.cost <= 0 || margin.evidence < clearEvidence)) isSure = false;
    if (margin.cost < 3 && margin.evidence < -1) isSure = false;
    if (member.side == SpineSide && IsDamaged(member.number)) isSure = false;
    if (!IsRooted(member.number, member.side) || !IsAtHome(member.number)) isSure = false;
  }
  for (const std::size_t i : steps_[step].targets) {
    const CableTarget& target = changes_.targets[i];
    if (target.reason == RepairReason::SkipsRank) isSure = false;
    // A cable that nothing lacks and a link without a cable, side by side: one cable of which both
    // ends are elsewhere, perhaps.
    if (IsHalf(target) && hasBothHalves_[RankOf(target)]) isSure = false;
  }
  if (isTied) return RepairClass::Ask;
  return isSure ? RepairClass::Sure : RepairClass::Likely;
}

// What is to be done when the switches that could as well be elsewhere are there.
void Judge::FindAlternative(std::size_t step) {
  TreeGroups other = groups_;
  for (const Side side : {LineSide, SpineSide}) {
    bool isMoved = false;
    for (const Member& member : MembersOf(step)) {
      if (member.side != side || member.margin.cost > 0) continue;
      if (member.margin.evidence > noEvidence) continue;
      const auto rank = static_cast<std::size_t>(groups_.ranks[member.number] -
                                                 (side == LineSide ? 1 : 0));
      other.groupings[rank].groupOf[side][groups_.place[member.number]] = member.margin.group;
      Recount(other.pairs[rank], other.groupings[rank]);
      isMoved = true;
    }
    if (isMoved) break;
  }
  const Changes changes = FindChanges(other);
  if (changes.extras + changes.lacks > changes_.extras + changes_.lacks) return;
  if (!changes.uncertain.empty()) return;
  const auto isIn = [](const RepairStep& wanted, const std::vector<PlannedStep>& all) {
    return std::any_of(all.begin(), all.end(), [&](const PlannedStep& planned) {
      return planned.step.cables == wanted.cables;
    });
  };
  const std::vector<PlannedStep> otherSteps = OrderSteps(other, changes);
  for (std::size_t i = 0; i < steps_.size(); ++i) {
    if (i != step && !isIn(steps_[i].step, otherSteps)) return;
  }
  CableChanges instead;
  std::vector<RepairStep> trial;
  for (const PlannedStep& planned : otherSteps) {
    if (isIn(planned.step, steps_)) continue;
    instead.insert(instead.end(), planned.step.cables.begin(), planned.step.cables.end());
  }
  if (instead.empty()) return;
  for (const PlannedStep& planned : steps_) trial.push_back(planned.step);
  trial[step].cables = instead;
  if (ApplySteps(fabric_, trial) == nullptr) return;
  steps_[step].step.alternatives.push_back(std::move(instead));
}

}  // namespace

void JudgeSteps(const IBFabric& fabric, const TreeGroups& groups, const Changes& changes,
                std::vector<PlannedStep>& steps) {
  Judge(fabric, groups, changes, steps).Run();
}

}  // namespace fabscope
