#include "fat_tree/up_hop_histogram.h"

#include <gmock/gmock.h>
#include <list>
#include <map>
#include <sstream>
#include <string>

#include "support/up_hop_fixture.h"

namespace fabscope::internal {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;

class UpHopHistogramTest : public UpHopTest {};

// --- One set.

TEST_F(UpHopHistogramTest, NewSetIsEmpty) {
  const FTUpHopSet set;
  EXPECT_EQ(set.encountered, 0);
  EXPECT_TRUE(set.upSet.none());
  EXPECT_EQ(set.upSet.size(), 2048U);
  EXPECT_THAT(set.downNodes, IsEmpty());
  EXPECT_THAT(set.encounteredMap, ElementsAre());
}

TEST_F(UpHopHistogramTest, TakingOutAnUpperSwitchClearsItsBitAndItsCount) {
  FTUpHopSet set = CountedSet({1, 2}, 5);
  EXPECT_EQ(set.TakeOutUpNode(1), 0);
  EXPECT_EQ(set.upSet, Bits({2}));
  EXPECT_THAT(set.encounteredMap, ElementsAre(Pair(2, 5)));
}

TEST_F(UpHopHistogramTest, TakingOutAnUncountedUpperSwitchFailsButClearsItsBit) {
  FTUpHopSet set;
  set.upSet = Bits({1, 2});
  EXPECT_EQ(set.TakeOutUpNode(1), 4);
  EXPECT_EQ(set.upSet, Bits({2}));
}

TEST_F(UpHopHistogramTest, CountOfAnUpperSwitchIsFoundOnlyWhenItIsCounted) {
  const FTUpHopSet set = CountedSet({1}, 5);
  std::int32_t count = 0;
  EXPECT_EQ(set.GetNodeEncountered(1, count), 0);
  EXPECT_EQ(count, 5);
  EXPECT_EQ(set.GetNodeEncountered(2, count), 4);
}

// --- Indices and keys.

TEST_F(UpHopHistogramTest, UpperSwitchesAreNumberedInModelOrder) {
  AddRootsAndLeaves(3, {});
  FTUpHopHistogram histogram(Topology(), 0);
  histogram.InitNodeToIndexConverters(Nodes({"root2", "root0", "root1"}));
  EXPECT_THAT(TestPeer::IndexToNode(histogram),
              ElementsAre(fabric["root0"], fabric["root1"], fabric["root2"]));
  for (std::uint64_t expected = 0; expected < 3; ++expected) {
    std::uint64_t index = 99;
    EXPECT_EQ(histogram.NodeToIndex(index, fabric["root" + std::to_string(expected)]), 0);
    EXPECT_EQ(index, expected);
    EXPECT_EQ(histogram.IndexToNode(expected), fabric["root" + std::to_string(expected)]);
  }
  EXPECT_EQ(histogram.GetErrorText(), "");
}

TEST_F(UpHopHistogramTest, NumberingAgainOverwrites) {
  AddRootsAndLeaves(3, {});
  FTUpHopHistogram histogram(Topology(), 0);
  histogram.InitNodeToIndexConverters(Nodes({"root0", "root1"}));
  histogram.InitNodeToIndexConverters(Nodes({"root1", "root2"}));
  histogram.InitNodeToIndexConverters(Nodes({"root1"}));
  EXPECT_THAT(TestPeer::IndexToNode(histogram), ElementsAre(fabric["root1"], fabric["root2"]));
  for (const auto& [name, expected] :
       std::map<std::string, std::uint64_t>{{"root0", 0}, {"root1", 0}, {"root2", 1}}) {
    std::uint64_t index = 99;
    EXPECT_EQ(histogram.NodeToIndex(index, fabric[name]), 0);
    EXPECT_EQ(index, expected) << name;
  }
}

TEST_F(UpHopHistogramTest, SwitchWithoutIndexIsNamedByItsGuid) {
  NodeSpec spec;
  spec.guid = 0xabc0;
  spec.name = "stray";
  fabric.Node(spec);
  FTUpHopHistogram histogram(Topology(), 0);
  std::uint64_t index = 0;
  EXPECT_EQ(histogram.NodeToIndex(index, fabric["stray"]), 4);
  EXPECT_EQ(histogram.GetErrorText(),
            "Failed to find index for the switch ( GUID: 0x000000000000abc0 )");
}

TEST_F(UpHopHistogramTest, IndexWithoutSwitchIsTold) {
  FTUpHopHistogram histogram(Topology(), 0);
  EXPECT_EQ(histogram.IndexToNode(12), nullptr);
  EXPECT_EQ(histogram.GetErrorText(), "Failed to find IBNode associated with the index: 12");
}

TEST_F(UpHopHistogramTest, BitsBecomeSwitchesInIndexOrder) {
  AddRootsAndLeaves(4, {});
  FTUpHopHistogram histogram(Topology(), 0);
  histogram.InitNodeToIndexConverters(Nodes({"root0", "root1", "root2", "root3"}));
  TestPeer::BitSetSize(histogram) = 3;
  std::list<const IBNode*> nodes{fabric["root1"]};
  EXPECT_EQ(histogram.BitSetToNodes(Bits({2, 0, 3}), nodes), 0);
  // Appended, and without the bit beyond the rank's switches.
  EXPECT_THAT(nodes, ElementsAre(fabric["root1"], fabric["root0"], fabric["root2"]));
}

TEST_F(UpHopHistogramTest, BitWithoutSwitchStopsTheListThere) {
  AddRootsAndLeaves(1, {});
  FTUpHopHistogram histogram(Topology(), 0);
  histogram.InitNodeToIndexConverters(Nodes({"root0"}));
  TestPeer::BitSetSize(histogram) = 4;
  std::list<const IBNode*> nodes;
  EXPECT_EQ(histogram.BitSetToNodes(Bits({0, 2, 3}), nodes), 4);
  EXPECT_THAT(nodes, ElementsAre(fabric["root0"]));
  EXPECT_EQ(histogram.GetErrorText(), "Failed to find IBNode associated with the index: 2");
}

TEST_F(UpHopHistogramTest, NoBitIsLookedAtBeforeTheSizeIsKnown) {
  FTUpHopHistogram histogram(Topology(), 0);
  std::list<const IBNode*> nodes;
  EXPECT_EQ(histogram.BitSetToNodes(Bits({0}), nodes), 0);
  EXPECT_THAT(nodes, IsEmpty());
  EXPECT_EQ(histogram.GetErrorText(), "");
}

TEST_F(UpHopHistogramTest, KeyHasHighestIndexFirstAndOneCharacterMoreThanSwitches) {
  FTUpHopHistogram histogram(Topology(), 0);
  EXPECT_EQ(histogram.GetHashCode(Bits({})), "0");
  TestPeer::BitSetSize(histogram) = 3;
  EXPECT_EQ(histogram.GetHashCode(Bits({0, 2})), "0101");
  EXPECT_EQ(histogram.GetHashCode(Bits({1})), "0010");
  EXPECT_EQ(histogram.GetHashCode(Bits({})), "0000");
  TestPeer::BitSetSize(histogram) = 2047;
  EXPECT_EQ(histogram.GetHashCode(Bits({0, 2046})), "01" + std::string(2045, '0') + "1");
}

TEST_F(UpHopHistogramTest, KeyOfAFullRankHasNoExtraCharacter) {
  FTUpHopHistogram histogram(Topology(), 0);
  TestPeer::BitSetSize(histogram) = 2048;
  EXPECT_EQ(histogram.GetHashCode(Bits({1, 2047})), "1" + std::string(2045, '0') + "10");
}

// --- Filling.

TEST_F(UpHopHistogramTest, LowerSwitchWithTheFirstAndThirdUpperSwitchHasKey0101) {
  AddRootsAndLeaves(3, {{0, 2}});
  RankFromRoots(3);
  FTUpHopHistogram histogram(Topology(), 0);
  EXPECT_EQ(TestPeer::BitSetSize(histogram), 0U);
  ASSERT_EQ(histogram.Init(), 0);
  EXPECT_EQ(TestPeer::BitSetSize(histogram), 3U);
  ASSERT_THAT(Keys(histogram), ElementsAre("0101"));
  EXPECT_EQ(TestPeer::UpHopSets(histogram)["0101"].upSet, Bits({0, 2}));
}

TEST_F(UpHopHistogramTest, EqualUpperSwitchesMakeOneSetWhateverTheNumberOfCables) {
  AddRootsAndLeaves(2, {{0, 1, 1, 1}, {1, 0}});
  RankFromRoots(2);
  FTUpHopHistogram histogram(Topology(), 0);
  ASSERT_EQ(histogram.Init(), 0);
  ASSERT_THAT(Keys(histogram), ElementsAre("011"));
  const FTUpHopSet& set = TestPeer::UpHopSets(histogram)["011"];
  EXPECT_EQ(set.encountered, 2);
  EXPECT_EQ(set.upSet, Bits({0, 1}));
  EXPECT_THAT(set.downNodes, ElementsAre(fabric["leaf0"], fabric["leaf1"]));
  EXPECT_THAT(set.encounteredMap, ElementsAre());
}

TEST_F(UpHopHistogramTest, SetsStandInTheOrderOfTheirBitsReadAsNumbers) {
  AddRootsAndLeaves(3, {{2}, {0, 1}, {1}, {2}, {0}});
  RankFromRoots(3);
  FTUpHopHistogram histogram(Topology(), 0);
  ASSERT_EQ(histogram.Init(), 0);
  EXPECT_THAT(Keys(histogram), ElementsAre("0001", "0010", "0011", "0100"));
  EXPECT_THAT(DownNodes(histogram), ElementsAre("leaf4", "leaf2", "leaf1", "leaf0 leaf3"));
}

TEST_F(UpHopHistogramTest, PairsWithACableAreConnectedAndNoOthers) {
  AddRootsAndLeaves(2, {{0, 1, 0}, {1}});
  RankFromRoots(2);
  FTUpHopHistogram histogram(Topology(), 0);
  ASSERT_EQ(histogram.Init(), 0);
  const auto& pairs = TestPeer::ConnectedPairs(histogram);
  EXPECT_EQ(pairs.Size(), 3U);
  EXPECT_TRUE(pairs.Contains(*fabric["root0"], *fabric["leaf0"]));
  EXPECT_TRUE(pairs.Contains(*fabric["root1"], *fabric["leaf0"]));
  EXPECT_TRUE(pairs.Contains(*fabric["root1"], *fabric["leaf1"]));
  EXPECT_FALSE(pairs.Contains(*fabric["root0"], *fabric["leaf1"]));
}

TEST_F(UpHopHistogramTest, OnlyCablesToTheUpperRankMakeASet) {
  // The first mid lies on rank 1 with cables to a host, to a leaf of rank 2 and to a switch of
  // another plane that has no rank.
  NodeSpec elsewhere;
  elsewhere.name = "elsewhere";
  elsewhere.numPorts = 4;
  elsewhere.suitablePlane = 2;
  fabric.Switch("root0").Switch("mid0").Switch("mid1").Switch("leaf0").Node(elsewhere);
  fabric.Host("host");
  fabric.Cable("mid0", "host").Cable("mid0", "leaf0").Cable("mid0", "elsewhere");
  fabric.Cable("mid0", "root0").Cable("mid1", "root0");
  RankFrom({"root0"});
  FTUpHopHistogram histogram(Topology(), 0);
  ASSERT_EQ(histogram.Init(), 0);
  EXPECT_THAT(Keys(histogram), ElementsAre("01"));
  EXPECT_THAT(DownNodes(histogram), ElementsAre("mid0 mid1"));
  EXPECT_EQ(TestPeer::ConnectedPairs(histogram).Size(), 2U);
  EXPECT_THAT(TestPeer::LinkIssues(histogram), IsEmpty());
}

TEST_F(UpHopHistogramTest, CableThatSkipsARankIsIgnored) {
  fabric.Switch("root0").Switch("mid0").Switch("leaf0");
  fabric.Cable("leaf0", "root0").Cable("leaf0", "mid0").Cable("mid0", "root0");
  TestPeer::SetRanks(Topology(), {Nodes({"root0"}), Nodes({"mid0"}), Nodes({"leaf0"})});
  FTUpHopHistogram histogram(Topology(), 1);
  ASSERT_EQ(histogram.Init(), 0);
  EXPECT_THAT(DownNodes(histogram), ElementsAre("leaf0"));
  EXPECT_EQ(TestPeer::ConnectedPairs(histogram).Size(), 1U);
  EXPECT_TRUE(TestPeer::ConnectedPairs(histogram).Contains(*fabric["mid0"], *fabric["leaf0"]));
  EXPECT_THAT(TestPeer::LinkIssues(histogram), IsEmpty());
}

TEST_F(UpHopHistogramTest, LowerSwitchWithoutUpLinkMakesTheAllZeroSet) {
  // leaf0 is ranked through the root's side of a cable that it does not count itself.
  AddRootsAndLeaves(2, {{0}, {0, 1}});
  fabric.Cable("leaf0", "leaf1");
  MakeFnmPort("leaf0", 1);
  RankFromRoots(2);
  FTUpHopHistogram histogram(Topology(), 0);
  ASSERT_EQ(histogram.Init(), 0);
  ASSERT_THAT(Keys(histogram), ElementsAre("000", "011"));
  EXPECT_EQ(TestPeer::UpHopSets(histogram)["000"].upSet, Bits({}));
  EXPECT_EQ(TestPeer::UpHopSets(histogram)["000"].encountered, 1);
  EXPECT_THAT(DownNodes(histogram), ElementsAre("leaf0", "leaf1"));
  // The cable between the two leaves connects no upper switch with a lower one.
  EXPECT_EQ(TestPeer::ConnectedPairs(histogram).Size(), 2U);

  ASSERT_EQ(TestPeer::LinkIssues(histogram).size(), 1U);
  const FTLinkIssue& issue = TestPeer::LinkIssues(histogram)[0];
  EXPECT_EQ(issue.node1, fabric["leaf0"]);
  EXPECT_EQ(issue.port1, 2);
  EXPECT_EQ(issue.rank1, 1U);
  EXPECT_EQ(issue.node2, fabric["leaf1"]);
  EXPECT_EQ(issue.port2, 3);
  EXPECT_EQ(issue.rank2, 1U);
}

TEST_F(UpHopHistogramTest, LastPortOfALowerSwitchIsLookedAt) {
  fabric.Switch("root0", 255).Switch("leaf0", 255).Link("root0", 255, "leaf0", 255);
  RankFrom({"root0"});
  FTUpHopHistogram histogram(Topology(), 0);
  ASSERT_EQ(histogram.Init(), 0);
  EXPECT_THAT(Keys(histogram), ElementsAre("01"));
}

TEST_F(UpHopHistogramTest, EmptyLowerRankHasNoSets) {
  AddRootsAndLeaves(2, {});
  TestPeer::SetRanks(Topology(), {Nodes({"root0", "root1"}), {}});
  FTUpHopHistogram histogram(Topology(), 0);
  ASSERT_EQ(histogram.Init(), 0);
  EXPECT_THAT(Keys(histogram), IsEmpty());
  EXPECT_EQ(TestPeer::BitSetSize(histogram), 2U);
  EXPECT_EQ(TestPeer::IndexToNode(histogram).size(), 2U);
  EXPECT_EQ(TestPeer::MergeSets(histogram), 0);
}

TEST_F(UpHopHistogramTest, LastRankHasNoLowerRank) {
  AddRootsAndLeaves(1, {{0}});
  RankFromRoots(1);
  FTUpHopHistogram histogram(Topology(), 1);
  EXPECT_EQ(histogram.Init(), 9);
  EXPECT_EQ(histogram.GetErrorText(), "");
  EXPECT_EQ(Topology().GetErrorText(),
            "Cannot get nodes on rank: 2 Total ranks in the Fat-tree: 2");
  EXPECT_EQ(TestPeer::BitSetSize(histogram), 0U);
}

TEST_F(UpHopHistogramTest, LowerRankIsNotAskedForWhenTheUpperOneIsMissing) {
  AddRootsAndLeaves(1, {{0}});
  RankFromRoots(1);
  FTUpHopHistogram histogram(Topology(), 7);
  EXPECT_EQ(histogram.Init(), 9);
  EXPECT_EQ(Topology().GetErrorText(),
            "Cannot get nodes on rank: 7 Total ranks in the Fat-tree: 2");
}

TEST_F(UpHopHistogramTest, NullLowerSwitchFails) {
  AddRootsAndLeaves(1, {{0}});
  RankFromRoots(1);
  TestPeer::AddNullToRank(Topology(), 1);
  FTUpHopHistogram histogram(Topology(), 0);
  EXPECT_EQ(histogram.Init(), 4);
  EXPECT_EQ(histogram.GetErrorText(),
            "One of IBNodes is NULL.Cannot initialize the \"up-hop\" histogram");
}

TEST_F(UpHopHistogramTest, Rank2048SwitchesWideIsTaken) {
  AddRootsAndLeaves(2048, {{2047, 1}, {0}});
  RankFromRoots(2048);
  FTUpHopHistogram histogram(Topology(), 0);
  ASSERT_EQ(histogram.Init(), 0);
  EXPECT_EQ(histogram.GetErrorText(), "");
  EXPECT_EQ(TestPeer::BitSetSize(histogram), 2048U);
  EXPECT_THAT(Keys(histogram),
              ElementsAre(std::string(2047, '0') + "1", "1" + std::string(2045, '0') + "10"));

  EXPECT_EQ(TestPeer::MergeSets(histogram), 0);
  EXPECT_THAT(DownNodes(histogram), ElementsAre("leaf1", "leaf0"));
  EXPECT_THAT(TestPeer::UpHopSets(histogram).rbegin()->second.encounteredMap,
              ElementsAre(Pair(1, 1), Pair(2047, 1)));
  std::list<const IBNode*> nodes;
  EXPECT_EQ(histogram.BitSetToNodes(Bits({2047}), nodes), 0);
  EXPECT_THAT(nodes, ElementsAre(fabric["root2047"]));
}

TEST_F(UpHopHistogramTest, Rank2049SwitchesWideIsTooWide) {
  AddRootsAndLeaves(2049, {{0}});
  RankFromRoots(2049);
  FTUpHopHistogram histogram(Topology(), 0);
  EXPECT_EQ(histogram.Init(), 9);
  EXPECT_EQ(histogram.GetErrorText(), "Bit-set is too short to story 2049bits");
  EXPECT_THAT(Keys(histogram), IsEmpty());
  EXPECT_THAT(TestPeer::IndexToNode(histogram), IsEmpty());
}

// --- The set in words.

TEST_F(UpHopHistogramTest, SetInWordsNamesItsFirstLowerSwitchAndItsUpperSwitches) {
  NodeSpec spec;
  spec.numPorts = 4;
  spec.guid = 0xb0b;
  spec.name = "upper0";
  fabric.Node(spec);
  spec.guid = 0xfeed;
  spec.name = "upper1";
  fabric.Node(spec);
  spec.guid = 0xa1;
  spec.name = "lower0";
  fabric.Node(spec);
  spec.guid = 0xa2;
  spec.name = "lower1";
  fabric.Node(spec);
  FTUpHopHistogram histogram(Topology(), 0);
  histogram.InitNodeToIndexConverters(Nodes({"upper0", "upper1"}));
  // Index 2 has no switch, index 3 is beyond the rank.
  TestPeer::BitSetSize(histogram) = 3;
  TestPeer::IndexToNode(histogram).resize(4);
  TestPeer::IndexToNode(histogram)[3] = fabric["lower0"];
  FTUpHopSet set = CountedSet({0, 1, 2, 3}, 10);
  set.downNodes = {fabric["lower1"], fabric["lower0"]};

  std::ostringstream expected;
  expected << "\nFTUpHopSet (ptr) " << static_cast<const void*>(&set) << "\n"
           << "initiated from: 0x00000000000000a2\n"
           << "encountered: 10\n"
           << "up_set: 0x0000000000000b0b 0x000000000000feed ";
  EXPECT_EQ(histogram.UpHopSetToString(set), expected.str());
}

TEST_F(UpHopHistogramTest, SetInWordsWithoutUpperSwitches) {
  AddRootsAndLeaves(1, {{0}});
  FTUpHopHistogram histogram(Topology(), 0);
  FTUpHopSet set;
  set.encountered = 1;
  set.downNodes = {fabric["leaf0"]};
  std::ostringstream expected;
  expected << "\nFTUpHopSet (ptr) " << static_cast<const void*>(&set) << "\n"
           << "initiated from: 0x0000000000000002\nencountered: 1\nup_set: ";
  EXPECT_EQ(histogram.UpHopSetToString(set), expected.str());
}

}  // namespace
}  // namespace fabscope::internal
