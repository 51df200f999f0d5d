#include "fat_tree/merge_index.h"

#include <gmock/gmock.h>
#include <random>
#include <vector>

#include "support/up_hop_fixture.h"

namespace fabscope::internal {
namespace {

// An index of sets that it keeps.
class Index {
 public:
  Index(std::size_t setCount, std::size_t size) : sets_(setCount), index_(setCount, size) {}

  void Add(std::size_t number, const UpHopBits& upSet, std::size_t most) {
    sets_[number] = upSet;
    index_.Add(number, sets_[number], most);
  }
  void Grow(std::size_t number, const UpHopBits& added, std::size_t most) {
    sets_[number] = sets_[number].United(added);
    index_.Grow(number, added, most);
  }
  void Remove(std::size_t number) { index_.Remove(number); }
  std::size_t FindTarget(std::size_t number, const UpHopBits& upSet) {
    return index_.FindTarget(number, upSet);
  }

 private:
  std::vector<UpHopBits> sets_;
  MergeIndex index_;
};

TEST(MergeIndexTest, FindsTheFirstSetThatLacksAtMostAsManyAsItMay) {
  Index index(4, MaxUpperSwitches);
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
  Index index(3, MaxUpperSwitches);
  index.Add(1, Bits({0}), 5);
  EXPECT_EQ(index.FindTarget(1, Bits({0})), MergeIndex::None);
  EXPECT_EQ(index.FindTarget(1, Bits({})), MergeIndex::None);
  index.Add(2, Bits({0}), 5);
  EXPECT_EQ(index.FindTarget(1, Bits({0})), 2U);
  EXPECT_EQ(index.FindTarget(2, Bits({0})), 1U);
}

TEST(MergeIndexTest, SetThatMayLackAllIsFoundThoughItSharesNothing) {
  Index index(3, MaxUpperSwitches);
  index.Add(0, Bits({7}), 1);
  index.Add(1, Bits({7}), 2);
  index.Add(2, Bits({0, 1}), 0);
  EXPECT_EQ(index.FindTarget(2, Bits({0, 1})), 1U);
}

TEST(MergeIndexTest, SwitchesFromTheSizeOnAreNotLookedAt) {
  Index seven(2, 7);
  seven.Add(0, Bits({0, 9}), 0);
  EXPECT_EQ(seven.FindTarget(1, Bits({0, 7, 8})), 0U);
  Index eight(2, 8);
  eight.Add(0, Bits({0}), 0);
  EXPECT_EQ(eight.FindTarget(1, Bits({0, 7})), MergeIndex::None);
}

TEST(MergeIndexTest, SetThatWasRemovedIsNotFound) {
  Index index(3, MaxUpperSwitches);
  index.Add(0, Bits({0, 1}), 2);
  index.Add(1, Bits({0}), 0);
  index.Remove(0);
  EXPECT_EQ(index.FindTarget(2, Bits({0})), 1U);
  EXPECT_EQ(index.FindTarget(2, Bits({1})), MergeIndex::None);
}

TEST(MergeIndexTest, SetThatGrewIsFoundForWhatItTookIn) {
  Index index(2, MaxUpperSwitches);
  index.Add(0, Bits({0}), 0);
  EXPECT_EQ(index.FindTarget(1, Bits({0, 5})), MergeIndex::None);
  index.Grow(0, Bits({5}), 0);
  EXPECT_EQ(index.FindTarget(1, Bits({0, 5})), 0U);
  EXPECT_EQ(index.FindTarget(1, Bits({7})), MergeIndex::None);
  index.Grow(0, Bits({}), 1);
  EXPECT_EQ(index.FindTarget(1, Bits({7})), 0U);
}

TEST(MergeIndexTest, EveryLimitIsKeptExactly) {
  for (std::size_t most = 0; most < 70; ++most) {
    UpHopBits bits;
    for (std::size_t i = 0; i < most; ++i) bits.set(3 * i);
    Index index(130, MaxUpperSwitches);
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

TEST(MergeIndexTest, SetThatSharesOnlyTheLastOfManySwitchesIsFoundWhereItMayLackTheOthers) {
  Index index(3, MaxUpperSwitches);
  index.Add(0, Bits({5}), 4);
  index.Add(1, Bits({0, 1, 2, 3, 4}), 0);
  EXPECT_EQ(index.FindTarget(2, Bits({0, 1, 2, 3, 5})), 0U);
  EXPECT_EQ(index.FindTarget(2, Bits({0, 1, 2, 3, 4, 5})), MergeIndex::None);
}

TEST(MergeIndexTest, FindsWhatAskingOneSetAfterAnotherFinds) {
  std::mt19937 random(1);  // NOLINT(cert-msc51-cpp): the same sets in every run
  const auto below = [&](std::size_t end) { return random() % end; };
  for (int round = 0; round < 300; ++round) {
    const std::size_t size = 4 + below(12);
    const std::size_t mostOfAll = below(4);
    constexpr std::size_t count = 20;
    std::vector<UpHopBits> sets(count);
    std::vector<std::size_t> most(count);
    MergeIndex index(count, size);
    for (std::size_t number = 0; number < count; ++number) {
      const std::size_t density = 1 + below(4);
      for (std::size_t i = 0; i < size; ++i) {
        if (below(density) == 0) sets[number].set(i);
      }
      most[number] = below(mostOfAll + 1);
      index.Add(number, sets[number], most[number]);
    }
    for (std::size_t number = 0; number < count; ++number) {
      std::size_t expected = MergeIndex::None;
      for (std::size_t other = count; other-- > 0;) {
        if (other == number) continue;
        if (!sets[number].HasMoreOutside(sets[other], size, most[other])) expected = other;
      }
      EXPECT_EQ(index.FindTarget(number, sets[number]), expected) << round << ' ' << number;
    }
  }
}

}  // namespace
}  // namespace fabscope::internal
