#include <gmock/gmock.h>
#include <initializer_list>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "fabric/fabric_walk.h"
#include "fat_tree/up_hop_histogram.h"
#include "support/stage_fixture.h"

namespace fabscope {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

// "root0 port 1 rank 0 - leaf0 port 2 rank 1"
std::string Text(const FTLinkIssue& issue) {
  std::ostringstream text;
  text << issue.node1->name << " port " << int{issue.port1} << " rank " << issue.rank1 << " - "
       << issue.node2->name << " port " << int{issue.port2} << " rank " << issue.rank2;
  return text.str();
}

std::vector<std::string> Issues(FTUpHopHistogram& histogram) {
  std::vector<std::string> texts;
  for (const FTLinkIssue& issue : TestPeer::LinkIssues(histogram)) texts.push_back(Text(issue));
  return texts;
}

std::string Numbered(const std::string& name, std::size_t number) {
  return name + std::to_string(number);
}

UpHopBits Bits(std::initializer_list<std::size_t> indices) {
  UpHopBits bits;
  for (const std::size_t index : indices) bits.set(index);
  return bits;
}

}  // namespace

class CrossLinksTest : public StageTest {
 protected:
  void AddRoots(std::size_t count) {
    for (std::size_t r = 0; r < count; ++r) fabric.Switch(Numbered("root", r), 64);
  }

  // "leaf<l>", cabled to the roots of the l-th list, in that order.
  void AddLeaves(const std::vector<std::vector<std::size_t>>& upLinks) {
    for (std::size_t l = 0; l < upLinks.size(); ++l) fabric.Switch(Numbered("leaf", l), 64);
    for (std::size_t l = 0; l < upLinks.size(); ++l) {
      for (const std::size_t r : upLinks[l]) {
        fabric.Cable(Numbered("leaf", l), Numbered("root", r));
      }
    }
  }

  void RankFromRoots(std::size_t count) {
    std::vector<std::string> names;
    for (std::size_t r = 0; r < count; ++r) names.push_back(Numbered("root", r));
    RankFrom(names);
  }

  // Fills the histogram and looks at each set that is left after merging, as forming groups does.
  void CheckAllSets(FTUpHopHistogram& histogram) {
    ASSERT_EQ(histogram.Init(), 0);
    ASSERT_EQ(TestPeer::MergeSets(histogram), 0);
    for (auto& [key, set] : TestPeer::UpHopSets(histogram)) {
      ASSERT_EQ(histogram.CheckCrossLinks(set), 0);
    }
  }

  // What filling records when every cable to a root has all cables of that root looked at.
  std::vector<std::string> IssuesLookingAtEveryCable(FTTopology& topology) {
    FTUpHopHistogram histogram(topology, 0);
    for (const IBNode* lower : *topology.GetNodesOnRank(1)) {
      for (unsigned num = 1; num <= lower->numPorts; ++num) {
        const IBPort* port = lower->getPort(static_cast<std::uint8_t>(num));
        const IBNode* remote = GetRemoteSwitch(port);
        if (remote == nullptr) continue;
        const int rank = topology.GetNodeRank(remote);
        if (rank == 0) histogram.CheckRootSwitchConnections(*remote);
        if (rank == 1) {
          histogram.AddIllegalLinkIssue({lower, port->num, 1, remote, port->remotePort->num, 1});
        }
      }
    }
    return Issues(histogram);
  }
};

// --- Links inside a rank.

TEST_F(CrossLinksTest, CableBetweenTwoRootsIsRecordedOnceFromTheRootMetFirst) {
  AddRoots(2);
  AddLeaves({{0, 1}, {0, 1}});
  fabric.Link("root0", 40, "root1", 41);
  RankFromRoots(2);
  FTUpHopHistogram histogram(Topology(), 0);
  ASSERT_EQ(histogram.Init(), 0);
  EXPECT_THAT(Issues(histogram), ElementsAre("root0 port 40 rank 0 - root1 port 41 rank 0"));
}

TEST_F(CrossLinksTest, CableBetweenTwoRootsIsRecordedFromTheSecondWhenThatIsMetFirst) {
  AddRoots(2);
  AddLeaves({{1, 0}, {0, 1}});
  fabric.Link("root0", 40, "root1", 41);
  RankFromRoots(2);
  FTUpHopHistogram histogram(Topology(), 0);
  ASSERT_EQ(histogram.Init(), 0);
  EXPECT_THAT(Issues(histogram), ElementsAre("root1 port 41 rank 0 - root0 port 40 rank 0"));
}

TEST_F(CrossLinksTest, SeveralCablesBetweenTwoRootsAreOneIssueWithTheLowestPort) {
  AddRoots(2);
  AddLeaves({{0, 1}});
  fabric.Link("root0", 42, "root1", 40).Link("root0", 41, "root1", 43);
  RankFromRoots(2);
  FTUpHopHistogram histogram(Topology(), 0);
  ASSERT_EQ(histogram.Init(), 0);
  EXPECT_THAT(Issues(histogram), ElementsAre("root0 port 41 rank 0 - root1 port 43 rank 0"));
}

TEST_F(CrossLinksTest, RootsAreLookedAtInTheOrderOfTheCablesThatReachThem) {
  AddRoots(4);
  AddLeaves({{2}, {0}});
  fabric.Link("root0", 50, "root3", 40).Link("root0", 40, "root1", 40);
  fabric.Link("root2", 40, "root3", 41);
  RankFromRoots(4);
  FTUpHopHistogram histogram(Topology(), 0);
  ASSERT_EQ(histogram.Init(), 0);
  EXPECT_THAT(Issues(histogram), ElementsAre("root2 port 40 rank 0 - root3 port 41 rank 0",
                                             "root0 port 40 rank 0 - root1 port 40 rank 0",
                                             "root0 port 50 rank 0 - root3 port 40 rank 0"));
}

TEST_F(CrossLinksTest, CableBetweenRootsThatNoLeafReachesIsNotSeen) {
  AddRoots(3);
  AddLeaves({{0}});
  fabric.Cable("root1", "root2");
  RankFromRoots(3);
  FTUpHopHistogram histogram(Topology(), 0);
  ASSERT_EQ(histogram.Init(), 0);
  EXPECT_THAT(Issues(histogram), IsEmpty());
}

TEST_F(CrossLinksTest, LastPortOfARootIsLookedAt) {
  fabric.Switch("root0", 255).Switch("root1").Switch("leaf0");
  fabric.Cable("leaf0", "root0").Link("root0", 255, "root1", 1);
  RankFrom({"root0", "root1"});
  FTUpHopHistogram histogram(Topology(), 0);
  ASSERT_EQ(histogram.Init(), 0);
  EXPECT_THAT(Issues(histogram), ElementsAre("root0 port 255 rank 0 - root1 port 1 rank 0"));
}

TEST_F(CrossLinksTest, OnlyCablesToOtherRootsAreARootsIllegalLinks) {
  AddRoots(2);
  AddLeaves({{0, 1}});
  fabric.Host("host").Cable("root0", "host");
  fabric.Link("root0", 40, "root1", 40, /*symmetric=*/false);
  RankFromRoots(2);
  FTUpHopHistogram histogram(Topology(), 0);
  histogram.CheckRootSwitchConnections(*fabric["root0"]);
  EXPECT_THAT(Issues(histogram), IsEmpty());
}

TEST_F(CrossLinksTest, LookingAtARootAgainRecordsNothingNew) {
  AddRoots(3);
  fabric.Cable("root0", "root1").Cable("root0", "root2");
  RankFromRoots(3);
  FTUpHopHistogram histogram(Topology(), 0);
  histogram.CheckRootSwitchConnections(*fabric["root0"]);
  const std::vector<std::string> first = Issues(histogram);
  EXPECT_EQ(first.size(), 2U);
  histogram.CheckRootSwitchConnections(*fabric["root0"]);
  histogram.CheckRootSwitchConnections(*fabric["root1"]);
  EXPECT_EQ(Issues(histogram), first);
}

TEST_F(CrossLinksTest, FillingRecordsWhatLookingAtARootForEveryCableRecords) {
  std::mt19937 random(20240607);
  std::size_t issues = 0;
  for (int round = 0; round < 100; ++round) {
    SCOPED_TRACE(round);
    TestFabric tangle;
    std::vector<std::string> names;
    for (std::size_t r = 0; r < 4; ++r) names.push_back(Numbered("root", r));
    for (std::size_t l = 0; l < 4; ++l) names.push_back(Numbered("leaf", l));
    for (const std::string& name : names) tangle.Switch(name, 64);
    for (int cable = 0; cable < 16; ++cable) {
      const std::size_t a = random() % names.size();
      const std::size_t b = random() % names.size();
      if (a != b) tangle.Cable(names[a], names[b]);
    }
    NodeSet roots;
    for (std::size_t r = 0; r < 4; ++r) roots.insert(tangle[names[r]]);
    NodeSet sameRoots = roots;
    FTTopology topology(&tangle.Build(), &out, 70);
    FTTopology sameTopology(&tangle.Build(), &out, 70);
    ASSERT_EQ(topology.FillRanksFromRoots(roots), 0);
    ASSERT_EQ(sameTopology.FillRanksFromRoots(sameRoots), 0);
    ASSERT_GE(topology.GetRanks().size(), 2U);

    FTUpHopHistogram histogram(topology, 0);
    ASSERT_EQ(histogram.Init(), 0);
    EXPECT_EQ(Issues(histogram), IssuesLookingAtEveryCable(sameTopology));
    issues += Issues(histogram).size();
  }
  EXPECT_GT(issues, 300U);  // or the fabrics are no test
}

TEST_F(CrossLinksTest, CableBetweenTwoLowerSwitchesIsRecordedOnceFromTheFirst) {
  AddRoots(1);
  AddLeaves({{0}, {0}});
  fabric.Link("leaf0", 9, "leaf1", 7);
  RankFromRoots(1);
  FTUpHopHistogram histogram(Topology(), 0);
  ASSERT_EQ(histogram.Init(), 0);
  EXPECT_THAT(Issues(histogram), ElementsAre("leaf0 port 9 rank 1 - leaf1 port 7 rank 1"));
}

TEST_F(CrossLinksTest, SeveralCablesBetweenTwoLowerSwitchesAreOneIssueWithTheLowestPort) {
  AddRoots(1);
  AddLeaves({{0}, {0}});
  fabric.Link("leaf0", 9, "leaf1", 7).Link("leaf0", 8, "leaf1", 17);
  RankFromRoots(1);
  FTUpHopHistogram histogram(Topology(), 0);
  ASSERT_EQ(histogram.Init(), 0);
  EXPECT_THAT(Issues(histogram), ElementsAre("leaf0 port 8 rank 1 - leaf1 port 17 rank 1"));
}

TEST_F(CrossLinksTest, IssuesInsideTheLowerRankAndBetweenRootsStandInPortOrder) {
  AddRoots(2);
  AddLeaves({{0}, {1}});
  fabric.Link("leaf0", 2, "leaf1", 2).Link("root0", 40, "root1", 40);
  RankFromRoots(2);
  FTUpHopHistogram histogram(Topology(), 0);
  ASSERT_EQ(histogram.Init(), 0);
  EXPECT_THAT(Issues(histogram), ElementsAre("root0 port 40 rank 0 - root1 port 40 rank 0",
                                             "leaf0 port 2 rank 1 - leaf1 port 2 rank 1"));
}

TEST_F(CrossLinksTest, LinkThatIsNoTreeLinkIsNoIllegalLinkEither) {
  AddRoots(1);
  AddLeaves({{0}, {0}});
  fabric.Link("leaf0", 9, "leaf1", 9, /*symmetric=*/false);
  RankFromRoots(1);
  FTUpHopHistogram histogram(Topology(), 0);
  ASSERT_EQ(histogram.Init(), 0);
  EXPECT_THAT(Issues(histogram), IsEmpty());
}

TEST_F(CrossLinksTest, UpperSwitchesAreLookedAtOnRankZeroOnly) {
  fabric.Switch("root0").Switch("mid0").Switch("mid1").Switch("leaf0");
  fabric.Cable("mid0", "root0").Cable("mid1", "root0");
  fabric.Cable("leaf0", "mid0").Cable("leaf0", "mid1").Link("mid0", 9, "mid1", 8);
  RankFrom({"root0"});
  FTUpHopHistogram lower(Topology(), 1);
  ASSERT_EQ(lower.Init(), 0);
  EXPECT_THAT(Issues(lower), IsEmpty());
  FTUpHopHistogram upper(Topology(), 0);
  ASSERT_EQ(upper.Init(), 0);
  EXPECT_THAT(Issues(upper), ElementsAre("mid0 port 9 rank 1 - mid1 port 8 rank 1"));
}

TEST_F(CrossLinksTest, IllegalLinkIsEnteredInTheRegistryOfTheTopology) {
  AddRoots(3);
  FTUpHopHistogram histogram(Topology(), 0);
  EXPECT_FALSE(Topology().IsReportedLinkIssue(fabric["root1"], fabric["root0"]));
  histogram.AddIllegalLinkIssue({fabric["root0"], 1, 0, fabric["root1"], 2, 0});
  EXPECT_TRUE(Topology().IsReportedLinkIssue(fabric["root1"], fabric["root0"]));
  EXPECT_FALSE(Topology().IsReportedLinkIssue(fabric["root2"], fabric["root0"]));
  EXPECT_THAT(Issues(histogram), ElementsAre("root0 port 1 rank 0 - root1 port 2 rank 0"));
}

TEST_F(CrossLinksTest, PairInTheRegistryIsNotRecordedAgainInAnyHistogram) {
  AddRoots(2);
  Topology().AddNewLinkIssue(fabric["root0"], fabric["root1"]);
  FTUpHopHistogram histogram(Topology(), 0);
  histogram.AddIllegalLinkIssue({fabric["root0"], 1, 0, fabric["root1"], 2, 0});
  histogram.AddIllegalLinkIssue({fabric["root1"], 3, 0, fabric["root0"], 4, 0});
  EXPECT_THAT(Issues(histogram), IsEmpty());
}

// --- Cross links. Set {2,3,4} of one leaf and {0,1,2} of others do not merge.

TEST_F(CrossLinksTest, UpperSwitchReachedMoreThanTwiceAsOftenFromAnotherSetIsTakenOut) {
  AddRoots(5);
  AddLeaves({{2, 3, 4}, {0, 1, 2}, {0, 1, 2}, {0, 1, 2}});
  RankFromRoots(5);
  FTUpHopHistogram histogram(Topology(), 0);
  CheckAllSets(histogram);
  EXPECT_EQ(TestPeer::UpHopSets(histogram)["011100"].upSet, Bits({3, 4}));
  EXPECT_EQ(TestPeer::UpHopSets(histogram)["011100"].encounteredMap.count(2), 0U);
  EXPECT_EQ(TestPeer::UpHopSets(histogram)["000111"].upSet, Bits({0, 1, 2}));
  EXPECT_THAT(Issues(histogram), ElementsAre("root2 port 1 rank 0 - leaf0 port 1 rank 1"));
}

TEST_F(CrossLinksTest, UpperSwitchReachedExactlyTwiceAsOftenStaysInBothSets) {
  AddRoots(5);
  AddLeaves({{2, 3, 4}, {0, 1, 2}, {0, 1, 2}});
  RankFromRoots(5);
  FTUpHopHistogram histogram(Topology(), 0);
  CheckAllSets(histogram);
  EXPECT_EQ(TestPeer::UpHopSets(histogram)["011100"].upSet, Bits({2, 3, 4}));
  EXPECT_EQ(TestPeer::UpHopSets(histogram)["000111"].upSet, Bits({0, 1, 2}));
  EXPECT_THAT(Issues(histogram), IsEmpty());
}

TEST_F(CrossLinksTest, UpperSwitchReachedEquallyOftenStaysInBothSets) {
  AddRoots(5);
  AddLeaves({{2, 3, 4}, {0, 1, 2}});
  RankFromRoots(5);
  FTUpHopHistogram histogram(Topology(), 0);
  CheckAllSets(histogram);
  EXPECT_EQ(TestPeer::UpHopSets(histogram)["011100"].upSet, Bits({2, 3, 4}));
  EXPECT_EQ(TestPeer::UpHopSets(histogram)["000111"].upSet, Bits({0, 1, 2}));
}

TEST_F(CrossLinksTest, OnlyTheSetThatIsLookedAtLosesSwitches) {
  AddRoots(5);
  AddLeaves({{2, 3, 4}, {0, 1, 2}, {0, 1, 2}, {0, 1, 2}});
  RankFromRoots(5);
  FTUpHopHistogram histogram(Topology(), 0);
  ASSERT_EQ(histogram.Init(), 0);
  ASSERT_EQ(TestPeer::MergeSets(histogram), 0);
  EXPECT_EQ(histogram.CheckCrossLinks(TestPeer::UpHopSets(histogram)["000111"]), 0);
  EXPECT_EQ(TestPeer::UpHopSets(histogram)["011100"].upSet, Bits({2, 3, 4}));
  EXPECT_THAT(Issues(histogram), IsEmpty());
}

TEST_F(CrossLinksTest, LowerSwitchesAreCountedAndNotTheirCables) {
  AddRoots(5);
  AddLeaves({{2, 2, 2, 3, 4}, {0, 1, 2}, {0, 1, 2}, {0, 1, 2}});
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
  AddRoots(5);
  AddLeaves({{2, 3, 4}, {0, 1, 2}, {0, 1, 2}, {1, 2}});
  RankFromRoots(5);
  FTUpHopHistogram histogram(Topology(), 0);
  CheckAllSets(histogram);
  EXPECT_EQ(TestPeer::UpHopSets(histogram).size(), 2U);
  EXPECT_THAT(Issues(histogram), ElementsAre("root2 port 1 rank 0 - leaf0 port 1 rank 1"));
}

TEST_F(CrossLinksTest, IssuesFollowTheLowerSwitchesInTheirOrderOfJoining) {
  AddRoots(5);
  AddLeaves({{3, 2, 4}, {0, 1, 2}, {0, 1, 2}, {0, 1, 2}, {0, 1, 2}, {0, 1, 2}, {2, 3, 4, 2}});
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
  AddRoots(7);
  AddLeaves({{2, 3, 4}, {0, 1, 2}, {0, 1, 2}, {0, 1, 2}, {2, 5, 6}, {2, 5, 6}, {2, 5, 6}});
  RankFromRoots(7);
  FTUpHopHistogram histogram(Topology(), 0);
  CheckAllSets(histogram);
  EXPECT_THAT(Issues(histogram), ElementsAre("root2 port 1 rank 0 - leaf0 port 1 rank 1"));
  EXPECT_EQ(TestPeer::UpHopSets(histogram)["00000111"].upSet, Bits({0, 1, 2}));
  EXPECT_EQ(TestPeer::UpHopSets(histogram)["01100100"].upSet, Bits({2, 5, 6}));
}

TEST_F(CrossLinksTest, OtherSetsAreComparedInKeyOrderAndTheirSwitchesInIndexOrder) {
  // leaf0 shares root 3 with the set of the lower key, and roots 0 and 1 with that of the higher.
  AddRoots(14);
  const std::vector<std::size_t> low{2, 3, 4};
  const std::vector<std::size_t> high{0, 1, 8, 9, 10, 11, 12, 13};
  AddLeaves({{1, 0, 3, 5, 6, 7}, low, low, low, high, high, high});
  RankFromRoots(14);
  FTUpHopHistogram histogram(Topology(), 0);
  CheckAllSets(histogram);
  ASSERT_EQ(TestPeer::UpHopSets(histogram).size(), 3U);
  EXPECT_THAT(Issues(histogram), ElementsAre("root3 port 1 rank 0 - leaf0 port 3 rank 1",
                                             "root0 port 1 rank 0 - leaf0 port 2 rank 1",
                                             "root1 port 1 rank 0 - leaf0 port 1 rank 1"));
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
  AddRoots(2);
  AddLeaves({{0, 1, 1}});
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

TEST_F(CrossLinksTest, OneConnectedLowerSwitchIsEnough) {
  AddRoots(2);
  AddLeaves({{1}, {0}});
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
  AddRoots(1);
  AddLeaves({{0}});
  RankFromRoots(1);
  FTUpHopHistogram histogram(Topology(), 0);
  ASSERT_EQ(histogram.Init(), 0);
  EXPECT_EQ(histogram.AddIllegalLinkIssues(0, {}), 9);
  EXPECT_EQ(histogram.GetErrorText(),
            "The switch GUID: 0x0000000000000001is not connected to any switch from the down nodes"
            " provided for Invalid Link Issue");
}

TEST_F(CrossLinksTest, IndexWithoutUpperSwitchFails) {
  AddRoots(1);
  AddLeaves({{0}});
  RankFromRoots(1);
  FTUpHopHistogram histogram(Topology(), 0);
  ASSERT_EQ(histogram.Init(), 0);
  EXPECT_EQ(histogram.AddIllegalLinkIssues(1, {fabric["leaf0"]}), 4);
  EXPECT_EQ(histogram.GetErrorText(), "Failed to find IBNode associated with the index: 1");
}

TEST_F(CrossLinksTest, FailureToFindTheCablesEndsTheCheckWithTheSwitchTakenOut) {
  // leaf0 is made to stand for a set that it has no cables for.
  AddRoots(3);
  AddLeaves({{2}});
  RankFromRoots(3);
  FTUpHopHistogram histogram(Topology(), 0);
  ASSERT_EQ(histogram.Init(), 0);
  auto& sets = TestPeer::UpHopSets(histogram);
  sets.clear();
  FTUpHopSet& set = sets["0011"];
  set.upSet = Bits({0, 1});
  set.encounteredMap = {{0, 1}, {1, 1}};
  set.downNodes = {fabric["leaf0"]};
  sets["0111"].upSet = Bits({0, 1, 2});
  sets["0111"].encounteredMap = {{0, 3}, {1, 3}, {2, 3}};
  EXPECT_EQ(histogram.CheckCrossLinks(set), 9);
  EXPECT_EQ(set.upSet, Bits({1}));
  EXPECT_EQ(histogram.GetErrorText(),
            "The switch GUID: 0x0000000000000001is not connected to any switch from the down nodes"
            " provided for Invalid Link Issue");
}

TEST_F(CrossLinksTest, SharedSwitchThatTheOtherSetDoesNotCountFails) {
  AddRoots(3);
  FTUpHopHistogram histogram(Topology(), 0);
  TestPeer::BitSetSize(histogram) = 3;
  auto& sets = TestPeer::UpHopSets(histogram);
  FTUpHopSet& set = sets["0110"];
  set.upSet = Bits({1, 2});
  set.encounteredMap = {{1, 1}, {2, 1}};
  FTUpHopSet& other = sets["0111"];
  other.upSet = Bits({0, 1, 2});
  other.encounteredMap = {{0, 1}, {1, 1}};
  EXPECT_EQ(histogram.CheckCrossLinks(set), 4);
  std::ostringstream expected;
  expected << "Failed to get how many times a node with index: 2 was encountered. Up-Hop set ptr: "
           << static_cast<const void*>(&other);
  EXPECT_EQ(histogram.GetErrorText(), expected.str());
}

TEST_F(CrossLinksTest, SharedSwitchThatTheSetItselfDoesNotCountFails) {
  AddRoots(3);
  FTUpHopHistogram histogram(Topology(), 0);
  TestPeer::BitSetSize(histogram) = 3;
  auto& sets = TestPeer::UpHopSets(histogram);
  FTUpHopSet& set = sets["0110"];
  set.upSet = Bits({1, 2});
  sets["0111"].upSet = Bits({0, 1, 2});
  EXPECT_EQ(histogram.CheckCrossLinks(set), 4);
  const std::string text = histogram.GetErrorText();
  const std::string start =
      "Failed to get how many times a node with index: 1 was encountered. Up-Hop set ptr: ";
  EXPECT_EQ(text.substr(0, start.size()), start);
  // The pointer behind it is neither of the two sets.
  std::ostringstream pointer;
  pointer << static_cast<const void*>(&set);
  EXPECT_NE(text.substr(start.size()), pointer.str());
  EXPECT_EQ(text.substr(start.size(), 2), "0x");
}

TEST_F(CrossLinksTest, SharedSwitchesBeyondTheRankAreNotLookedAt) {
  AddRoots(2);
  FTUpHopHistogram histogram(Topology(), 0);
  TestPeer::BitSetSize(histogram) = 2;
  auto& sets = TestPeer::UpHopSets(histogram);
  sets["001"].upSet = Bits({2, 2047});
  sets["010"].upSet = Bits({2, 2047});
  EXPECT_EQ(histogram.CheckCrossLinks(sets["001"]), 0);
  EXPECT_EQ(histogram.GetErrorText(), "");
}

}  // namespace fabscope
