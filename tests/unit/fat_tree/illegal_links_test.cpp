#include <gmock/gmock.h>
#include <random>
#include <string>
#include <vector>

#include "fabric/fabric_walk.h"
#include "fat_tree/up_hop_histogram.h"
#include "support/link_issues.h"
#include "support/up_hop_fixture.h"

namespace fabscope::internal {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

// Links inside a rank.
class IllegalLinksTest : public UpHopTest {
 protected:
  // What filling records when every cable to a root has all cables of that root looked at.
  std::vector<std::string> IssuesLookingAtEveryCable(FTTopology& topology) {
    FTUpHopHistogram histogram(topology, 0);
    for (const IBNode* lower : *topology.GetNodesOnRank(1)) {
      for (const IBPort& port : lower->ports) {
        const IBNode* remote = GetRemoteSwitch(port);
        if (remote == nullptr) continue;
        const int rank = topology.GetNodeRank(remote);
        if (rank == 0) histogram.CheckRootSwitchConnections(*remote);
        if (rank == 1) {
          histogram.AddIllegalLinkIssue({lower, port.num, 1, remote, port.remotePort->num, 1});
        }
      }
    }
    return Issues(histogram);
  }
};

TEST_F(IllegalLinksTest, CableBetweenTwoRootsIsRecordedOnceFromTheRootMetFirst) {
  AddRootsAndLeaves(2, {{0, 1}, {0, 1}});
  fabric.Link("root0", 40, "root1", 41);
  RankFromRoots(2);
  FTUpHopHistogram histogram(Topology(), 0);
  ASSERT_EQ(histogram.Init(), 0);
  EXPECT_THAT(Issues(histogram), ElementsAre("root0 port 40 rank 0 - root1 port 41 rank 0"));
}

TEST_F(IllegalLinksTest, CableBetweenTwoRootsIsRecordedFromTheSecondWhenThatIsMetFirst) {
  AddRootsAndLeaves(2, {{1, 0}, {0, 1}});
  fabric.Link("root0", 40, "root1", 41);
  RankFromRoots(2);
  FTUpHopHistogram histogram(Topology(), 0);
  ASSERT_EQ(histogram.Init(), 0);
  EXPECT_THAT(Issues(histogram), ElementsAre("root1 port 41 rank 0 - root0 port 40 rank 0"));
}

TEST_F(IllegalLinksTest, SeveralCablesBetweenTwoRootsAreOneIssueWithTheLowestPort) {
  AddRootsAndLeaves(2, {{0, 1}});
  fabric.Link("root0", 42, "root1", 40).Link("root0", 41, "root1", 43);
  RankFromRoots(2);
  FTUpHopHistogram histogram(Topology(), 0);
  ASSERT_EQ(histogram.Init(), 0);
  EXPECT_THAT(Issues(histogram), ElementsAre("root0 port 41 rank 0 - root1 port 43 rank 0"));
}

TEST_F(IllegalLinksTest, RootsAreLookedAtInTheOrderOfTheCablesThatReachThem) {
  AddRootsAndLeaves(4, {{2}, {0}});
  fabric.Link("root0", 50, "root3", 40).Link("root0", 40, "root1", 40);
  fabric.Link("root2", 40, "root3", 41);
  RankFromRoots(4);
  FTUpHopHistogram histogram(Topology(), 0);
  ASSERT_EQ(histogram.Init(), 0);
  EXPECT_THAT(Issues(histogram), ElementsAre("root2 port 40 rank 0 - root3 port 41 rank 0",
                                             "root0 port 40 rank 0 - root1 port 40 rank 0",
                                             "root0 port 50 rank 0 - root3 port 40 rank 0"));
}

TEST_F(IllegalLinksTest, CableBetweenRootsThatNoLeafReachesIsNotSeen) {
  AddRootsAndLeaves(3, {{0}});
  fabric.Cable("root1", "root2");
  RankFromRoots(3);
  FTUpHopHistogram histogram(Topology(), 0);
  ASSERT_EQ(histogram.Init(), 0);
  EXPECT_THAT(Issues(histogram), IsEmpty());
}

TEST_F(IllegalLinksTest, LastPortOfARootIsLookedAt) {
  fabric.Switch("root0", 255).Switch("root1").Switch("leaf0");
  fabric.Cable("leaf0", "root0").Link("root0", 255, "root1", 1);
  RankFrom({"root0", "root1"});
  FTUpHopHistogram histogram(Topology(), 0);
  ASSERT_EQ(histogram.Init(), 0);
  EXPECT_THAT(Issues(histogram), ElementsAre("root0 port 255 rank 0 - root1 port 1 rank 0"));
}

TEST_F(IllegalLinksTest, OnlyCablesToOtherRootsAreARootsIllegalLinks) {
  AddRootsAndLeaves(2, {{0, 1}});
  fabric.Host("host").Cable("root0", "host");
  fabric.Link("root0", 40, "root1", 40, /*symmetric=*/false);
  RankFromRoots(2);
  FTUpHopHistogram histogram(Topology(), 0);
  histogram.CheckRootSwitchConnections(*fabric["root0"]);
  EXPECT_THAT(Issues(histogram), IsEmpty());
}

TEST_F(IllegalLinksTest, LookingAtARootAgainRecordsNothingNew) {
  AddRootsAndLeaves(3, {});
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

TEST_F(IllegalLinksTest, FillingRecordsWhatLookingAtARootForEveryCableRecords) {
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

TEST_F(IllegalLinksTest, CableBetweenTwoLowerSwitchesIsRecordedOnceFromTheFirst) {
  AddRootsAndLeaves(1, {{0}, {0}});
  fabric.Link("leaf0", 9, "leaf1", 7);
  RankFromRoots(1);
  FTUpHopHistogram histogram(Topology(), 0);
  ASSERT_EQ(histogram.Init(), 0);
  EXPECT_THAT(Issues(histogram), ElementsAre("leaf0 port 9 rank 1 - leaf1 port 7 rank 1"));
}

TEST_F(IllegalLinksTest, SeveralCablesBetweenTwoLowerSwitchesAreOneIssueWithTheLowestPort) {
  AddRootsAndLeaves(1, {{0}, {0}});
  fabric.Link("leaf0", 9, "leaf1", 7).Link("leaf0", 8, "leaf1", 17);
  RankFromRoots(1);
  FTUpHopHistogram histogram(Topology(), 0);
  ASSERT_EQ(histogram.Init(), 0);
  EXPECT_THAT(Issues(histogram), ElementsAre("leaf0 port 8 rank 1 - leaf1 port 17 rank 1"));
}

TEST_F(IllegalLinksTest, CableFromASwitchToItselfIsRecordedOnce) {
  AddRootsAndLeaves(1, {{0}});
  fabric.Link("root0", 41, "root0", 40).Link("leaf0", 8, "leaf0", 9);
  RankFromRoots(1);
  FTUpHopHistogram histogram(Topology(), 0);
  ASSERT_EQ(histogram.Init(), 0);
  EXPECT_THAT(Issues(histogram), ElementsAre("root0 port 40 rank 0 - root0 port 41 rank 0",
                                             "leaf0 port 8 rank 1 - leaf0 port 9 rank 1"));
}

TEST_F(IllegalLinksTest, IssuesInsideTheLowerRankAndBetweenRootsStandInPortOrder) {
  AddRootsAndLeaves(2, {{0}, {1}});
  fabric.Link("leaf0", 2, "leaf1", 2).Link("root0", 40, "root1", 40);
  RankFromRoots(2);
  FTUpHopHistogram histogram(Topology(), 0);
  ASSERT_EQ(histogram.Init(), 0);
  EXPECT_THAT(Issues(histogram), ElementsAre("root0 port 40 rank 0 - root1 port 40 rank 0",
                                             "leaf0 port 2 rank 1 - leaf1 port 2 rank 1"));
}

TEST_F(IllegalLinksTest, LinkThatIsNoTreeLinkIsNoIllegalLinkEither) {
  AddRootsAndLeaves(1, {{0}, {0}});
  fabric.Link("leaf0", 9, "leaf1", 9, /*symmetric=*/false);
  RankFromRoots(1);
  FTUpHopHistogram histogram(Topology(), 0);
  ASSERT_EQ(histogram.Init(), 0);
  EXPECT_THAT(Issues(histogram), IsEmpty());
}

TEST_F(IllegalLinksTest, UpperSwitchesAreLookedAtOnRankZeroOnly) {
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

TEST_F(IllegalLinksTest, IllegalLinkIsEnteredInTheRegistryOfTheTopology) {
  AddRootsAndLeaves(3, {});
  FTUpHopHistogram histogram(Topology(), 0);
  EXPECT_FALSE(Topology().IsReportedLinkIssue(fabric["root1"], fabric["root0"]));
  histogram.AddIllegalLinkIssue({fabric["root0"], 1, 0, fabric["root1"], 2, 0});
  EXPECT_TRUE(Topology().IsReportedLinkIssue(fabric["root1"], fabric["root0"]));
  EXPECT_FALSE(Topology().IsReportedLinkIssue(fabric["root2"], fabric["root0"]));
  EXPECT_THAT(Issues(histogram), ElementsAre("root0 port 1 rank 0 - root1 port 2 rank 0"));
}

TEST_F(IllegalLinksTest, PairInTheRegistryIsNotRecordedAgainInAnyHistogram) {
  AddRootsAndLeaves(2, {});
  Topology().AddNewLinkIssue(fabric["root0"], fabric["root1"]);
  FTUpHopHistogram histogram(Topology(), 0);
  histogram.AddIllegalLinkIssue({fabric["root0"], 1, 0, fabric["root1"], 2, 0});
  histogram.AddIllegalLinkIssue({fabric["root1"], 3, 0, fabric["root0"], 4, 0});
  EXPECT_THAT(Issues(histogram), IsEmpty());
}

}  // namespace
}  // namespace fabscope::internal
