#include "fat_tree/ranked_switches.h"

#include <gtest/gtest.h>
#include <vector>

namespace fabscope::internal {
namespace {

class RankedSwitchesTest : public ::testing::Test {
 protected:
  RankedSwitchesTest() : nodes(4) {
    for (std::uint32_t i = 0; i < nodes.size(); ++i) nodes[i].index = i;
  }

  std::vector<IBNode> nodes;
};

TEST_F(RankedSwitchesTest, BeforeATreeIsBuiltNoSwitchHasARank) {
  const RankedSwitches ranks;
  EXPECT_TRUE(ranks.Sets().empty());
  EXPECT_EQ(ranks.RankOf(nodes.data()), -1);
  EXPECT_EQ(ranks.RankOf(nullptr), -1);
}

TEST_F(RankedSwitchesTest, RankOfASwitchIsThatOfItsSet) {
  const std::vector<NodeSet> sets{{&nodes[2]}, {}, {nodes.data(), &nodes[1]}};
  const RankedSwitches ranks(sets);
  EXPECT_EQ(ranks.Sets(), sets);
  EXPECT_EQ(ranks.RankOf(&nodes[2]), 0);
  EXPECT_EQ(ranks.RankOf(nodes.data()), 2);
  EXPECT_EQ(ranks.RankOf(nodes[1].index), 2);
  EXPECT_EQ(ranks.RankOf(&nodes[3]), -1);
}

TEST_F(RankedSwitchesTest, FirstRankCountsForSwitchesAndNullEntries) {
  const RankedSwitches ranks(
      {{&nodes[1]}, {nullptr, nodes.data()}, {nullptr, nodes.data(), &nodes[1]}});
  EXPECT_EQ(ranks.RankOf(nodes.data()), 1);
  EXPECT_EQ(ranks.RankOf(&nodes[1]), 0);
  EXPECT_EQ(ranks.RankOf(nullptr), 1);
}

TEST_F(RankedSwitchesTest, NewRanksLeaveNothingOfTheOld) {
  RankedSwitches ranks({{nullptr}, {&nodes[3]}});
  ranks = RankedSwitches({{nodes.data()}});
  EXPECT_EQ(ranks.RankOf(&nodes[3]), -1);
  EXPECT_EQ(ranks.RankOf(nullptr), -1);
  EXPECT_EQ(ranks.RankOf(nodes.data()), 0);
}

}  // namespace
}  // namespace fabscope::internal
