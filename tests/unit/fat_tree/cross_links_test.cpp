#include <gmock/gmock.h>
#include <random>
#include <string>
#include <vector>

#include "fat_tree/up_hop_histogram.h"
#include "support/link_issues.h"
#include "support/up_hop_fixture.h"

namespace fabscope::internal {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class CrossLinksTest : public UpHopTest {
 protected:
  // Fills the histogram and looks at each set that is left after merging, as forming groups does.
  void CheckAllSets(FTUpHopHistogram& histogram) {
    ASSERT_EQ(histogram.Init(), 0);
    ASSERT_EQ(TestPeer::MergeSets(histogram), 0);
    ASSERT_EQ(TestPeer::CheckAllCrossLinks(histogram), 0);
  }
  // The same as its rule reads.
  static void CheckOneByOne(FTUpHopHistogram& histogram) {
    for (auto& [key, set] : TestPeer::UpHopSets(histogram)) {
      ASSERT_EQ(histogram.CheckCrossLinks(set), 0);
    }
  }
};

// Set {2,3,4} of one leaf and {0,1,2} of others do not merge.

TEST_F(CrossLinksTest, UpperSwitchReachedMoreThanTwiceAsOftenFromAnotherSetIsTakenOut) {
  AddRootsAndLeaves(5, {{2, 3, 4}, {0, 1, 2}, {0, 1, 2}, {0, 1, 2}});
  RankFromRoots(5);
  FTUpHopHistogram histogram(Topology(), 0);
  CheckAllSets(histogram);
  EXPECT_EQ(TestPeer::UpHopSets(histogram)["011100"].upSet, Bits({3, 4}));
  EXPECT_EQ(TestPeer::UpHopSets(histogram)["011100"].encounteredMap.Find(2), nullptr);
  EXPECT_EQ(TestPeer::UpHopSets(histogram)["000111"].upSet, Bits({0, 1, 2}));
  EXPECT_THAT(Issues(histogram), ElementsAre("root2 port 1 rank 0 - leaf0 port 1 rank 1"));
}

TEST_F(CrossLinksTest, UpperSwitchReachedExactlyTwiceAsOftenStaysInBothSets) {
  AddRootsAndLeaves(5, {{2, 3, 4}, {0, 1, 2}, {0, 1, 2}});
  RankFromRoots(5);
  FTUpHopHistogram histogram(Topology(), 0);
  CheckAllSets(histogram);
  EXPECT_EQ(TestPeer::UpHopSets(histogram)["011100"].upSet, Bits({2, 3, 4}));
  EXPECT_EQ(TestPeer::UpHopSets(histogram)["000111"].upSet, Bits({0, 1, 2}));
  EXPECT_THAT(Issues(histogram), IsEmpty());
}

TEST_F(CrossLinksTest, UpperSwitchReachedEquallyOftenStaysInBothSets) {
  AddRootsAndLeaves(5, {{2, 3, 4}, {0, 1, 2}});
  RankFromRoots(5);
  FTUpHopHistogram histogram(Topology(), 0);
  CheckAllSets(histogram);
  EXPECT_EQ(TestPeer::UpHopSets(histogram)["011100"].upSet, Bits({2, 3, 4}));
  EXPECT_EQ(TestPeer::UpHopSets(histogram)["000111"].upSet, Bits({0, 1, 2}));
}

TEST_F(CrossLinksTest, OnlyTheSetThatIsLookedAtLosesSwitches) {
  AddRootsAndLeaves(5, {{2, 3, 4}, {0, 1, 2}, {0, 1, 2}, {0, 1, 2}});
  RankFromRoots(5);
  FTUpHopHistogram histogram(Topology(), 0);
  ASSERT_EQ(histogram.Init(), 0);
  ASSERT_EQ(TestPeer::MergeSets(histogram), 0);
  EXPECT_EQ(histogram.CheckCrossLinks(TestPeer::UpHopSets(histogram)["000111"]), 0);
  EXPECT_EQ(TestPeer::UpHopSets(histogram)["011100"].upSet, Bits({2, 3, 4}));
  EXPECT_THAT(Issues(histogram), IsEmpty());
}

TEST_F(CrossLinksTest, LowerSwitchesAreCountedAndNotTheirCables) {
  AddRootsAndLeaves(5, {{2, 2, 2, 3, 4}, {0, 1, 2}, {0, 1, 2}, {0, 1, 2}});
  RankFromRoots(5);
  FTUpHopHistogram histogram(Topology(), 0);
  CheckAllSets(histogram);
  // Every cable is an issue of its own.
  EXPECT_THAT(Issues(histogram), ElementsAre("root2 port 1 rank 0 - leaf0 port 1 rank 1",
                                             "root2 port 2 rank 0 - leaf0 port 2 rank 1",
                                             "root2 port 3 rank 0 - leaf0 port 3 rank 1"));
}

TEST_F(CrossLinksTest, MergedSetsCountTogether) {
  // {1,2} goes into {0,1,2}, so root 2 is reached from three leaves there.
  AddRootsAndLeaves(5, {{2, 3, 4}, {0, 1, 2}, {0, 1, 2}, {1, 2}});
  RankFromRoots(5);
  FTUpHopHistogram histogram(Topology(), 0);
  CheckAllSets(histogram);
  EXPECT_EQ(TestPeer::UpHopSets(histogram).size(), 2U);
  EXPECT_THAT(Issues(histogram), ElementsAre("root2 port 1 rank 0 - leaf0 port 1 rank 1"));
}

TEST_F(CrossLinksTest, IssuesFollowTheLowerSwitchesInTheirOrderOfJoining) {
  AddRootsAndLeaves(
      5, {{3, 2, 4}, {0, 1, 2}, {0, 1, 2}, {0, 1, 2}, {0, 1, 2}, {0, 1, 2}, {2, 3, 4, 2}});
  RankFromRoots(5);
  FTUpHopHistogram histogram(Topology(), 0);
  ASSERT_EQ(histogram.Init(), 0);
  ASSERT_EQ(TestPeer::MergeSets(histogram), 0);
  FTUpHopSet& set = TestPeer::UpHopSets(histogram)["011100"];
  set.downNodes.reverse();
  EXPECT_EQ(histogram.CheckCrossLinks(set), 0);
  EXPECT_THAT(Issues(histogram), ElementsAre("root2 port 7 rank 0 - leaf6 port 1 rank 1",
                                             "root2 port 8 rank 0 - leaf6 port 4 rank 1",
                                             "root2 port 1 rank 0 - leaf0 port 2 rank 1"));
}

TEST_F(CrossLinksTest, SwitchThatIsTakenOutIsNotTakenOutAgainForALaterSet) {
  // Root 2 is reached three times from {0,1,2} and from {2,5,6}.
  AddRootsAndLeaves(7,
                    {{2, 3, 4}, {0, 1, 2}, {0, 1, 2}, {0, 1, 2}, {2, 5, 6}, {2, 5, 6}, {2, 5, 6}});
  RankFromRoots(7);
  FTUpHopHistogram histogram(Topology(), 0);
  CheckAllSets(histogram);
  EXPECT_THAT(Issues(histogram), ElementsAre("root2 port 1 rank 0 - leaf0 port 1 rank 1"));
  EXPECT_EQ(TestPeer::UpHopSets(histogram)["00000111"].upSet, Bits({0, 1, 2}));
  EXPECT_EQ(TestPeer::UpHopSets(histogram)["01100100"].upSet, Bits({2, 5, 6}));
}

TEST_F(CrossLinksTest, OtherSetsAreComparedInKeyOrderAndTheirSwitchesInIndexOrder) {
  // leaf0 shares root 3 with the set of the lower key, and roots 0 and 1 with that of the higher.
  const std::vector<std::size_t> low{2, 3, 4};
  const std::vector<std::size_t> high{0, 1, 8, 9, 10, 11, 12, 13};
  AddRootsAndLeaves(14, {{1, 0, 3, 5, 6, 7}, low, low, low, high, high, high});
  RankFromRoots(14);
  FTUpHopHistogram histogram(Topology(), 0);
  CheckAllSets(histogram);
  ASSERT_EQ(TestPeer::UpHopSets(histogram).size(), 3U);
  EXPECT_THAT(Issues(histogram), ElementsAre("root3 port 1 rank 0 - leaf0 port 3 rank 1",
                                             "root0 port 1 rank 0 - leaf0 port 2 rank 1",
                                             "root1 port 1 rank 0 - leaf0 port 1 rank 1"));
}

TEST_F(CrossLinksTest, SetThatReachesASwitchTwiceAsOftenLeavesItToOneThatReachesItMoreOften) {
  // leaf0 and leaf1 share root 6 with four switches of the set of the lower key and with five of
  // the higher one; root 3 they share with these five only.
  const std::vector<std::size_t> own{3, 6, 10, 11, 12, 13};
  const std::vector<std::size_t> low{0, 1, 2, 6};
  const std::vector<std::size_t> high{3, 6, 7, 8, 9};
  AddRootsAndLeaves(14, {own, own, low, low, low, low, high, high, high, high, high});
  RankFromRoots(14);
  FTUpHopHistogram histogram(Topology(), 0);
  CheckAllSets(histogram);
  ASSERT_EQ(TestPeer::UpHopSets(histogram).size(), 3U);
  EXPECT_THAT(Issues(histogram), ElementsAre("root3 port 1 rank 0 - leaf0 port 1 rank 1",
                                             "root3 port 2 rank 0 - leaf1 port 1 rank 1",
                                             "root6 port 1 rank 0 - leaf0 port 2 rank 1",
                                             "root6 port 2 rank 0 - leaf1 port 2 rank 1"));
}

TEST_F(CrossLinksTest, SetThatSharesNothingIsPassedOver) {
  // {0,1} stands before {2,3,4}, which is the one that shares root 4 with leaf0's set.
  AddRootsAndLeaves(7, {{4, 5, 6}, {0, 1}, {2, 3, 4}, {2, 3, 4}, {2, 3, 4}});
  RankFromRoots(7);
  FTUpHopHistogram histogram(Topology(), 0);
  CheckAllSets(histogram);
  ASSERT_EQ(TestPeer::UpHopSets(histogram).size(), 3U);
  EXPECT_THAT(Issues(histogram), ElementsAre("root4 port 1 rank 0 - leaf0 port 1 rank 1"));
}

// Sets that share upper switches in all manners, as merging never leaves them.
TEST_F(CrossLinksTest, PassOverManySetsIsAsIfEachWereComparedWithAllOthersInTurn) {
  constexpr std::size_t roots = 12;
  std::mt19937 random(20240615);
  std::size_t issues = 0;
  for (int round = 0; round < 60; ++round) {
    SCOPED_TRACE(round);
    TestFabric tangle;
    for (std::size_t r = 0; r < roots; ++r) tangle.Switch(Numbered("root", r), 255);
    NodeSet rootSet;
    std::vector<std::size_t> ups;
    for (std::size_t leaf = 0; leaf < 60; ++leaf) {
      tangle.Switch(Numbered("leaf", leaf), 64);
      // Mostly cabled as the leaf before, so that sets have many leaves, and others few.
      if (random() % 4 == 0) {
        ups.clear();
        for (std::size_t cable = random() % 6; cable > 0; --cable) ups.push_back(random() % roots);
      }
      for (const std::size_t r : ups) tangle.Cable(Numbered("leaf", leaf), Numbered("root", r));
      if (ups.empty()) tangle.Cable(Numbered("leaf", leaf), "root0");
    }
    for (std::size_t r = 0; r < roots; ++r) rootSet.insert(tangle[Numbered("root", r)]);
    FTTopology topology(&tangle.Build(), &out, 70);
    ASSERT_EQ(topology.FillRanksFromRoots(rootSet), 0);
    FTUpHopHistogram atOnce(topology, 0);
    FTUpHopHistogram oneByOne(topology, 0);
    for (FTUpHopHistogram* histogram : {&atOnce, &oneByOne}) {
      ASSERT_EQ(histogram->Init(), 0);
      for (auto& [key, set] : TestPeer::UpHopSets(*histogram)) set.InitEncounteredMap(roots);
    }
    ASSERT_EQ(TestPeer::CheckAllCrossLinks(atOnce), 0);
    CheckOneByOne(oneByOne);
    EXPECT_EQ(Issues(atOnce), Issues(oneByOne));
    for (const auto& [key, set] : TestPeer::UpHopSets(atOnce)) {
      EXPECT_EQ(set.upSet, TestPeer::UpHopSets(oneByOne)[key].upSet);
    }
    issues += Issues(atOnce).size();
  }
  EXPECT_GT(issues, 300U);  // or the sets are no test
}

TEST_F(CrossLinksTest, CrossLinkOnALowerRankCarriesThatRank) {
  fabric.Switch("root0");
  for (std::size_t m = 0; m < 5; ++m) fabric.Switch(Numbered("mid", m));
  for (std::size_t l = 0; l < 4; ++l) fabric.Switch(Numbered("leaf", l));
  for (std::size_t m = 0; m < 5; ++m) fabric.Cable(Numbered("mid", m), "root0");
  fabric.Cable("leaf0", "mid2").Cable("leaf0", "mid3").Cable("leaf0", "mid4");
  for (std::size_t l = 1; l < 4; ++l) {
    for (std::size_t m = 0; m < 3; ++m) fabric.Cable(Numbered("leaf", l), Numbered("mid", m));
  }
  RankFrom({"root0"});
  FTUpHopHistogram histogram(Topology(), 1);
  CheckAllSets(histogram);
  EXPECT_THAT(Issues(histogram), ElementsAre("mid2 port 2 rank 1 - leaf0 port 1 rank 2"));
}

TEST_F(CrossLinksTest, CrossLinksNeitherAskNorFillTheRegistry) {
  AddRootsAndLeaves(2, {{0, 1, 1}});
  RankFromRoots(2);
  FTUpHopHistogram histogram(Topology(), 0);
  ASSERT_EQ(histogram.Init(), 0);
  Topology().AddNewLinkIssue(fabric["root1"], fabric["leaf0"]);
  EXPECT_EQ(histogram.AddIllegalLinkIssues(1, {fabric["leaf0"]}), 0);
  EXPECT_EQ(histogram.AddIllegalLinkIssues(0, {fabric["leaf0"]}), 0);
  EXPECT_THAT(Issues(histogram), ElementsAre("root1 port 1 rank 0 - leaf0 port 2 rank 1",
                                             "root1 port 2 rank 0 - leaf0 port 3 rank 1",
                                             "root0 port 1 rank 0 - leaf0 port 1 rank 1"));
  EXPECT_FALSE(Topology().IsReportedLinkIssue(fabric["root0"], fabric["leaf0"]));
}

TEST_F(CrossLinksTest, OnlyTreeLinksOfTheLowerSwitchAreItsCrossLinks) {
  AddRootsAndLeaves(1, {{0}});
  fabric.Link("leaf0", 7, "root0", 7).Link("leaf0", 8, "root0", 8);
  fabric.Link("leaf0", 10, "root0", 10, /*symmetric=*/false).Link("leaf0", 64, "root0", 64);
  MakeFnmPort("leaf0", 7);
  MakeFnmPort("root0", 8);
  RankFromRoots(1);
  FTUpHopHistogram histogram(Topology(), 0);
  ASSERT_EQ(histogram.Init(), 0);
  EXPECT_EQ(histogram.AddIllegalLinkIssues(0, {fabric["leaf0"]}), 0);
  EXPECT_THAT(Issues(histogram), ElementsAre("root0 port 1 rank 0 - leaf0 port 1 rank 1",
                                             "root0 port 8 rank 0 - leaf0 port 8 rank 1",
                                             "root0 port 64 rank 0 - leaf0 port 64 rank 1"));
}

TEST_F(CrossLinksTest, OneConnectedLowerSwitchIsEnough) {
  AddRootsAndLeaves(2, {{1}, {0}});
  RankFromRoots(2);
  FTUpHopHistogram histogram(Topology(), 0);
  ASSERT_EQ(histogram.Init(), 0);
  EXPECT_EQ(histogram.AddIllegalLinkIssues(0, {fabric["leaf0"], fabric["leaf1"]}), 0);
  EXPECT_THAT(Issues(histogram), ElementsAre("root0 port 1 rank 0 - leaf1 port 1 rank 1"));
}

TEST_F(CrossLinksTest, UpperSwitchWithoutCableToTheLowerSwitchesFails) {
  NodeSpec root;
  root.guid = 0xc0de;
  root.name = "root0";
  root.numPorts = 4;
  fabric.Node(root).Switch("root1").Switch("leaf0").Switch("leaf1");
  fabric.Cable("leaf0", "root1").Cable("leaf1", "root0");
  RankFrom({"root0", "root1"});
  FTUpHopHistogram histogram(Topology(), 0);
  ASSERT_EQ(histogram.Init(), 0);
  EXPECT_EQ(histogram.AddIllegalLinkIssues(0, {fabric["leaf0"]}), 9);
  EXPECT_EQ(histogram.GetErrorText(),
            "The switch GUID: 0x000000000000c0deis not connected to any switch from the down nodes"
            " provided for Invalid Link Issue");
  EXPECT_THAT(Issues(histogram), IsEmpty());
}

TEST_F(CrossLinksTest, UpperSwitchWithoutLowerSwitchesFails) {
  AddRootsAndLeaves(1, {{0}});
  RankFromRoots(1);
  FTUpHopHistogram histogram(Topology(), 0);
  ASSERT_EQ(histogram.Init(), 0);
  EXPECT_EQ(histogram.AddIllegalLinkIssues(0, {}), 9);
  EXPECT_EQ(histogram.GetErrorText(),
            "The switch GUID: 0x0000000000000001is not connected to any switch from the down nodes"
            " provided for Invalid Link Issue");
}

TEST_F(CrossLinksTest, IndexWithoutUpperSwitchFails) {
  AddRootsAndLeaves(1, {{0}});
  RankFromRoots(1);
  FTUpHopHistogram histogram(Topology(), 0);
  ASSERT_EQ(histogram.Init(), 0);
  EXPECT_EQ(histogram.AddIllegalLinkIssues(1, {fabric["leaf0"]}), 4);
  EXPECT_EQ(histogram.GetErrorText(), "Failed to find IBNode associated with the index: 1");
}

TEST_F(CrossLinksTest, FailureToFindTheCablesEndsTheCheckWithTheSwitchTakenOut) {
  // leaf0 is made to stand for a set that it has no cables for.
  AddRootsAndLeaves(3, {{2}});
  RankFromRoots(3);
  FTUpHopHistogram histogram(Topology(), 0);
  ASSERT_EQ(histogram.Init(), 0);
  auto& sets = TestPeer::UpHopSets(histogram);
  sets.clear();
  FTUpHopSet& set = sets["0011"];
  set.upSet = Bits({0, 1});
  set.encounteredMap = Counts({{0, 1}, {1, 1}});
  set.downNodes = {fabric["leaf0"]};
  sets["0111"].upSet = Bits({0, 1, 2});
  sets["0111"].encounteredMap = Counts({{0, 3}, {1, 3}, {2, 3}});
  EXPECT_EQ(histogram.CheckCrossLinks(set), 9);
  EXPECT_EQ(set.upSet, Bits({1}));
  EXPECT_EQ(histogram.GetErrorText(),
            "The switch GUID: 0x0000000000000001is not connected to any switch from the down nodes"
            " provided for Invalid Link Issue");
}

TEST_F(CrossLinksTest, SharedSwitchThatTheOtherSetDoesNotCountFails) {
  AddRootsAndLeaves(3, {});
  FTUpHopHistogram histogram(Topology(), 0);
  TestPeer::BitSetSize(histogram) = 3;
  auto& sets = TestPeer::UpHopSets(histogram);
  FTUpHopSet& set = sets["0110"];
  set.upSet = Bits({1, 2});
  set.encounteredMap = Counts({{1, 1}, {2, 1}});
  FTUpHopSet& other = sets["0111"];
  other.upSet = Bits({0, 1, 2});
  other.encounteredMap = Counts({{0, 1}, {1, 1}});
  EXPECT_EQ(histogram.CheckCrossLinks(set), 4);
  std::ostringstream expected;
  expected << "Failed to get how many times a node with index: 2 was encountered. Up-Hop set ptr: "
           << static_cast<const void*>(&other);
  EXPECT_EQ(histogram.GetErrorText(), expected.str());
}

TEST_F(CrossLinksTest, SharedSwitchThatTheSetItselfDoesNotCountFailsWhateverTheOtherCounts) {
  AddRootsAndLeaves(3, {});
  const std::string start =
      "Failed to get how many times a node with index: 1 was encountered. Up-Hop set ptr: ";
  for (const bool otherCounts : {true, false}) {
    FTUpHopHistogram histogram(Topology(), 0);
    TestPeer::BitSetSize(histogram) = 3;
    auto& sets = TestPeer::UpHopSets(histogram);
    FTUpHopSet& set = sets["0110"];
    set.upSet = Bits({1, 2});
    FTUpHopSet& other = sets["0111"];
    other.upSet = Bits({0, 1, 2});
    if (otherCounts) other.encounteredMap = Counts({{0, 1}, {1, 1}, {2, 1}});
    EXPECT_EQ(histogram.CheckCrossLinks(set), 4);
    const std::string text = histogram.GetErrorText();
    EXPECT_EQ(text.substr(0, start.size()), start);
    // The pointer behind it is neither of the two sets.
    for (const FTUpHopSet* each : {&set, &other}) {
      std::ostringstream pointer;
      pointer << static_cast<const void*>(each);
      EXPECT_NE(text.substr(start.size()), pointer.str());
    }
    EXPECT_EQ(text.substr(start.size(), 2), "0x");
    EXPECT_EQ(text.find("Failed", start.size()), std::string::npos) << text;
    EXPECT_EQ(set.upSet, Bits({1, 2}));
  }
}

TEST_F(CrossLinksTest, SetIsNotComparedWithItself) {
  // It counts none of its switches, which only a comparison would notice.
  FTUpHopHistogram histogram(Topology(), 0);
  TestPeer::BitSetSize(histogram) = 3;
  FTUpHopSet& set = TestPeer::UpHopSets(histogram)["0110"];
  set.upSet = Bits({1, 2});
  EXPECT_EQ(histogram.CheckCrossLinks(set), 0);
  EXPECT_EQ(histogram.GetErrorText(), "");
}

TEST_F(CrossLinksTest, SharedSwitchesBeyondTheRankAreNotLookedAt) {
  AddRootsAndLeaves(2, {});
  FTUpHopHistogram histogram(Topology(), 0);
  TestPeer::BitSetSize(histogram) = 2;
  auto& sets = TestPeer::UpHopSets(histogram);
  sets["001"].upSet = Bits({2, 2047});
  sets["010"].upSet = Bits({2, 2047});
  EXPECT_EQ(histogram.CheckCrossLinks(sets["001"]), 0);
  EXPECT_EQ(histogram.GetErrorText(), "");
}

}  // namespace
}  // namespace fabscope::internal
