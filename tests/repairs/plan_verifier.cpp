// What is held against a plan:
//
//   ranks     they count from 0 without a gap
//   status    clean means that nothing is wrong and nothing is done
//   steps     each finds its cables and free ports, changes what its action says, and leads to a
//             cable between neighboring ranks
//   trust     who asks has alternatives that can be done; who does not ask leaves proper groups
//   paths     no switch with hosts is cut off from the others meanwhile, if another order avoids it
//   result    the fabric that is built is the one the steps lead to
//   misfits   none exactly for a proper tree; as many as cables have changed where the steps make
//             one
//   bound     no fewer steps than the lower bound do the same
//   notes     what they tell is so

#include "repairs/plan_verifier.h"

#include <algorithm>
#include <cstdlib>
#include <map>
#include <optional>
#include <set>

#include "repairs/plain_bound.h"
#include "repairs/plain_cabling.h"
#include "repairs/plain_groups.h"

namespace fabscope::internal::plain {
namespace {

// More steps have too many orders to be tried.
constexpr std::size_t mostReorderedSteps = 10;

bool Shares(const Link& a, const Socket& end) { return a.upper == end || a.lower == end; }

// The end that two cables have in common, if it is one.
std::optional<Socket> CommonEnd(const Link& a, const Link& b) {
  const bool upper = Shares(b, a.upper);
  const bool lower = Shares(b, a.lower);
  if (upper == lower) return std::nullopt;
  return upper ? a.upper : a.lower;
}

Socket OtherEnd(const Link& link, const Socket& end) {
  return link.upper == end ? link.lower : link.upper;
}

bool IsMove(const Change& change) {
  return change.before && change.after && CommonEnd(*change.before, *change.after) &&
         PairOf(*change.before) != PairOf(*change.after);
}

// Two cables keep one end each and get that of the other.
bool IsSwap(const Changes& changes) {
  if (!IsMove(changes[0]) || !IsMove(changes[1])) return false;
  const auto given = [](const Change& change) {
    return OtherEnd(*change.before, *CommonEnd(*change.before, *change.after));
  };
  const auto got = [](const Change& change) {
    return OtherEnd(*change.after, *CommonEnd(*change.before, *change.after));
  };
  return given(changes[0]) == got(changes[1]) && given(changes[1]) == got(changes[0]);
}

std::optional<Action> ActionOf(const Changes& changes) {
  if (changes.size() == 2 && IsSwap(changes)) return Action::Swap;
  if (changes.size() != 1) return std::nullopt;
  const Change& change = changes.front();
  if (!change.before && change.after) return Action::Connect;
  if (change.before && !change.after) return Action::Disconnect;
  if (IsMove(change)) return Action::Move;
  return std::nullopt;
}

class Verifier {
 public:
  Verifier(const Fabric& fabric, const Plan& plan, const Fabric* built)
      : fabric_(fabric), plan_(plan), built_(built), ranks_(RanksOf(fabric)), after_(fabric) {}

  Verdict Verify() {
    CheckRanks();
    if (!verdict_.complaints.empty()) return verdict_;
    CheckStatus();
    DoSteps();
    if (!verdict_.complaints.empty()) return verdict_;
    verdict_.isProperAfterwards = IsProperTree(fabric_, after_);
    CheckTrust();
    CheckPaths();
    CheckResult();
    CheckMisfits();
    CheckBound();
    CheckNotes();
    return verdict_;
  }

 private:
  void Require(bool holds, const std::string& complaint) {
    if (!holds) verdict_.complaints.push_back(complaint);
  }
  void RequireDone(const std::string& problem, const std::string& name) {
    if (!problem.empty()) Require(false, std::string(name).append(" cannot be done: ") + problem);
  }
  static std::string StepText(std::size_t step) { return "step " + std::to_string(step + 1); }

  void CheckRanks();
  void CheckStatus();
  void DoSteps();
  void CheckStep(const Step& step, const std::string& name);
  void CheckLink(const Link& link, const std::string& name);
  void CheckReason(const Step& step, const std::string& name);
  bool IsInCircle(const Step& step) const;
  void CheckAlternatives(std::size_t index, const Cabling& before);
  void CheckTrust();
  bool IsThereAfterwards(const Link& link) const;
  void CheckWholePlan();
  void CheckOnlyQuestion();
  void CheckPaths();
  bool CanAvoidCuts(const Cabling& state, unsigned done, std::set<unsigned>& tried) const;
  bool IsCut(const Cabling& state) const;
  void CheckResult();
  void CheckSpeed(const Link& before, const Link& after);
  void CheckMisfits();
  void CheckBound();
  void CheckNotes();
  bool HasCable(std::uint64_t guid) const;
  void CheckNote(const Note& note);

  const Fabric& fabric_;
  const Plan& plan_;
  const Fabric* built_;
  std::map<std::uint64_t, int> ranks_;
  Cabling after_;                        // once all steps are done
  std::set<std::uint64_t> mayBeLonely_;  // are so before the steps or after them
  Verdict verdict_;
};

void Verifier::CheckRanks() {
  std::set<int> present;
  for (const Switch& node : fabric_.switches) {
    Require(node.rank >= -1, "a rank is below none");
    if (node.rank >= 0) present.insert(node.rank);
  }
  const auto levels = static_cast<std::size_t>(std::max(plan_.levels, 0));
  Require(plan_.levels >= 0 && present.size() == levels &&
              (present.empty() || *present.rbegin() + 1 == plan_.levels),
          "the ranks do not go from 0 to the number of levels");
}

void Verifier::CheckStatus() {
  const bool hasSteps = !plan_.steps.empty();
  Require(hasSteps ? plan_.status != Status::Clean : plan_.status != Status::Repairs,
          "repairs without steps, or steps in a clean fabric");
  Require((plan_.status == Status::Abstained) != plan_.message.empty(),
          "who abstains tells why, and nobody else has a message");
  if (plan_.status == Status::Clean) Require(plan_.misfits == 0, "a clean fabric has misfits");
}

// --- Steps.

void Verifier::DoSteps() {
  for (std::size_t i = 0; i < plan_.steps.size(); ++i) {
    const Step& step = plan_.steps[i];
    CheckStep(step, StepText(i));
    CheckAlternatives(i, after_);
    const std::string problem = after_.Do(step.changes);
    RequireDone(problem, StepText(i));
  }
}

void Verifier::CheckStep(const Step& step, const std::string& name) {
  Require(ActionOf(step.changes) == step.action, name + " does not do what its action says");
  for (const Change& change : step.changes) {
    if (change.before) CheckLink(*change.before, name);
    if (!change.after) continue;
    CheckLink(*change.after, name);
    const auto upper = ranks_.find(change.after->upper.guid);
    const auto lower = ranks_.find(change.after->lower.guid);
    Require(upper != ranks_.end() && lower != ranks_.end() && upper->second >= 0 &&
                upper->second + 1 == lower->second,
            name + " makes a cable that joins no neighboring ranks");
  }
  CheckReason(step, name);
}

void Verifier::CheckLink(const Link& link, const std::string& name) {
  if (link.upper.guid == link.lower.guid) {
    Require(false, name + " changes a cable of a switch to itself");
    return;
  }
  const auto upper = ranks_.find(link.upper.guid);
  const auto lower = ranks_.find(link.lower.guid);
  if (upper == ranks_.end() || lower == ranks_.end()) return;  // told where it is plugged
  if (upper->second < 0 || lower->second < 0) return;
  if (upper->second != lower->second) {
    Require(upper->second < lower->second, name + " takes the lower end for the upper");
    return;
  }
  const auto place = [&](std::uint64_t guid) {
    return std::find_if(fabric_.switches.begin(), fabric_.switches.end(),
                        [&](const Switch& node) { return node.guid == guid; });
  };
  Require(place(link.upper.guid) < place(link.lower.guid),
          name + " does not name the earlier switch of a rank first");
}

void Verifier::CheckReason(const Step& step, const std::string& name) {
  Require((step.reason == Reason::LinkLacking) == (step.action == Action::Connect),
          name + " is new exactly if its link lacks");
  if (step.reason == Reason::LinkLacking) return;
  if (IsInCircle(step)) {
    Require(step.reason == Reason::Rotated || step.reason == Reason::WrongSpine,
            name + " gives a reason of its own, though it goes on with the cable of another");
    return;
  }
  Require(step.reason != Reason::Rotated, name + " is not one of several swaps");
  Require(step.reason != Reason::Exchanged || step.action == Action::Swap,
          name + " exchanges a single cable");
  if (step.reason == Reason::Exchanged) return;
  std::set<int> distances;
  for (const Change& change : step.changes) {
    if (!change.before) continue;
    const auto upper = ranks_.find(change.before->upper.guid);
    const auto lower = ranks_.find(change.before->lower.guid);
    if (upper == ranks_.end() || lower == ranks_.end()) return;
    // A switch outside the tree is on no neighboring rank.
    const bool isOutside = upper->second < 0 || lower->second < 0;
    distances.insert(isOutside ? 2 : std::min(2, std::abs(upper->second - lower->second)));
  }
  const int distance = step.reason == Reason::SameRank    ? 0
                       : step.reason == Reason::SkipsRank ? 2
                                                          : 1;
  Require(distances == std::set{distance}, name + " gives a reason that its cables do not show");
}

// Whether a cable that it takes is made by another step, or the other way round.
bool Verifier::IsInCircle(const Step& step) const {
  if (step.action != Action::Swap) return false;
  return std::any_of(plan_.steps.begin(), plan_.steps.end(), [&](const Step& other) {
    if (&other == &step || other.action != Action::Swap) return false;
    const auto goesOn = [](const Step& first, const Step& second) {
      return std::any_of(first.changes.begin(), first.changes.end(), [&](const Change& made) {
        return std::any_of(second.changes.begin(), second.changes.end(),
                           [&](const Change& taken) { return made.after == taken.before; });
      });
    };
    return goesOn(step, other) || goesOn(other, step);
  });
}

void Verifier::CheckAlternatives(std::size_t index, const Cabling& before) {
  const Step& step = plan_.steps[index];
  Require((step.trust == Trust::Ask) == !step.alternatives.empty(),
          StepText(index) + " asks exactly if there are alternatives");
  for (std::size_t i = 0; i < step.alternatives.size(); ++i) {
    const std::string name = StepText(index) + ", alternative " + std::to_string(i + 1);
    const Changes& changes = step.alternatives[i];
    Require(!changes.empty() && changes != step.changes, name + " changes nothing else");
    for (const Change& change : changes) {
      Require(change.before || change.after, name + " has an empty change");
      if (change.before) CheckLink(*change.before, name);
      if (change.after) CheckLink(*change.after, name);
    }
    Cabling state = before;
    const std::string problem = state.Do(changes);
    RequireDone(problem, name);
    for (std::size_t k = 0; k < i; ++k) {
      Require(step.alternatives[k] != changes, name + " stands twice");
    }
  }
}

// --- Trust.

void Verifier::CheckTrust() {
  const std::vector<Group> groups = GroupsOf(fabric_, after_);
  const Pairs strays = StrayPairs(fabric_, after_);
  // Of each group its own: an end in one and an end in another make no cable of either.
  std::vector<std::set<std::uint64_t>> uncertain;
  for (const Note& note : plan_.notes) {
    if (note.kind != NoteKind::UncertainGroup) continue;
    uncertain.emplace_back(note.switches.begin(), note.switches.end());
  }
  for (std::size_t i = 0; i < plan_.steps.size(); ++i) {
    if (plan_.steps[i].trust == Trust::Ask) continue;
    for (const Change& change : plan_.steps[i].changes) {
      if (change.before) {
        const Pair pair = PairOf(*change.before);
        Require(!strays.contains(pair), StepText(i) + " leaves a cable beside the one it takes");
      }
      // A cable that goes round by several swaps is for a while where nobody wants it.
      if (!change.after || !IsThereAfterwards(*change.after)) continue;
      const bool isProper = std::any_of(groups.begin(), groups.end(), [&](const Group& group) {
        return group.isProper && group.spines.contains(change.after->upper.guid) &&
               group.lines.contains(change.after->lower.guid);
      });
      Require(isProper, StepText(i) + " does not ask, but its group is not proper afterwards");
      const bool isUncertain = std::any_of(uncertain.begin(), uncertain.end(),
                                           [&](const std::set<std::uint64_t>& group) {
                                             return group.contains(change.after->upper.guid) &&
                                                    group.contains(change.after->lower.guid);
                                           });
      Require(!isUncertain, StepText(i) + " does not ask, but changes a group that is uncertain");
    }
  }
  CheckWholePlan();
  CheckOnlyQuestion();
}

bool Verifier::IsThereAfterwards(const Link& link) const {
  const auto found = after_.Cables().find(link.upper);
  return found != after_.Cables().end() && found->second == link.lower;
}

// A plan that leaves no group uncertain makes a proper tree, unless a switch lacks a port for that.
void Verifier::CheckWholePlan() {
  if (plan_.status != Status::Repairs || verdict_.isProperAfterwards) return;
  for (const Note& note : plan_.notes) {
    if (note.kind == NoteKind::UncertainGroup) return;
  }
  Require(StrayPairs(fabric_, after_).empty(), "a cable joins no neighboring ranks afterwards");
  std::set<std::uint64_t> full;
  for (const Switch& node : fabric_.switches) {
    int used = 0;
    for (int port = 1; port <= node.ports; ++port) {
      const Socket socket{node.guid, port};
      if (after_.Cables().contains(socket) || fabric_.taken.contains(socket)) ++used;
    }
    if (used == node.ports) full.insert(node.guid);
  }
  const auto isFull = [&](std::uint64_t guid) { return full.contains(guid); };
  for (const Group& group : GroupsOf(fabric_, after_)) {
    Require(group.isProper || std::any_of(group.spines.begin(), group.spines.end(), isFull) ||
                std::any_of(group.lines.begin(), group.lines.end(), isFull),
            "a group is not proper afterwards, though its switches have free ports");
  }
}

// What is as good as a step makes a proper tree in its place, too. Several steps that ask may only
// go together with one another's alternatives.
void Verifier::CheckOnlyQuestion() {
  const auto asks = [](const Step& step) { return step.trust == Trust::Ask; };
  const auto& steps = plan_.steps;
  if (!verdict_.isProperAfterwards || std::count_if(steps.begin(), steps.end(), asks) != 1) return;
  const auto question = std::find_if(steps.begin(), steps.end(), asks);
  for (const Changes& alternative : question->alternatives) {
    Cabling state(fabric_);
    bool isDone = true;
    for (auto step = steps.begin(); step != steps.end(); ++step) {
      isDone &= state.Do(step == question ? alternative : step->changes).empty();
    }
    Require(!isDone || IsProperTree(fabric_, state), "an alternative makes no proper tree");
  }
}

// --- Paths.

// Whether a switch with hosts is alone that is so neither before nor after all steps.
bool Verifier::IsCut(const Cabling& state) const {
  const std::set<std::uint64_t> now = state.Lonely();
  return std::any_of(now.begin(), now.end(),
                     [&](std::uint64_t guid) { return !mayBeLonely_.contains(guid); });
}

// Whether the steps that are not done yet can be done in some order without a cut.
bool Verifier::CanAvoidCuts(const Cabling& state, unsigned done, std::set<unsigned>& tried) const {
  if (done + 1 == 1U << plan_.steps.size()) return true;
  if (!tried.insert(done).second) return false;
  for (std::size_t i = 0; i < plan_.steps.size(); ++i) {
    const unsigned bit = 1U << i;
    if ((done & bit) != 0) continue;
    Cabling next = state;
    if (!next.Do(plan_.steps[i].changes).empty() || IsCut(next)) continue;
    if (CanAvoidCuts(next, done | bit, tried)) return true;
  }
  return false;
}

void Verifier::CheckPaths() {
  Cabling state(fabric_);
  mayBeLonely_ = state.Lonely();
  mayBeLonely_.merge(after_.Lonely());
  for (const Step& step : plan_.steps) {
    state.Do(step.changes);
    if (IsCut(state)) ++verdict_.cuts;
  }
  if (verdict_.cuts == 0 || plan_.steps.size() > mostReorderedSteps) return;
  std::set<unsigned> tried;
  Require(!CanAvoidCuts(Cabling(fabric_), 0, tried),
          "a switch with hosts is cut off between two steps, which another order avoids");
}

// --- The fabric that was built.

void Verifier::CheckResult() {
  Require(built_ != nullptr, "the steps are said not to be doable");
  if (built_ == nullptr) return;
  Require(built_->switches == fabric_.switches, "the switches are not those from before");
  Require(built_->taken == fabric_.taken,
          "something else than cables between switches has changed");
  Require(built_->cables == after_.Cables(), "the steps lead to other cables than those built");
  for (const auto& [end, speed] : built_->speeds) {
    const auto before = fabric_.cables.find(end);
    const auto after = after_.Cables().find(end);
    if (before == fabric_.cables.end() || after == after_.Cables().end()) continue;
    if (before->second != after->second) continue;
    Require(fabric_.speeds.at(end) == speed, "a cable that stays has another speed: " + Text(end));
  }
  for (const Step& step : plan_.steps) {
    for (const Change& change : step.changes) {
      if (change.before && change.after) CheckSpeed(*change.before, *change.after);
    }
  }
}

// A moved cable keeps its speed, but for ports that have one of their own.
void Verifier::CheckSpeed(const Link& before, const Link& after) {
  const auto was = fabric_.cables.find(before.upper);
  const auto is = built_->cables.find(after.upper);
  // Cables that several steps have changed tell nothing about one of them.
  if (was == fabric_.cables.end() || was->second != before.lower) return;
  if (is == built_->cables.end() || is->second != after.lower) return;
  for (const Socket& end : {after.upper, after.lower}) {
    std::set<std::uint32_t> possible{fabric_.speeds.at(before.upper),
                                     fabric_.speeds.at(before.lower)};
    const auto own = fabric_.speeds.find(end);
    const bool wasEmpty = !fabric_.cables.contains(end);
    if (wasEmpty && own != fabric_.speeds.end()) possible.insert(own->second);
    Require(possible.contains(built_->speeds.at(end)),
            "a moved cable has another speed: " + Text(after));
  }
}

// --- Numbers.

void Verifier::CheckMisfits() {
  const Cabling before(fabric_);
  Require((plan_.misfits == 0) == IsProperTree(fabric_, before),
          "there are no misfits exactly in a proper tree");
  const Pairs was = before.PairsJoined();
  const Pairs is = after_.PairsJoined();
  std::vector<Pair> changed;
  std::set_symmetric_difference(was.begin(), was.end(), is.begin(), is.end(),
                                std::back_inserter(changed));
  Require(changed.size() <= plan_.misfits, "more cables change than there are misfits");
  if (verdict_.isProperAfterwards) {
    Require(changed.size() == plan_.misfits, "the misfits are not what the steps change");
  }
}

void Verifier::CheckBound() {
  Require(plan_.lowerBound <= plan_.steps.size(), "there are fewer steps than the lower bound");
  Require(plan_.lowerBound > 0 || plan_.steps.empty(), "steps have a lower bound of nothing");
  // Steps that leave something to be done may be fewer than all would take.
  if (!verdict_.isProperAfterwards) return;
  Require(!CanDoInFewer(fabric_, after_.PairsJoined(), plan_.lowerBound),
          "fewer steps than the lower bound do the same");
}

// --- Notes.

void Verifier::CheckNotes() {
  std::set<std::uint64_t> lackLoopNote;
  std::set<std::uint64_t> lackOutsideNote;
  for (const auto& [end, far] : fabric_.cables) {
    if (end.guid == far.guid) {
      lackLoopNote.insert(end.guid);
    } else if (ranks_.at(end.guid) < 0) {
      lackOutsideNote.insert(end.guid);
    }
  }
  for (const Note& note : plan_.notes) {
    CheckNote(note);
    for (const std::uint64_t guid : note.switches) {
      if (note.kind == NoteKind::SelfLoop) lackLoopNote.erase(guid);
      if (note.kind == NoteKind::SwitchWithoutTree) lackOutsideNote.erase(guid);
    }
  }
  if (plan_.levels == 0) return;
  for (const std::uint64_t guid : lackLoopNote) {
    Require(false, Text(guid) + " is cabled to itself, and no note tells it");
  }
  for (const std::uint64_t guid : lackOutsideNote) {
    Require(false, Text(guid) + " is not in the tree, and no note tells it");
  }
}

// Whether a cable leads from it to another switch.
bool Verifier::HasCable(std::uint64_t guid) const {
  return std::any_of(fabric_.cables.begin(), fabric_.cables.end(), [&](const auto& cable) {
    return cable.first.guid == guid && cable.second.guid != guid;
  });
}

void Verifier::CheckNote(const Note& note) {
  Require(!note.switches.empty(), "a note is about no switch");
  Require(std::is_sorted(note.ports.begin(), note.ports.end()), "ports of a note do not ascend");
  auto next = fabric_.switches.begin();
  for (const std::uint64_t guid : note.switches) {
    next = std::find_if(next, fabric_.switches.end(),
                        [&](const Switch& node) { return node.guid == guid; });
    Require(next != fabric_.switches.end(), "switches of a note are not in the model's order");
    if (next == fabric_.switches.end()) return;
    const Switch& node = *next++;
    const bool isOutside = note.kind == NoteKind::SwitchWithoutTree;
    // The rank of a leaf that nothing is cabled to is that of the other leaves.
    const bool isLostLeaf = isOutside && node.hasHosts && !HasCable(guid);
    Require(isOutside == (node.rank < 0) || note.kind == NoteKind::SelfLoop || isLostLeaf,
            "a note is wrong about whether a switch is in the tree");
    if (note.kind == NoteKind::HostsOnSpines) {
      Require(node.hasHosts && node.rank + 1 < plan_.levels, "a spine with hosts is none");
    }
    for (const int port : note.ports) {
      const Socket socket{guid, port};
      const auto cable = fabric_.cables.find(socket);
      if (note.kind == NoteKind::DeadSwitch) {
        Require(port >= 1 && port <= node.ports && cable == fabric_.cables.end() &&
                    !fabric_.taken.contains(socket),
                "the port of a dead neighbor is not empty");
      }
      if (note.kind == NoteKind::SelfLoop) {
        Require(cable != fabric_.cables.end() && cable->second.guid == guid,
                "a cable to itself is none");
      }
    }
  }
}

}  // namespace

Verdict VerifyPlan(const Fabric& fabric, const Plan& plan, const Fabric* built) {
  return Verifier(fabric, plan, built).Verify();
}

}  // namespace fabscope::internal::plain
