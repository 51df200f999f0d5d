#include <algorithm>
#include <gmock/gmock.h>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "fat_tree/up_hop_histogram.h"
#include "support/up_hop_fixture.h"

namespace fabscope::internal {
namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::Pair;

class MergeTest : public UpHopTest {
 protected:
  // Whether a set goes into a target on a rank of 16 switches.
  bool Merges(int percent, Indices candidate, Indices target) {
    FTTopology topology(&fabric.Build(), &out, percent);
    FTUpHopHistogram histogram(topology, 0);
    TestPeer::BitSetSize(histogram) = 16;
    FTUpHopSet from = CountedSet(candidate, 1);
    FTUpHopSet into = CountedSet(target, 1);
    bool merged = false;
    EXPECT_EQ(histogram.TryMergeTwoSets(from, into, merged), 0);
    // Accepting and taking in are one thing.
    EXPECT_EQ(into.upSet, merged ? Bits(target).United(Bits(candidate)) : Bits(target));
    return merged;
  }

  // The pass as its rule reads.
  static void MergeOneByOne(FTUpHopHistogram& histogram) {
    auto& sets = TestPeer::UpHopSets(histogram);
    for (auto& [key, set] : sets) set.InitEncounteredMap(TestPeer::BitSetSize(histogram));
    for (auto visited = sets.begin(); visited != sets.end();) {
      bool merged = false;
      EXPECT_EQ(histogram.TryMergeSet_2(visited->second, merged), 0);
      visited = merged ? sets.erase(visited) : std::next(visited);
    }
  }

  static void Toggle(UpHopBits& bits, std::size_t index) {
    if (bits.test(index)) {
      bits.reset(index);
    } else {
      bits.set(index);
    }
  }
  static UpHopBits RandomBits(std::mt19937& random, std::size_t size, std::size_t tries) {
    UpHopBits bits;
    for (; tries > 0; --tries) bits.set(random() % size);
    return bits;
  }

  // The sets that are left when the pass is over.
  std::vector<std::string> MergedDownNodes(FTUpHopHistogram& histogram) {
    EXPECT_EQ(histogram.Init(), 0);
    EXPECT_EQ(TestPeer::MergeSets(histogram), 0);
    return DownNodes(histogram);
  }
};

// --- Two sets.

TEST_F(MergeTest, EachUpperSwitchBelowTheSizeCountsTheLowerSwitchesThatJoined) {
  FTUpHopSet set;
  set.encountered = 3;
  set.upSet = Bits({0, 2, 5});
  set.encounteredMap[2] = 8;
  set.InitEncounteredMap(5);
  EXPECT_THAT(set.encounteredMap, ElementsAre(Pair(0, 3), Pair(2, 3)));
}

TEST_F(MergeTest, DeltaIsWhatTheOtherSetHasBelowTheSizeAndThisOneLacks) {
  const FTUpHopSet set = CountedSet({0, 1}, 1);
  const FTUpHopSet other = CountedSet({1, 2, 8, 9, 2047}, 1);
  EXPECT_EQ(set.Delta(other, 9), Bits({2, 8}));
  EXPECT_EQ(other.Delta(set, 9), Bits({0}));
  EXPECT_EQ(set.Delta(other, 2048), Bits({2, 8, 9, 2047}));
  EXPECT_EQ(set.Delta(other, 0), Bits({}));
}

TEST_F(MergeTest, MergeAddsCountsOfSharedUpperSwitchesAndTakesOverTheRest) {
  AddRootsAndLeaves(0, {{}, {}, {}, {}});
  FTUpHopSet target = CountedSet({0, 1}, 3);
  target.downNodes = {fabric["leaf3"], fabric["leaf0"]};
  FTUpHopSet set = CountedSet({1, 2}, 2);
  set.downNodes = {fabric["leaf2"], fabric["leaf1"]};

  target.Merge(set, 3);

  EXPECT_EQ(target.upSet, Bits({0, 1, 2}));
  EXPECT_THAT(target.encounteredMap, ElementsAre(Pair(0, 3), Pair(1, 5), Pair(2, 2)));
  EXPECT_THAT(target.downNodes,
              ElementsAre(fabric["leaf3"], fabric["leaf0"], fabric["leaf2"], fabric["leaf1"]));
  EXPECT_EQ(target.encountered, 3);
}

TEST_F(MergeTest, MergeCountsOnlyBelowTheSizeButUnitesAllBits) {
  FTUpHopSet target = CountedSet({0}, 1);
  target.Merge(CountedSet({1, 3, 2047}, 1), 3);
  EXPECT_EQ(target.upSet, Bits({0, 1, 3, 2047}));
  EXPECT_THAT(target.encounteredMap, ElementsAre(Pair(0, 1), Pair(1, 1)));
}

TEST_F(MergeTest, SwitchThatTheOtherSetHoldsWithoutCountingItAddsNothing) {
  FTUpHopSet target = CountedSet({0, 1, 5}, 2);
  FTUpHopSet set;
  set.upSet = Bits({1, 3, 5, 6});
  set.encounteredMap = Counts({{3, 4}});
  target.Merge(set, 8);
  EXPECT_THAT(target.encounteredMap,
              ElementsAre(Pair(0, 2), Pair(1, 2), Pair(3, 4), Pair(5, 2), Pair(6, 0)));
}

TEST_F(MergeTest, MergeAddsToNothingWhereTheTargetHasNoCount) {
  FTUpHopSet target;
  target.upSet = Bits({1});
  target.Merge(CountedSet({1}, 4), 3);
  EXPECT_THAT(target.encounteredMap, ElementsAre(Pair(1, 4)));
}

TEST_F(MergeTest, MergeReplacesACountWhoseBitIsClear) {
  FTUpHopSet target;
  target.encounteredMap[1] = 7;
  target.Merge(CountedSet({1}, 4), 3);
  EXPECT_THAT(target.encounteredMap, ElementsAre(Pair(1, 4)));
}

// --- The merge rule.

TEST_F(MergeTest, ToleranceOfTenPercentTakesAllButDisjointSets) {
  EXPECT_TRUE(Merges(10, {0, 1, 2}, {0, 1, 2, 3}));
  EXPECT_FALSE(Merges(10, {4}, {0}));
  EXPECT_TRUE(Merges(10, {0, 1, 2, 4}, {0, 1, 2, 3}));
}

TEST_F(MergeTest, ExtraSwitchesMustBeFewerThanTheTolerance) {
  // One of four is extra: 25 percent.
  EXPECT_TRUE(Merges(74, {0, 1, 2, 4}, {0, 1, 2, 3}));
  EXPECT_FALSE(Merges(75, {0, 1, 2, 4}, {0, 1, 2, 3}));
}

TEST_F(MergeTest, RatioIsRoundedDown) {
  // Two of three are extra: 66 percent.
  EXPECT_TRUE(Merges(33, {0, 4, 5}, {0, 1, 2}));
  EXPECT_FALSE(Merges(34, {0, 4, 5}, {0, 1, 2}));
}

TEST_F(MergeTest, RatioIsTakenOfTheTarget) {
  // One extra switch is 25 percent of four and 33 percent of three.
  EXPECT_TRUE(Merges(70, {0, 1, 4}, {0, 1, 2, 3}));
  EXPECT_FALSE(Merges(70, {0, 1, 2, 4}, {0, 1, 2}));
}

TEST_F(MergeTest, SwitchesThatTheCandidateLacksDoNotCount) {
  EXPECT_TRUE(Merges(99, {0}, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9}));
  EXPECT_FALSE(Merges(99, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9}, {0}));
}

TEST_F(MergeTest, ToleranceOfNothingMergesNotEvenContainedSets) {
  EXPECT_FALSE(Merges(100, {0}, {0, 1}));
  EXPECT_FALSE(Merges(100, {}, {0, 1}));
  EXPECT_FALSE(Merges(100, {0}, {}));
  // Below nothing: the difference is negative, not huge.
  EXPECT_FALSE(Merges(101, {0}, {0, 1}));
}

TEST_F(MergeTest, DisjointSetsOfEqualSizeMergeAtNoPercentage) {
  for (const int percent : {0, 1, 50, 100}) {
    EXPECT_FALSE(Merges(percent, {0, 1}, {2, 3})) << percent;
  }
  EXPECT_TRUE(Merges(0, {0, 1}, {2, 3, 4}));
}

TEST_F(MergeTest, EmptyTargetTakesAnySet) {
  EXPECT_TRUE(Merges(99, {0, 1, 2}, {}));
  EXPECT_TRUE(Merges(99, {}, {0, 1, 2}));
}

TEST_F(MergeTest, SwitchesBeyondTheRankCountForTheTargetOnly) {
  EXPECT_TRUE(Merges(70, {0, 1, 2, 20, 21}, {0, 1, 2}));  // none extra
  EXPECT_TRUE(Merges(70, {0, 5}, {0, 1, 20, 21}));        // one of four
}

TEST_F(MergeTest, AcceptedSetIsCountedOnlyWithinTheRank) {
  FTUpHopHistogram histogram(Topology(), 0);
  TestPeer::BitSetSize(histogram) = 3;
  FTUpHopSet set = CountedSet({0, 3}, 2);
  FTUpHopSet target = CountedSet({0, 1}, 1);
  bool merged = false;
  EXPECT_EQ(histogram.TryMergeTwoSets(set, target, merged), 0);
  EXPECT_TRUE(merged);
  EXPECT_THAT(target.encounteredMap, ElementsAre(Pair(0, 3), Pair(1, 1)));
}

TEST_F(MergeTest, SetIsNotATargetForItself) {
  FTUpHopHistogram histogram(Topology(), 0);
  TestPeer::BitSetSize(histogram) = 3;
  FTUpHopSet& set = TestPeer::UpHopSets(histogram)["0011"];
  set = CountedSet({0, 1}, 1);
  bool merged = false;
  EXPECT_EQ(histogram.TryMergeSet_2(set, merged), 0);
  EXPECT_FALSE(merged);
  EXPECT_THAT(set.encounteredMap, ElementsAre(Pair(0, 1), Pair(1, 1)));
}

TEST_F(MergeTest, AnotherSetWithTheSameSwitchesIsATarget) {
  FTUpHopHistogram histogram(Topology(), 0);
  TestPeer::BitSetSize(histogram) = 3;
  FTUpHopSet& set = TestPeer::UpHopSets(histogram)["0011"];
  FTUpHopSet& equal = TestPeer::UpHopSets(histogram)["0111"];
  set = CountedSet({0, 1}, 1);
  equal = set;
  bool merged = false;
  EXPECT_EQ(histogram.TryMergeSet_2(set, merged), 0);
  EXPECT_TRUE(merged);
  EXPECT_THAT(equal.encounteredMap, ElementsAre(Pair(0, 2), Pair(1, 2)));
}

// --- The merge pass.

TEST_F(MergeTest, SetGoesIntoTheFirstTargetInKeyOrder) {
  // {0,1,2} is contained in leaf0's set, but leaf1's stands before it and takes one extra switch.
  AddRootsAndLeaves(9, {{0, 1, 2, 6, 7, 8}, {0, 1, 4, 5}, {0, 1, 2}});
  RankFromRoots(9);
  FTUpHopHistogram histogram(Topology(), 0);
  EXPECT_THAT(MergedDownNodes(histogram), ElementsAre("leaf1 leaf2", "leaf0"));
  EXPECT_THAT(Keys(histogram), ElementsAre("0000110011", "0111000111"));
}

TEST_F(MergeTest, SetMayGoIntoOneThatWasVisitedBefore) {
  // Of {0,1,4} one switch is extra to the four of {0,1,2,3}; the other way it is two of three.
  AddRootsAndLeaves(5, {{0, 1, 4}, {0, 1, 2, 3}});
  RankFromRoots(5);
  FTUpHopHistogram histogram(Topology(), 0);
  EXPECT_THAT(MergedDownNodes(histogram), ElementsAre("leaf1 leaf0"));
  const FTUpHopSet& set = TestPeer::UpHopSets(histogram)["001111"];
  EXPECT_EQ(set.upSet, Bits({0, 1, 2, 3, 4}));
  EXPECT_THAT(set.encounteredMap,
              ElementsAre(Pair(0, 2), Pair(1, 2), Pair(2, 1), Pair(3, 1), Pair(4, 1)));
}

TEST_F(MergeTest, SetCarriesOnWhatItTookIn) {
  AddRootsAndLeaves(4, {{0}, {0, 1, 2}, {0, 1, 2, 3}, {0}, {0, 1, 2, 3}});
  RankFromRoots(4);
  FTUpHopHistogram histogram(Topology(), 0);
  EXPECT_THAT(MergedDownNodes(histogram), ElementsAre("leaf2 leaf4 leaf1 leaf0 leaf3"));
  ASSERT_THAT(Keys(histogram), ElementsAre("01111"));
  const FTUpHopSet& set = TestPeer::UpHopSets(histogram)["01111"];
  EXPECT_THAT(set.encounteredMap, ElementsAre(Pair(0, 5), Pair(1, 3), Pair(2, 3), Pair(3, 2)));
  EXPECT_EQ(set.encountered, 2);
}

TEST_F(MergeTest, SetIsVisitedOnlyOnce) {
  // When {2,3} is visited, {0,1,4,5} does not take it. With leaf1's root 3 in it, it would.
  AddRootsAndLeaves(6, {{2, 3}, {0, 3, 4}, {0, 1, 4, 5}});
  RankFromRoots(6);
  FTUpHopHistogram histogram(Topology(), 0);
  EXPECT_THAT(MergedDownNodes(histogram), ElementsAre("leaf0", "leaf2 leaf1"));
  EXPECT_TRUE(Merges(70, {2, 3}, {0, 1, 3, 4, 5}));
}

// More sets than the index asks at a time, of all sizes, near to each other and far.
TEST_F(MergeTest, PassOverManySetsIsAsIfEachAskedAllOthersInTurn) {
  constexpr std::size_t leaves = 150;
  AddSwitches("leaf", leaves);
  const std::vector<int> percentages{0, 30, 70, 90, 99, 100, 101};
  std::mt19937 random(20240613);
  std::size_t fewest = leaves;
  std::size_t most = 0;
  for (int round = 0; round < 60; ++round) {
    SCOPED_TRACE(round);
    const std::size_t roots = 1 + random() % 200;
    FTTopology topology(&fabric.Build(), &out, percentages[random() % percentages.size()]);
    FTUpHopHistogram atOnce(topology, 0);
    FTUpHopHistogram oneByOne(topology, 0);
    for (FTUpHopHistogram* histogram : {&atOnce, &oneByOne}) {
      TestPeer::BitSetSize(*histogram) = roots;
    }
    UpHopBits base;
    for (std::size_t leaf = 0; leaf < leaves; ++leaf) {
      // Mostly the set before with a few changes; now and then a new one.
      if (random() % 8 == 0) base = RandomBits(random, roots, random() % (roots + 1));
      for (std::size_t change = random() % 4; change > 0; --change) Toggle(base, random() % roots);
      for (FTUpHopHistogram* histogram : {&atOnce, &oneByOne}) {
        FTUpHopSet& set = TestPeer::UpHopSets(*histogram)[histogram->GetHashCode(base)];
        set.upSet = base;
        ++set.encountered;
        set.downNodes.push_back(fabric["leaf" + std::to_string(leaf)]);
      }
    }
    ASSERT_EQ(TestPeer::MergeSets(atOnce), 0);
    MergeOneByOne(oneByOne);
    ASSERT_EQ(Keys(atOnce), Keys(oneByOne));
    ASSERT_EQ(DownNodes(atOnce), DownNodes(oneByOne));
    for (const auto& [key, set] : TestPeer::UpHopSets(atOnce)) {
      const FTUpHopSet& expected = TestPeer::UpHopSets(oneByOne)[key];
      ASSERT_EQ(set.upSet, expected.upSet);
      ASSERT_THAT(set.encounteredMap, ElementsAreArray(expected.encounteredMap));
    }
    fewest = std::min(fewest, Keys(atOnce).size());
    most = std::max(most, Keys(atOnce).size());
  }
  EXPECT_LT(fewest, 5U);
  EXPECT_GT(most, 64U);
}

TEST_F(MergeTest, SetWithoutUpLinksGoesIntoTheFirstOther) {
  FTUpHopHistogram histogram(Topology(), 0);
  TestPeer::BitSetSize(histogram) = 3;
  TestPeer::UpHopSets(histogram)["0000"].encountered = 1;
  TestPeer::UpHopSets(histogram)["0010"] = CountedSet({1}, 2);
  TestPeer::UpHopSets(histogram)["0100"] = CountedSet({2}, 2);
  EXPECT_EQ(TestPeer::MergeSets(histogram), 0);
  EXPECT_THAT(Keys(histogram), ElementsAre("0010", "0100"));
  EXPECT_THAT(TestPeer::UpHopSets(histogram)["0010"].encounteredMap, ElementsAre(Pair(1, 2)));
}

TEST_F(MergeTest, MergePassCountsSetsThatMergeWithNoOther) {
  AddRootsAndLeaves(2, {{0}, {0}, {1}});
  RankFromRoots(2);
  FTUpHopHistogram histogram(Topology(), 0);
  EXPECT_THAT(MergedDownNodes(histogram), ElementsAre("leaf0 leaf1", "leaf2"));
  EXPECT_THAT(TestPeer::UpHopSets(histogram)["001"].encounteredMap, ElementsAre(Pair(0, 2)));
  EXPECT_THAT(TestPeer::UpHopSets(histogram)["010"].encounteredMap, ElementsAre(Pair(1, 1)));
}

}  // namespace
}  // namespace fabscope::internal
