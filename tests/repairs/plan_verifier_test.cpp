// What verifies plans notices every promise that is broken: a good plan with one thing wrong in it
// gives just the complaint about that.

#include "repairs/plan_verifier.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "repairs/plain_bound.h"
#include "repairs/plain_cabling.h"

namespace fabscope::internal::plain {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr int hostPort = 8;
constexpr std::uint32_t hdr = 0x400;

void Join(const Link& link, Fabric& fabric) {
  fabric.cables[link.upper] = link.lower;
  fabric.cables[link.lower] = link.upper;
  fabric.speeds[link.upper] = fabric.speeds[link.lower] = hdr;
}

// Spines 1 and 2 over leaves 0x11 to 0x13, spines 3 and 4 over leaves 0x14 to 0x16; a host at each
// leaf. Port n of a leaf leads to its n-th spine, port n of a spine to its n-th leaf.
Fabric TwoPods() {
  Fabric fabric;
  for (std::uint64_t spine = 1; spine <= 4; ++spine) {
    fabric.switches.push_back({spine, 8, 0, false});
  }
  for (std::uint64_t i = 0; i < 6; ++i) {
    const std::uint64_t leaf = 0x11 + i;
    fabric.switches.push_back({leaf, 8, 1, true});
    fabric.taken.insert({leaf, hostPort});
    for (const int place : {1, 2}) {
      const std::uint64_t spine = i / 3 * 2 + static_cast<std::uint64_t>(place);
      Join({{spine, static_cast<int>(i % 3) + 1}, {leaf, place}}, fabric);
    }
  }
  return fabric;
}

void Part(const Link& link, Fabric& fabric) {
  for (const Socket& end : {link.upper, link.lower}) {
    fabric.cables.erase(end);
    fabric.speeds.erase(end);
  }
}

// Leaves 0x11 and 0x14 have exchanged their first cables.
Fabric SwappedPods() {
  Fabric fabric = TwoPods();
  Part({{1, 1}, {0x11, 1}}, fabric);
  Part({{3, 1}, {0x14, 1}}, fabric);
  Join({{3, 1}, {0x11, 1}}, fabric);
  Join({{1, 1}, {0x14, 1}}, fabric);
  return fabric;
}

Step SwapBack() {
  const Change first{Link{{3, 1}, {0x11, 1}}, Link{{1, 1}, {0x11, 1}}};
  const Change second{Link{{1, 1}, {0x14, 1}}, Link{{3, 1}, {0x14, 1}}};
  return {Action::Swap, Trust::Sure, Reason::WrongGroup, {first, second}, {}};
}

Plan PlanOf(std::vector<Step> steps, std::uint64_t misfits, std::size_t lowerBound) {
  return {Status::Repairs, "", 2, misfits, std::move(steps), lowerBound, {}};
}

Plan GoodPlan() { return PlanOf({SwapBack()}, 4, 1); }

Fabric Built(const Fabric& fabric, const Plan& plan) {
  Cabling state(fabric);
  for (const Step& step : plan.steps) state.Do(step.changes);
  Fabric built = fabric;
  built.cables = state.Cables();
  built.speeds.clear();
  for (const auto& [end, far] : built.cables) built.speeds[end] = hdr;
  return built;
}

std::vector<std::string> Complaints(const Fabric& fabric, const Plan& plan) {
  const Fabric built = Built(fabric, plan);
  return VerifyPlan(fabric, plan, &built).complaints;
}

std::vector<std::string> ComplaintsOf(const Plan& plan) { return Complaints(SwappedPods(), plan); }

Step Disconnect(const Link& link, Reason reason) {
  return {Action::Disconnect, Trust::Sure, reason, {{link, std::nullopt}}, {}};
}

Step Connect(const Link& link) {
  return {Action::Connect, Trust::Sure, Reason::LinkLacking, {{std::nullopt, link}}, {}};
}

TEST(PlanVerifier, HasNothingToSayAboutAGoodPlan) {
  EXPECT_THAT(ComplaintsOf(GoodPlan()), IsEmpty());
  EXPECT_THAT(Complaints(TwoPods(), {Status::Clean, "", 2, 0, {}, 0, {}}), IsEmpty());
}

// --- Ranks and status.

TEST(PlanVerifier, WantsRanksWithoutAGap) {
  Plan plan = GoodPlan();
  plan.levels = 3;
  EXPECT_THAT(ComplaintsOf(plan),
              ElementsAre("the ranks do not go from 0 to the number of levels"));
}

TEST(PlanVerifier, WantsStepsOfRepairsAndNoneInACleanFabric) {
  EXPECT_THAT(Complaints(TwoPods(), {Status::Repairs, "", 2, 0, {}, 0, {}}),
              ElementsAre("repairs without steps, or steps in a clean fabric"));
  Plan plan = GoodPlan();
  plan.status = Status::Clean;
  EXPECT_THAT(ComplaintsOf(plan), ElementsAre("repairs without steps, or steps in a clean fabric",
                                              "a clean fabric has misfits"));
}

TEST(PlanVerifier, WantsToKnowWhyNothingIsTold) {
  EXPECT_THAT(ComplaintsOf({Status::Abstained, "", 2, 4, {}, 0, {}}),
              ElementsAre("who abstains tells why, and nobody else has a message"));
  EXPECT_THAT(ComplaintsOf({Status::Abstained, "too much is wrong", 2, 4, {}, 0, {}}), IsEmpty());
}

// --- Steps.

TEST(PlanVerifier, SeesACableThatIsNotThere) {
  Plan plan = GoodPlan();
  plan.steps[0].changes[0].before->upper.port = 2;
  plan.steps[0].changes[1].after->upper.port = 2;
  EXPECT_THAT(ComplaintsOf(plan), ElementsAre("step 1 cannot be done: no cable 0x3:2 - 0x11:1"));
}

TEST(PlanVerifier, SeesAPortThatIsTakenOrMissing) {
  for (const auto& [port, problem] :
       std::vector<std::pair<int, std::string>>{{hostPort, "0x11:8 is not free"},
                                                {2, "0x11:2 is not free"},
                                                {9, "no port 0x11:9"},
                                                {0, "no port 0x11:0"}}) {
    const Plan plan = PlanOf({Connect({{2, 7}, {0x11, port}})}, 4, 1);
    EXPECT_THAT(ComplaintsOf(plan), ElementsAre("step 1 cannot be done: " + problem));
  }
}

TEST(PlanVerifier, SeesASwitchThatDoesNotExist) {
  const Plan plan = PlanOf({Connect({{2, 7}, {0x99, 1}})}, 4, 1);
  EXPECT_THAT(ComplaintsOf(plan),
              ElementsAre("step 1 makes a cable that joins no neighboring ranks",
                          "step 1 cannot be done: no switch has 0x99:1"));
}

TEST(PlanVerifier, ComparesActionAndChanges) {
  const std::string complaint = "step 1 does not do what its action says";
  Plan plan = GoodPlan();
  plan.steps[0].action = Action::Move;
  EXPECT_THAT(ComplaintsOf(plan), ElementsAre(complaint));
  // Two moves to ports that were free are no swap.
  plan = GoodPlan();
  plan.steps[0].changes[0].after->upper.port = 7;
  plan.steps[0].changes[1].after->upper.port = 7;
  EXPECT_THAT(ComplaintsOf(plan), ElementsAre(complaint));
  // A move to another port of the same switch moves nothing.
  plan = PlanOf({{Action::Move,
                  Trust::Sure,
                  Reason::WrongGroup,
                  {{Link{{3, 1}, {0x11, 1}}, Link{{3, 7}, {0x11, 1}}}},
                  {}}},
                4, 1);
  EXPECT_THAT(ComplaintsOf(plan), ElementsAre(complaint));
}

TEST(PlanVerifier, WantsTheUpperEndAbove) {
  Plan plan = GoodPlan();
  for (Change& change : plan.steps[0].changes) {
    std::swap(change.before->upper, change.before->lower);
  }
  EXPECT_THAT(ComplaintsOf(plan), ElementsAre("step 1 takes the lower end for the upper",
                                              "step 1 takes the lower end for the upper"));
}

TEST(PlanVerifier, WantsTheEarlierSwitchOfARankFirst) {
  Fabric fabric = TwoPods();
  Join({{0x11, 5}, {0x14, 5}}, fabric);
  EXPECT_THAT(
      Complaints(fabric, PlanOf({Disconnect({{0x11, 5}, {0x14, 5}}, Reason::SameRank)}, 1, 1)),
      IsEmpty());
  EXPECT_THAT(
      Complaints(fabric, PlanOf({Disconnect({{0x14, 5}, {0x11, 5}}, Reason::SameRank)}, 1, 1)),
      ElementsAre("step 1 does not name the earlier switch of a rank first"));
}

TEST(PlanVerifier, WantsReasonsThatTheCablesShow) {
  Plan plan = GoodPlan();
  for (const Reason reason : {Reason::SameRank, Reason::SkipsRank}) {
    plan.steps[0].reason = reason;
    EXPECT_THAT(ComplaintsOf(plan),
                ElementsAre("step 1 gives a reason that its cables do not show"));
  }
  plan.steps[0].reason = Reason::Rotated;
  EXPECT_THAT(ComplaintsOf(plan), ElementsAre("step 1 is not one of several swaps"));
  plan.steps[0].reason = Reason::Exchanged;
  EXPECT_THAT(ComplaintsOf(plan), IsEmpty());
  plan.steps[0].reason = Reason::LinkLacking;
  EXPECT_THAT(ComplaintsOf(plan), ElementsAre("step 1 is new exactly if its link lacks"));
}

// Three cables that have each got the spine of the next: two swaps, of which the second takes up a
// cable of the first.
TEST(PlanVerifier, WantsSwapsThatBelongTogetherToldAsSuch) {
  Fabric fabric = TwoPods();
  Part({{1, 1}, {0x11, 1}}, fabric);
  Part({{3, 1}, {0x14, 1}}, fabric);
  Part({{4, 2}, {0x15, 2}}, fabric);
  Join({{3, 1}, {0x11, 1}}, fabric);
  Join({{4, 2}, {0x14, 1}}, fabric);
  Join({{1, 1}, {0x15, 2}}, fabric);
  const Step first{Action::Swap,
                   Trust::Sure,
                   Reason::Rotated,
                   {{Link{{3, 1}, {0x11, 1}}, Link{{1, 1}, {0x11, 1}}},
                    {Link{{1, 1}, {0x15, 2}}, Link{{3, 1}, {0x15, 2}}}},
                   {}};
  Step second{Action::Swap,
              Trust::Sure,
              Reason::Rotated,
              {{Link{{4, 2}, {0x14, 1}}, Link{{3, 1}, {0x14, 1}}},
               {Link{{3, 1}, {0x15, 2}}, Link{{4, 2}, {0x15, 2}}}},
              {}};
  EXPECT_THAT(Complaints(fabric, PlanOf({first, second}, 6, 2)), IsEmpty());
  second.reason = Reason::WrongGroup;
  EXPECT_THAT(Complaints(fabric, PlanOf({first, second}, 6, 2)),
              ElementsAre("step 2 gives a reason of its own, though it goes on with the cable of "
                          "another"));
}

TEST(PlanVerifier, LetsNoStepChangeACableOfASwitchToItself) {
  Fabric fabric = TwoPods();
  Join({{1, 5}, {1, 6}}, fabric);
  Plan plan = PlanOf({Disconnect({{1, 5}, {1, 6}}, Reason::SameRank)}, 0, 0);
  plan.notes.push_back({NoteKind::SelfLoop, 0, {1}, {5, 6}});
  EXPECT_THAT(Complaints(fabric, plan),
              ElementsAre("step 1 changes a cable of a switch to itself"));
}

TEST(PlanVerifier, WantsNewCablesBetweenNeighboringRanks) {
  Plan plan = GoodPlan();
  plan.steps.push_back(Connect({{0x11, 5}, {0x14, 5}}));
  plan.misfits = 5;
  EXPECT_THAT(ComplaintsOf(plan),
              ElementsAre("step 2 makes a cable that joins no neighboring ranks"));
}

// --- Trust.

TEST(PlanVerifier, WantsAlternativesExactlyFromThoseWhoAsk) {
  Plan plan = GoodPlan();
  plan.steps[0].trust = Trust::Ask;
  EXPECT_THAT(ComplaintsOf(plan), ElementsAre("step 1 asks exactly if there are alternatives"));
}

TEST(PlanVerifier, DoesAlternatives) {
  Plan plan = GoodPlan();
  Step& step = plan.steps[0];
  step.trust = Trust::Ask;
  step.alternatives = {step.changes};
  EXPECT_THAT(ComplaintsOf(plan), ElementsAre("step 1, alternative 1 changes nothing else"));
  step.alternatives = {{}};
  EXPECT_THAT(ComplaintsOf(plan), ElementsAre("step 1, alternative 1 changes nothing else"));
  step.alternatives = {{{std::nullopt, std::nullopt}}};
  EXPECT_THAT(ComplaintsOf(plan), ElementsAre("step 1, alternative 1 has an empty change"));
  step.alternatives = {{{std::nullopt, Link{{2, 7}, {0x11, hostPort}}}}};
  EXPECT_THAT(ComplaintsOf(plan),
              ElementsAre("step 1, alternative 1 cannot be done: 0x11:8 is not free"));
}

TEST(PlanVerifier, WantsAlternativesThatAreAsGood) {
  Plan plan = GoodPlan();
  Step& step = plan.steps[0];
  step.trust = Trust::Ask;
  // The same pairs on other ports, and the same again.
  Changes other = step.changes;
  other[0].after->upper.port = 7;
  step.alternatives = {other};
  EXPECT_THAT(ComplaintsOf(plan), IsEmpty());
  step.alternatives = {other, other};
  EXPECT_THAT(ComplaintsOf(plan), ElementsAre("step 1, alternative 2 stands twice"));
  step.alternatives = {{other[0]}};
  EXPECT_THAT(ComplaintsOf(plan), ElementsAre("an alternative makes no proper tree"));
}

TEST(PlanVerifier, BelievesOnlyStepsThatMakeAProperGroup) {
  const Plan plan = PlanOf(
      {Disconnect({{3, 1}, {0x11, 1}}, Reason::WrongGroup), Connect({{1, 7}, {0x11, 1}})}, 4, 1);
  EXPECT_THAT(ComplaintsOf(plan),
              ElementsAre("step 2 does not ask, but its group is not proper afterwards",
                          "a group is not proper afterwards, though its switches have free ports"));
}

TEST(PlanVerifier, SeesACableThatIsLeftBesideTheOneTakenAway) {
  Fabric fabric = TwoPods();
  Join({{0x11, 5}, {0x14, 5}}, fabric);
  Join({{0x11, 6}, {0x14, 6}}, fabric);
  const Plan plan = PlanOf({Disconnect({{0x11, 5}, {0x14, 5}}, Reason::SameRank)}, 2, 1);
  EXPECT_THAT(Complaints(fabric, plan),
              ElementsAre("step 1 leaves a cable beside the one it takes",
                          "a cable joins no neighboring ranks afterwards"));
}

TEST(PlanVerifier, LetsNoCertainStepChangeAnUncertainGroup) {
  Plan plan = GoodPlan();
  plan.notes.push_back({NoteKind::UncertainGroup, 0, {1, 2, 0x11, 0x12, 0x13}, {}});
  EXPECT_THAT(ComplaintsOf(plan),
              ElementsAre("step 1 does not ask, but changes a group that is uncertain"));
}

TEST(PlanVerifier, LetsACertainStepJoinSwitchesOfTwoUncertainGroups) {
  Plan plan = GoodPlan();
  plan.notes.push_back({NoteKind::UncertainGroup, 0, {1, 2}, {}});
  plan.notes.push_back({NoteKind::UncertainGroup, 1, {0x11, 0x12, 0x13}, {}});
  EXPECT_THAT(ComplaintsOf(plan), IsEmpty());
}

TEST(PlanVerifier, LetsAFullSwitchLackACable) {
  Fabric fabric = TwoPods();
  Part({{1, 1}, {0x11, 1}}, fabric);
  Join({{0x12, 5}, {0x13, 5}}, fabric);
  const Plan plan = PlanOf({Disconnect({{0x12, 5}, {0x13, 5}}, Reason::SameRank)}, 2, 1);
  const std::string complaint =
      "a group is not proper afterwards, though its switches have free ports";
  EXPECT_THAT(Complaints(fabric, plan), ElementsAre(complaint));
  for (int port = 1; port <= 8; ++port) {
    if (!fabric.cables.contains({0x11, port})) fabric.taken.insert({0x11, port});
  }
  EXPECT_THAT(Complaints(fabric, plan), IsEmpty());
}

// --- Paths.

// Leaf 0x14 has lost its second cable, and its first one leads to the wrong pod.
Fabric NearlyCutOff() {
  Fabric fabric = TwoPods();
  Part({{3, 1}, {0x14, 1}}, fabric);
  Part({{4, 1}, {0x14, 2}}, fabric);
  Join({{1, 7}, {0x14, 1}}, fabric);
  return fabric;
}

TEST(PlanVerifier, WantsPathsKeptWhereAnotherOrderKeepsThem) {
  const Step unplug = Disconnect({{1, 7}, {0x14, 1}}, Reason::WrongGroup);
  const Step first = Connect({{3, 1}, {0x14, 3}});
  const Step second = Connect({{4, 1}, {0x14, 2}});
  const Fabric fabric = NearlyCutOff();
  EXPECT_THAT(Complaints(fabric, PlanOf({first, unplug, second}, 3, 1)), IsEmpty());
  EXPECT_THAT(Complaints(fabric, PlanOf({unplug, first, second}, 3, 1)),
              ElementsAre("a switch with hosts is cut off between two steps, which another order "
                          "avoids"));
}

TEST(PlanVerifier, CountsCutsThatCannotBeAvoided) {
  Fabric fabric = NearlyCutOff();
  for (int port = 2; port < hostPort; ++port) fabric.taken.insert({0x14, port});
  const Plan plan = PlanOf(
      {Disconnect({{1, 7}, {0x14, 1}}, Reason::WrongGroup), Connect({{3, 1}, {0x14, 1}})}, 3, 1);
  const Fabric built = Built(fabric, plan);
  EXPECT_EQ(VerifyPlan(fabric, plan, &built).cuts, 1U);
}

// --- What was built.

TEST(PlanVerifier, ComparesWhatWasBuilt) {
  const Fabric fabric = SwappedPods();
  const Plan plan = GoodPlan();
  const auto complaints = [&](const Fabric& built) {
    return VerifyPlan(fabric, plan, &built).complaints;
  };
  EXPECT_THAT(VerifyPlan(fabric, plan, nullptr).complaints,
              ElementsAre("the steps are said not to be doable"));
  Fabric built = Built(fabric, plan);
  std::swap(built.switches[0], built.switches[1]);
  EXPECT_THAT(complaints(built), ElementsAre("the switches are not those from before"));
  built = Built(fabric, plan);
  built.taken.erase({0x11, hostPort});
  EXPECT_THAT(complaints(built),
              ElementsAre("something else than cables between switches has changed"));
  built = Built(fabric, plan);
  Part({{2, 1}, {0x11, 2}}, built);
  EXPECT_THAT(complaints(built), ElementsAre("the steps lead to other cables than those built"));
  built = Built(fabric, plan);
  built.speeds[{2, 1}] = 0x200;
  EXPECT_THAT(complaints(built), ElementsAre("a cable that stays has another speed: 0x2:1"));
  built = Built(fabric, plan);
  built.speeds[{1, 1}] = 0x200;
  EXPECT_THAT(complaints(built), ElementsAre("a moved cable has another speed: 0x1:1 - 0x11:1"));
}

// --- Numbers.

TEST(PlanVerifier, CountsMisfits) {
  Plan plan = GoodPlan();
  plan.misfits = 5;
  EXPECT_THAT(ComplaintsOf(plan), ElementsAre("the misfits are not what the steps change"));
  plan.misfits = 3;
  EXPECT_THAT(ComplaintsOf(plan), ElementsAre("more cables change than there are misfits",
                                              "the misfits are not what the steps change"));
  EXPECT_THAT(Complaints(TwoPods(), {Status::Abstained, "why", 2, 1, {}, 0, {}}),
              ElementsAre("there are no misfits exactly in a proper tree",
                          "the misfits are not what the steps change"));
}

TEST(PlanVerifier, TriesFewerSteps) {
  Plan plan = GoodPlan();
  plan.lowerBound = 2;
  EXPECT_THAT(ComplaintsOf(plan), ElementsAre("there are fewer steps than the lower bound",
                                              "fewer steps than the lower bound do the same"));
  plan.lowerBound = 0;
  EXPECT_THAT(ComplaintsOf(plan), ElementsAre("steps have a lower bound of nothing"));
}

TEST(FewestSteps, AreFoundByTrial) {
  Fabric fabric = TwoPods();
  const Pairs clean = Cabling(fabric).PairsJoined();
  EXPECT_TRUE(CanDoInFewer(fabric, clean, 1));
  EXPECT_FALSE(CanDoInFewer(fabric, clean, 0));
  // Three cables that have each got the spine of the next: two swaps do what three moves do.
  Part({{1, 1}, {0x11, 1}}, fabric);
  Part({{2, 2}, {0x12, 2}}, fabric);
  Part({{3, 1}, {0x14, 1}}, fabric);
  Join({{2, 2}, {0x11, 1}}, fabric);
  Join({{3, 1}, {0x12, 2}}, fabric);
  Join({{1, 1}, {0x14, 1}}, fabric);
  EXPECT_FALSE(CanDoInFewer(fabric, clean, 2));
  EXPECT_TRUE(CanDoInFewer(fabric, clean, 3));
}

TEST(FewestSteps, NeedFreePorts) {
  Fabric fabric = TwoPods();
  const Pairs clean = Cabling(fabric).PairsJoined();
  Part({{1, 1}, {0x11, 1}}, fabric);
  Join({{1, 1}, {0x14, 5}}, fabric);
  EXPECT_TRUE(CanDoInFewer(fabric, clean, 2));
  for (int port = 1; port <= 8; ++port) {
    if (!fabric.cables.contains({0x11, port})) fabric.taken.insert({0x11, port});
  }
  EXPECT_FALSE(CanDoInFewer(fabric, clean, 2));
}

// --- Notes.

std::vector<std::string> ComplaintsOfNote(const Note& note, const Fabric& fabric = TwoPods()) {
  return Complaints(fabric, {Status::Clean, "", 2, 0, {}, 0, {note}});
}

TEST(PlanVerifier, ChecksWhatNotesAreAbout) {
  EXPECT_THAT(ComplaintsOfNote({NoteKind::UnusualGroup, 0, {}, {}}),
              ElementsAre("a note is about no switch"));
  EXPECT_THAT(ComplaintsOfNote({NoteKind::UnusualGroup, 0, {2, 1}, {}}),
              ElementsAre("switches of a note are not in the model's order"));
  EXPECT_THAT(ComplaintsOfNote({NoteKind::UnusualGroup, 0, {1, 2}, {5, 4}}),
              ElementsAre("ports of a note do not ascend"));
  EXPECT_THAT(ComplaintsOfNote({NoteKind::SwitchWithoutTree, -1, {1}, {}}),
              ElementsAre("a note is wrong about whether a switch is in the tree"));
}

TEST(PlanVerifier, LooksIntoThePortsOfNotes) {
  EXPECT_THAT(ComplaintsOfNote({NoteKind::DeadSwitch, 0, {1, 2}, {7}}), IsEmpty());
  EXPECT_THAT(ComplaintsOfNote({NoteKind::DeadSwitch, 0, {1}, {1, 7}}),
              ElementsAre("the port of a dead neighbor is not empty"));
  EXPECT_THAT(ComplaintsOfNote({NoteKind::DeadSwitch, 1, {0x11}, {hostPort}}),
              ElementsAre("the port of a dead neighbor is not empty"));
  EXPECT_THAT(ComplaintsOfNote({NoteKind::SelfLoop, 0, {1}, {1}}),
              ElementsAre("a cable to itself is none"));
  EXPECT_THAT(ComplaintsOfNote({NoteKind::HostsOnSpines, 0, {1}, {}}),
              ElementsAre("a spine with hosts is none"));
  EXPECT_THAT(ComplaintsOfNote({NoteKind::HostsOnSpines, 1, {0x11}, {}}),
              ElementsAre("a spine with hosts is none"));
}

TEST(PlanVerifier, WantsNotesOfWhatNoStepCures) {
  Fabric fabric = TwoPods();
  Join({{1, 5}, {1, 6}}, fabric);
  const Plan clean{Status::Clean, "", 2, 0, {}, 0, {}};
  EXPECT_THAT(Complaints(fabric, clean),
              ElementsAre("0x1 is cabled to itself, and no note tells it"));
  EXPECT_THAT(ComplaintsOfNote({NoteKind::SelfLoop, 0, {1}, {5, 6}}, fabric), IsEmpty());

  fabric = TwoPods();
  fabric.switches.push_back({0x21, 8, -1, false});
  fabric.switches.push_back({0x22, 8, -1, false});
  Join({{0x21, 1}, {0x22, 1}}, fabric);
  EXPECT_THAT(Complaints(fabric, clean),
              ElementsAre("0x21 is not in the tree, and no note tells it",
                          "0x22 is not in the tree, and no note tells it"));
  EXPECT_THAT(ComplaintsOfNote({NoteKind::SwitchWithoutTree, -1, {0x21, 0x22}, {}}, fabric),
              IsEmpty());
}

}  // namespace
}  // namespace fabscope::internal::plain
