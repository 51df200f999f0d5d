#include "fat_tree/topology.h"

#include <utility>

#include "support/stage_fixture.h"
#include "support/streams.h"
#include "support/test_peer.h"

namespace fabscope::internal {
namespace {

using Names = std::vector<std::string>;

class TopologyTest : public StageTest {
 protected:
  // A switch that a test is about to give a rank or a plane.
  static NodeSpec Spec(const std::string& name) {
    NodeSpec spec;
    spec.name = name;
    spec.numPorts = 8;
    return spec;
  }
  static NodeSpec WithRank(const std::string& name, std::uint8_t smdbRank) {
    NodeSpec spec = Spec(name);
    spec.smdbRank = smdbRank;
    return spec;
  }
  static NodeSpec OnPlane(NodeSpec spec, int plane, std::vector<std::int32_t> planes) {
    spec.suitablePlane = plane;
    spec.planes = std::move(planes);
    return spec;
  }
  static NodeSpec OnPlane(NodeSpec spec, int plane) {
    return OnPlane(std::move(spec), plane, {plane});
  }

  static Names NamesOf(const NodeSet& nodes) {
    Names names;
    for (const IBNode* node : nodes) names.emplace_back(node->name);
    return names;
  }
  std::vector<Names> RankNames() {
    std::vector<Names> ranks;
    for (const NodeSet& rank : Topology().GetRanks()) ranks.push_back(NamesOf(rank));
    return ranks;
  }

  // Status 0 expected; the names of the roots found.
  Names RootsBySMDB() {
    NodeSet roots;
    EXPECT_EQ(Topology().GetRootsBySMDB(roots), 0);
    return NamesOf(roots);
  }
  Names RootsByExpression(const std::string& expression) {
    regExp compiled(expression);
    NodeSet roots;
    EXPECT_EQ(Topology().GetNodes(roots, compiled), 0);
    return NamesOf(roots);
  }
  int BuildByExpression(const std::string& expression) {
    regExp compiled(expression);
    return Topology().Build(errors, message, compiled);
  }

  // One end of a link counts, the other does not.
  void SetFNM(const std::string& node, std::uint8_t num) {
    PortSpec spec;
    spec.num = num;
    spec.fnm = true;
    fabric.Port(node, spec);
  }
  void SetAsymmetric(const std::string& node, std::uint8_t num) {
    PortSpec spec;
    spec.num = num;
    spec.symmetric = false;
    fabric.Port(node, spec);
  }
};

TEST_F(TopologyTest, IsEmptyWhenMade) {
  mergePercent = 55;
  FTTopology& topology = Topology();
  EXPECT_EQ(&topology.GetFabric(), &fabric.Build());
  EXPECT_TRUE(topology.GetRanks().empty());
  EXPECT_TRUE(topology.GetNeighborhoods().empty());
  EXPECT_EQ(TestPeer::SwitchUpDownLinks(topology).Count(), 0U);
  EXPECT_EQ(TestPeer::ClassificationNodeData(topology).Count(), 0U);
  EXPECT_EQ(TestPeer::MinUpDownRatio(topology), 0.0);
  EXPECT_EQ(topology.GetUpHopMergePercent(), 55);
  EXPECT_EQ(topology.GetIssuesCount(), 0U);
  EXPECT_EQ(topology.GetErrorText(), "");
  EXPECT_EQ(TakeOutput(), "");
}

// --- Roots by the subnet manager's ranks.

TEST_F(TopologyTest, SmdbRootsAreTheSwitchesOfDatabaseRankZero) {
  fabric.Node(WithRank("b", 0)).Node(WithRank("one", 1)).Switch("none").Node(WithRank("a", 0));
  NodeSpec host = WithRank("host", 0);
  host.type = NodeTypeCA;
  fabric.Node(host);
  EXPECT_EQ(RootsBySMDB(), (Names{"b", "a"}));
}

TEST_F(TopologyTest, TheFirstSmdbRootFixesThePlane) {
  fabric.Node(OnPlane(WithRank("no root", 1), 3));
  fabric.Node(OnPlane(WithRank("first", 0), 2));
  fabric.Node(OnPlane(WithRank("other plane", 0), 1));
  fabric.Node(OnPlane(WithRank("both planes", 0), 1, {1, 2}));
  fabric.Node(OnPlane(WithRank("same plane", 0), 2));
  EXPECT_EQ(RootsBySMDB(), (Names{"first", "both planes", "same plane"}));
}

TEST_F(TopologyTest, TheFirstSmdbRootIsNotHeldAgainstItsOwnPlane) {
  fabric.Node(OnPlane(WithRank("first", 0), 2, {1}));
  fabric.Node(OnPlane(WithRank("second", 0), 1));
  EXPECT_EQ(RootsBySMDB(), (Names{"first"}));
}

TEST_F(TopologyTest, AMultiAsicSmdbRootOnAnotherPlaneIsLeftOut) {
  NodeSpec multiAsic = OnPlane(WithRank("multi", 0), 2);
  multiAsic.multiAsic = true;
  fabric.Node(OnPlane(WithRank("first", 0), 1)).Node(multiAsic);
  EXPECT_EQ(RootsBySMDB(), (Names{"first"}));
}

TEST_F(TopologyTest, ANullSwitchStopsTheSearchForSmdbRoots) {
  fabric.Node(WithRank("root", 0));
  fabric.Build().switches.insert(nullptr);
  NodeSet roots = Nodes({"root"});
  EXPECT_EQ(Topology().GetRootsBySMDB(roots), 4);
  EXPECT_EQ(Topology().GetErrorText(), "NULL pointer was found in fabric's switches");
  EXPECT_EQ(NamesOf(roots), (Names{"root"}));  // what the set held stays
}

// --- Roots by a regular expression.

TEST_F(TopologyTest, ExpressionRootsAreTheSwitchesWhoseNameMatches) {
  NodeSpec shownAsCore = WithRank("leaf", 0);
  shownAsCore.displayName = "core9";
  fabric.Switch("core2").Node(shownAsCore).Switch("Core3").Switch("my core1").Host("core4");
  EXPECT_EQ(RootsByExpression("core[0-9]"), (Names{"core2", "my core1"}));
}

TEST_F(TopologyTest, TheFirstMatchFixesThePlane) {
  fabric.Node(OnPlane(Spec("leaf"), 3));
  fabric.Node(OnPlane(Spec("core1"), 2));
  fabric.Node(OnPlane(Spec("core2"), 1));
  fabric.Node(OnPlane(Spec("core3"), 1, {1, 2}));
  EXPECT_EQ(RootsByExpression("^core"), (Names{"core1", "core3"}));
}

TEST_F(TopologyTest, ANullSwitchStopsTheSearchByExpression) {
  fabric.Switch("core1");
  fabric.Build().switches.insert(nullptr);
  regExp expression("core");
  NodeSet roots = Nodes({"core1"});
  EXPECT_EQ(Topology().GetNodes(roots, expression), 4);
  EXPECT_EQ(Topology().GetErrorText(), "NULL pointer was found in fabric's switches");
  EXPECT_EQ(NamesOf(roots), (Names{"core1"}));
}

// --- Building from given roots.

TEST_F(TopologyTest, BuildBySmdbRanksTheSwitchesAndSaysWhereRootsCameFrom) {
  fabric.Switch("leaf").Node(WithRank("root", 0)).Host("host");
  fabric.Cable("root", "leaf").Cable("leaf", "host");
  message = "untouched";
  EXPECT_EQ(Topology().Build(errors, message), 0);
  EXPECT_EQ(RankNames(), (std::vector<Names>{{"root"}, {"leaf"}}));
  EXPECT_EQ(TakeOutput(), "-I- Taking roots from the SMDB file\n");
  EXPECT_EQ(message, "untouched");
  EXPECT_EQ(ErrorLines(), Names());
}

TEST_F(TopologyTest, BuildBySmdbFailsWithoutARoot) {
  fabric.Switch("a").Node(WithRank("b", 1));
  EXPECT_EQ(Topology().Build(errors, message), 9);
  EXPECT_EQ(message,
            "Cannot build Fat-Tree topology. Failed to fill tree's ranks by SMDB: "
            "No root was provided for creating topology");
  EXPECT_EQ(TakeOutput(), "-I- Taking roots from the SMDB file\n");
}

TEST_F(TopologyTest, BuildBySmdbPassesOnThePickersFailure) {
  fabric.Node(WithRank("root", 0));
  fabric.Build().switches.insert(nullptr);
  EXPECT_EQ(Topology().Build(errors, message), 4);
  EXPECT_EQ(message,
            "Cannot build Fat-Tree topology. Failed to find roots by SMDB: "
            "NULL pointer was found in fabric's switches");
  EXPECT_EQ(RankNames(), std::vector<Names>());
}

TEST_F(TopologyTest, BuildByExpressionRanksTheSwitchesAndShowsTheExpression) {
  fabric.Switch("leaf1").Switch("core1").Switch("core2");
  fabric.Cable("core1", "leaf1").Cable("core2", "leaf1");
  message = "untouched";
  EXPECT_EQ(BuildByExpression("^core[12]$"), 0);
  EXPECT_EQ(RankNames(), (std::vector<Names>{{"core1", "core2"}, {"leaf1"}}));
  EXPECT_EQ(TakeOutput(), "-I- Detecting roots by the regular exp: ^core[12]$\n");
  EXPECT_EQ(message, "untouched");
  EXPECT_EQ(ErrorLines(), Names());
}

TEST_F(TopologyTest, BuildByExpressionFailsWithoutAMatch) {
  fabric.Node(WithRank("a", 0));
  EXPECT_EQ(BuildByExpression("core"), 9);
  EXPECT_EQ(message,
            "Cannot build Fat-Tree topology. Failed to fill tree's ranks by the regular "
            "expression: No root was provided for creating topology");
  EXPECT_EQ(TakeOutput(), "-I- Detecting roots by the regular exp: core\n");
}

TEST_F(TopologyTest, BuildByExpressionPassesOnThePickersFailure) {
  fabric.Switch("core");
  fabric.Build().switches.insert(nullptr);
  EXPECT_EQ(BuildByExpression("core"), 4);
  EXPECT_EQ(message,
            "Cannot build Fat-Tree topology. Failed to find roots: "
            "NULL pointer was found in fabric's switches");
}

// --- Given roots.

TEST_F(TopologyTest, BuildFromGivenRootsRanksFromThemAndWritesNothing) {
  fabric.Switch("leaf").Switch("b").Switch("a").Cable("b", "leaf").Cable("a", "leaf");
  Topology().Show_GUID = 2;
  ASSERT_EQ(Topology().Build(errors, message, Nodes({"a", "b"})), 0);
  EXPECT_EQ(RankNames(), (std::vector<Names>{{"b", "a"}, {"leaf"}}));
  EXPECT_EQ(message, "");
  EXPECT_EQ(TakeOutput(), "");
}

TEST_F(TopologyTest, TheFirstGivenRootFixesThePlane) {
  fabric.Node(OnPlane(Spec("not given"), 3));
  fabric.Node(OnPlane(Spec("first"), 2));
  fabric.Node(OnPlane(Spec("other plane"), 1));
  fabric.Node(OnPlane(Spec("both planes"), 1, {1, 2}));
  ASSERT_EQ(Topology().Build(errors, message, Nodes({"first", "other plane", "both planes"})), 0);
  EXPECT_EQ(RankNames(), (std::vector<Names>{{"first", "both planes"}}));
}

TEST_F(TopologyTest, BuildFromGivenRootsFailsWithoutAny) {
  fabric.Switch("a");
  EXPECT_EQ(Topology().Build(errors, message, NodeSet()), 9);
  EXPECT_EQ(message,
            "Cannot build Fat-Tree topology. Failed to fill tree's ranks by the given roots: "
            "No root was provided for creating topology");
}

TEST_F(TopologyTest, BuildFromGivenRootsPassesOnThePickersFailure) {
  fabric.Switch("a");
  fabric.Build().switches.insert(nullptr);
  EXPECT_EQ(Topology().Build(errors, message, Nodes({"a"})), 4);
  EXPECT_EQ(message,
            "Cannot build Fat-Tree topology. Failed to find the given roots: "
            "NULL pointer was found in fabric's switches");
}

TEST_F(TopologyTest, AFailureMessageCarriesAllThatWentWrongBefore) {
  fabric.Switch("a");
  EXPECT_EQ(Topology().GetNodesOnRank(5), nullptr);
  EXPECT_EQ(Topology().Build(errors, message), 9);
  EXPECT_EQ(message,
            "Cannot build Fat-Tree topology. Failed to fill tree's ranks by SMDB: "
            "Cannot get nodes on rank: 5 Total ranks in the Fat-tree: 0"
            "No root was provided for creating topology");
  EXPECT_EQ(BuildByExpression("core"), 9);
  EXPECT_EQ(message,
            "Cannot build Fat-Tree topology. Failed to fill tree's ranks by the regular "
            "expression: Cannot get nodes on rank: 5 Total ranks in the Fat-tree: 0"
            "No root was provided for creating topology"
            "No root was provided for creating topology");
}

TEST_F(TopologyTest, AFailedBuildLeavesTheRanksAsTheyWere) {
  fabric.Switch("core").Switch("leaf").Cable("core", "leaf");
  ASSERT_EQ(BuildByExpression("core"), 0);
  EXPECT_EQ(BuildByExpression("nothing"), 9);
  EXPECT_EQ(RankNames(), (std::vector<Names>{{"core"}, {"leaf"}}));
}

TEST_F(TopologyTest, ItsReportLinesAreFlushed) {
  fabric.Node(WithRank("core", 0));
  FlushRecorder stream;
  FTTopology topology(&fabric.Build(), &stream, mergePercent);
  regExp expression("core");
  ASSERT_EQ(topology.Build(errors, message), 0);
  ASSERT_EQ(topology.Build(errors, message, expression), 0);
  EXPECT_EQ(stream.Pieces(), (Names{"-I- Taking roots from the SMDB file\n",
                                    "-I- Detecting roots by the regular exp: core\n"}));
}

// --- Ranks from roots.

TEST_F(TopologyTest, ASwitchIsRankedByItsDistanceFromTheRoots) {
  AddThreeLevelTree(fabric, 2, 2, 1, 1, 1);
  RankFrom({"root0"});
  EXPECT_EQ(RankNames(),
            (std::vector<Names>{
                {"root0"}, {"mid0.0", "mid1.0"}, {"leaf0.0", "leaf0.1", "leaf1.0", "leaf1.1"}}));
}

TEST_F(TopologyTest, TheGivenRootSetIsEmptied) {
  fabric.Switch("root").Switch("leaf").Cable("root", "leaf");
  NodeSet roots = Nodes({"root"});
  EXPECT_EQ(Topology().FillRanksFromRoots(roots), 0);
  EXPECT_TRUE(roots.empty());
}

TEST_F(TopologyTest, WithoutRootsThereIsNoTree) {
  NodeSet roots;
  EXPECT_EQ(Topology().FillRanksFromRoots(roots), 9);
  EXPECT_EQ(Topology().GetErrorText(), "No root was provided for creating topology");
  EXPECT_EQ(RankNames(), std::vector<Names>());
}

TEST_F(TopologyTest, CablesBetweenRootsAddNothing) {
  fabric.Switch("r1").Switch("r2").Switch("leaf");
  fabric.Cable("r1", "r2").Cable("r1", "leaf").Cable("r2", "leaf");
  RankFrom({"r1", "r2"});
  EXPECT_EQ(RankNames(), (std::vector<Names>{{"r1", "r2"}, {"leaf"}}));
}

TEST_F(TopologyTest, RootsCabledOnlyToEachOtherMakeOneRank) {
  fabric.Switch("r1").Switch("r2").Cable("r1", "r2");
  RankFrom({"r1", "r2"});
  EXPECT_EQ(RankNames(), (std::vector<Names>{{"r1", "r2"}}));
}

TEST_F(TopologyTest, CablesInsideALowerRankAddNothing) {
  fabric.Switch("root").Switch("a").Switch("b");
  fabric.Cable("root", "a").Cable("root", "b").Cable("a", "b");
  RankFrom({"root"});
  EXPECT_EQ(RankNames(), (std::vector<Names>{{"root"}, {"a", "b"}}));
}

TEST_F(TopologyTest, ASwitchIsPlacedAtItsShortestDistance) {
  fabric.Switch("root").Switch("mid").Switch("short cut");
  fabric.Cable("root", "mid").Cable("mid", "short cut").Cable("root", "short cut");
  RankFrom({"root"});
  EXPECT_EQ(RankNames(), (std::vector<Names>{{"root"}, {"mid", "short cut"}}));
}

TEST_F(TopologyTest, TheNearestRootCounts) {
  fabric.Switch("r1").Switch("a").Switch("b").Switch("r2");
  fabric.Cable("r1", "a").Cable("a", "b").Cable("b", "r2");
  RankFrom({"r1", "r2"});
  EXPECT_EQ(RankNames(), (std::vector<Names>{{"r1", "r2"}, {"a", "b"}}));
}

TEST_F(TopologyTest, ASwitchThatCannotBeReachedHasNoRank) {
  fabric.Switch("root").Switch("leaf").Switch("island").Cable("root", "leaf");
  RankFrom({"root"});
  EXPECT_EQ(RankNames(), (std::vector<Names>{{"root"}, {"leaf"}}));
  EXPECT_EQ(Topology().GetNodeRank(fabric["island"]), -1);
  EXPECT_EQ(Topology().GetErrorText(), "");
}

TEST_F(TopologyTest, HostsAreNeitherRankedNorPassedThrough) {
  fabric.Switch("root").Host("host", 2).Switch("behind");
  fabric.Cable("root", "host").Cable("host", "behind");
  RankFrom({"root"});
  EXPECT_EQ(RankNames(), (std::vector<Names>{{"root"}}));
}

TEST_F(TopologyTest, TheWalkStaysOnThePlaneOfTheFirstRoot) {
  // The second root does not change the plane; the first one's suitable plane counts.
  fabric.Node(OnPlane(Spec("r1"), 2, {1, 2})).Node(OnPlane(Spec("r2"), 1));
  fabric.Node(OnPlane(Spec("plane1"), 1)).Node(OnPlane(Spec("plane2"), 2));
  fabric.Node(OnPlane(Spec("behind plane1"), 2)).Node(OnPlane(Spec("both"), 1, {1, 2}));
  fabric.Cable("r1", "plane1").Cable("r2", "plane1").Cable("r1", "plane2").Cable("r2", "both");
  fabric.Cable("plane1", "behind plane1");
  RankFrom({"r1", "r2"});
  EXPECT_EQ(RankNames(), (std::vector<Names>{{"r1", "r2"}, {"plane2", "both"}}));
}

TEST_F(TopologyTest, AMultiAsicSwitchIsRankedOnAnyPlane) {
  NodeSpec multiAsic = OnPlane(Spec("multi"), 2);
  multiAsic.multiAsic = true;
  fabric.Node(OnPlane(Spec("root"), 1)).Node(multiAsic);
  fabric.Node(OnPlane(Spec("leaf1"), 1)).Node(OnPlane(Spec("leaf2"), 2));
  fabric.Cable("root", "multi").Cable("multi", "leaf1").Cable("multi", "leaf2");
  RankFrom({"root"});
  EXPECT_EQ(RankNames(), (std::vector<Names>{{"root"}, {"multi"}, {"leaf1"}}));
}

TEST_F(TopologyTest, LinksThatAreNoTreeLinksLeadNowhere) {
  fabric.Switch("root").Switch("fnm").Switch("asymmetric").Switch("leaf");
  fabric.Link("root", 1, "fnm", 1).Link("root", 2, "asymmetric", 1, false);
  fabric.Link("root", 3, "leaf", 1);
  SetFNM("root", 1);
  RankFrom({"root"});
  EXPECT_EQ(RankNames(), (std::vector<Names>{{"root"}, {"leaf"}}));
}

TEST_F(TopologyTest, TheLastPortOfASwitchIsLookedAt) {
  fabric.Switch("root", 255).Switch("mid", 4).Switch("leaf", 255);
  fabric.Link("root", 255, "mid", 1).Link("mid", 4, "leaf", 255);
  RankFrom({"root"});
  EXPECT_EQ(RankNames(), (std::vector<Names>{{"root"}, {"mid"}, {"leaf"}}));
}

// The leaf sees the root, two ranks above it, over a link of which the root knows nothing.
TEST_F(TopologyTest, AnUpLinkThatOnlyTheLowerEndCountsDoesNotRankTheRootAgain) {
  fabric.Switch("root").Switch("mid").Switch("leaf");
  fabric.Link("root", 1, "mid", 1).Link("mid", 2, "leaf", 1).Link("leaf", 2, "root", 2);
  SetFNM("root", 2);
  RankFrom({"root"});
  EXPECT_EQ(RankNames(), (std::vector<Names>{{"root"}, {"mid"}, {"leaf"}}));
}

TEST_F(TopologyTest, AnUpLinkAsymmetricOnlyAtTheUpperEndDoesNotRankTheUpperSwitchAgain) {
  fabric.Switch("root").Switch("a").Switch("b").Switch("c");
  fabric.Link("root", 1, "a", 1).Link("a", 2, "b", 1).Link("b", 2, "c", 1).Link("c", 2, "a", 3);
  SetAsymmetric("a", 3);
  RankFrom({"root"});
  EXPECT_EQ(RankNames(), (std::vector<Names>{{"root"}, {"a"}, {"b"}, {"c"}}));
}

TEST_F(TopologyTest, ALinkThatOnlyTheUpperEndCountsRanksTheLowerSwitch) {
  fabric.Switch("root").Switch("leaf").Link("root", 1, "leaf", 1);
  SetFNM("leaf", 1);
  RankFrom({"root"});
  EXPECT_EQ(RankNames(), (std::vector<Names>{{"root"}, {"leaf"}}));
}

TEST_F(TopologyTest, FillingAgainReplacesAllRanks) {
  fabric.Switch("a").Switch("b").Switch("c");
  fabric.Cable("a", "b").Cable("b", "c");
  RankFrom({"a"});
  RankFrom({"b"});
  EXPECT_EQ(RankNames(), (std::vector<Names>{{"b"}, {"a", "c"}}));
}

// --- Questions.

TEST_F(TopologyTest, NodesOnRankAreThoseOfTheRank) {
  fabric.Switch("root").Switch("leaf").Cable("root", "leaf");
  RankFrom({"root"});
  EXPECT_EQ(Topology().GetNodesOnRank(0), &Topology().GetRanks().front());
  EXPECT_EQ(Topology().GetNodesOnRank(1), &Topology().GetRanks()[1]);
  EXPECT_EQ(Topology().GetErrorText(), "");
}

TEST_F(TopologyTest, NodesBeyondTheLastRankAreAnError) {
  fabric.Switch("root").Switch("leaf").Cable("root", "leaf");
  RankFrom({"root"});
  EXPECT_EQ(Topology().GetNodesOnRank(2), nullptr);
  EXPECT_EQ(Topology().GetErrorText(),
            "Cannot get nodes on rank: 2 Total ranks in the Fat-tree: 2");
}

TEST_F(TopologyTest, NodeRankIsTheFirstRankThatHoldsTheSwitch) {
  fabric.Switch("a").Switch("b").Switch("c");
  EXPECT_EQ(Topology().GetNodeRank(fabric["a"]), -1);
  TestPeer::SetRanks(Topology(), {Nodes({"b"}), Nodes({"a"}), Nodes({"a", "b"})});
  EXPECT_EQ(Topology().GetNodeRank(fabric["b"]), 0);
  EXPECT_EQ(Topology().GetNodeRank(fabric["a"]), 1);
  EXPECT_EQ(Topology().GetNodeRank(fabric["c"]), -1);
}

TEST_F(TopologyTest, OnlyTheLastEntryOfGroupsHoldsNeighborhoods) {
  EXPECT_FALSE(Topology().IsLastRankNeighborhood(0));
  TestPeer::Neighborhoods(Topology()).resize(3);
  EXPECT_FALSE(Topology().IsLastRankNeighborhood(0));
  EXPECT_FALSE(Topology().IsLastRankNeighborhood(1));
  EXPECT_TRUE(Topology().IsLastRankNeighborhood(2));
  EXPECT_FALSE(Topology().IsLastRankNeighborhood(3));
}

TEST_F(TopologyTest, AReportedLinkIsKnownFromBothEnds) {
  fabric.Switch("a").Switch("b").Switch("c");
  const IBNode* a = fabric["a"];
  const IBNode* b = fabric["b"];
  const IBNode* c = fabric["c"];
  EXPECT_FALSE(Topology().IsReportedLinkIssue(a, b));
  Topology().AddNewLinkIssue(a, b);
  Topology().AddNewLinkIssue(c, b);
  EXPECT_TRUE(Topology().IsReportedLinkIssue(a, b));
  EXPECT_TRUE(Topology().IsReportedLinkIssue(b, a));
  EXPECT_TRUE(Topology().IsReportedLinkIssue(b, c));
  EXPECT_FALSE(Topology().IsReportedLinkIssue(a, c));
}

TEST_F(TopologyTest, ThePlanesNumberIsAskedOfTheFirstRoot) {
  NodeSpec first = Spec("first");
  first.planesNumber = 4;
  NodeSpec second = Spec("second");
  second.planesNumber = 2;
  NodeSpec leaf = Spec("leaf");
  leaf.planesNumber = 8;
  fabric.Node(leaf).Node(first).Node(second).Cable("first", "leaf");
  RankFrom({"second", "first"});
  EXPECT_EQ(Topology().GetPlanesNumber(), 4);
}

TEST_F(TopologyTest, WithoutAFirstRootThePlanesNumberIsZero) {
  fabric.Switch("a");
  TestPeer::SetRanks(Topology(), {NodeSet(), Nodes({"a"})});
  EXPECT_EQ(Topology().GetPlanesNumber(), 0);
  TestPeer::SetRanks(Topology(), {NodeSet{nullptr, fabric["a"]}});
  EXPECT_EQ(Topology().GetPlanesNumber(), 0);
}

using TopologyDeathTest = TopologyTest;

TEST_F(TopologyDeathTest, ThePlanesNumberBelongsToABuiltTree) {
  FTTopology& topology = Topology();
  EXPECT_EXIT(std::ignore = topology.GetPlanesNumber(), ::testing::KilledBySignal(SIGABRT), "");
}

TEST_F(TopologyTest, ClassificationDataIsKnownForItsSwitchesOnly) {
  fabric.Switch("leaf").Switch("other");
  TestPeer::ClassificationNodeData(Topology()).Set(*fabric["leaf"], {16, 4});
  const FTClassification::NodeData* data = Topology().GetClassificationNodeData(fabric["leaf"]);
  ASSERT_NE(data, nullptr);
  EXPECT_EQ(data->caLinks, 16U);
  EXPECT_EQ(data->switchLinks, 4U);
  EXPECT_EQ(Topology().GetClassificationNodeData(fabric["other"]), nullptr);
}

TEST_F(TopologyTest, LevelsReportTellsTheSizeOfEachRank) {
  AddThreeLevelTree(fabric, 3, 4, 2, 2, 1);
  RankFrom({"root0", "root1", "root2", "root3"});
  EXPECT_EQ(Topology().LevelsReport(),
            "3 level Fat-Tree was discovered: \n"
            "\t rank: 0(Roots) #switches: 4\n"
            "\t rank: 1 #switches: 6\n"
            "\t rank: 2 #switches: 12\n");
}

TEST_F(TopologyTest, LevelsReportOfASingleIsolatedRoot) {
  fabric.Switch("root");
  RankFrom({"root"});
  EXPECT_EQ(Topology().LevelsReport(),
            "1 level Fat-Tree was discovered: \n"
            "\t rank: 0(Roots) #switches: 1\n");
}

TEST_F(TopologyTest, LevelsReportWithoutRanks) {
  EXPECT_EQ(Topology().LevelsReport(), "0 level Fat-Tree was discovered: \n");
}

// --- Ownership.

struct Counted {
  explicit Counted(int& deletions) : count(deletions) {}
  ~Counted() { ++count; }
  int& count;
};

TEST_F(TopologyTest, ReleasingAContainerDeletesEveryEntryAndClearsIt) {
  int deletions = 0;
  std::vector<std::vector<Counted*>> container(3);
  container[0] = {new Counted(deletions), new Counted(deletions)};
  container[2] = {new Counted(deletions), nullptr};
  release_container_data(container);
  EXPECT_EQ(deletions, 3);
  EXPECT_TRUE(container.empty());
}

}  // namespace
}  // namespace fabscope::internal
