#include <list>
#include <map>

#include "fat_tree/classification.h"
#include "fat_tree/status.h"
#include "support/stage_fixture.h"
#include "support/streams.h"

namespace fabscope::internal {
namespace {

using Ranks = std::vector<NodeSet>;

class AutomaticRootsTest : public StageTest {
 protected:
  int BuildTree(int retries, int equalClassifications) {
    return Topology().Build(errors, message, retries, equalClassifications);
  }

  void AddNode(const std::string& name, std::uint8_t type, bool special = false) {
    NodeSpec spec;
    spec.name = name;
    spec.type = type;
    spec.special = special;
    spec.numPorts = 8;
    fabric.Node(spec);
  }

  // A switch with so many hosts below it.
  void AddLeaf(const std::string& name, int hosts) {
    fabric.Switch(name);
    for (int i = 0; i < hosts; ++i) {
      const std::string host = name + ".host" + std::to_string(i);
      fabric.Host(host).Cable(name, host);
    }
  }

  // "(hosts, switches)" as kept for the switch, or "none".
  std::string KeptLinks(const std::string& name) {
    const FTClassification::NodeData* data = Topology().GetClassificationNodeData(fabric[name]);
    if (data == nullptr) return "none";
    return "(" + std::to_string(data->caLinks) + ", " + std::to_string(data->switchLinks) + ")";
  }

  // Says by hand what GetFirstLeaf would keep.
  void KeepLinks(const std::string& name, std::uint32_t caLinks, std::uint32_t switchLinks) {
    TestPeer::ClassificationNodeData(Topology()).Set(*fabric[name], {caLinks, switchLinks});
  }

  // Says by hand that the classification reached the switch, whose leaves are 4 hops away.
  void Place(FTClassification& classification, const std::string& name, std::int32_t distance) {
    TestPeer::NodeToDistance(classification).Set(*fabric[name], distance);
    TestPeer::MaxThresholdDistance(classification) = 4;
  }

  // The cable between two leaves of pod 0 makes roots of them for the third leaf of the pod, from
  // which the search starts; the other pods see them as leaves.
  void AddTreeWithAMiswiredPod() {
    AddThreeLevelTree(fabric, 3, 3, 2, 1, 1);
    fabric.Cable("leaf0.1", "leaf0.2");
    fabric.Host("extra").Cable("leaf0.0", "extra");
  }

  Ranks TrueRanksOfTheMiswiredPods() {
    return {Nodes({"root0", "root1"}),
            Nodes({"mid0.0", "mid0.1", "mid1.0", "mid1.1", "mid2.0", "mid2.1"}),
            Nodes({"leaf0.0", "leaf0.1", "leaf0.2", "leaf1.0", "leaf1.1", "leaf1.2", "leaf2.0",
                   "leaf2.1", "leaf2.2"})};
  }

  static std::string_view NameOf(const IBNode* node) {
    return node == nullptr ? "none" : node->name;
  }

  Ranks RanksOfThreeLevels() {
    return {Nodes({"root0", "root1"}), Nodes({"mid0.0", "mid0.1", "mid1.0", "mid1.1"}),
            Nodes({"leaf0.0", "leaf0.1", "leaf1.0", "leaf1.1"})};
  }
};

// --- The first leaf.

TEST_F(AutomaticRootsTest, FirstLeafHasMostHosts) {
  AddLeaf("two", 2);
  AddLeaf("three", 3);
  AddLeaf("one", 1);
  fabric.Cable("two", "one").Cable("two", "one");
  EXPECT_EQ(NameOf(Topology().GetFirstLeaf()), "three");
}

TEST_F(AutomaticRootsTest, OfEqualHostsTheFirstLeafHasMostSwitches) {
  AddLeaf("a", 2);
  AddLeaf("b", 2);
  AddLeaf("c", 2);
  fabric.Switch("root").Cable("a", "root").Cable("b", "root").Cable("b", "root");
  EXPECT_EQ(NameOf(Topology().GetFirstLeaf()), "b");
}

TEST_F(AutomaticRootsTest, OfEqualLeavesTheFirstLeafIsTheLastInModelOrder) {
  AddLeaf("a", 2);
  AddLeaf("b", 2);
  fabric.Switch("root").Cable("a", "root").Cable("b", "root");
  EXPECT_EQ(NameOf(Topology().GetFirstLeaf()), "b");
}

TEST_F(AutomaticRootsTest, LinkCountsOfSwitchesWithHostsAreKept) {
  AddLeaf("a", 2);
  AddLeaf("b", 1);
  fabric.Switch("root").Cable("a", "root").Cable("a", "root").Cable("a", "root");
  fabric.Cable("b", "root");
  KeepLinks("b", 9, 9);
  Topology().GetFirstLeaf();
  EXPECT_EQ(KeptLinks("a"), "(2, 3)");
  EXPECT_EQ(KeptLinks("b"), "(1, 1)");
  EXPECT_EQ(KeptLinks("root"), "none");
}

TEST_F(AutomaticRootsTest, SpecialNodesAndRoutersAreNoHostsAndNoSwitches) {
  fabric.Switch("leaf");
  AddNode("host", NodeTypeCA);
  AddNode("special", NodeTypeCA, true);
  AddNode("router", NodeTypeRouter);
  fabric.Switch("onlySpecial").Switch("onlyRouter");
  fabric.Cable("leaf", "host").Cable("leaf", "special").Cable("leaf", "router");
  fabric.Cable("onlySpecial", "special").Cable("onlyRouter", "router");
  EXPECT_EQ(NameOf(Topology().GetFirstLeaf()), "leaf");
  EXPECT_EQ(KeptLinks("leaf"), "(1, 0)");
  EXPECT_EQ(KeptLinks("onlySpecial"), "none");
  EXPECT_EQ(KeptLinks("onlyRouter"), "none");
}

TEST_F(AutomaticRootsTest, SpecialSwitchCountsAsASwitch) {
  AddLeaf("leaf", 1);
  AddNode("special", NodeTypeSwitch, true);
  fabric.Cable("leaf", "special");
  Topology().GetFirstLeaf();
  EXPECT_EQ(KeptLinks("leaf"), "(1, 1)");
}

TEST_F(AutomaticRootsTest, FnmPortsAndAsymmetricLinksDoNotMakeALeaf) {
  fabric.Switch("leaf", 9).Switch("root", 4).Host("host", 5);
  fabric.Link("leaf", 1, "host", 1).Link("leaf", 2, "host", 2);
  fabric.Link("leaf", 3, "host", 3, false).Link("leaf", 9, "host", 4);
  fabric.Link("leaf", 4, "root", 1).Link("leaf", 5, "root", 2);
  fabric.Link("leaf", 6, "root", 3, false).Link("leaf", 8, "root", 4);
  for (const auto& [fnm, fnm1] : std::map<std::uint8_t, std::uint8_t>{{1, 2}, {4, 5}}) {
    PortSpec port;
    port.num = fnm;
    port.fnm = true;
    fabric.Port("leaf", port);
    PortSpec port1;
    port1.num = fnm1;
    port1.fnm1 = true;
    fabric.Port("leaf", port1);
  }
  PortSpec uncabled;
  uncabled.num = 7;
  uncabled.state = 4;
  fabric.Port("leaf", uncabled);
  Topology().GetFirstLeaf();
  EXPECT_EQ(KeptLinks("leaf"), "(1, 1)");
}

TEST_F(AutomaticRootsTest, NoSwitchHasHostsSoThereIsNoFirstLeaf) {
  fabric.Switch("a").Switch("b").Cable("a", "b");
  EXPECT_EQ(Topology().GetFirstLeaf(), nullptr);
}

TEST_F(AutomaticRootsTest, NullSwitchLeavesNoFirstLeaf) {
  AddLeaf("leaf", 1);
  fabric.Build().switches.insert(nullptr);
  EXPECT_EQ(Topology().GetFirstLeaf(), nullptr);
  EXPECT_EQ(KeptLinks("leaf"), "none");
}

// --- The next leaf: where it is looked for.

TEST_F(AutomaticRootsTest, NextLeafIsNotLookedForAtDistancesWhereNoLeavesAre) {
  for (const std::int32_t distance : {0, 1, 3, 5, 7, 8}) {
    FTClassification classification(Topology());
    TestPeer::MaxThresholdDistance(classification) = distance;
    TestPeer::DistanceToNodes(classification)[distance] = {};
    EXPECT_EQ(classification.GetLeafToClassify({}), nullptr);
    EXPECT_EQ(classification.GetErrorText(),
              "Wrong Classification. Unexpected maximal distance: " + std::to_string(distance));
  }
}

TEST_F(AutomaticRootsTest, NextLeafNeedsSwitchesAtTheGreatestDistance) {
  for (const std::int32_t distance : {2, 4, 6}) {
    FTClassification classification(Topology());
    TestPeer::MaxThresholdDistance(classification) = distance;
    EXPECT_EQ(classification.GetLeafToClassify({}), nullptr);
    EXPECT_EQ(
        classification.GetErrorText(),
        "Wrong Classification. There are no nodes at the distance: " + std::to_string(distance));
    EXPECT_TRUE(TestPeer::DistanceToNodes(classification).empty());
  }
}

TEST_F(AutomaticRootsTest, NextLeafIsLookedForAtTheGreatestDistanceThatIsNoStray) {
  AddLeaf("near", 4);
  AddLeaf("leaf", 3);
  AddLeaf("stray", 5);
  FTClassification classification(Topology());
  TestPeer::MaxThresholdDistance(classification) = 4;
  TestPeer::MaxDistance(classification) = 6;
  TestPeer::DistanceToNodes(classification)[2] = {fabric["near"]};
  TestPeer::DistanceToNodes(classification)[4] = {fabric["leaf"]};
  TestPeer::DistanceToNodes(classification)[6] = {fabric["stray"]};
  Topology().GetFirstLeaf();
  EXPECT_EQ(NameOf(classification.GetLeafToClassify({})), "leaf");
  EXPECT_EQ(classification.GetErrorText(), "");
}

// --- The next leaf: the choice among candidates.

TEST_F(AutomaticRootsTest, CandidatesWithMostHostsAreTriedFirst) {
  fabric.Switch("a").Switch("b").Switch("c");
  KeepLinks("a", 2, 9);
  KeepLinks("b", 3, 1);
  KeepLinks("c", 3, 2);
  FTClassification classification(Topology());
  const std::list<const IBNode*> candidates{fabric["a"], fabric["b"], fabric["c"]};
  EXPECT_EQ(NameOf(classification.GetLeafToClassify({}, candidates)), "c");
}

TEST_F(AutomaticRootsTest, EqualCandidatesAreTriedInTheirOwnOrder) {
  fabric.Switch("a").Switch("b").Switch("c");
  for (const char* name : {"a", "b", "c"}) KeepLinks(name, 1, 1);
  FTClassification classification(Topology());
  const std::list<const IBNode*> candidates{fabric["b"], fabric["c"], fabric["a"]};
  EXPECT_EQ(NameOf(classification.GetLeafToClassify({}, candidates)), "b");
}

TEST_F(AutomaticRootsTest, CandidateWithoutHostsIsPassedOver) {
  fabric.Switch("noHosts").Switch("leaf");
  KeepLinks("leaf", 1, 0);
  FTClassification classification(Topology());
  EXPECT_EQ(NameOf(classification.GetLeafToClassify({}, {fabric["noHosts"], fabric["leaf"]})),
            "leaf");
}

TEST_F(AutomaticRootsTest, NullCandidateEndsTheChoiceEvenBehindAGoodOne) {
  fabric.Switch("leaf");
  KeepLinks("leaf", 1, 0);
  FTClassification classification(Topology());
  EXPECT_EQ(classification.GetLeafToClassify({}, {fabric["leaf"], nullptr}), nullptr);
  EXPECT_EQ(classification.GetErrorText(),
            "Cannot find a next leaf to classify. DB error - One of IB-Nodes is NULL");
}

TEST_F(AutomaticRootsTest, NextLeafIsFarFromEveryOtherClassification) {
  fabric.Switch("nearFirst").Switch("nearSecond").Switch("farFromBoth");
  KeepLinks("nearFirst", 9, 0);
  KeepLinks("nearSecond", 8, 0);
  KeepLinks("farFromBoth", 1, 0);
  FTClassification first(Topology());
  Place(first, "nearFirst", 2);
  Place(first, "nearSecond", 4);
  Place(first, "farFromBoth", 4);
  FTClassification second(Topology());
  Place(second, "nearFirst", 4);
  Place(second, "nearSecond", 2);
  Place(second, "farFromBoth", 5);
  FTClassification current(Topology());
  const std::list<const IBNode*> candidates{fabric["nearFirst"], fabric["nearSecond"],
                                            fabric["farFromBoth"]};
  EXPECT_EQ(NameOf(current.GetLeafToClassify({&first, &second, &current}, candidates)),
            "farFromBoth");
  EXPECT_EQ(current.GetErrorText(), "");
}

TEST_F(AutomaticRootsTest, AskingClassificationAgreesWithoutKnowingTheSwitch) {
  fabric.Switch("leaf");
  KeepLinks("leaf", 1, 0);
  FTClassification current(Topology());
  EXPECT_EQ(NameOf(current.GetLeafToClassify({&current}, {fabric["leaf"]})), "leaf");
  EXPECT_EQ(current.GetErrorText(), "");
}

TEST_F(AutomaticRootsTest, SwitchThatAClassificationNeverReachedEndsTheChoice) {
  NodeSpec spec;
  spec.name = "unreached";
  spec.guid = 0x2C90300ABCDEF;
  spec.numPorts = 4;
  fabric.Node(spec).Switch("far");
  KeepLinks("unreached", 2, 0);
  KeepLinks("far", 1, 0);
  FTClassification other(Topology());
  Place(other, "far", 4);
  FTClassification current(Topology());
  EXPECT_EQ(current.GetLeafToClassify({&other, &current}, {fabric["unreached"], fabric["far"]}),
            nullptr);
  EXPECT_EQ(current.GetErrorText(),
            "Cannot find a next leaf to classify. Failed to find a distance to the Switch "
            "(GUID: 0x0002c90300abcdef)");
  EXPECT_EQ(other.GetErrorText(), "");
}

TEST_F(AutomaticRootsTest, NullClassificationEndsTheChoice) {
  fabric.Switch("leaf");
  KeepLinks("leaf", 1, 0);
  FTClassification current(Topology());
  EXPECT_EQ(current.GetLeafToClassify({nullptr, &current}, {fabric["leaf"]}), nullptr);
  EXPECT_EQ(current.GetErrorText(),
            "Cannot find a next leaf to classify. One of FT-Classifications is NULL");
}

TEST_F(AutomaticRootsTest, ClassificationsAreAskedFromTheLastToTheFirst) {
  fabric.Switch("leaf");
  KeepLinks("leaf", 1, 0);
  FTClassification unreached(Topology());
  FTClassification nullLast(Topology());
  EXPECT_EQ(nullLast.GetLeafToClassify({&unreached, nullptr}, {fabric["leaf"]}), nullptr);
  EXPECT_EQ(nullLast.GetErrorText(),
            "Cannot find a next leaf to classify. One of FT-Classifications is NULL");
  FTClassification nullFirst(Topology());
  EXPECT_EQ(nullFirst.GetLeafToClassify({nullptr, &unreached}, {fabric["leaf"]}), nullptr);
  EXPECT_EQ(nullFirst.GetErrorText(),
            "Cannot find a next leaf to classify. Failed to find a distance to the Switch "
            "(GUID: 0x0000000000000001)");
}

TEST_F(AutomaticRootsTest, NullClassificationIsFoundBehindOneThatDisagrees) {
  fabric.Switch("near").Switch("far");
  KeepLinks("near", 2, 0);
  KeepLinks("far", 1, 0);
  FTClassification disagreeing(Topology());
  Place(disagreeing, "near", 2);
  Place(disagreeing, "far", 4);
  FTClassification current(Topology());
  EXPECT_EQ(current.GetLeafToClassify({nullptr, &disagreeing}, {fabric["near"]}), nullptr);
  EXPECT_EQ(current.GetErrorText(),
            "Cannot find a next leaf to classify. One of FT-Classifications is NULL");
}

TEST_F(AutomaticRootsTest, UnreachedSwitchIsFoundBehindAClassificationThatDisagrees) {
  fabric.Switch("near").Switch("far");
  KeepLinks("near", 2, 0);
  KeepLinks("far", 1, 0);
  FTClassification knowsFarOnly(Topology());
  Place(knowsFarOnly, "far", 4);
  FTClassification disagreeing(Topology());
  Place(disagreeing, "near", 2);
  Place(disagreeing, "far", 4);
  FTClassification current(Topology());
  EXPECT_EQ(
      current.GetLeafToClassify({&knowsFarOnly, &disagreeing}, {fabric["near"], fabric["far"]}),
      nullptr);
  EXPECT_EQ(current.GetErrorText(),
            "Cannot find a next leaf to classify. Failed to find a distance to the Switch "
            "(GUID: 0x0000000000000001)");
}

TEST_F(AutomaticRootsTest, NoCandidateIsAcceptedSoAllOfThemAreCounted) {
  fabric.Switch("near").Switch("noHosts");
  KeepLinks("near", 1, 0);
  FTClassification other(Topology());
  Place(other, "near", 2);
  const std::map<std::string, std::list<const IBNode*>> candidatesByCount{
      {"0", {}}, {"1", {fabric["noHosts"]}}, {"2", {fabric["near"], fabric["noHosts"]}}};
  for (const auto& [count, candidates] : candidatesByCount) {
    FTClassification current(Topology());
    EXPECT_EQ(current.GetLeafToClassify({&other, &current}, candidates), nullptr);
    EXPECT_EQ(current.GetErrorText(),
              "Failed to find next leaf to classify out of " + count + " possible nodes");
  }
}

// --- The handler.

TEST_F(AutomaticRootsTest, HandlerKeepsClassificationsInTheOrderOfTheirMaking) {
  FTClassificationHandler handler;
  EXPECT_TRUE(handler.GetClassifications().empty());
  FTClassification* first = handler.GetNewClassification(Topology());
  FTClassification* second = handler.GetNewClassification(Topology());
  EXPECT_NE(first, second);
  EXPECT_EQ(handler.GetClassifications(), (std::vector<FTClassification*>{first, second}));
}

// --- The whole search.

TEST_F(AutomaticRootsTest, CleanTreeIsBuiltWithTheSecondClassification) {
  AddThreeLevelTree(fabric, 2, 2, 2, 1, 1);
  message = "untouched";
  EXPECT_EQ(BuildTree(1, 2), StatusSuccess);
  EXPECT_EQ(Topology().GetRanks(), RanksOfThreeLevels());
  EXPECT_EQ(TakeOutput(), "-I- Detecting roots by distance classifications\n");
  EXPECT_EQ(message, "untouched");
  EXPECT_EQ(Topology().GetErrorText(), "");
  EXPECT_TRUE(errors.empty());
  EXPECT_EQ(KeptLinks("leaf0.0"), "(1, 2)");
}

TEST_F(AutomaticRootsTest, RanksOfAnEarlierBuildAreReplaced) {
  AddThreeLevelTree(fabric, 2, 2, 2, 1, 1);
  RankFrom({"leaf0.0"});
  EXPECT_EQ(BuildTree(1, 2), StatusSuccess);
  EXPECT_EQ(Topology().GetRanks(), RanksOfThreeLevels());
}

TEST_F(AutomaticRootsTest, SearchStopsAsSoonAsEnoughClassificationsAgree) {
  // A second retry would find no leaf far from both used ones.
  AddThreeLevelTree(fabric, 2, 2, 2, 1, 1);
  EXPECT_EQ(BuildTree(10, 2), StatusSuccess);
  EXPECT_EQ(Topology().GetRanks(), RanksOfThreeLevels());
}

TEST_F(AutomaticRootsTest, WithoutRetriesEvenACleanTreeFails) {
  AddThreeLevelTree(fabric, 2, 2, 2, 1, 1);
  EXPECT_EQ(BuildTree(0, 2), StatusBadData);
  EXPECT_EQ(message,
            "Cannot build Fat-Tree topology. "
            "Failed to find 2 equal Classifications out of 0 retries");
  EXPECT_EQ(Topology().GetErrorText(), message);
  EXPECT_TRUE(Topology().GetRanks().empty());
}

TEST_F(AutomaticRootsTest, NegativeRetriesAreNone) {
  AddThreeLevelTree(fabric, 2, 2, 2, 1, 1);
  EXPECT_EQ(BuildTree(-1, 1), StatusBadData);
  EXPECT_EQ(message,
            "Cannot build Fat-Tree topology. "
            "Failed to find 1 equal Classifications out of -1 retries");
}

TEST_F(AutomaticRootsTest, ThreeEqualClassificationsTakeTwoRetries) {
  AddTwoLevelTree(fabric, 2, 4, 1);
  EXPECT_EQ(BuildTree(2, 3), StatusSuccess);
  EXPECT_EQ(Topology().GetRanks(),
            (Ranks{Nodes({"root0", "root1"}), Nodes({"leaf0", "leaf1", "leaf2", "leaf3"})}));
}

TEST_F(AutomaticRootsTest, FirstClassificationIsNoRetry) {
  AddTwoLevelTree(fabric, 2, 4, 1);
  EXPECT_EQ(BuildTree(1, 3), StatusBadData);
  EXPECT_EQ(message,
            "Cannot build Fat-Tree topology. "
            "Failed to find 3 equal Classifications out of 1 retries");
  EXPECT_TRUE(Topology().GetRanks().empty());
}

TEST_F(AutomaticRootsTest, OneEqualClassificationIsNotMetByTwoThatAgree) {
  AddTwoLevelTree(fabric, 2, 4, 1);
  EXPECT_EQ(BuildTree(3, 1), StatusBadData);
  EXPECT_EQ(message,
            "Cannot build Fat-Tree topology. "
            "Failed to find 1 equal Classifications out of 3 retries");
}

TEST_F(AutomaticRootsTest, OneEqualClassificationIsMetByOneThatEqualsNoOther) {
  AddTreeWithAMiswiredPod();
  EXPECT_EQ(BuildTree(1, 1), StatusSuccess);
  EXPECT_EQ(Topology().GetRanks(), TrueRanksOfTheMiswiredPods());
}

TEST_F(AutomaticRootsTest, TwoEqualClassificationsAreNotMetByTwoThatDisagree) {
  AddTreeWithAMiswiredPod();
  EXPECT_EQ(BuildTree(1, 2), StatusBadData);
  EXPECT_EQ(message,
            "Cannot build Fat-Tree topology. "
            "Failed to find 2 equal Classifications out of 1 retries");
}

TEST_F(AutomaticRootsTest, LaterClassificationsThatAgreeOutvoteAWrongFirstOne) {
  AddTreeWithAMiswiredPod();
  EXPECT_EQ(BuildTree(2, 2), StatusSuccess);
  EXPECT_EQ(Topology().GetRanks(), TrueRanksOfTheMiswiredPods());
}

TEST_F(AutomaticRootsTest, ClassificationWithoutRanksEqualsNoneAndIsAcceptedAsTheOnlyOne) {
  AddTwoLevelTree(fabric, 2, 4, 1);
  fabric.Switch("stray").Cable("stray", "leaf0");
  RankFrom({"root0", "root1"});
  EXPECT_EQ(BuildTree(1, 1), StatusSuccess);
  EXPECT_TRUE(Topology().GetRanks().empty());
}

TEST_F(AutomaticRootsTest, FabricWithoutHostsHasNoLeafToStartFrom) {
  AddTwoLevelTree(fabric, 2, 2, 0);
  EXPECT_EQ(BuildTree(10, 2), StatusBadData);
  EXPECT_EQ(message, "Cannot build Fat-Tree topology. Failed to find a leaf switch to classify");
  EXPECT_EQ(Topology().GetErrorText(), "");
  EXPECT_EQ(TakeOutput(), "-I- Detecting roots by distance classifications\n");
}

TEST_F(AutomaticRootsTest, NullSwitchLeavesNoLeafToStartFrom) {
  AddTwoLevelTree(fabric, 2, 2, 1);
  fabric.Build().switches.insert(nullptr);
  EXPECT_EQ(BuildTree(10, 2), StatusBadData);
  EXPECT_EQ(message, "Cannot build Fat-Tree topology. Failed to find a leaf switch to classify");
  EXPECT_EQ(Topology().GetErrorText(), "");
}

TEST_F(AutomaticRootsTest, ReasonForHavingNoNextLeafIsToldBehindThePrefix) {
  AddLeaf("lonely", 1);
  EXPECT_EQ(BuildTree(1, 2), StatusBadData);
  EXPECT_EQ(message,
            "Cannot build Fat-Tree topology. "
            "Wrong Classification. Unexpected maximal distance: 0");
}

TEST_F(AutomaticRootsTest, EarlierErrorTextHasNoPartInAMissingNextLeaf) {
  AddLeaf("lonely", 1);
  Topology().GetNodesOnRank(7);
  const std::string earlier = Topology().GetErrorText();
  EXPECT_EQ(BuildTree(1, 2), StatusBadData);
  EXPECT_EQ(message,
            "Cannot build Fat-Tree topology. "
            "Wrong Classification. Unexpected maximal distance: 0");
  EXPECT_EQ(Topology().GetErrorText(), earlier);
}

TEST_F(AutomaticRootsTest, NextLeafIsLookedForFromTheNewestClassification) {
  // The search starts in pod 0, which has one leaf more than pod 1, and goes on in pod 1: from
  // there the three leaves of pod 0 are the farthest, and all of them are near the first one.
  AddThreeLevelTree(fabric, 2, 2, 2, 1, 1);
  AddLeaf("leaf0.2", 1);
  fabric.Cable("leaf0.2", "mid0.0").Cable("leaf0.2", "mid0.1");
  EXPECT_EQ(BuildTree(10, 3), StatusBadData);
  EXPECT_EQ(message,
            "Cannot build Fat-Tree topology. "
            "Failed to find next leaf to classify out of 3 possible nodes");
}

TEST_F(AutomaticRootsTest, ThirdLeafMustBeFarFromBothUsedOnes) {
  AddThreeLevelTree(fabric, 2, 2, 2, 1, 1);
  EXPECT_EQ(BuildTree(10, 3), StatusBadData);
  EXPECT_EQ(message,
            "Cannot build Fat-Tree topology. "
            "Failed to find next leaf to classify out of 2 possible nodes");
  EXPECT_TRUE(Topology().GetRanks().empty());
}

TEST_F(AutomaticRootsTest, EarlierErrorTextStandsBeforeThePrefix) {
  AddTwoLevelTree(fabric, 2, 4, 1);
  Topology().GetNodesOnRank(7);
  EXPECT_EQ(BuildTree(0, 2), StatusBadData);
  EXPECT_EQ(message,
            "Cannot get nodes on rank: 7 Total ranks in the Fat-tree: 0"
            "Cannot build Fat-Tree topology. "
            "Failed to find 2 equal Classifications out of 0 retries");
}

TEST_F(AutomaticRootsTest, OutputFormatIsNamedWhenGuidsAreShown) {
  const std::map<int, std::string> heads{
      {0, ""},
      {1, "#Output format: System GUID(/Switch ASIC) -- Node Name\n\n"},
      {2, "#Output format: Node GUID -- Node Name\n\n"},
      {3, ""}};
  AddTwoLevelTree(fabric, 2, 4, 1);
  for (const auto& [form, head] : heads) {
    Topology().Show_GUID = form;
    EXPECT_EQ(BuildTree(1, 2), StatusSuccess);
    EXPECT_EQ(TakeOutput(), head + "-I- Detecting roots by distance classifications\n") << form;
  }
}

TEST_F(AutomaticRootsTest, ItsReportLinesAreFlushed) {
  AddTwoLevelTree(fabric, 2, 4, 1);
  FlushRecorder stream;
  FTTopology topology(&fabric.Build(), &stream, mergePercent);
  topology.Show_GUID = 1;
  ASSERT_EQ(topology.Build(errors, message, 1, 2), StatusSuccess);
  EXPECT_EQ(stream.Pieces(),
            (std::vector<std::string>{"#Output format: System GUID(/Switch ASIC) -- Node Name\n",
                                      "\n", "-I- Detecting roots by distance classifications\n"}));
}

}  // namespace
}  // namespace fabscope::internal
