#include "fat_tree/merge_index.h"

#include <gmock/gmock.h>
#include <vector>

#include "support/up_hop_fixture.h"

namespace fabscope {
namespace {

TEST(MergeIndexTest, FindsTheFirstSetThatLacksAtMostAsManyAsItMay) {
  MergeIndex index(4, MaxUpperSwitches);
  index.Add(0, Bits({9}), 1);
  index.Add(1, Bits({0, 1, 2047}), 1);
  index.Add(3, Bits({0, 1, 2, 3}), 1);
  const auto target = [&](Indices asked) { return index.FindTarget(2, Bits(asked)); };
  EXPECT_EQ(target({0, 1, 2}), 1U);
  EXPECT_EQ(target({0, 1, 2, 3}), 3U);
  EXPECT_EQ(target({0, 2047}), 1U);
  EXPECT_EQ(target({5, 6}), MergeIndex::None);
  EXPECT_EQ(target({5}), 0U);
  EXPECT_EQ(target({}), 0U);
}

TEST(MergeIndexTest, SetIsNoTargetOfItself) {
  MergeIndex index(3, MaxUpperSwitches);
  index.Add(1, Bits({0}), 5);
  EXPECT_EQ(index.FindTarget(1, Bits({0})), MergeIndex::None);
  EXPECT_EQ(index.FindTarget(1, Bits({})), MergeIndex::None);
  index.Add(2, Bits({0}), 5);
  EXPECT_EQ(index.FindTarget(1, Bits({0})), 2U);
  EXPECT_EQ(index.FindTarget(2, Bits({0})), 1U);
}

TEST(MergeIndexTest, SetThatMayLackAllIsFoundThoughItSharesNothing) {
  MergeIndex index(3, MaxUpperSwitches);
  index.Add(0, Bits({7}), 1);
  index.Add(1, Bits({7}), 2);
  index.Add(2, Bits({0, 1}), 0);
  EXPECT_EQ(index.FindTarget(2, Bits({0, 1})), 1U);
}

TEST(MergeIndexTest, SwitchesFromTheSizeOnAreNotLookedAt) {
  MergeIndex seven(2, 7);
  seven.Add(0, Bits({0, 9}), 0);
  EXPECT_EQ(seven.FindTarget(1, Bits({0, 7, 8})), 0U);
  MergeIndex eight(2, 8);
  eight.Add(0, Bits({0}), 0);
  EXPECT_EQ(eight.FindTarget(1, Bits({0, 7})), MergeIndex::None);
}

TEST(MergeIndexTest, SetThatWasRemovedIsNotFound) {
  MergeIndex index(3, MaxUpperSwitches);
  index.Add(0, Bits({0, 1}), 2);
  index.Add(1, Bits({0}), 0);
  index.Remove(0, Bits({0, 1}));
  EXPECT_EQ(index.FindTarget(2, Bits({0})), 1U);
  EXPECT_EQ(index.FindTarget(2, Bits({1})), MergeIndex::None);
}

TEST(MergeIndexTest, SetThatGrewIsFoundForWhatItTookIn) {
  MergeIndex index(2, MaxUpperSwitches);
  index.Add(0, Bits({0}), 0);
  EXPECT_EQ(index.FindTarget(1, Bits({0, 5})), MergeIndex::None);
  index.Add(0, Bits({5}), 0);
  EXPECT_EQ(index.FindTarget(1, Bits({0, 5})), 0U);
  EXPECT_EQ(index.FindTarget(1, Bits({7})), MergeIndex::None);
  index.Add(0, Bits({}), 1);
  EXPECT_EQ(index.FindTarget(1, Bits({7})), 0U);
}

TEST(MergeIndexTest, EveryLimitIsKeptExactly) {
  for (std::size_t most = 0; most < 70; ++most) {
    UpHopBits bits;
    for (std::size_t i = 0; i < most; ++i) bits.set(3 * i);
    MergeIndex index(130, MaxUpperSwitches);
    for (const std::size_t number : std::vector<std::size_t>{63, 64, 129}) {
      index.Add(number, Bits({2000}), most);
    }
    EXPECT_EQ(index.FindTarget(0, bits), 63U) << most;
    EXPECT_EQ(index.FindTarget(63, bits), 64U) << most;
    bits.set(2000);
    EXPECT_EQ(index.FindTarget(0, bits), 63U) << most;
    bits.set(1999);
    EXPECT_EQ(index.FindTarget(0, bits), MergeIndex::None) << most;
  }
}

}  // namespace
}  // namespace fabscope
