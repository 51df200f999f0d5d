#include "repair/find_repairs.h"

#include <gmock/gmock.h>

#include "repair/inferred_ranks.h"
#include "support/repair_fixture.h"

namespace fabscope::internal {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using ::testing::UnorderedElementsAreArray;

class FindRepairsTest : public RepairTest {
 protected:
  // The cables before and after.
  static std::pair<std::vector<RepairCable>, std::vector<RepairCable>> Sides(
      const CableChanges& changes) {
    std::pair<std::vector<RepairCable>, std::vector<RepairCable>> sides;
    for (const CableChange& change : changes) {
      if (change.before) sides.first.push_back(*change.before);
      if (change.after) sides.second.push_back(*change.after);
    }
    return sides;
  }

  // The plan for the tree after these changes; its steps undo them, cable by cable.
  void ExpectUndone(const CableChanges& changes, RepairAction action, RepairReason reason) {
    const auto fabric = Changed({changes});
    const RepairPlan plan = FindRepairs(*fabric);
    EXPECT_EQ(plan.status, RepairStatus::Repairs);
    ASSERT_THAT(plan.steps, SizeIs(1));
    EXPECT_EQ(plan.steps[0].action, action);
    EXPECT_EQ(plan.steps[0].trust, RepairClass::Sure);
    EXPECT_EQ(plan.steps[0].reason, reason);
    // A swap of upper ends may as well be told as one of lower ends.
    EXPECT_THAT(Sides(plan.steps[0].cables).first,
                UnorderedElementsAreArray(Sides(changes).second));
    EXPECT_THAT(Sides(plan.steps[0].cables).second,
                UnorderedElementsAreArray(Sides(changes).first));
    EXPECT_EQ(plan.lowerBound, 1U);
    const auto repaired = ApplySteps(*fabric, plan.steps);
    ASSERT_NE(repaired, nullptr);
    EXPECT_EQ(CountMisfits(*repaired, plan.ranks), 0U);
  }
};

TEST_F(FindRepairsTest, LeavesACleanTreeAlone) {
  AddThreeLevelTree(tree, 3, 4, 3, 2, 2);
  const RepairPlan plan = FindRepairs(tree.Build());
  EXPECT_EQ(plan.status, RepairStatus::Clean);
  EXPECT_EQ(plan.misfits, 0U);
  EXPECT_THAT(plan.steps, IsEmpty());
  EXPECT_THAT(plan.notes, IsEmpty());
}

TEST_F(FindRepairsTest, SwapsBackUpLinksOfTwoPods) {
  AddThreeLevelTree(tree, 3, 4, 3, 2, 2);
  ExpectUndone(SwapUpperEnds("mid0.0", "leaf0.1", "mid1.1", "leaf1.2"), RepairAction::Swap,
               RepairReason::WrongGroup);
}

TEST_F(FindRepairsTest, SwapsBackUpLinksInsideAPod) {
  AddThreeLevelTree(tree, 3, 4, 3, 2, 2);
  ExpectUndone(SwapUpperEnds("mid0.0", "leaf0.1", "mid0.2", "leaf0.3"), RepairAction::Swap,
               RepairReason::WrongSpine);
}

TEST_F(FindRepairsTest, TellsCablesThatChangePlacesAsSuch) {
  AddThreeLevelTree(tree, 3, 4, 3, 2, 2);
  const CableChanges rotated = SwapUpperEnds("mid0.0", "leaf0.1", "mid1.1", "leaf1.2");
  const RepairCable third = CableBetween("mid2.0", "leaf2.1");
  const RepairCable second = *rotated[1].after;
  const auto fabric = Changed({rotated,
                               {{second, RepairCable{third.upper, second.lower}},
                                {third, RepairCable{second.upper, third.lower}}}});
  const RepairPlan plan = FindRepairs(*fabric);
  ASSERT_THAT(plan.steps, SizeIs(2));
  for (const RepairStep& step : plan.steps) {
    EXPECT_EQ(step.action, RepairAction::Swap);
    EXPECT_EQ(step.reason, RepairReason::Rotated);
  }
}

TEST_F(FindRepairsTest, TellsNoReasonThatHoldsForOneCableOfASwapOnly) {
  AddThreeLevelTree(tree, 3, 4, 3, 2, 2);
  const RepairCable above = CableBetween("root0", "mid0.0");
  const RepairCable below = CableBetween("mid1.1", "leaf1.2");
  const auto fabric = Changed({{{above, RepairCable{above.upper, below.lower}},
                                {below, RepairCable{above.lower, below.upper}}}});
  const RepairPlan plan = FindRepairs(*fabric);
  ASSERT_THAT(plan.steps, SizeIs(1));
  EXPECT_EQ(plan.steps[0].action, RepairAction::Swap);
  EXPECT_EQ(plan.steps[0].reason, RepairReason::Exchanged);
}

TEST_F(FindRepairsTest, PlugsInAMissingCableAtItsOldPorts) {
  AddThreeLevelTree(tree, 3, 4, 3, 2, 2);
  ExpectUndone({{CableBetween("mid1.1", "leaf1.2"), std::nullopt}}, RepairAction::Connect,
               RepairReason::LinkLacking);
}

TEST_F(FindRepairsTest, MovesBackACableThatEndsInAnotherPod) {
  AddThreeLevelTree(tree, 3, 4, 3, 2, 2);
  const RepairCable cable = CableBetween("mid0.0", "leaf0.1");
  ExpectUndone({{cable, RepairCable{FreeEnd("mid1.0"), cable.lower}}}, RepairAction::Move,
               RepairReason::WrongGroup);
}

TEST_F(FindRepairsTest, TakesAwayACableBetweenLeaves) {
  AddThreeLevelTree(tree, 3, 4, 3, 2, 2);
  ExpectUndone({{std::nullopt, RepairCable{FreeEnd("leaf0.0"), FreeEnd("leaf1.0")}}},
               RepairAction::Disconnect, RepairReason::SameRank);
}

TEST_F(FindRepairsTest, TakesAwayACableFromARootToALeaf) {
  AddThreeLevelTree(tree, 3, 4, 3, 2, 2);
  const auto fabric =
      Changed({{{std::nullopt, RepairCable{FreeEnd("root0"), FreeEnd("leaf1.0")}}}});
  const RepairPlan plan = FindRepairs(*fabric);
  ASSERT_THAT(plan.steps, SizeIs(1));
  EXPECT_EQ(plan.steps[0].action, RepairAction::Disconnect);
  EXPECT_EQ(plan.steps[0].reason, RepairReason::SkipsRank);
}

TEST_F(FindRepairsTest, NotesTheGapThatADeadMidLeaves) {
  AddThreeLevelTree(tree, 4, 4, 3, 2, 2);
  std::vector<CableChanges> pulled;
  for (const char* leaf : {"leaf1.0", "leaf1.1", "leaf1.2", "leaf1.3"}) {
    pulled.push_back({{CableBetween("mid1.1", leaf), std::nullopt}});
  }
  for (const char* root : {"root2", "root3"}) {
    pulled.push_back({{CableBetween(root, "mid1.1"), std::nullopt}});
  }
  const RepairPlan plan = FindRepairs(*Changed(pulled));
  EXPECT_EQ(plan.status, RepairStatus::Clean);
  ASSERT_FALSE(plan.notes.empty());
  EXPECT_EQ(plan.notes[0].kind, RepairNote::Kind::DeadSwitch);
  EXPECT_EQ(plan.notes[0].rank, 1);
}

TEST_F(FindRepairsTest, NotesACableFromASwitchToItself) {
  AddTwoLevelTree(tree, 3, 5, 2);
  tree.Link("leaf2", 8, "leaf2", 9);
  const RepairPlan plan = FindRepairs(tree.Build());
  EXPECT_EQ(plan.status, RepairStatus::Clean);
  ASSERT_THAT(plan.notes, SizeIs(1));
  EXPECT_EQ(plan.notes[0].kind, RepairNote::Kind::SelfLoop);
  EXPECT_THAT(plan.notes[0].ports, ElementsAre(8, 9));
}

TEST_F(FindRepairsTest, AbstainsWhereMoreThanAQuarterOfTheCablesAreWrong) {
  tree.Switch("root0").Switch("root1");
  for (int i = 0; i < 12; ++i) {
    const std::string leaf = "leaf" + std::to_string(i);
    const std::string host = "host" + std::to_string(i);
    tree.Switch(leaf).Host(host).Cable(leaf, host).Cable("root0", leaf).Cable("root1", leaf);
  }
  for (int leaf = 0; leaf < 12; ++leaf) {
    for (int far = leaf + 1; far < 12; far += 3) {
      tree.Cable("leaf" + std::to_string(leaf), "leaf" + std::to_string(far));
    }
  }
  const RepairPlan plan = FindRepairs(tree.Build(), Ranks({"root", "leaf"}));
  EXPECT_EQ(plan.status, RepairStatus::Abstained);
  EXPECT_EQ(plan.message, "more than a quarter of the cables between switches do not fit the tree");
  EXPECT_THAT(plan.steps, IsEmpty());
}

TEST_F(FindRepairsTest, AbstainsWhereALinkLacksAndNoPortIsFree) {
  for (const char* name : {"root0", "root1", "leaf0", "leaf1", "leaf2"}) tree.Switch(name, 3);
  for (const char* leaf : {"leaf0", "leaf1", "leaf2"}) {
    tree.Cable("root0", leaf);
    if (std::string(leaf) != "leaf2") tree.Cable("root1", leaf);
  }
  int host = 0;
  for (const char* owner : {"leaf0", "leaf1", "leaf2", "leaf2"}) {
    const std::string name = "host" + std::to_string(host++);
    tree.Host(name).Cable(owner, name);
  }
  const RepairPlan plan = FindRepairs(tree.Build(), Ranks({"root", "leaf"}));
  EXPECT_EQ(plan.status, RepairStatus::Abstained);
  EXPECT_EQ(plan.message, "links are missing, but no port is free for them");
}

// Of two groups each lacks a link; hosts have all ports of the leaf of one.
TEST_F(FindRepairsTest, TellsTheStepsForTheRestWhereAGroupIsLeftOut) {
  for (const std::string side : {"a", "b"}) {
    for (const char* root : {"root0", "root1"}) tree.Switch(root + side);
    for (int i = 0; i < 4; ++i) tree.Switch("leaf" + std::to_string(i) + side, 4);
    for (int i = 0; i < 4; ++i) {
      const std::string leaf = "leaf" + std::to_string(i) + side;
      tree.Cable("root0" + side, leaf);
      if (i != 3) tree.Cable("root1" + side, leaf);
      for (int host = 0; host < (i == 3 && side == "a" ? 3 : 1); ++host) {
        const std::string name = "host" + std::to_string(host) + leaf;
        tree.Host(name).Cable(leaf, name);
      }
    }
  }
  const RepairPlan plan = FindRepairs(tree.Build(), Ranks({"root", "leaf"}));
  EXPECT_EQ(plan.status, RepairStatus::Abstained);
  EXPECT_EQ(plan.message, "links are missing, but no port is free for them");
  ASSERT_THAT(plan.steps, SizeIs(1));
  ASSERT_TRUE(plan.steps[0].cables[0].after);
  EXPECT_EQ(plan.steps[0].cables[0].after->lower.node, tree["leaf3b"]->index);
}

TEST_F(FindRepairsTest, NotesALeafThatHasLostAllItsCables) {
  AddTwoLevelTree(tree, 2, 5, 2);
  tree.Switch("spare");
  std::vector<CableChanges> lost;
  for (const char* root : {"root0", "root1"}) {
    lost.push_back({{CableBetween(root, "leaf2"), std::nullopt}});
  }
  const RepairPlan plan = FindRepairs(*Changed(lost));
  const auto isAboutStrangers = [](const RepairNote& note) {
    return note.kind == RepairNote::Kind::SwitchWithoutTree;
  };
  const auto note = std::find_if(plan.notes.begin(), plan.notes.end(), isAboutStrangers);
  ASSERT_NE(note, plan.notes.end());
  EXPECT_THAT(note->switches, ElementsAre(tree["leaf2"]->index));
}

// Nearly every step cuts a ring into two, which takes long to see.
TEST_F(FindRepairsTest, PutsAllStepsOfALongRingInAnOrderInWhichTheyCanBeDone) {
  constexpr int count = 6000;
  const auto nameOf = [](const char* kind, int i) { return kind + std::to_string(i); };
  for (int i = 0; i < count; ++i) {
    tree.Switch(nameOf("leaf", i)).Host(nameOf("host", i));
    tree.Cable(nameOf("leaf", i), nameOf("host", i));
  }
  for (int i = 0; i < count; ++i) tree.Cable(nameOf("leaf", i), nameOf("leaf", (i + 1) % count));
  const IBFabric& fabric = tree.Build();
  const RepairPlan plan = FindRepairs(fabric);
  EXPECT_EQ(plan.status, RepairStatus::Repairs);
  const auto repaired = ApplySteps(fabric, plan.steps);
  ASSERT_NE(repaired, nullptr);
  EXPECT_EQ(CountMisfits(*repaired, plan.ranks), 0U);
}

TEST_F(FindRepairsTest, DoesNoStepWhosePortIsTaken) {
  AddTwoLevelTree(tree, 3, 5, 2);
  const RepairCable taken = CableBetween("root0", "leaf0");
  const RepairStep step = Step(RepairAction::Connect, RepairReason::LinkLacking,
                               {{std::nullopt, RepairCable{FreeEnd("root1"), taken.lower}}});
  EXPECT_EQ(ApplySteps(tree.Build(), std::vector{step}), nullptr);
}

TEST_F(FindRepairsTest, DoesNoStepWhoseCableIsNotThere) {
  AddTwoLevelTree(tree, 3, 5, 2);
  const RepairStep step = Step(RepairAction::Disconnect, RepairReason::TooMany,
                               {{RepairCable{FreeEnd("root0"), FreeEnd("leaf0")}, std::nullopt}});
  EXPECT_EQ(ApplySteps(tree.Build(), std::vector{step}), nullptr);
}

}  // namespace
}  // namespace fabscope::internal
