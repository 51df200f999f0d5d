#include "reports/tree_layout.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>
#include <string>

#include "support/stage_fixture.h"

namespace fabscope::internal {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

class TreeLayoutTest : public StageTest {
 protected:
  TreeLayout LayOut(const std::vector<std::string>& roots) {
    RankFrom(roots);
    EXPECT_EQ(Topology().Validate(errors, message), 0);
    return LayOutTree(Topology(), 100, 50);
  }

  const TreeLayout::Mark& MarkOf(const TreeLayout& layout, const std::string& name) {
    return layout.marks.at(static_cast<std::size_t>(layout.markOf.Get(*fabric[name])));
  }
  double X(const TreeLayout& layout, const std::string& name) { return MarkOf(layout, name).x; }
};

TEST_F(TreeLayoutTest, RootsStandOnTopAndLeavesBelow) {
  AddThreeLevelTree(fabric, 2, 2, 2, 1, 0);
  const TreeLayout layout = LayOut({"root0", "root1"});
  ASSERT_THAT(layout.rowY, SizeIs(3));
  EXPECT_LT(layout.rowY[0], layout.rowY[1]);
  EXPECT_LT(layout.rowY[1], layout.rowY[2]);
  EXPECT_EQ(MarkOf(layout, "root0").y, layout.rowY[0]);
  EXPECT_EQ(MarkOf(layout, "mid1.0").y, layout.rowY[1]);
  EXPECT_EQ(MarkOf(layout, "leaf1.1").y, layout.rowY[2]);
}

TEST_F(TreeLayoutTest, NeighborhoodsStandSideBySideRoundTheirSwitches) {
  AddThreeLevelTree(fabric, 2, 3, 2, 1, 0);
  const TreeLayout layout = LayOut({"root0", "root1"});
  std::map<std::string, const TreeLayout::Box*> boxes;  // by a switch in them
  for (const TreeLayout::Box& box : layout.boxes) {
    for (const char* name : {"leaf0.0", "leaf1.0", "root0", "root1"}) {
      if (box.group->Holds(fabric[name])) boxes[name] = &box;
    }
  }
  for (const std::string& pod : std::vector<std::string>{"0", "1"}) {
    const TreeLayout::Box& box = *boxes.at("leaf" + pod + ".0");
    EXPECT_EQ(box.topRank, 1U);
    EXPECT_EQ(box.bottomRank, 2U);
    for (const std::string& name : {"mid" + pod + ".0", "mid" + pod + ".1", "leaf" + pod + ".0",
                                    "leaf" + pod + ".1", "leaf" + pod + ".2"}) {
      EXPECT_LT(box.left, X(layout, name)) << name;
      EXPECT_GT(box.right, X(layout, name)) << name;
    }
  }
  const bool isFirstLeft = boxes["leaf0.0"]->left < boxes["leaf1.0"]->left;
  const TreeLayout::Box& left = *boxes[isFirstLeft ? "leaf0.0" : "leaf1.0"];
  const TreeLayout::Box& right = *boxes[isFirstLeft ? "leaf1.0" : "leaf0.0"];
  EXPECT_LT(left.right, right.left);
  EXPECT_LE(right.right, layout.right);
  EXPECT_EQ(boxes["root0"]->topRank, 0U);
  EXPECT_EQ(boxes["root0"]->bottomRank, 0U);
}

TEST_F(TreeLayoutTest, SwitchesOfARowKeepTheirDistance) {
  AddTwoLevelTree(fabric, 1, 3, 0);
  const TreeLayout layout = LayOut({"root0"});
  EXPECT_EQ(X(layout, "leaf1") - X(layout, "leaf0"), 30);
  EXPECT_EQ(X(layout, "leaf2") - X(layout, "leaf1"), 30);
  EXPECT_EQ(X(layout, "root0"), X(layout, "leaf1")) << "in the middle above them";
}

TEST_F(TreeLayoutTest, SpineOfNoGroupStandsBehindTheGroups) {
  AddTwoLevelTree(fabric, 2, 2, 0);
  fabric.Switch("lonely");
  const TreeLayout layout = LayOut({"root0", "root1", "lonely"});
  ASSERT_THAT(layout.boxes, SizeIs(1));
  EXPECT_GT(X(layout, "lonely"), layout.boxes[0].right);
  EXPECT_GT(layout.right, X(layout, "lonely"));
}

TEST_F(TreeLayoutTest, SwitchOutsideTheTreeHasNoPlace) {
  AddTwoLevelTree(fabric, 1, 1, 0);
  fabric.Switch("stray");
  const TreeLayout layout = LayOut({"root0"});
  EXPECT_FALSE(layout.markOf.Has(*fabric["stray"]));
  EXPECT_THAT(layout.marks, SizeIs(2));
}

TEST_F(TreeLayoutTest, TreeThatWasNotValidatedStandsInRows) {
  AddTwoLevelTree(fabric, 2, 3, 0);
  RankFrom({"root0", "root1"});
  const TreeLayout layout = LayOutTree(Topology(), 100, 50);
  EXPECT_THAT(layout.boxes, IsEmpty());
  EXPECT_THAT(layout.marks, SizeIs(5));
  EXPECT_LT(X(layout, "leaf0"), X(layout, "leaf1"));
}

TEST_F(TreeLayoutTest, OneRankIsOneRowAndNoRankIsNone) {
  fabric.Switch("a").Switch("b");
  EXPECT_THAT(LayOutTree(Topology(), 100, 50).rowY, IsEmpty());
  RankFrom({"a", "b"});
  const TreeLayout layout = LayOutTree(Topology(), 100, 50);
  EXPECT_THAT(layout.rowY, SizeIs(1));
  EXPECT_THAT(layout.marks, SizeIs(2));
}

TEST_F(TreeLayoutTest, TreeOf256SwitchesIsNotFolded) {
  fabric.Switch("root0", 255).Switch("root1", 255);
  for (int i = 0; i < 254; ++i) {
    fabric.Switch("leaf" + std::to_string(i), 2);
    fabric.Cable("leaf" + std::to_string(i), "root0");
    fabric.Cable("leaf" + std::to_string(i), "root1");
  }
  EXPECT_FALSE(LayOut({"root0", "root1"}).isFolded);
}

TEST_F(TreeLayoutTest, NamesNeedRoomUpToACertainLength) {
  AddTwoLevelTree(fabric, 1, 1, 0);
  const double little = LayOut({"root0"}).labelHeight;
  TestFabric other;
  other.Switch("root").Switch(std::string(1000, 'x')).Cable("root", std::string(1000, 'x'));
  FTTopology topology(&other.Build(), &out, 70);
  NodeSet roots{other["root"]};
  ASSERT_EQ(topology.FillRanksFromRoots(roots), 0);
  const double much = LayOutTree(topology, 100, 50).labelHeight;
  EXPECT_LT(little, much);
  EXPECT_LT(much, 200);
}

TEST_F(TreeLayoutTest, FoldedMarksHoldAllSwitchesOfTheirGroup) {
  fabric.Switch("root0", 255);
  for (int i = 0; i < 255; ++i) fabric.Switch("leaf" + std::to_string(i), 2);
  for (int i = 0; i < 255; ++i) fabric.Cable("leaf" + std::to_string(i), "root0");
  fabric.Switch("root1", 2).Cable("root1", "leaf0");
  mergePercent = 0;
  const TreeLayout layout = LayOut({"root0", "root1"});
  EXPECT_TRUE(layout.isFolded);
  EXPECT_EQ(layout.labelHeight, 0);
  std::vector<std::size_t> sizes;
  for (const TreeLayout::Mark& mark : layout.marks) sizes.push_back(mark.nodes.size());
  EXPECT_THAT(sizes, ElementsAre(2, 255));
}

}  // namespace
}  // namespace fabscope::internal
