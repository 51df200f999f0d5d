#include "repair/inferred_ranks.h"

#include <gtest/gtest.h>

#include "support/repair_fixture.h"

namespace fabscope::internal {
namespace {

using InferredRanksTest = RepairTest;

TEST_F(InferredRanksTest, AreThoseOfACleanTree) {
  AddThreeLevelTree(tree, 3, 4, 3, 2, 2);
  const TreeRanks ranks = InferRanks(tree.Build());
  EXPECT_EQ(ranks.levels, 3);
  EXPECT_EQ(ranks.ofNode, Ranks({"root", "mid", "leaf"}).ofNode);
  EXPECT_EQ(CountMisfits(tree.Build(), ranks), 0U);
}

TEST_F(InferredRanksTest, AreNotMisledByLeavesOfTwoPodsCabledToEachOthersMids) {
  AddThreeLevelTree(tree, 3, 4, 3, 2, 2);
  const auto fabric = Changed({SwapUpperEnds("mid0.0", "leaf0.1", "mid1.1", "leaf1.2")});
  EXPECT_EQ(InferRanks(*fabric).ofNode, Ranks({"root", "mid", "leaf"}).ofNode);
}

TEST_F(InferredRanksTest, KeepALeafWithoutHostsAmongTheLeaves) {
  AddTwoLevelTree(tree, 3, 5, 2);
  tree.Switch("leaf-empty");
  for (const char* root : {"root0", "root1", "root2"}) tree.Cable(root, "leaf-empty");
  const TreeRanks ranks = InferRanks(tree.Build());
  EXPECT_EQ(ranks.levels, 2);
  EXPECT_EQ(ranks.ofNode, Ranks({"root", "leaf"}).ofNode);
}

TEST_F(InferredRanksTest, TakeOneMoreSwitchForALeafWhereSeveralHaveNoHosts) {
  AddThreeLevelTree(tree, 4, 4, 3, 2, 2);
  const auto addEmpty = [&](const std::string& pod, const std::string& name) {
    tree.Switch(name);
    for (const char* mid : {"0", "1", "2"}) tree.Cable("mid" + pod + "." + mid, name);
  };
  for (const char* pod : {"0", "1", "2", "3"}) {
    addEmpty(pod, std::string("leaf-a") + pod);
    addEmpty(pod, std::string("leaf-b") + pod);
  }
  const auto fabric = Changed({SwapUpperEnds("mid0.0", "leaf-a0", "mid1.1", "leaf1.2")});
  EXPECT_EQ(InferRanks(*fabric).ofNode, Ranks({"root", "mid", "leaf"}).ofNode);
}

TEST_F(InferredRanksTest, HangAPodWithoutHostsBelowTheRoots) {
  AddThreeLevelTree(tree, 3, 3, 2, 2, 2);
  for (const char* name : {"mid-a", "mid-b", "leaf-a", "leaf-b", "leaf-c"}) tree.Switch(name);
  tree.Cable("root0", "mid-a").Cable("root1", "mid-a");
  tree.Cable("root2", "mid-b").Cable("root3", "mid-b");
  for (const char* leaf : {"leaf-a", "leaf-b", "leaf-c"}) {
    tree.Cable("mid-a", leaf).Cable("mid-b", leaf);
  }
  EXPECT_EQ(InferRanks(tree.Build()).ofNode, Ranks({"root", "mid", "leaf"}).ofNode);
}

TEST_F(InferredRanksTest, TakeARootWithAHostForARoot) {
  AddThreeLevelTree(tree, 3, 4, 3, 2, 1);
  tree.Host("stray").Cable("root0", "stray");
  EXPECT_EQ(InferRanks(tree.Build()).ofNode, Ranks({"root", "mid", "leaf"}).ofNode);
}

TEST_F(InferredRanksTest, AreNoneWithoutAHost) {
  tree.Switch("a").Switch("b").Cable("a", "b");
  const TreeRanks ranks = InferRanks(tree.Build());
  EXPECT_EQ(ranks.levels, 0);
  EXPECT_EQ(ranks.ofNode, (std::vector<int>{TreeRanks::none, TreeRanks::none}));
}

TEST_F(InferredRanksTest, AMovedCableIsTwoMisfitsAndAMissingOneIsOne) {
  AddThreeLevelTree(tree, 3, 4, 3, 2, 2);
  const TreeRanks ranks = Ranks({"root", "mid", "leaf"});
  const RepairCable cable = CableBetween("mid0.0", "leaf0.1");
  const auto missing = Changed({{{cable, std::nullopt}}});
  EXPECT_EQ(CountMisfits(*missing, ranks), 1U);
  const RepairCable moved{FreeEnd("mid1.0"), cable.lower};
  const auto elsewhere = Changed({{{cable, moved}}});
  EXPECT_EQ(CountMisfits(*elsewhere, ranks), 2U);
}

}  // namespace
}  // namespace fabscope::internal
