#include "fat_tree/merge_index.h"

#include <gmock/gmock.h>
#include <vector>

#include "support/up_hop_fixture.h"

namespace fabscope {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

std::vector<std::size_t> Targets(const MergeIndex& index, const UpHopBits& bits) {
  std::vector<std::size_t> targets;
  index.FindTargets(bits, [&](std::size_t number) {
    targets.push_back(number);
    return false;
  });
  return targets;
}

TEST(MergeIndexTest, FindsSetsThatLackAtMostAsManyAsTheyMay) {
  MergeIndex index(4, MaxUpperSwitches);
  index.Add(0, Bits({0, 1, 2, 3}), 1);
  index.Add(1, Bits({0, 1, 2047}), 1);
  index.Add(3, Bits({9}), 1);
  EXPECT_THAT(Targets(index, Bits({0, 1, 2})), ElementsAre(0, 1));
  EXPECT_THAT(Targets(index, Bits({0, 1, 2, 3})), ElementsAre(0));
  EXPECT_THAT(Targets(index, Bits({0, 2047})), ElementsAre(0, 1));
  EXPECT_THAT(Targets(index, Bits({5, 6})), IsEmpty());
}

TEST(MergeIndexTest, SwitchesFromTheSizeOnAreNotLookedAt) {
  MergeIndex seven(1, 7);
  seven.Add(0, Bits({0, 9}), 0);
  EXPECT_THAT(Targets(seven, Bits({0, 7, 8})), ElementsAre(0));
  MergeIndex eight(1, 8);
  eight.Add(0, Bits({0}), 0);
  EXPECT_THAT(Targets(eight, Bits({0, 7})), IsEmpty());
}

TEST(MergeIndexTest, SetThatWasRemovedIsNotFound) {
  MergeIndex index(2, MaxUpperSwitches);
  index.Add(0, Bits({0}), 0);
  index.Add(1, Bits({0}), 0);
  index.Remove(0);
  EXPECT_THAT(Targets(index, Bits({0})), ElementsAre(1));
}

TEST(MergeIndexTest, SetThatGrewIsFoundForWhatItTookIn) {
  MergeIndex index(1, MaxUpperSwitches);
  index.Add(0, Bits({0}), 0);
  EXPECT_THAT(Targets(index, Bits({0, 5})), IsEmpty());
  index.Add(0, Bits({0, 5}), 0);
  EXPECT_THAT(Targets(index, Bits({0, 5})), ElementsAre(0));
}

TEST(MergeIndexTest, SearchEndsWhenItIsToldTo) {
  MergeIndex index(200, MaxUpperSwitches);
  for (std::size_t number = 0; number < 200; ++number) index.Add(number, Bits({0}), 0);
  std::vector<std::size_t> visited;
  index.FindTargets(Bits({0}), [&](std::size_t number) {
    visited.push_back(number);
    return number == 64;
  });
  EXPECT_EQ(visited.size(), 65U);
  EXPECT_EQ(visited.back(), 64U);
}

// Every limit by itself, around the powers of two.
TEST(MergeIndexTest, EveryLimitIsKeptExactlyAmongSetsOfOneLimit) {
  for (std::size_t most = 0; most < 70; ++most) {
    UpHopBits bits;
    for (std::size_t i = 0; i < most; ++i) bits.set(3 * i);
    MergeIndex index(130, MaxUpperSwitches);
    for (const std::size_t number : std::vector<std::size_t>{0, 63, 64, 129})
      index.Add(number, Bits({2000}), most);
    EXPECT_THAT(Targets(index, bits), ElementsAre(0, 63, 64, 129)) << most;
    bits.set(2000);
    EXPECT_THAT(Targets(index, bits), ElementsAre(0, 63, 64, 129)) << most;
    bits.set(1999);
    EXPECT_THAT(Targets(index, bits), IsEmpty()) << most;
  }
}

}  // namespace
}  // namespace fabscope
