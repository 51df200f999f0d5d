// How far a step may be trusted.
//
// A proof is necessary, not sufficient: a repair can make a proper tree that nobody meant. What
// goes wrong is nearly always a switch in the wrong group. So each switch that a step touches is
// asked how much dearer its next best group would be, and how much more the ports say for its own;
// and two switches that could change places are asked so together.
//
//   sure    the other way costs more, and the more so the less the ports speak against it
//   ask     it costs no more and is as likely: it is told as an alternative
//   likely  all between; and where much of a group is wrong, or a step beside it is only likely

#include "repair/trust.h"

#include <algorithm>
#include <cstddef>
#include <map>
#include <optional>
#include <set>
#include <tuple>
#include <utility>

#include "repair/evidence.h"
#include "repair/find_repairs.h"

namespace fabscope::internal {
namespace {

// What its cables are before and after.
using StepEnds = std::vector<std::optional<std::pair<std::uint32_t, std::uint8_t>>>;

StepEnds EndsOf(const RepairStep& step) {
  StepEnds ends;
  for (const CableChange& change : step.cables) {
    for (const auto& cable : {change.before, change.after}) {
      for (const auto end : {&RepairCable::upper, &RepairCable::lower}) {
        ends.emplace_back();
        if (cable) ends.back().emplace(((*cable).*end).node, ((*cable).*end).port);
      }
    }
  }
  return ends;
}

std::set<StepEnds> EndsOf(const std::vector<PlannedStep>& steps) {
  std::set<StepEnds> ends;
  for (const PlannedStep& planned : steps) ends.insert(EndsOf(planned.step));
  return ends;
}

class Judge {
 public:
  Judge(const IBFabric& fabric, const TreeGroups& groups, const Changes& changes,
        std::vector<PlannedStep>& steps)
      : fabric_(fabric), groups_(groups), changes_(changes), steps_(steps), evidence_(groups) {}

  void Run() {
    FindDamage();
    FindMembers();
    FindExchanges();
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
    DoubtNeighbors();
  }

 private:
  static constexpr std::size_t mostAlternatives = 8;
  static constexpr int dear = 2;
  static constexpr int clearEvidence = 3;
  static constexpr int strongEvidence = 4;

  // A switch in whose group a step believes.
  struct Member {
    std::uint32_t number = 0;
    Side side{};
    std::size_t upperRank = 0;
    int group = Grouping::none;
    Margin margin{};
    Margin exchange{};  // of changing places with another, the likeliest one
  };

  void FindMembers();
  void AddMember(std::uint32_t number, Side side, std::vector<Member>& members);
  void FindExchanges();
  void FindDamage();
  // The cheaper the other group is, the more must speak against it.
  static bool IsClear(const Margin& margin) {
    if (margin.cost < dear) return margin.evidence >= clearEvidence;
    return margin.cost + margin.evidence >= clearEvidence;
  }
  static bool IsLoose(const Margin& margin) {
    return margin.cost < 4 && margin.evidence < strongEvidence;
  }
  // Whether little of its group is as it should be.
  bool IsWeak(const Member& member) const { return IsDamaged(member) || !IsRooted(member); }
  static bool IsTied(const Margin& margin) {
    return margin.cost <= 0 && margin.evidence <= noEvidence;
  }
  bool IsTrunk(const Member& member) const {
    const Grouping& grouping = groups_.groupings[member.upperRank];
    return grouping.multiplicity[static_cast<std::size_t>(member.group)] > 1;
  }
  bool IsDamaged(const Member& member) const;
  bool IsRooted(const Member& member) const;
  bool IsAtHome(std::uint32_t number) const;
  bool HaveRootsHosts() const;
  bool IsCabledAnyhow(std::size_t step) const;
  RepairClass ClassOf(std::size_t step) const;
  void DoubtNeighbors();
  void FindAlternative(std::size_t step);

  const IBFabric& fabric_;
  const TreeGroups& groups_;
  const Changes& changes_;
  std::vector<PlannedStep>& steps_;
  Evidence evidence_;
  // By upper rank and group: wrong and lacking cables, and how many there should be.
  std::vector<std::vector<std::uint64_t>> wrong_;
  std::vector<bool> hasBothHalves_;           // by upper rank
  std::vector<std::vector<Member>> members_;  // by step
  // Of switches that were asked for.
  std::map<std::pair<std::uint32_t, Side>, Margin> margins_;
};

void Judge::FindMembers() {
  for (const PlannedStep& step : steps_) {
    std::vector<Member>& members = members_.emplace_back();
    for (const std::size_t i : step.targets) {
      const CableTarget& target = changes_.targets[i];
      if (target.cable != SwitchGraph::none) {
        const SwitchGraph::Cable& cable = groups_.graph.Cables()[target.cable];
        if (groups_.JoinsNeighbors(cable)) {
          AddMember(groups_.UpperOf(cable), SpineSide, members);
          AddMember(groups_.LowerOf(cable), LineSide, members);
        }
      }
      if (!target.upper) continue;
      AddMember(target.upper->number, SpineSide, members);
      AddMember(target.lower->number, LineSide, members);
    }
  }
}

void Judge::AddMember(std::uint32_t number, Side side, std::vector<Member>& members) {
  const bool isKnown = std::any_of(members.begin(), members.end(), [&](const Member& member) {
    return member.number == number && member.side == side;
  });
  Member member{number, side};
  member.upperRank = static_cast<std::size_t>(groups_.ranks[number] - (side == LineSide ? 1 : 0));
  member.group = side == SpineSide ? groups_.GroupBelow(number) : groups_.GroupAbove(number);
  if (isKnown || member.group == Grouping::none) return;
  const auto [known, isNew] = margins_.try_emplace({number, side});
  if (isNew) known->second = evidence_.MarginOf(number, side);
  member.margin = known->second;
  members.push_back(member);
}

void Judge::FindExchanges() {
  using Way = std::tuple<std::size_t, Side, int, int>;  // upper rank, side, from and to which group
  std::map<Way, std::map<std::uint32_t, int>> loose;    // switches, with what the way would cost
  for (const std::vector<Member>& members : members_) {
    for (const Member& it : members) {
      if (it.margin.cost >= dear) continue;
      loose[{it.upperRank, it.side, it.group, it.margin.group}][it.number] = it.margin.cost;
    }
  }
  for (std::vector<Member>& members : members_) {
    for (Member& it : members) {
      if (it.margin.cost >= dear) continue;
      const auto others = loose.find({it.upperRank, it.side, it.margin.group, it.group});
      if (others == loose.end()) continue;
      std::size_t asked = 0;
      for (const auto& [other, otherCost] : others->second) {
        if (asked++ == mostPartners) break;
        const int cost = it.margin.cost + otherCost;
        if (cost >= dear || cost > it.exchange.cost) continue;
        const int evidence = evidence_.ForStaying(it.number, other, it.side);
        if (cost == it.exchange.cost && evidence >= it.exchange.evidence) continue;
        it.exchange.cost = cost;
        it.exchange.evidence = evidence;
      }
    }
  }
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
}

// Whether a switch looks like its rank: leaves lead to hosts, others down, all but roots up.
bool Judge::IsAtHome(std::uint32_t number) const {
  const int rank = groups_.ranks[number];
  if (rank > 0 && groups_.GroupAbove(number) == Grouping::none) return false;
  if (rank == groups_.LastRank()) return groups_.graph.Hosts(number) != 0;
  return groups_.GroupBelow(number) != Grouping::none;
}

// Whether a cable that does not count, such as one that only one end tells of, joins the two
// switches of a new one.
bool Judge::IsCabledAnyhow(std::size_t step) const {
  const std::vector<std::size_t>& targets = steps_[step].targets;
  return std::any_of(targets.begin(), targets.end(), [&](std::size_t i) {
    const CableTarget& target = changes_.targets[i];
    if (target.cable != SwitchGraph::none) return false;
    const IBNode& lower = groups_.graph.NodeOf(target.lower->number);
    const auto& ports = groups_.graph.NodeOf(target.upper->number).ports;
    return std::any_of(ports.begin(), ports.end(), [&](const IBPort& port) {
      return port.get_remote_node() == &lower && !port.symmetric;
    });
  });
}

bool Judge::HaveRootsHosts() const {
  if (groups_.pairs.empty()) return false;
  const std::vector<std::uint32_t>& roots = groups_.pairs.front().Spines();
  return std::any_of(roots.begin(), roots.end(),
                     [&](std::uint32_t root) { return groups_.graph.Hosts(root) != 0; });
}

// Whether more than a third of a group is wrong.
bool Judge::IsDamaged(const Member& member) const {
  const auto place = static_cast<std::size_t>(member.group);
  const Grouping& grouping = groups_.groupings[member.upperRank];
  const std::uint64_t cables = std::uint64_t{grouping.multiplicity[place]} *
                               grouping.size[SpineSide][place] * grouping.size[LineSide][place];
  const std::uint64_t wrong = wrong_[member.upperRank][place];
  return 3 * wrong > cables && wrong > 2;
}

// Whether more than half of the cables that a switch should have in its group are there.
bool Judge::IsRooted(const Member& member) const {
  const auto place = static_cast<std::size_t>(member.group);
  const Grouping& grouping = groups_.groupings[member.upperRank];
  const RankPair& pair = groups_.pairs[member.upperRank];
  const Side farSide = OtherSide(member.side);
  std::uint64_t kept = 0;
  const std::uint32_t i = groups_.place[member.number];
  for (const RankPair::Link& link : member.side == SpineSide ? pair.OfSpine(i) : pair.OfLine(i)) {
    if (grouping.groupOf[farSide][link.far] != member.group) continue;
    kept += std::min(link.count, grouping.multiplicity[place]);
  }
  const std::uint64_t wanted =
      std::uint64_t{grouping.multiplicity[place]} * grouping.size[farSide][place];
  // One of two is enough where the other group has no more.
  return 2 * kept > wanted || (2 * kept == wanted && wanted > 1);
}

RepairClass Judge::ClassOf(std::size_t step) const {
  bool isSure = true;
  bool isTied = false;
  bool isWeak = false;
  bool isLoose = false;
  const auto has = [&](RepairReason reason) {
    return std::any_of(steps_[step].targets.begin(), steps_[step].targets.end(),
                       [&](std::size_t i) { return changes_.targets[i].reason == reason; });
  };
  if (has(RepairReason::SkipsRank) || IsCabledAnyhow(step)) isSure = false;
  // How many cables each pair of a damaged group should have is a guess.
  const bool hasTooMany = has(RepairReason::TooMany);
  for (const Member& member : members_[step]) {
    const Margin& margin = member.margin;
    if (IsTied(margin) || IsTied(member.exchange)) isTied = true;
    if (!IsClear(margin) || !IsClear(member.exchange) || margin.pod < 0) isSure = false;
    if (!IsAtHome(member.number)) isSure = false;
    // Of three or more that change places all ways would have to be tried, where ports do not speak
    // against all of them.
    const bool isAlone = member.exchange.cost == Margin::plenty;
    const bool isSwap = steps_[step].step.action == RepairAction::Swap;
    const bool isCheap = margin.cost < dear && margin.evidence < strongEvidence;
    if (isSwap && isAlone && isCheap) isSure = false;
    if (IsWeak(member)) isWeak = true;
    if (IsLoose(margin) || IsLoose(member.exchange)) isLoose = true;
    if (IsDamaged(member) && (IsTrunk(member) || hasTooMany)) isSure = false;
  }
  if (isWeak && isLoose) isSure = false;
  if (isTied) return RepairClass::Ask;
  return isSure ? RepairClass::Sure : RepairClass::Likely;
}

// Where one step may be wrong, so may be those at the same switches; where much of a group is
// wrong, all of that group; and where much of the fabric is, all.
void Judge::DoubtNeighbors() {
  std::set<std::uint32_t> switches;
  std::set<std::pair<std::size_t, int>> groups;
  const std::uint64_t wrong = changes_.extras + changes_.lacks;
  const std::uint64_t cables = groups_.graph.Cables().size();
  bool isMuchWrong = 3 * wrong > cables && HaveRootsHosts();
  for (std::size_t i = 0; i < steps_.size(); ++i) {
    if (steps_[i].step.trust != RepairClass::Likely) continue;
    if (6 * wrong > cables) isMuchWrong = true;
    for (const Member& member : members_[i]) {
      switches.insert(member.number);
      if (IsDamaged(member)) groups.emplace(member.upperRank, member.group);
    }
  }
  for (std::size_t i = 0; i < steps_.size(); ++i) {
    RepairClass& trust = steps_[i].step.trust;
    const auto isDoubted = [&](const Member& member) {
      return switches.contains(member.number) || groups.contains({member.upperRank, member.group});
    };
    if (trust == RepairClass::Sure &&
        (isMuchWrong || std::any_of(members_[i].begin(), members_[i].end(), isDoubted))) {
      trust = RepairClass::Likely;
    }
  }
}

// What is to be done when the switches that could as well be elsewhere are there.
void Judge::FindAlternative(std::size_t step) {
  TreeGroups other = groups_;
  for (const Side side : {LineSide, SpineSide}) {
    bool isMoved = false;
    for (const Member& member : members_[step]) {
      if (member.side != side || (!IsTied(member.margin) && !IsTied(member.exchange))) continue;
      Grouping& grouping = other.groupings[member.upperRank];
      grouping.groupOf[side][groups_.place[member.number]] = member.margin.group;
      Recount(other.pairs[member.upperRank], grouping);
      isMoved = true;
    }
    if (isMoved) break;
  }
  const Changes changes = FindChanges(other);
  if (changes.extras + changes.lacks > changes_.extras + changes_.lacks) return;
  if (!changes.uncertain.empty()) return;
  const std::vector<PlannedStep> otherSteps = OrderSteps(other, changes);
  const std::set<StepEnds> otherEnds = EndsOf(otherSteps);
  for (std::size_t i = 0; i < steps_.size(); ++i) {
    if (i != step && !otherEnds.contains(EndsOf(steps_[i].step))) return;
  }
  const std::set<StepEnds> ends = EndsOf(steps_);
  CableChanges instead;
  std::vector<RepairStep> trial;
  for (const PlannedStep& planned : otherSteps) {
    if (ends.contains(EndsOf(planned.step))) continue;
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

}  // namespace fabscope::internal
