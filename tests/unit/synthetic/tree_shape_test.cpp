#include "synthetic/tree_shape.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace fabscope::internal {
namespace {

using ::testing::ElementsAre;

TEST(TreeShapeTest, ReadsTheNotationOfTheFieldWithBlanksAnywhere) {
  TreeShape shape;
  EXPECT_EQ(ParseXgft("3;4,2,8;1,2,4", shape), std::nullopt);
  EXPECT_THAT(shape.children, ElementsAre(4, 2, 8));
  EXPECT_THAT(shape.parents, ElementsAre(1, 2, 4));
  EXPECT_EQ(ParseXgft("  2 ; 4 , 36 ; 1 , 18 ", shape), std::nullopt);
  EXPECT_THAT(shape.children, ElementsAre(4, 36));
  EXPECT_THAT(shape.parents, ElementsAre(1, 18));
}

TEST(TreeShapeTest, OtherTextIsNoShapeAndLeavesItAlone) {
  TreeShape shape;
  shape.children = {7};
  for (const char* text :
       {"", "3", "3;4,2;1,2,4", "3;4,2,8;1,2", "2;4,2;1,2,3", "2;4,2;1,2;", "a;b", "2;4,-2;1,2",
        "2;4,2,1,2", "9;1,1,1,1,1,1,1,1,1;1,1,1,1,1,1,1,1,1"}) {
    EXPECT_EQ(ParseXgft(text, shape),
              "expected \"h; m1,...,mh; w1,...,wh\": the number of levels, then for each the "
              "children of its switches, then for each the parents of the nodes below")
        << text;
  }
  EXPECT_THAT(shape.children, ElementsAre(7));
}

TEST(TreeShapeTest, CountsTheNodesOfEachLevel) {
  const TreeShape shape{{4, 2, 8}, {1, 2, 4}};
  EXPECT_EQ(shape.NodesOnLevel(0), 4U * 2 * 8);
  EXPECT_EQ(shape.NodesOnLevel(1), 1U * 2 * 8);
  EXPECT_EQ(shape.NodesOnLevel(2), 1U * 2 * 8);
  EXPECT_EQ(shape.NodesOnLevel(3), 1U * 2 * 4);
  EXPECT_EQ(shape.SwitchCount(), 16U + 16 + 8);
}

TEST(TreeShapeTest, CountsThePortsOfASwitchWithParallelCablesBetweenSwitchesOnly) {
  TreeShape shape{{4, 2, 8}, {1, 2, 4}};
  shape.parallel = 3;
  EXPECT_EQ(shape.PortsOnLevel(1), 4U + 2 * 3);
  EXPECT_EQ(shape.PortsOnLevel(2), 2U * 3 + 4 * 3);
  EXPECT_EQ(shape.PortsOnLevel(3), 8U * 3);
  shape.radix = 20;
  EXPECT_EQ(shape.PortsOnLevel(1), 20U);
  EXPECT_EQ(shape.PortsOnLevel(3), 24U);
}

TEST(TreeShapeTest, RadixTreeHasFullBisection) {
  const TreeShape shape = RadixTree(3, 64, 0, 0);
  EXPECT_THAT(shape.children, ElementsAre(32, 32, 64));
  EXPECT_THAT(shape.parents, ElementsAre(1, 32, 32));
  EXPECT_EQ(shape.NodesOnLevel(0), 65536U);
  EXPECT_EQ(shape.SwitchCount(), 5120U);
  for (std::size_t level = 1; level <= 3; ++level) EXPECT_EQ(shape.PortsOnLevel(level), 64U);
}

TEST(TreeShapeTest, RadixTreeTakesFewerPodsAndOtherNumbersOfHosts) {
  EXPECT_THAT(RadixTree(3, 8, 5, 0).children, ElementsAre(4, 4, 5));
  EXPECT_THAT(RadixTree(2, 8, 5, 2).children, ElementsAre(2, 5));
  EXPECT_THAT(RadixTree(2, 8, 5, 2).parents, ElementsAre(1, 4));
  // More hosts than half the ports leave fewer ports for the cables up.
  EXPECT_THAT(RadixTree(2, 8, 0, 6).children, ElementsAre(6, 8));
  EXPECT_THAT(RadixTree(2, 8, 0, 6).parents, ElementsAre(1, 2));
  EXPECT_THAT(RadixTree(1, 8, 0, 0).children, ElementsAre(8));
}

TEST(TreeShapeTest, ParallelCablesOfARadixTreeShareThePorts) {
  const TreeShape shape = RadixTree(3, 8, 0, 0, 2);
  EXPECT_THAT(shape.children, ElementsAre(4, 2, 4));
  EXPECT_THAT(shape.parents, ElementsAre(1, 2, 2));
  for (std::size_t level = 1; level <= 3; ++level) EXPECT_EQ(shape.PortsOnLevel(level), 8U);
  EXPECT_EQ(shape.DownPorts(3), 8U);
  EXPECT_EQ(shape.UpPorts(1), 4U);
  EXPECT_THAT(RadixTree(2, 8, 0, 6, 2).parents, ElementsAre(1, 1));
}

TEST(TreeShapeTest, OneLevelIsASwitchWithHosts) {
  EXPECT_THAT(RadixTree(1, 8, 0, 3, 2).children, ElementsAre(3));
  EXPECT_THAT(RadixTree(1, 8, 0, 0, 2).children, ElementsAre(8));
  EXPECT_EQ(ProblemOfRadixTree(1, 8, 0, 8, 1), std::nullopt);
}

TEST(TreeShapeTest, SaysWhyARadixTreeCannotBe) {
  EXPECT_EQ(ProblemOfRadixTree(3, 64, 64, 63, 1), std::nullopt);
  EXPECT_EQ(ProblemOfRadixTree(2, 7, 0, 0, 1), "half of 7 ports is no whole number");
  EXPECT_EQ(ProblemOfRadixTree(2, 8, 0, 8, 1),
            "leaves of 8 ports with 8 hosts have none left for cables up");
  EXPECT_EQ(ProblemOfRadixTree(2, 8, 0, 0, 3), "3 parallel cables do not go evenly into 4 ports");
  EXPECT_EQ(ProblemOfRadixTree(2, 8, 0, 5, 2), "2 parallel cables do not go evenly into 3 ports");
  EXPECT_EQ(ProblemOfRadixTree(2, 8, 0, 6, 2), std::nullopt);
  EXPECT_EQ(ProblemOfRadixTree(2, 8, 9, 0, 1), "roots of 8 ports cannot serve 9 pods");
  EXPECT_EQ(ProblemOfRadixTree(2, 8, 5, 0, 2), "roots of 8 ports cannot serve 5 pods");
  EXPECT_EQ(ProblemOfRadixTree(2, 8, 4, 0, 2), std::nullopt);
}

TEST(TreeShapeTest, SaysWhatIsWrongWithAShape) {
  EXPECT_EQ(ProblemOf(RadixTree(3, 64, 0, 0)), std::nullopt);
  EXPECT_EQ(ProblemOf({{}, {}}), "a tree has 1 to 8 levels of switches");
  EXPECT_EQ(ProblemOf({{2, 0}, {1, 1}}), "children and parents of a switch are 1 to 255");
  EXPECT_EQ(ProblemOf({{2, 2}, {1, 256}}), "children and parents of a switch are 1 to 255");
  EXPECT_EQ(ProblemOf({{2, 2}, {1, 2}, 0}), "parallel cables are 1 to 255");
  EXPECT_EQ(ProblemOf({{200, 2}, {1, 56}}),
            "a switch of level 1 would need 256 ports, but no switch has more than 255");
  EXPECT_EQ(ProblemOf({{200, 2}, {1, 55}}), std::nullopt);
  EXPECT_EQ(ProblemOf({{2, 2}, {1, 2}, 1, 0, 0}), "planes are 1 to 16");
  EXPECT_EQ(ProblemOf({{2, 2}, {1, 2}, 1, 0, 16}), std::nullopt);
  EXPECT_EQ(ProblemOf({{2, 2}, {1, 2}, 1, 0, 17}), "planes are 1 to 16");
  EXPECT_EQ(ProblemOf({{2, 2}, {64, 2}, 1, 0, 4}),
            "a host would need 256 ports, but no host has more than 255");
  EXPECT_EQ(ProblemOf({{2, 2}, {63, 2}, 1, 0, 4}), std::nullopt);
  // Chips count on every plane: 62,500 leaves, 2,500 switches above them, and 10 roots.
  EXPECT_EQ(ProblemOf({{1, 250, 250}, {1, 10, 1}, 1, 0, 15}), std::nullopt);
  EXPECT_EQ(ProblemOf({{1, 250, 250}, {1, 10, 1}, 1, 0, 16}),
            "the tree would have more than 1048576 nodes");
  EXPECT_EQ(ProblemOf({{100, 100, 100}, {1, 1, 1}}), std::nullopt);
  EXPECT_EQ(ProblemOf({{100, 100, 110}, {1, 1, 1}}), "the tree would have more than 1048576 nodes");
  EXPECT_EQ(ProblemOf({{200, 200, 200, 200, 200, 200, 200, 200}, {1, 1, 1, 1, 1, 1, 1, 1}}),
            "the tree would have more than 1048576 nodes");
}

}  // namespace
}  // namespace fabscope::internal
