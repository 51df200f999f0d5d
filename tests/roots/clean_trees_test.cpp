// Clean trees of many shapes: the roots that are found by themselves are the true ones, and all
// that is reported is what is reported when the subnet manager's ranks name them.

#include <gtest/gtest.h>

#include "roots/tree_run.h"
#include "synthetic/tree_shape.h"

namespace fabscope::internal {
namespace {

constexpr std::uint32_t hdr = 0x400;

std::string Notation(const TreeShape& shape) {
  std::string text = "children";
  for (const unsigned count : shape.children) text += ' ' + std::to_string(count);
  text += ", parents";
  for (const unsigned count : shape.parents) text += ' ' + std::to_string(count);
  return text;
}

void ExpectTrueTree(const TreeShape& shape) {
  SCOPED_TRACE(Notation(shape));
  ASSERT_EQ(ProblemOf(shape), std::nullopt);
  const FabricPlan plan = PlanTree(shape, hdr);
  const TreeRun found = RunByDefault(plan);
  const TreeRun told = RunWithTrueRanks(plan);
  EXPECT_EQ(found.message, "");
  EXPECT_EQ(found.ranks, TrueRanks(plan));
  EXPECT_EQ(told.ranks, TrueRanks(plan));
  EXPECT_EQ(found.report, told.report);
}

TEST(CleanTreesTest, OfTwoLevelsWith2To36Leaves) {
  for (unsigned leaves = 2; leaves <= 36; ++leaves) {
    for (const unsigned spines : {1U, 2U, 3U, 6U, 18U}) {
      // More spines than leaves would have nothing to do.
      if (spines > leaves) continue;
      ExpectTrueTree({.children = {3, leaves}, .parents = {1, spines}});
    }
  }
}

TEST(CleanTreesTest, OfThreeLevelsWith2To18Pods) {
  for (unsigned pods = 2; pods <= 18; ++pods) {
    for (const unsigned arity : {2U, 3U, 4U, 6U}) {
      for (const unsigned rootsOfAMid : {1U, 2U, arity}) {
        ExpectTrueTree({.children = {2, arity, pods}, .parents = {1, arity, rootsOfAMid}});
      }
    }
  }
}

// More leaves than middle switches in a pod, and the other way round.
TEST(CleanTreesTest, OfThreeLevelsWithUnevenPods) {
  for (const unsigned pods : {2U, 3U, 7U}) {
    ExpectTrueTree({.children = {4, 9, pods}, .parents = {1, 2, 3}});
    ExpectTrueTree({.children = {4, 3, pods}, .parents = {1, 5, 2}});
  }
}

TEST(CleanTreesTest, OfThreeLevelsAsSwitchesOfOneRadixMakeThem) {
  for (const unsigned radix : {4U, 6U, 8U, 12U, 16U}) {
    for (const unsigned pods : {2U, 3U, radix / 2, radix}) {
      ExpectTrueTree(RadixTree(3, radix, pods, 0));
    }
  }
}

TEST(CleanTreesTest, OfFourLevels) {
  for (unsigned topChildren = 2; topChildren <= 5; ++topChildren) {
    ExpectTrueTree({.children = {2, 2, 2, topChildren}, .parents = {1, 2, 2, 2}});
    ExpectTrueTree({.children = {1, 3, 2, topChildren}, .parents = {1, 2, 3, 1}});
    ExpectTrueTree({.children = {3, 4, 3, topChildren}, .parents = {1, 4, 3, 3}});
  }
}

TEST(CleanTreesTest, WithParallelCables) {
  for (const unsigned parallel : {2U, 3U}) {
    ExpectTrueTree({.children = {4, 6}, .parents = {1, 3}, .parallel = parallel});
    ExpectTrueTree({.children = {4, 3, 4}, .parents = {1, 3, 2}, .parallel = parallel});
    ExpectTrueTree({.children = {2, 2, 2, 3}, .parents = {1, 2, 2, 2}, .parallel = parallel});
  }
}

// A class of so few switches is taken for strays when the next leaf is looked for.
TEST(CleanTreesTest, WithTooFewLeavesFarAwayAreRefused) {
  const TreeRun twoLevels = RunByDefault(PlanTree({.children = {3, 2}, .parents = {1, 4}}, hdr));
  EXPECT_EQ(twoLevels.message,
            "Cannot build Fat-Tree topology. Wrong Classification. Unexpected maximal distance: 1");
  const TreeRun threeLevels =
      RunByDefault(PlanTree({.children = {4, 2, 2}, .parents = {1, 7, 2}}, hdr));
  EXPECT_EQ(threeLevels.message,
            "Cannot build Fat-Tree topology. Wrong Classification. Unexpected maximal distance: 3");
}

}  // namespace
}  // namespace fabscope::internal
