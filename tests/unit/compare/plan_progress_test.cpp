#include "compare/plan_progress.h"

#include <fstream>
#include <gmock/gmock.h>

#include "compare/cures.h"
#include "reports/repair_report.h"
#include "support/folder_test.h"
#include "support/repair_fixture.h"

namespace fabscope::internal {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

// Two pods of two leaves and two mids; a plan is written, read again and followed in fabrics of
// later days. A spare port of every switch is 5 and above.
class PlanProgressTest : public RepairTest {
 protected:
  PlanProgressTest() { AddThreeLevelTree(tree, 2, 2, 2, 2, 2); }
  ~PlanProgressTest() override { std::filesystem::remove(path); }

  TreeRanks PodRanks() { return Ranks({"root", "mid", "leaf"}); }
  RepairDocument Document(const RepairResult& result) const {
    std::ofstream stream(path);
    WriteRepairJson(result, stream);
    stream.close();
    RepairDocument document;
    const MaybeError error = LoadRepairDocument(path, document);
    EXPECT_FALSE(error) << error->Text();
    return document;
  }
  // A plan that puts right what has happened to the tree.
  RepairDocument PlanOf(RepairAction action, const CableChanges& cables,
                        std::vector<CableChanges> alternatives = {}) {
    RepairPlan plan;
    plan.ranks = PodRanks();
    plan.steps.push_back(Step(action, RepairReason::WrongGroup, cables));
    plan.steps.back().alternatives = std::move(alternatives);
    return Document(Result(Changed({Undo(cables)}), std::move(plan)));
  }
  static std::vector<std::string> Texts(const RepairDocument& plan, const IBFabric& fabric) {
    std::vector<std::string> texts;
    const SwitchNames names(fabric, 0);
    for (const StepProgress& step : FollowPlan(plan, fabric)) {
      texts.push_back(ProgressText(step, names));
    }
    return texts;
  }

  CableChanges Swap() { return Exchange("mid1.0:1", "leaf0.0:3", "mid0.0:1", "leaf1.0:3"); }
  CableChanges Moved() { return Move("mid1.1:5", "mid0.1:1", "leaf0.0:4"); }
  CableChanges Lacking() { return Plug("mid0.1:2", "leaf0.1:4"); }
  CableChanges Spare() { return Unplug("mid1.1:6", "leaf0.1:5"); }

  const std::string path = ::testing::TempDir() + "plan_" +
                           ::testing::UnitTest::GetInstance()->current_test_info()->name();
};

TEST_F(PlanProgressTest, NothingIsDoneInTheSameFabric) {
  EXPECT_THAT(Texts(PlanOf(RepairAction::Swap, Swap()), *Changed({Undo(Swap())})),
              ElementsAre("1. not done"));
  EXPECT_THAT(Texts(PlanOf(RepairAction::Move, Moved()), *Changed({Undo(Moved())})),
              ElementsAre("1. not done"));
  EXPECT_THAT(Texts(PlanOf(RepairAction::Connect, Lacking()), *Changed({Undo(Lacking())})),
              ElementsAre("1. not done"));
  EXPECT_THAT(Texts(PlanOf(RepairAction::Disconnect, Spare()), *Changed({Undo(Spare())})),
              ElementsAre("1. not done"));
}

TEST_F(PlanProgressTest, NothingIsDoneWhereOnlyOthersHaveChanged) {
  const CableChanges other = Unplug("root0:1", "mid0.0:3");
  EXPECT_THAT(Texts(PlanOf(RepairAction::Swap, Swap()), *Changed({Undo(Swap()), other})),
              ElementsAre("1. not done"));
  EXPECT_THAT(Texts(PlanOf(RepairAction::Connect, Lacking()), *Changed({Undo(Lacking()), other})),
              ElementsAre("1. not done"));
}

TEST_F(PlanProgressTest, AllIsDoneInTheTreeAsItShouldBe) {
  EXPECT_THAT(Texts(PlanOf(RepairAction::Swap, Swap()), *Changed({})), ElementsAre("1. done"));
  EXPECT_THAT(Texts(PlanOf(RepairAction::Move, Moved()), *Changed({})), ElementsAre("1. done"));
  EXPECT_THAT(Texts(PlanOf(RepairAction::Connect, Lacking()), *Changed({})),
              ElementsAre("1. done"));
  EXPECT_THAT(Texts(PlanOf(RepairAction::Disconnect, Spare()), *Changed({})),
              ElementsAre("1. done"));
}

TEST_F(PlanProgressTest, AnAlternativeIsAsGood) {
  const RepairDocument plan = PlanOf(
      RepairAction::Disconnect, Spare(),
      {Move("mid1.1:6", "mid0.1:6", "leaf0.1:5"), Move("mid1.1:6", "mid0.1:5", "leaf0.1:5")});
  EXPECT_THAT(Texts(plan, *Changed({Plug("mid0.1:5", "leaf0.1:5")})),
              ElementsAre("1. done: alternative b"));
}

TEST_F(PlanProgressTest, ACableElsewhereIsToldWithItsPlace) {
  EXPECT_THAT(Texts(PlanOf(RepairAction::Move, Moved()),
                    *Changed({Move("mid0.1:1", "mid0.1:7", "leaf0.0:4")})),
              ElementsAre("1. done otherwise: leaf0.0 port 4 now leads to mid0.1 port 7"));
  EXPECT_THAT(
      Texts(PlanOf(RepairAction::Move, Moved()), *Changed({Unplug("mid0.1:1", "leaf0.0:4")})),
      ElementsAre("1. done otherwise: leaf0.0 port 4 is empty"));
  EXPECT_THAT(Texts(PlanOf(RepairAction::Connect, Lacking()),
                    *Changed({Move("mid0.1:2", "mid0.1:7", "leaf0.1:4")})),
              ElementsAre("1. done otherwise: leaf0.1 port 4 now leads to mid0.1 port 7"));
  EXPECT_THAT(
      Texts(PlanOf(RepairAction::Disconnect, Spare()), *Changed({Plug("mid1.1:6", "leaf1.0:5")})),
      ElementsAre("1. done otherwise: mid1.1 port 6 now leads to leaf1.0 port 5"));
}

TEST_F(PlanProgressTest, HalfASwapIsToldByTheCableThatIsNotInPlace) {
  EXPECT_THAT(
      Texts(PlanOf(RepairAction::Swap, Swap()), *Changed({Unplug("mid0.0:1", "leaf0.0:3")})),
      ElementsAre("1. done otherwise: leaf0.0 port 3 is empty"));
}

TEST_F(PlanProgressTest, AStepMayGoOnWithTheCableOfAnEarlierOne) {
  const CableChanges first = Exchange("mid1.0:1", "leaf0.0:3", "mid0.0:1", "leaf0.0:4");
  const CableChanges second = Exchange("mid1.0:1", "leaf0.0:4", "mid0.1:1", "leaf1.0:3");
  RepairPlan steps;
  steps.ranks = PodRanks();
  for (const CableChanges& cables : {first, second}) {
    steps.steps.push_back(Step(RepairAction::Swap, RepairReason::Rotated, cables));
  }
  const std::vector<CableChanges> faults{Undo(second), Undo(first)};
  const RepairDocument plan = Document(Result(Changed(faults), std::move(steps)));
  const CableChanges other = Unplug("root0:1", "mid0.0:3");
  EXPECT_THAT(Texts(plan, *Changed({})), ElementsAre("1. done", "2. done"));
  EXPECT_THAT(Texts(plan, *Changed({Undo(second)})), ElementsAre("1. done", "2. not done"));
  EXPECT_THAT(Texts(plan, *Changed({Undo(second), Undo(first), other})),
              ElementsAre("1. not done", "2. not done"));
  EXPECT_THAT(Texts(plan, *Changed({Undo(second), Unplug("mid1.0:1", "leaf0.0:4")})),
              ElementsAre("1. done otherwise: leaf0.0 port 4 is empty",
                          "2. done otherwise: leaf0.0 port 4 is empty, leaf1.0 port 3 now leads "
                          "to mid0.1 port 1"));
}

TEST_F(PlanProgressTest, AMissingSwitchIsNamed) {
  TestFabric other;
  NodeSpec leaf;
  leaf.guid = tree["leaf0.0"]->guid;
  leaf.name = "renamed";
  leaf.numPorts = 8;
  other.Node(leaf);
  EXPECT_THAT(Texts(PlanOf(RepairAction::Move, Moved()), other.Build()),
              ElementsAre("1. not done: mid1.1 (0x0000000000000008) port 5 is not there, mid0.1 "
                          "(0x0000000000000006) port 1 is not there"));
}

TEST_F(PlanProgressTest, APlanOfAnotherFabricIsToldByItsSwitches) {
  const RepairDocument plan = PlanOf(RepairAction::Move, Moved());
  EXPECT_EQ(WhyForeign(plan, tree.Build()), "");
  TestFabric other;
  for (std::uint64_t guid = 8; guid <= 30; ++guid) {
    other.SwitchOfGuid(guid, "s" + std::to_string(guid));
  }
  EXPECT_EQ(WhyForeign(plan, other.Build()),
            "the plan is for another fabric: of the 12 switches that it names 5 are there");
  TestFabric half;
  for (std::uint64_t guid = 7; guid <= 30; ++guid) {
    half.SwitchOfGuid(guid, "s" + std::to_string(guid));
  }
  EXPECT_EQ(WhyForeign(plan, half.Build()), "");
}

TEST_F(PlanProgressTest, StepsThatWereNotPlannedAreNew) {
  const RepairDocument plan = PlanOf(RepairAction::Move, Moved(), {Lacking()});
  const std::vector<RepairStep> steps{
      Step(RepairAction::Move, RepairReason::WrongGroup, Moved()),
      Step(RepairAction::Connect, RepairReason::LinkLacking, Lacking()),
      Step(RepairAction::Disconnect, RepairReason::TooMany, Spare())};
  const auto others = StepsNotIn(plan, steps, tree.Build());
  EXPECT_THAT(others, ElementsAre(&steps[2]));
}

TEST_F(PlanProgressTest, TheSameChangeInAnotherOrderIsNotNew) {
  const RepairDocument plan = PlanOf(RepairAction::Swap, Swap());
  CableChanges turned = Swap();
  std::swap(turned[0], turned[1]);
  std::swap(turned[0].before->upper, turned[0].before->lower);
  const std::vector<RepairStep> steps{Step(RepairAction::Swap, RepairReason::WrongGroup, turned)};
  EXPECT_THAT(StepsNotIn(plan, steps, tree.Build()), IsEmpty());
}

TEST_F(PlanProgressTest, TheReportEndsWithASum) {
  RepairPlan today;
  today.ranks = PodRanks();
  today.steps.push_back(Step(RepairAction::Disconnect, RepairReason::TooMany, Spare()));
  const RepairResult now = Result(Changed({Undo(Spare())}), std::move(today));
  const RepairDocument plan = PlanOf(RepairAction::Move, Moved());
  std::ostringstream stream;
  WriteProgressReport(FollowPlan(plan, *now.fabric), now,
                      StepsNotIn(plan, now.proven.plan.steps, *now.fabric), stream);
  EXPECT_EQ(stream.str(),
            "1. done\n"
            "new: [sure] disconnect leaf0.1 port 5 from mid1.1 port 6\n"
            "1 of 1 repairs done, 1 new\n");
}

TEST_F(PlanProgressTest, TheReportTellsThatNothingMoreCanBeProposed) {
  RepairPlan today;
  today.ranks = PodRanks();
  today.status = RepairStatus::Abstained;
  today.message = "too much is wrong";
  const RepairResult now = Result(Changed({Undo(Spare())}), std::move(today));
  std::ostringstream stream;
  WriteProgressReport({}, now, {}, stream);
  EXPECT_EQ(stream.str(),
            "0 of 0 repairs done, 0 new; beyond that none proposed: too much is wrong\n");
}

class CuresTest : public PlanProgressTest {};

TEST_F(CuresTest, AFindingBelongsToTheStepsAtItsSwitches) {
  RepairPlan plan;
  plan.ranks = PodRanks();
  plan.steps.push_back(Step(RepairAction::Connect, RepairReason::LinkLacking, Lacking()));
  plan.steps.push_back(
      Step(RepairAction::Connect, RepairReason::LinkLacking, Plug("root0:2", "mid1.0:3")));
  auto fabric = Changed({Undo(plan.steps[0].cables), Undo(plan.steps[1].cables)});
  const RepairResult result = Result(std::move(fabric), std::move(plan));
  const auto cures =
      CuresOf(result.proven.plan.steps, {*result.before.topology, result.before.findings},
              {*result.proven.after.topology, result.proven.after.findings});
  EXPECT_EQ(result.before.findings.size(), 9U);
  EXPECT_THAT(cures, ElementsAre(ElementsAre(1, 4, 5, 6), ElementsAre(0, 2, 3, 7, 8)));
}

TEST_F(CuresTest, WhatIsLeftIsNotCured) {
  RepairPlan plan;
  plan.ranks = PodRanks();
  plan.steps.push_back(
      Step(RepairAction::Connect, RepairReason::LinkLacking, Plug("root0:2", "mid1.0:3")));
  auto fabric = Changed({Undo(Lacking()), Undo(plan.steps[0].cables)});
  const RepairResult result = Result(std::move(fabric), std::move(plan));
  const auto cures =
      CuresOf(result.proven.plan.steps, {*result.before.topology, result.before.findings},
              {*result.proven.after.topology, result.proven.after.findings});
  EXPECT_EQ(result.before.findings.size(), 9U);
  EXPECT_THAT(cures, ElementsAre(ElementsAre(0, 2, 3, 7, 8)));
}

class LinkCuresTest : public RepairTest {};

TEST_F(LinkCuresTest, ALinkBelongsToTheStepThatPlugsIt) {
  AddTwoLevelTree(tree, 3, 3, 1);
  const auto between = [this](const char* root, const char* leaf) {
    return CableChanges{{std::nullopt, CableBetween(root, leaf)}};
  };
  RepairPlan plan;
  plan.ranks = Ranks({"root", "leaf"});
  for (const char* leaf : {"leaf0", "leaf1"}) {
    plan.steps.push_back(
        Step(RepairAction::Connect, RepairReason::LinkLacking, between("root0", leaf)));
  }
  auto fabric = Changed({Undo(plan.steps[0].cables), Undo(plan.steps[1].cables)});
  const RepairResult result = Result(std::move(fabric), std::move(plan));
  const auto cures =
      CuresOf(result.proven.plan.steps, {*result.before.topology, result.before.findings},
              {*result.proven.after.topology, result.proven.after.findings});
  const auto linesOf = [&](std::size_t step) {
    std::vector<std::string> lines;
    for (const std::size_t place : cures[step]) {
      const auto* missing = std::get_if<MissingLink>(&result.before.findings[place]);
      if (missing != nullptr) lines.emplace_back(missing->line->name);
    }
    return lines;
  };
  EXPECT_THAT(linesOf(0), ElementsAre("leaf0"));
  EXPECT_THAT(linesOf(1), ElementsAre("leaf1"));
}

}  // namespace
}  // namespace fabscope::internal
