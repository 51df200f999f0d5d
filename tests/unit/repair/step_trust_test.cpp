#include <algorithm>
#include <gmock/gmock.h>
#include <utility>
#include <vector>

#include "support/repair_fixture.h"

namespace fabscope::internal {
namespace {

using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::SizeIs;

// Pods of two mids, where a leaf that has lost one of its two up-links to another pod belongs to
// either as far as cables can be counted.
class StepTrustTest : public RepairTest {
 protected:
  StepTrustTest() { AddThreeLevelTree(tree, 4, 5, 2, 2, 3); }

  // The steps after these changes; together they bring every cable back to the switches it joined.
  std::vector<RepairStep> StepsAfter(const std::vector<CableChanges>& changes) {
    RepairPlan plan = FindRepairs(*Changed(changes));
    EXPECT_EQ(plan.status, RepairStatus::Repairs);
    const auto repaired = ApplySteps(*Changed(changes), plan.steps);
    EXPECT_NE(repaired, nullptr);
    if (repaired != nullptr) {
      EXPECT_EQ(PairsOf(*repaired), PairsOf(tree.Build()));
    }
    return std::move(plan.steps);
  }

  static std::vector<std::pair<std::uint32_t, std::uint32_t>> PairsOf(const IBFabric& fabric) {
    std::vector<std::pair<std::uint32_t, std::uint32_t>> pairs;
    for (const IBPort& port : fabric.GetPorts()) {
      if (port.remotePort != nullptr) {
        pairs.emplace_back(port.node->index, port.remotePort->node->index);
      }
    }
    std::sort(pairs.begin(), pairs.end());
    return pairs;
  }

  static std::vector<RepairClass> ClassesOf(const std::vector<RepairStep>& steps) {
    std::vector<RepairClass> classes;
    for (const RepairStep& step : steps) classes.push_back(step.trust);
    return classes;
  }
};

TEST_F(StepTrustTest, ASwapIsSureWhenTheLeavesHaveThesePortsForOtherMids) {
  const auto steps = StepsAfter({SwapUpperEnds("mid0.0", "leaf0.1", "mid1.1", "leaf1.3")});
  EXPECT_THAT(ClassesOf(steps), ElementsAre(RepairClass::Sure));
}

TEST_F(StepTrustTest, ALeafBelongsWhereNoOtherHasItsPort) {
  const RepairCable cable = CableBetween("mid0.0", "leaf0.1");
  const RepairCable gone = CableBetween("mid1.0", "leaf1.3");
  const auto steps =
      StepsAfter({{{gone, std::nullopt}}, {{cable, RepairCable{gone.upper, cable.lower}}}});
  EXPECT_THAT(ClassesOf(steps), Each(RepairClass::Sure));
}

TEST_F(StepTrustTest, LeavesThatCouldHaveChangedPlacesAreAQuestion) {
  const auto steps = StepsAfter({SwapUpperEnds("mid0.0", "leaf0.1", "mid1.0", "leaf1.1")});
  ASSERT_THAT(steps, SizeIs(1));
  EXPECT_EQ(steps[0].trust, RepairClass::Ask);
  EXPECT_THAT(steps[0].alternatives, SizeIs(1));
}

TEST_F(StepTrustTest, ASwapBelowTheRootsIsSureWhenThePodUsesOtherPorts) {
  const auto steps = StepsAfter({SwapUpperEnds("root0", "mid0.0", "root2", "mid1.1")});
  EXPECT_THAT(ClassesOf(steps), ElementsAre(RepairClass::Sure));
}

TEST_F(StepTrustTest, ThreeThatChangedPlacesAreNotSure) {
  const RepairCable first = CableBetween("mid0.0", "leaf0.0");
  const RepairCable second = CableBetween("mid1.0", "leaf1.1");
  const RepairCable third = CableBetween("mid2.0", "leaf2.2");
  const auto steps = StepsAfter({{{first, RepairCable{second.upper, first.lower}},
                                  {second, RepairCable{third.upper, second.lower}},
                                  {third, RepairCable{first.upper, third.lower}}}});
  EXPECT_THAT(ClassesOf(steps), Each(RepairClass::Likely));
}

TEST_F(StepTrustTest, NothingIsSureInAGroupThatHasAnotherMidOfThatPod) {
  const RepairCable first = CableBetween("root0", "mid0.0");
  const RepairCable second = CableBetween("root1", "mid0.0");
  const CableEnd free = FreeEnd("root2");
  const CableEnd next{free.node, static_cast<std::uint8_t>(free.port + 1)};
  const RepairPlan plan = FindRepairs(*Changed(
      {{{first, RepairCable{free, first.lower}}}, {{second, RepairCable{next, second.lower}}}}));
  EXPECT_THAT(ClassesOf(plan.steps), ElementsAre(RepairClass::Likely));
}

TEST(StepTrustOfLinks, ANewCableBesideOneThatOnlyOneEndTellsOfIsNotSure) {
  for (const bool isThere : {true, false}) {
    TestFabric tree;
    tree.Switch("root0").Switch("root1");
    for (int i = 0; i < 5; ++i) {
      const std::string leaf = "leaf" + std::to_string(i);
      const std::string host = "host" + std::to_string(i);
      tree.Switch(leaf).Host(host).Cable(leaf, host).Cable("root0", leaf);
      if (i != 2) tree.Cable("root1", leaf);
    }
    if (isThere) tree.Link("root1", 9, "leaf2", 9, false);
    const RepairPlan plan = FindRepairs(tree.Build());
    ASSERT_THAT(plan.steps, SizeIs(1));
    EXPECT_EQ(plan.steps[0].action, RepairAction::Connect);
    EXPECT_EQ(plan.steps[0].trust, isThere ? RepairClass::Likely : RepairClass::Sure);
  }
}

}  // namespace
}  // namespace fabscope::internal
