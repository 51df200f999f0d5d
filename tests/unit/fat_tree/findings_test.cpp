#include "fat_tree/findings.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <utility>
#include <vector>

#include "support/neighborhood_fixture.h"

namespace fabscope::internal {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

class FindingsTest : public NeighborhoodTest {
 protected:
  // Ranks the fabric from its roots and validates it.
  void Validate(std::size_t roots) {
    RankFromRoots(roots);
    Topology().SetFindingSink(
        [this](Finding&& finding) { findings.push_back(std::move(finding)); });
    ASSERT_EQ(Topology().Validate(errors, message), 0);
  }

  // The findings of one kind.
  template <typename Kind>
  std::vector<Kind> Found() const {
    std::vector<Kind> found;
    for (const Finding& finding : findings) {
      if (const Kind* kind = std::get_if<Kind>(&finding)) found.push_back(*kind);
    }
    return found;
  }

  // A plane port with a cable to a port of equal number.
  void PlaneCable(const std::string& a, const std::string& b, std::uint8_t num) {
    PortSpec port;
    port.num = num;
    port.planeMultiplicity = 2;
    fabric.Link(a, num, b, num).Port(a, port).Port(b, port);
  }

  void AddLeaf(const std::string& name, std::vector<std::uint16_t> flids) {
    NodeSpec leaf;
    leaf.name = name;
    leaf.numPorts = 16;
    leaf.flids = std::move(flids);
    fabric.Node(std::move(leaf));
  }

  std::vector<Finding> findings;
};

TEST_F(FindingsTest, CleanTreeHasNone) {
  AddRootsAndLeaves(2, {{0, 1}, {0, 1}});
  Validate(2);
  EXPECT_THAT(findings, IsEmpty());
}

TEST_F(FindingsTest, MissingLinkNamesSpineAndLine) {
  AddRootsAndLeaves(2, {{0, 1}, {1}});
  Validate(2);
  ASSERT_THAT(errors, IsEmpty());
  const auto found = Found<MissingLink>();
  ASSERT_THAT(found, SizeIs(1));
  EXPECT_EQ(found[0].group, Group(0, 0).GetId());
  EXPECT_EQ(found[0].spine, fabric["root0"]);
  EXPECT_EQ(found[0].line, fabric["leaf1"]);
  EXPECT_TRUE(found[0].isNeighborhood);
  EXPECT_EQ(found[0].Level(), EN_FABRIC_ERR_ERROR);
  EXPECT_TRUE(std::holds_alternative<MissingLink>(findings[0])) << "records come first";
}

TEST_F(FindingsTest, InvalidLinkNamesBothPortsWithTheirGroupsAndRanks) {
  AddRootsAndLeaves(2, {{0}, {1}});
  fabric.Link("leaf0", 9, "leaf1", 8);
  Validate(2);
  const auto found = Found<InvalidLink>();
  ASSERT_THAT(found, SizeIs(1));
  EXPECT_EQ(found[0].group1, Group(0, 0).GetId());
  EXPECT_EQ(found[0].group2, Group(0, 1).GetId());
  EXPECT_EQ(found[0].link.node1, fabric["leaf0"]);
  EXPECT_EQ(found[0].link.port1, 9);
  EXPECT_EQ(found[0].link.rank1, 1U);
  EXPECT_EQ(found[0].link.node2, fabric["leaf1"]);
  EXPECT_EQ(found[0].link.port2, 8);
  EXPECT_EQ(found[0].Level(), EN_FABRIC_ERR_ERROR);
}

TEST_F(FindingsTest, InvalidLinkBetweenRootsIsAWarningAsItsRecordIs) {
  AddRootsAndLeaves(2, {{0, 1}});
  fabric.Link("root0", 9, "root1", 9);
  Validate(2);
  const auto found = Found<InvalidLink>();
  ASSERT_THAT(found, SizeIs(1));
  EXPECT_EQ(found[0].Level(), EN_FABRIC_ERR_WARNING);
}

TEST_F(FindingsTest, UnevenLinksListWhoHasFewerTheMostFirst) {
  // Each leaf reaches the one root, by three, one, two and one cables.
  AddRootsAndLeaves(1, {{0, 0, 0}, {0}, {0, 0}, {0}});
  Validate(1);
  const auto found = Found<UnevenLinks>();
  ASSERT_THAT(found, SizeIs(1));
  EXPECT_FALSE(found[0].ofSpines);
  EXPECT_TRUE(found[0].isUp);
  EXPECT_EQ(found[0].expected, 3);
  EXPECT_EQ(found[0].Level(), EN_FABRIC_ERR_ERROR);
  ASSERT_THAT(found[0].others, SizeIs(2));
  EXPECT_EQ(found[0].others[0].links, 2);
  EXPECT_THAT(found[0].others[0].nodes, ElementsAre(fabric["leaf2"]));
  EXPECT_EQ(found[0].others[1].links, 1);
  EXPECT_THAT(found[0].others[1].nodes, ElementsAre(fabric["leaf1"], fabric["leaf3"]));
  EXPECT_EQ(IssuesOf(findings[0]), 3U);
}

TEST_F(FindingsTest, UnevenHostsOfLeavesAreAWarning) {
  AddRootsAndLeaves(1, {{0}, {0}});
  fabric.Host("host", 1).Cable("leaf1", "host");
  Validate(1);
  const auto found = Found<UnevenLinks>();
  ASSERT_THAT(found, SizeIs(1));
  EXPECT_FALSE(found[0].isUp);
  EXPECT_EQ(found[0].Level(), EN_FABRIC_ERR_WARNING);
}

TEST_F(FindingsTest, SwitchThatTheFabricDoesNotKnowIsLeftOut) {
  AddSwitches("leaf", 1);
  TestPeer::Neighborhoods(Topology()).resize(1);
  Topology().SetFindingSink([this](Finding&& finding) { findings.push_back(std::move(finding)); });
  FTNeighborhood group(&Topology(), 7, 0);
  const std::uint64_t unknown = 0xdead;
  group.SetLinksReport(out, {{1, {unknown, fabric["leaf0"]->guid}}, {2, {unknown}}}, 1, true);
  const auto found = Found<UnevenLinks>();
  ASSERT_THAT(found, SizeIs(1));
  ASSERT_THAT(found[0].others, SizeIs(1));
  EXPECT_THAT(found[0].others[0].nodes, ElementsAre(fabric["leaf0"]));
}

TEST_F(FindingsTest, UnevenLinksTellWhoseTheyAre) {
  AddSwitches("s", 2);
  Topology().SetFindingSink([this](Finding&& finding) { findings.push_back(std::move(finding)); });
  const auto report = [this](std::size_t groupedRanks, std::uint64_t nodesRank, bool isUp) {
    TestPeer::Neighborhoods(Topology()).resize(groupedRanks);
    FTNeighborhood group(&Topology(), 7, 0);
    group.SetLinksReport(out, {{1, {fabric["s0"]->guid}}, {2, {fabric["s1"]->guid}}}, nodesRank,
                         isUp);
    return Found<UnevenLinks>().back();
  };
  const UnevenLinks ofSpines = report(1, 0, false);
  EXPECT_EQ(ofSpines.group, 7U);
  EXPECT_TRUE(ofSpines.ofSpines);
  EXPECT_FALSE(ofSpines.isUp);
  EXPECT_TRUE(ofSpines.isNeighborhood);
  const UnevenLinks ofLines = report(2, 1, true);
  EXPECT_FALSE(ofLines.ofSpines);
  EXPECT_TRUE(ofLines.isUp);
  EXPECT_FALSE(ofLines.isNeighborhood);
}

TEST_F(FindingsTest, RecordsAreNoIssuesAndAllElseIs) {
  AddSwitches("s", 1);
  const IBNode* node = fabric["s0"];
  EXPECT_EQ(IssuesOf(MissingLink{}), 0U);
  EXPECT_EQ(IssuesOf(InvalidLink{}), 0U);
  UnevenLinks uneven{};
  uneven.others = {{2, {node}}, {1, {node}}};
  EXPECT_EQ(IssuesOf(uneven), 3U);
  EXPECT_EQ(IssuesOf(SuspectedBlocking{}), 1U);
  AsymmetricAPorts asymmetric{};
  EXPECT_EQ(IssuesOf(asymmetric), 0U);
  asymmetric.ports = {node->getPort(1), node->getPort(2)};
  EXPECT_EQ(IssuesOf(asymmetric), 2U);
  EXPECT_EQ(IssuesOf(SharedFlid{}), 1U);
}

TEST_F(FindingsTest, SuspectedBlockingTellsBothTotals) {
  AddRootsAndMids(1, {{0}});
  fabric.Cable("mid0", "edge0");
  Validate(1);
  const auto found = Found<SuspectedBlocking>();
  ASSERT_THAT(found, SizeIs(1));
  EXPECT_EQ(found[0].group, Group(1, 0).GetId());
  EXPECT_EQ(found[0].spineUplinks, 1U);
  EXPECT_EQ(found[0].internalLinks, 2U);
}

TEST_F(FindingsTest, AsymmetricPortsInsideAGroupAreBothEndsOfEachCable) {
  AddSwitches("root", 1);
  AddSwitches("leaf", 2);
  PlaneCable("root0", "leaf0", 1);
  PlaneCable("root0", "leaf1", 2);
  fabric.AggregatedPort({{"root0", 1}, {"root0", 2}}, 1).AggregatedPort({{"leaf1", 2}}, 1);
  Validate(1);
  const auto found = Found<AsymmetricAPorts>();
  ASSERT_THAT(found, SizeIs(1));
  EXPECT_FALSE(found[0].toHosts);
  EXPECT_THAT(found[0].ports, ElementsAre(fabric["root0"]->getPort(1), fabric["root0"]->getPort(2),
                                          fabric["leaf1"]->getPort(2)));
  EXPECT_EQ(IssuesOf(findings[0]), 3U);
}

TEST_F(FindingsTest, AsymmetricPortsTowardsHostsAreTheFirstOfTheirAggregatedPort) {
  AddRootsAndLeaves(1, {{0}});
  fabric.Host("host", 8);
  PlaneCable("leaf0", "host", 4);
  PlaneCable("leaf0", "host", 5);
  fabric.AggregatedPort({{"leaf0", 4}, {"leaf0", 5}}, 1);
  Validate(1);
  const auto found = Found<AsymmetricAPorts>();
  ASSERT_THAT(found, SizeIs(1));
  EXPECT_TRUE(found[0].toHosts);
  EXPECT_THAT(found[0].ports, ElementsAre(fabric["leaf0"]->getPort(4)));
}

TEST_F(FindingsTest, SharedFlidNamesItsNeighborhoods) {
  AddSwitches("root", 2);
  AddLeaf("leaf0", {7});
  AddLeaf("leaf1", {7, 8});
  AddCables("leaf", "root", {{0}, {1}});
  Validate(2);
  const auto found = Found<SharedFlid>();
  ASSERT_THAT(found, SizeIs(1));
  EXPECT_EQ(found[0].flid, 7);
  EXPECT_THAT(found[0].groups, ElementsAre(Group(0, 0).GetId(), Group(0, 1).GetId()));
  EXPECT_EQ(IssuesOf(findings.back()), 1U);
}

}  // namespace
}  // namespace fabscope::internal
