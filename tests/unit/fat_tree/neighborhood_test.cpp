#include "fat_tree/neighborhood.h"

#include <gmock/gmock.h>
#include <string>
#include <vector>

#include "fat_tree/link_errors.h"
#include "fat_tree/up_hop_histogram.h"
#include "support/neighborhood_fixture.h"

namespace fabscope::internal {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

using Groups = std::vector<FTNeighborhood*>;

std::vector<std::string> Names(const NodeSet& nodes) {
  std::vector<std::string> names;
  for (const IBNode* node : nodes) names.emplace_back(node->name);
  return names;
}

std::vector<std::uint64_t> Ids(const FTTopology& topology, std::size_t rank) {
  std::vector<std::uint64_t> ids;
  for (const FTNeighborhood* group : topology.GetNeighborhoods()[rank]) {
    ids.push_back(group->GetId());
  }
  return ids;
}

// --- Groups.

TEST_F(NeighborhoodTest, NewGroupIsEmpty) {
  FTNeighborhood group(&Topology(), 17, 3);
  EXPECT_EQ(group.GetId(), 17U);
  EXPECT_EQ(group.GetRank(), 3U);
  EXPECT_THAT(group.GetSpines(), IsEmpty());
  EXPECT_THAT(group.GetLines(), IsEmpty());
  EXPECT_EQ(group.GetTotalSpineUplinks(), 0U);
  EXPECT_EQ(group.GetTotalInternalLinks(), 0U);
  EXPECT_EQ(group.GetErrorText(), "");
}

TEST_F(NeighborhoodTest, SwitchesAreAddedOnceToTheChosenSide) {
  AddSwitches("root", 3);
  FTNeighborhood group(&Topology(), 0, 0);
  group.AddNodes({fabric["root2"], fabric["root0"], fabric["root2"]}, true);
  group.AddNodes({fabric["root0"]}, true);
  EXPECT_THAT(Names(group.GetSpines()), ElementsAre("root0", "root2"));
  EXPECT_THAT(group.GetLines(), IsEmpty());
  group.AddNodes({fabric["root1"], fabric["root0"]}, false);
  EXPECT_THAT(Names(group.GetSpines()), ElementsAre("root0", "root2"));
  EXPECT_THAT(Names(group.GetLines()), ElementsAre("root0", "root1"));
}

TEST_F(NeighborhoodTest, EachSetBecomesAGroupInKeyOrder) {
  AddRootsAndLeaves(4, {{2, 3}, {0, 1}, {3, 2}});
  ASSERT_EQ(GroupFromRoots(4), 0);
  ASSERT_EQ(Topology().GetNeighborhoods().size(), 1U);
  ASSERT_EQ(Topology().GetNeighborhoods()[0].size(), 2U);
  EXPECT_THAT(Names(Group(0, 0).GetSpines()), ElementsAre("root0", "root1"));
  EXPECT_THAT(Names(Group(0, 0).GetLines()), ElementsAre("leaf1"));
  EXPECT_THAT(Names(Group(0, 1).GetSpines()), ElementsAre("root2", "root3"));
  EXPECT_THAT(Names(Group(0, 1).GetLines()), ElementsAre("leaf0", "leaf2"));
  EXPECT_EQ(Group(0, 0).GetRank(), 0U);
  EXPECT_EQ(Group(0, 1).GetId(), Group(0, 0).GetId() + 1);
  EXPECT_THAT(ErrorLines(), IsEmpty());
  EXPECT_EQ(Topology().GetErrorText(), "");
}

TEST_F(NeighborhoodTest, GroupsStandOnTheRankOfTheirSpines) {
  AddThreeLevelTree(fabric, 2, 2, 2, 1, 1);
  ASSERT_EQ(GroupFromRoots(2), 0);
  ASSERT_EQ(Topology().GetNeighborhoods().size(), 2U);
  ASSERT_EQ(Topology().GetNeighborhoods()[0].size(), 2U);
  ASSERT_EQ(Topology().GetNeighborhoods()[1].size(), 2U);
  EXPECT_THAT(Names(Group(0, 1).GetSpines()), ElementsAre("root1"));
  EXPECT_THAT(Names(Group(0, 1).GetLines()), ElementsAre("mid0.1", "mid1.1"));
  EXPECT_EQ(Group(0, 1).GetRank(), 0U);
  EXPECT_THAT(Names(Group(1, 1).GetSpines()), ElementsAre("mid1.0", "mid1.1"));
  EXPECT_THAT(Names(Group(1, 1).GetLines()), ElementsAre("leaf1.0", "leaf1.1"));
  EXPECT_EQ(Group(1, 1).GetRank(), 1U);
  EXPECT_THAT(ErrorLines(), IsEmpty());
}

TEST_F(NeighborhoodTest, NeighborhoodsAndConnectivityGroupsAreNumberedApartFrom0) {
  AddThreeLevelTree(fabric, 2, 2, 3, 1, 1);
  ASSERT_EQ(GroupFromRoots(3), 0);
  EXPECT_THAT(Ids(Topology(), 0), ElementsAre(0, 1, 2));
  EXPECT_THAT(Ids(Topology(), 1), ElementsAre(0, 1));
}

TEST_F(NeighborhoodTest, EachTopologyNumbersItsGroupsFrom0) {
  AddRootsAndLeaves(2, {{0}, {1}});
  ASSERT_EQ(GroupFromRoots(2), 0);
  NodeSet roots = Nodes({"root0", "root1"});
  FTTopology second(&fabric.Build(), &out, mergePercent);
  ASSERT_EQ(second.FillRanksFromRoots(roots), 0);
  ASSERT_EQ(second.CreateNeighborhoods(errors), 0);
  EXPECT_THAT(Ids(second, 0), ElementsAre(0, 1));
}

TEST_F(NeighborhoodTest, NumbersOfDiscardedGroupsAreNotGivenAgain) {
  // No leaf reaches root2, so that its cable to root0 fails the rank once two groups are made.
  AddRootsAndLeaves(3, {{0}, {1}});
  fabric.Link("root0", 40, "root2", 40);
  FTTopology topology(&fabric.Build(), &out, mergePercent);
  const auto group = [&](const std::vector<std::string>& roots) {
    TestPeer::SetRanks(topology, {Nodes(roots), Nodes({"leaf0", "leaf1"})});
    return topology.CreateNeighborhoods(errors);
  };
  ASSERT_EQ(group({"root0", "root1", "root2"}), 4);
  ASSERT_EQ(group({"root0", "root1"}), 0);
  EXPECT_THAT(Ids(topology, 0), ElementsAre(2, 3));
}

TEST_F(NeighborhoodTest, UpperSwitchThatNoLowerSwitchReachesIsInNoGroup) {
  AddRootsAndLeaves(3, {{0, 2}});
  ASSERT_EQ(GroupFromRoots(3), 0);
  ASSERT_EQ(Topology().GetNeighborhoods()[0].size(), 1U);
  EXPECT_THAT(Names(Group(0, 0).GetSpines()), ElementsAre("root0", "root2"));
  EXPECT_THAT(ErrorLines(), IsEmpty());
}

TEST_F(NeighborhoodTest, LowerSwitchesWithoutUpLinksAreAGroupWithoutSpines) {
  // Only the root's side of the cable to leaf1 counts; no set may take in another.
  mergePercent = 100;
  AddRootsAndLeaves(1, {{0}, {0}});
  MakeFnmPort("leaf1", 1);
  ASSERT_EQ(GroupFromRoots(1), 0);
  ASSERT_EQ(Topology().GetNeighborhoods()[0].size(), 2U);
  EXPECT_THAT(Group(0, 0).GetSpines(), IsEmpty());
  EXPECT_THAT(Names(Group(0, 0).GetLines()), ElementsAre("leaf1"));
  EXPECT_THAT(Names(Group(0, 1).GetSpines()), ElementsAre("root0"));
  EXPECT_THAT(Names(Group(0, 1).GetLines()), ElementsAre("leaf0"));
  EXPECT_THAT(ErrorLines(), IsEmpty());
}

TEST_F(NeighborhoodTest, LowerSwitchWithoutUpLinksMissesEverySpineOfTheGroupThatTookIt) {
  AddRootsAndLeaves(2, {{0, 1}, {0}});
  MakeFnmPort("leaf1", 1);
  ASSERT_EQ(GroupFromRoots(2), 0);
  ASSERT_EQ(Topology().GetNeighborhoods()[0].size(), 1U);
  EXPECT_THAT(ErrorLines(), ElementsAre("Neighborhood " + Id(0, 0) +
                                            ": missing link between switches (root0) and (leaf1)",
                                        "Neighborhood " + Id(0, 0) +
                                            ": missing link between switches (root1) and (leaf1)"));
}

TEST_F(NeighborhoodTest, RankWithoutLowerSwitchesHasNoGroups) {
  AddSwitches("root", 1);
  TestPeer::SetRanks(Topology(), {Nodes({"root0"}), {}});
  EXPECT_EQ(Topology().CreateNeighborhoods(errors), 0);
  ASSERT_EQ(Topology().GetNeighborhoods().size(), 1U);
  EXPECT_THAT(Topology().GetNeighborhoods()[0], IsEmpty());
}

// --- Invalid links.

TEST_F(NeighborhoodTest, CrossLinkNamesTheUpperSwitchsGroupFirst) {
  AddRootsAndLeaves(5, {{2, 3, 4}, {0, 1, 2}, {0, 1, 2}, {0, 1, 2}});
  ASSERT_EQ(GroupFromRoots(5), 0);
  ASSERT_EQ(Topology().GetNeighborhoods()[0].size(), 2U);
  // Root 2 is no spine of leaf0's group any more, so nothing is missing there either.
  EXPECT_THAT(Names(Group(0, 0).GetSpines()), ElementsAre("root0", "root1", "root2"));
  EXPECT_THAT(Names(Group(0, 1).GetSpines()), ElementsAre("root3", "root4"));
  ASSERT_THAT(ErrorLines(),
              ElementsAre("Invalid link between neighborhood " + Id(0, 0) +
                          " (root2 port: 1) and neighborhood " + Id(0, 1) + " (leaf0 port: 1)"));
  ASSERT_NE(dynamic_cast<FTInvalidLinkError*>(errors[0]), nullptr);
  EXPECT_EQ(errors[0]->GetLevel(), EN_FABRIC_ERR_ERROR);
}

TEST_F(NeighborhoodTest, SwitchTakenOutAsACrossLinkMissesNothingInTheGroupItLeft) {
  // Of the two leaves of the second group only leaf1 is cabled to root 2.
  AddRootsAndLeaves(6, {{3, 4, 5}, {2, 3, 4, 5}, {0, 1, 2}, {0, 1, 2}, {0, 1, 2}});
  ASSERT_EQ(GroupFromRoots(6), 0);
  ASSERT_EQ(Topology().GetNeighborhoods()[0].size(), 2U);
  EXPECT_THAT(ErrorLines(),
              ElementsAre("Invalid link between neighborhood " + Id(0, 0) +
                          " (root2 port: 1) and neighborhood " + Id(0, 1) + " (leaf1 port: 1)"));
}

TEST_F(NeighborhoodTest, CrossLinksAreSoughtSetBySetInKeyOrder) {
  AddRootsAndLeaves(7, {{1, 5, 6}, {2, 3, 4}, {0, 1, 2}, {0, 1, 2}, {0, 1, 2}});
  ASSERT_EQ(GroupFromRoots(7), 0);
  ASSERT_EQ(Topology().GetNeighborhoods()[0].size(), 3U);
  EXPECT_THAT(
      ErrorLines(),
      ElementsAre("Invalid link between neighborhood " + Id(0, 0) +
                      " (root2 port: 1) and neighborhood " + Id(0, 1) + " (leaf1 port: 1)",
                  "Invalid link between neighborhood " + Id(0, 0) +
                      " (root1 port: 1) and neighborhood " + Id(0, 2) + " (leaf0 port: 1)"));
}

TEST_F(NeighborhoodTest, CrossLinkAboveTheLastRankIsBetweenConnectivityGroups) {
  AddRootsAndMids(5, {{2, 3, 4}, {0, 1, 2}, {0, 1, 2}, {0, 1, 2}});
  ASSERT_EQ(GroupFromRoots(5), 0);
  ASSERT_EQ(Topology().GetNeighborhoods()[0].size(), 2U);
  EXPECT_THAT(ErrorLines(),
              ElementsAre("Invalid link between connectivity group " + Id(0, 0) +
                          " (root2 port: 1) and group " + Id(0, 1) + " (mid0 port: 1)"));
}

TEST_F(NeighborhoodTest, CableBetweenLinesOfTwoGroupsNamesBothFirstSwitchFirst) {
  // leaf0's group comes second in key order.
  AddRootsAndLeaves(4, {{2, 3}, {0, 1}});
  fabric.Link("leaf0", 9, "leaf1", 8);
  ASSERT_EQ(GroupFromRoots(4), 0);
  ASSERT_THAT(ErrorLines(),
              ElementsAre("Invalid link between neighborhood " + Id(0, 1) +
                          " (leaf0 port: 9) and neighborhood " + Id(0, 0) + " (leaf1 port: 8)"));
  EXPECT_EQ(errors[0]->GetLevel(), EN_FABRIC_ERR_ERROR);
}

TEST_F(NeighborhoodTest, CableBetweenLinesOfOneGroupNamesItOnce) {
  AddRootsAndLeaves(2, {{0, 1}, {0, 1}});
  fabric.Link("leaf0", 9, "leaf1", 8);
  ASSERT_EQ(GroupFromRoots(2), 0);
  EXPECT_THAT(ErrorLines(),
              ElementsAre("Neighborhood " + Id(0, 0) +
                          " : invalid link between switches (leaf0 port: 9) and (leaf1 port: 8)"));
}

TEST_F(NeighborhoodTest, CableBetweenRootsIsMilder) {
  AddRootsAndLeaves(2, {{0, 1}, {0, 1}});
  fabric.Link("root0", 40, "root1", 41);
  ASSERT_EQ(GroupFromRoots(2), 0);
  ASSERT_THAT(
      ErrorLines(),
      ElementsAre("Neighborhood " + Id(0, 0) +
                  " : invalid link between switches (root0 port: 40) and (root1 port: 41)"));
  EXPECT_EQ(errors[0]->GetLevel(), EN_FABRIC_ERR_WARNING);
}

TEST_F(NeighborhoodTest, CableInsideAMiddleRankIsToldOnceAmongItsLines) {
  AddRootsAndMids(1, {{0}, {0}});
  fabric.Link("mid0", 9, "mid1", 8);
  ASSERT_EQ(GroupFromRoots(1), 0);
  EXPECT_THAT(ErrorLines(),
              ElementsAre("Connectivity group " + Id(0, 0) +
                          " : invalid link between switches (mid0 port: 9) and (mid1 port: 8)"));
}

TEST_F(NeighborhoodTest, InvalidLinksComeBeforeMissingLinksAndTheseGroupByGroup) {
  AddRootsAndLeaves(4, {{2, 3}, {2}, {0, 1}, {0}});
  fabric.Link("leaf1", 9, "leaf3", 8);
  ASSERT_EQ(GroupFromRoots(4), 0);
  ASSERT_EQ(Topology().GetNeighborhoods()[0].size(), 2U);
  EXPECT_THAT(
      ErrorLines(),
      ElementsAre(
          "Invalid link between neighborhood " + Id(0, 1) + " (leaf1 port: 9) and neighborhood " +
              Id(0, 0) + " (leaf3 port: 8)",
          "Neighborhood " + Id(0, 0) + ": missing link between switches (root1) and (leaf3)",
          "Neighborhood " + Id(0, 1) + ": missing link between switches (root3) and (leaf1)"));
}

TEST_F(NeighborhoodTest, SwitchOfTwoGroupsIsFoundInTheFirst) {
  // Two leaves against one: root 2 stays a spine of both groups.
  AddRootsAndLeaves(5, {{2, 3, 4}, {0, 1, 2}, {0, 1, 2}});
  fabric.Link("root2", 40, "root3", 40);
  ASSERT_EQ(GroupFromRoots(5), 0);
  ASSERT_EQ(Topology().GetNeighborhoods()[0].size(), 2U);
  EXPECT_EQ(Group(0, 1).GetSpines().count(fabric["root2"]), 1U);
  EXPECT_THAT(ErrorLines(),
              ElementsAre("Invalid link between neighborhood " + Id(0, 0) +
                          " (root2 port: 40) and neighborhood " + Id(0, 1) + " (root3 port: 40)"));
}

TEST_F(NeighborhoodTest, SwitchIsFoundAmongSpinesAndLines) {
  AddSwitches("root", 3);
  FTNeighborhood first(&Topology(), 0, 0);
  first.AddNodes({fabric["root0"]}, true);
  first.AddNodes({fabric["root1"]}, false);
  FTNeighborhood second(&Topology(), 1, 0);
  second.AddNodes({fabric["root1"], fabric["root2"]}, true);
  FTUpHopHistogram histogram(Topology(), 0);
  const Groups groups{&first, &second};
  EXPECT_EQ(histogram.FindNeighborhood(groups, fabric["root0"]), &first);
  EXPECT_EQ(histogram.FindNeighborhood(groups, fabric["root1"]), &first);
  EXPECT_EQ(histogram.FindNeighborhood(groups, fabric["root2"]), &second);
  EXPECT_EQ(histogram.GetErrorText(), "");
}

TEST_F(NeighborhoodTest, SwitchOfNoGroupIsNamedByItsGuidAndTheRank) {
  NodeSpec stray;
  stray.guid = 0xab12;
  stray.name = "stray";
  fabric.Node(stray);
  FTUpHopHistogram histogram(Topology(), 12);
  EXPECT_EQ(histogram.FindNeighborhood({}, fabric["stray"]), nullptr);
  EXPECT_EQ(histogram.GetErrorText(),
            "The provided switch ( GUID: 0x000000000000ab12 ) is not associated with any "
            "neighborhood on the rank: 12");
}

// --- Failures.

TEST_F(NeighborhoodTest, IllegalLinkToASwitchOfNoGroupFailsTheRankAndKeepsEarlierRecords) {
  // No leaf reaches root2.
  AddRootsAndLeaves(3, {{0, 1}});
  fabric.Link("root0", 40, "root1", 40).Link("root0", 41, "root2", 41);
  EXPECT_EQ(GroupFromRoots(3), 4);
  EXPECT_EQ(Topology().GetErrorText(),
            "The provided switch ( GUID: 0x0000000000000003 ) is not associated with any "
            "neighborhood on the rank: 0");
  ASSERT_EQ(Topology().GetNeighborhoods().size(), 1U);
  EXPECT_THAT(Topology().GetNeighborhoods()[0], IsEmpty());
  EXPECT_THAT(
      ErrorLines(),
      ElementsAre(
          "Neighborhood 0 : invalid link between switches (root0 port: 40) and (root1 port: 40)"));
}

TEST_F(NeighborhoodTest, IssueWhoseFirstSwitchIsInNoGroupFailsWhereverTheSecondIs) {
  AddRootsAndLeaves(3, {{0}});
  FTNeighborhood group(&Topology(), 0, 0);
  group.AddNodes({fabric["root0"]}, true);
  for (const char* second : {"root0", "root2"}) {
    FTUpHopHistogram histogram(Topology(), 0);
    TestPeer::LinkIssues(histogram) = {{fabric["root1"], 1, 0, fabric[second], 2, 0}};
    EXPECT_EQ(histogram.InvalidLinksReport(errors, {&group}), 4);
    EXPECT_EQ(histogram.GetErrorText(),
              "The provided switch ( GUID: 0x0000000000000002 ) is not associated with any "
              "neighborhood on the rank: 0");
    EXPECT_THAT(errors, IsEmpty());
  }
}

TEST_F(NeighborhoodTest, FailureToFillIsToldByTheTopologyAndLeavesNoGroups) {
  AddRootsAndLeaves(1, {{0}});
  RankFromRoots(1);
  TestPeer::Neighborhoods(Topology()).resize(1);
  TestPeer::AddNullToRank(Topology(), 1);
  EXPECT_EQ(Topology().CreateNeighborhoodsOnRank(errors, 0), 4);
  EXPECT_EQ(Topology().GetErrorText(),
            "One of IBNodes is NULL.Cannot initialize the \"up-hop\" histogram");
  EXPECT_THAT(Topology().GetNeighborhoods()[0], IsEmpty());
}

TEST_F(NeighborhoodTest, MissingLowerRankIsToldOnceAndLeavesNoGroups) {
  AddRootsAndLeaves(1, {{0}});
  RankFromRoots(1);
  TestPeer::Neighborhoods(Topology()).resize(2);
  EXPECT_EQ(Topology().CreateNeighborhoodsOnRank(errors, 1), 9);
  EXPECT_EQ(Topology().GetErrorText(),
            "Cannot get nodes on rank: 2 Total ranks in the Fat-tree: 2");
  EXPECT_THAT(Topology().GetNeighborhoods()[1], IsEmpty());
}

TEST_F(NeighborhoodTest, TooManyUpperSwitchesAreToldByTheTopology) {
  AddRootsAndLeaves(2049, {{0}});
  EXPECT_EQ(GroupFromRoots(2049), 9);
  EXPECT_EQ(Topology().GetErrorText(), "Bit-set is too short to story 2049bits");
}

TEST_F(NeighborhoodTest, RankBeyondTheTopologysGroupsIsPassedUp) {
  AddRootsAndLeaves(1, {{0}});
  RankFromRoots(1);
  EXPECT_EQ(Topology().CreateNeighborhoodsOnRank(errors, 0), 9);
  EXPECT_EQ(Topology().GetErrorText(),
            "Cannot set neighborhoods/connectivity groups on rank: 0 container size: 0");
}

TEST_F(NeighborhoodTest, SetWithAnUnknownUpperSwitchHandsOverNoGroup) {
  AddRootsAndLeaves(2, {{0}, {1}});
  RankFromRoots(2);
  TestPeer::Neighborhoods(Topology()).resize(1);
  FTUpHopHistogram histogram(Topology(), 0);
  ASSERT_EQ(histogram.Init(), 0);
  TestPeer::IndexToNode(histogram).resize(1);
  EXPECT_EQ(histogram.SetsToNeighborhoods(errors), 4);
  EXPECT_EQ(histogram.GetErrorText(), "Failed to find IBNode associated with the index: 1");
  EXPECT_THAT(Topology().GetNeighborhoods()[0], IsEmpty());
}

TEST_F(NeighborhoodTest, FailedSearchForCrossLinksIsPassedUpBeforeAnyGroupIsMade) {
  // leaf0 is made to stand for roots that it has no cables to.
  AddRootsAndLeaves(6, {{5}});
  RankFromRoots(6);
  TestPeer::Neighborhoods(Topology()).resize(1);
  FTUpHopHistogram histogram(Topology(), 0);
  ASSERT_EQ(histogram.Init(), 0);
  auto& sets = TestPeer::UpHopSets(histogram);
  sets.clear();
  sets["0000111"].encountered = 3;
  sets["0000111"].upSet = Bits({0, 1, 2});
  sets["0011100"].encountered = 1;
  sets["0011100"].upSet = Bits({2, 3, 4});
  sets["0011100"].downNodes = {fabric["leaf0"]};
  EXPECT_EQ(histogram.CreateNeighborhoods(errors), 9);
  EXPECT_EQ(histogram.GetErrorText(),
            "The switch GUID: 0x0000000000000003is not connected to any switch from the down nodes"
            " provided for Invalid Link Issue");
  EXPECT_THAT(Topology().GetNeighborhoods()[0], IsEmpty());
  EXPECT_THAT(errors, IsEmpty());
}

}  // namespace
}  // namespace fabscope::internal
