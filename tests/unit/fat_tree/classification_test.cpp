#include "fat_tree/classification.h"

#include <limits>

#include "fat_tree/status.h"
#include "support/stage_fixture.h"

namespace fabscope::internal {
namespace {

using DistanceClasses = std::map<std::int32_t, std::list<const IBNode*>>;

class ClassificationTest : public StageTest {
 protected:
  std::list<const IBNode*> List(const std::vector<std::string>& names) {
    std::list<const IBNode*> nodes;
    for (const std::string& name : names) nodes.push_back(fabric[name]);
    return nodes;
  }

  // A switch of 8 ports; without planes of its own it is on its suitable plane only.
  void AddSwitch(const std::string& name, bool multiAsic, std::int32_t plane) {
    NodeSpec spec;
    spec.name = name;
    spec.numPorts = 8;
    spec.multiAsic = multiAsic;
    spec.suitablePlane = plane;
    fabric.Node(spec);
  }

  // The threshold of a classification that reached `count` switches, the last one in model order
  // before all others. The first one in model order has `firstPorts` ports, all others 200; one
  // that was not reached stands before it.
  int ThresholdOf(std::size_t count, std::uint8_t firstPorts) {
    TestFabric large;
    large.Switch("unreached", 100);
    for (std::size_t i = 0; i < count; ++i) {
      large.Switch(std::to_string(i), i == 0 ? firstPorts : std::uint8_t{200});
    }
    const FTTopology topology(&large.Build(), &out, mergePercent);
    FTClassification classification(topology);
    for (std::size_t i = count; i-- > 0;) {
      TestPeer::NodeToDistance(classification).Set(*large[std::to_string(i)], 0);
    }
    return classification.CalculateThreshold();
  }

  std::map<const IBNode*, std::int32_t> Distances(FTClassification& classification) {
    std::map<const IBNode*, std::int32_t> distances;
    for (const IBNode& node : fabric.Build().GetNodes()) {
      const auto& table = TestPeer::NodeToDistance(classification);
      if (table.Has(node)) distances[&node] = table.Get(node);
    }
    return distances;
  }

  static void SetRanks(FTClassification& classification, std::vector<NodeSet> ranks) {
    TestPeer::Ranks(classification) = std::move(ranks);
  }
};

TEST_F(ClassificationTest, IsEmptyBeforeItIsClassified) {
  FTClassification classification(Topology());
  EXPECT_EQ(TestPeer::MaxDistance(classification), 0);
  EXPECT_EQ(TestPeer::MaxThresholdDistance(classification), 0);
  EXPECT_TRUE(TestPeer::DistanceToNodes(classification).empty());
  EXPECT_EQ(TestPeer::NodeToDistance(classification).Count(), 0U);
  EXPECT_TRUE(TestPeer::Ranks(classification).empty());
  EXPECT_EQ(classification.GetMaxDistance(), 0);
  EXPECT_EQ(classification.GetFarthestNode(), nullptr);
  EXPECT_EQ(classification.GetErrorText(), "");
}

TEST_F(ClassificationTest, FarthestSwitchIsTheFirstReachedOfTheLastClass) {
  fabric.Switch("leaf").Switch("next").Switch("far").Switch("farToo");
  fabric.Cable("leaf", "next").Cable("next", "farToo").Cable("next", "far");
  FTClassification classification(Topology());
  classification.ClassifyByDistance(*fabric["leaf"]);
  EXPECT_EQ(classification.GetMaxDistance(), 2);
  EXPECT_EQ(classification.GetFarthestNode(), fabric["farToo"]);
}

TEST_F(ClassificationTest, MoreHostsOrderBeforeMoreSwitches) {
  using NodeData = FTClassification::NodeData;
  EXPECT_TRUE((NodeData{1, 9} < NodeData{2, 0}));
  EXPECT_FALSE((NodeData{2, 0} < NodeData{1, 9}));
  EXPECT_TRUE((NodeData{2, 3} < NodeData{2, 4}));
  EXPECT_FALSE((NodeData{2, 4} < NodeData{2, 3}));
  EXPECT_FALSE((NodeData{2, 4} < NodeData{2, 4}));
}

TEST_F(ClassificationTest, LinkCountsAreComparedAsUnsignedNumbers) {
  using NodeData = FTClassification::NodeData;
  constexpr std::uint32_t greatest = std::numeric_limits<std::uint32_t>::max();
  EXPECT_TRUE((NodeData{1, 0} < NodeData{greatest, 0}));
  EXPECT_TRUE((NodeData{1, 1} < NodeData{1, greatest}));
}

// --- The search.

TEST_F(ClassificationTest, LoneLeafIsTheOnlyClass) {
  fabric.Switch("leaf").Host("host").Cable("leaf", "host");
  FTClassification classification(Topology());
  EXPECT_EQ(classification.Classify(*fabric["leaf"]), StatusSuccess);
  EXPECT_EQ(TestPeer::DistanceToNodes(classification), (DistanceClasses{{0, List({"leaf"})}}));
  EXPECT_EQ(TestPeer::MaxDistance(classification), 0);
  EXPECT_EQ(classification.CalculateThreshold(), 0);
  EXPECT_EQ(TestPeer::MaxThresholdDistance(classification), 0);
  EXPECT_TRUE(TestPeer::Ranks(classification).empty());
}

TEST_F(ClassificationTest, EverySwitchAndNoHostIsReachedAtItsHopDistance) {
  AddTwoLevelTree(fabric, 2, 3, 1);
  FTClassification classification(Topology());
  classification.ClassifyByDistance(*fabric["leaf1"]);
  EXPECT_EQ(
      TestPeer::DistanceToNodes(classification),
      (DistanceClasses{
          {0, List({"leaf1"})}, {1, List({"root0", "root1"})}, {2, List({"leaf0", "leaf2"})}}));
  EXPECT_EQ(Distances(classification),
            (std::map<const IBNode*, std::int32_t>{{fabric["root0"], 1},
                                                   {fabric["root1"], 1},
                                                   {fabric["leaf0"], 2},
                                                   {fabric["leaf1"], 0},
                                                   {fabric["leaf2"], 2}}));
  EXPECT_EQ(TestPeer::MaxDistance(classification), 2);
  EXPECT_EQ(TestPeer::MaxThresholdDistance(classification), 2);
}

TEST_F(ClassificationTest, ClassifyRanksWhatTheSearchReached) {
  AddTwoLevelTree(fabric, 2, 3, 1);
  FTClassification classification(Topology());
  EXPECT_EQ(classification.Classify(*fabric["leaf1"]), StatusSuccess);
  EXPECT_EQ(TestPeer::Ranks(classification),
            (std::vector<NodeSet>{Nodes({"root0", "root1"}), Nodes({"leaf0", "leaf1", "leaf2"})}));
}

TEST_F(ClassificationTest, SwitchesOfAClassStandInTheOrderInWhichTheSearchReachedThem) {
  // Port order, which is against model order here.
  fabric.Switch("a").Switch("b").Switch("c").Switch("leaf");
  fabric.Link("leaf", 1, "c", 1).Link("leaf", 2, "a", 1).Link("leaf", 3, "b", 1);
  FTClassification classification(Topology());
  classification.ClassifyByDistance(*fabric["leaf"]);
  EXPECT_EQ(TestPeer::DistanceToNodes(classification),
            (DistanceClasses{{0, List({"leaf"})}, {1, List({"c", "a", "b"})}}));
}

TEST_F(ClassificationTest, SwitchOnTwoPathsStandsOnceAtTheShorterDistance) {
  fabric.Switch("leaf").Switch("a").Switch("b").Switch("far");
  fabric.Cable("leaf", "a").Cable("a", "b").Cable("b", "far").Cable("leaf", "far");
  FTClassification classification(Topology());
  classification.ClassifyByDistance(*fabric["leaf"]);
  EXPECT_EQ(TestPeer::DistanceToNodes(classification),
            (DistanceClasses{{0, List({"leaf"})}, {1, List({"a", "far"})}, {2, List({"b"})}}));
}

TEST_F(ClassificationTest, SwitchQueuedByTwoNeighboursIsListedOnce) {
  fabric.Switch("leaf").Switch("a").Switch("b").Switch("far");
  fabric.Cable("leaf", "a").Cable("leaf", "b").Cable("a", "far").Cable("b", "far");
  FTClassification classification(Topology());
  classification.ClassifyByDistance(*fabric["leaf"]);
  EXPECT_EQ(TestPeer::DistanceToNodes(classification),
            (DistanceClasses{{0, List({"leaf"})}, {1, List({"a", "b"})}, {2, List({"far"})}}));
}

TEST_F(ClassificationTest, SwitchQueuedFromItsOwnClassKeepsTheDistanceOfItsFirstVisit) {
  // "b" waits at distance 1 when "a" queues it again, at distance 2.
  fabric.Switch("leaf").Switch("a").Switch("b");
  fabric.Cable("leaf", "a").Cable("leaf", "b").Cable("a", "b");
  FTClassification classification(Topology());
  classification.ClassifyByDistance(*fabric["leaf"]);
  EXPECT_EQ(TestPeer::DistanceToNodes(classification),
            (DistanceClasses{{0, List({"leaf"})}, {1, List({"a", "b"})}}));
  EXPECT_EQ(Distances(classification),
            (std::map<const IBNode*, std::int32_t>{
                {fabric["leaf"], 0}, {fabric["a"], 1}, {fabric["b"], 1}}));
}

TEST_F(ClassificationTest, LastPortOfASwitchIsSearchedToo) {
  fabric.Switch("leaf", 255).Switch("a", 3).Switch("b");
  fabric.Link("leaf", 255, "a", 1).Link("a", 3, "b", 16);
  FTClassification classification(Topology());
  classification.ClassifyByDistance(*fabric["leaf"]);
  EXPECT_EQ(TestPeer::DistanceToNodes(classification),
            (DistanceClasses{{0, List({"leaf"})}, {1, List({"a"})}, {2, List({"b"})}}));
}

TEST_F(ClassificationTest, SwitchWithoutPortsHasNoNeighbours) {
  fabric.Switch("leaf", 0).Switch("other");
  FTClassification classification(Topology());
  classification.ClassifyByDistance(*fabric["leaf"]);
  EXPECT_EQ(TestPeer::DistanceToNodes(classification), (DistanceClasses{{0, List({"leaf"})}}));
}

TEST_F(ClassificationTest, LinksThatAreNoTreeLinksAreNotFollowed) {
  fabric.Switch("leaf").Switch("fnm").Switch("fnm1").Switch("asymmetric").Switch("good");
  fabric.Link("leaf", 1, "fnm", 1).Link("leaf", 2, "fnm1", 1);
  fabric.Link("leaf", 3, "asymmetric", 1, false).Link("leaf", 4, "good", 1);
  PortSpec port;
  port.num = 1;
  port.fnm = true;
  fabric.Port("leaf", port);
  port = PortSpec();
  port.num = 2;
  port.fnm1 = true;
  fabric.Port("leaf", port);
  FTClassification classification(Topology());
  classification.ClassifyByDistance(*fabric["leaf"]);
  EXPECT_EQ(TestPeer::DistanceToNodes(classification),
            (DistanceClasses{{0, List({"leaf"})}, {1, List({"good"})}}));
}

TEST_F(ClassificationTest, MultiAsicSwitchIsNotLeftForAnotherPlane) {
  AddSwitch("leaf", true, 2);
  AddSwitch("samePlane", false, 2);
  AddSwitch("otherPlane", false, 1);
  fabric.Cable("leaf", "otherPlane").Cable("leaf", "samePlane");
  FTClassification classification(Topology());
  classification.ClassifyByDistance(*fabric["leaf"]);
  EXPECT_EQ(TestPeer::DistanceToNodes(classification),
            (DistanceClasses{{0, List({"leaf"})}, {1, List({"samePlane"})}}));
}

TEST_F(ClassificationTest, SwitchOfAnotherPlaneIsReachedThroughAnOrdinarySwitch) {
  AddSwitch("leaf", true, 1);
  AddSwitch("samePlane", false, 1);
  AddSwitch("otherPlane", false, 2);
  fabric.Cable("leaf", "otherPlane").Cable("leaf", "samePlane").Cable("samePlane", "otherPlane");
  FTClassification classification(Topology());
  classification.ClassifyByDistance(*fabric["leaf"]);
  EXPECT_EQ(
      TestPeer::DistanceToNodes(classification),
      (DistanceClasses{{0, List({"leaf"})}, {1, List({"samePlane"})}, {2, List({"otherPlane"})}}));
}

TEST_F(ClassificationTest, SearchKeepsToThePlaneOfTheLeafAndNotOfTheSwitchItLeaves) {
  AddSwitch("leaf", false, 1);
  AddSwitch("multiAsic", true, 2);
  AddSwitch("plane1", false, 1);
  AddSwitch("plane2", false, 2);
  fabric.Cable("leaf", "multiAsic").Cable("multiAsic", "plane1").Cable("multiAsic", "plane2");
  FTClassification classification(Topology());
  classification.ClassifyByDistance(*fabric["leaf"]);
  EXPECT_EQ(
      TestPeer::DistanceToNodes(classification),
      (DistanceClasses{{0, List({"leaf"})}, {1, List({"multiAsic"})}, {2, List({"plane1"})}}));
}

// --- The threshold.

TEST_F(ClassificationTest, ThresholdGrowsWithTheNumberOfSwitches) {
  const std::map<std::size_t, int> thresholds{{0, 0},    {5, 0},     {6, 1},    {25, 1},
                                              {26, 2},   {50, 2},    {51, 4},   {100, 4},
                                              {101, 10}, {1000, 10}, {1001, 20}};
  for (const auto& [count, threshold] : thresholds) {
    EXPECT_EQ(ThresholdOf(count, 41), threshold) << count << " switches";
  }
}

TEST_F(ClassificationTest, ThresholdOfALargeFabricIsHalfTheLowestSwitchRoundedDown) {
  for (const auto& [ports, threshold] : std::map<std::uint8_t, int>{{0, 0}, {1, 0}, {40, 20}}) {
    EXPECT_EQ(ThresholdOf(1001, ports), threshold) << +ports << " ports";
  }
}

TEST_F(ClassificationTest, LowestSwitchOfALargeFabricMayBeTheFirstOfTheModel) {
  fabric.Switch("first", 30);
  for (int i = 0; i < 1000; ++i) fabric.Switch(std::to_string(i), 200);
  FTClassification classification(Topology());
  for (const IBNode& node : fabric.Build().GetNodes()) {
    TestPeer::NodeToDistance(classification).Set(node, 0);
  }
  EXPECT_EQ(classification.CalculateThreshold(), 15);
}

TEST_F(ClassificationTest, ClassOfOneAmongFiveSwitchesCounts) {
  fabric.Switch("leaf").Switch("a").Switch("b").Switch("c").Switch("far");
  fabric.Cable("leaf", "a").Cable("leaf", "b").Cable("leaf", "c").Cable("a", "far");
  FTClassification classification(Topology());
  classification.ClassifyByDistance(*fabric["leaf"]);
  EXPECT_EQ(classification.GetMaxThresholdDistance(), 2);
  EXPECT_EQ(TestPeer::MaxThresholdDistance(classification), 2);
}

TEST_F(ClassificationTest, ClassOfOneAmongSixSwitchesIsAStrayButStillTheGreatestDistance) {
  fabric.Switch("leaf").Switch("a").Switch("b").Switch("c").Switch("d").Switch("far");
  fabric.Cable("leaf", "a").Cable("leaf", "b").Cable("leaf", "c").Cable("leaf", "d");
  fabric.Cable("a", "far");
  FTClassification classification(Topology());
  classification.ClassifyByDistance(*fabric["leaf"]);
  EXPECT_EQ(TestPeer::MaxThresholdDistance(classification), 1);
  EXPECT_EQ(TestPeer::MaxDistance(classification), 2);
}

TEST_F(ClassificationTest, GreatestDistanceAboveTheThresholdMayLieBehindASmallerClass) {
  fabric.Switch("leaf").Switch("a").Switch("b").Switch("bridge").Switch("far0").Switch("far1");
  fabric.Cable("leaf", "a").Cable("leaf", "b").Cable("a", "bridge");
  fabric.Cable("bridge", "far0").Cable("bridge", "far1");
  FTClassification classification(Topology());
  classification.ClassifyByDistance(*fabric["leaf"]);
  EXPECT_EQ(TestPeer::MaxThresholdDistance(classification), 3);
}

TEST_F(ClassificationTest, NoDistanceIsAboveTheThresholdOnAChainOfSixSwitches) {
  fabric.Switch("0").Switch("1").Switch("2").Switch("3").Switch("4").Switch("5");
  fabric.Cable("0", "1").Cable("1", "2").Cable("2", "3").Cable("3", "4").Cable("4", "5");
  FTClassification classification(Topology());
  EXPECT_EQ(classification.GetMaxThresholdDistance(), 0);
  classification.ClassifyByDistance(*fabric["0"]);
  EXPECT_EQ(TestPeer::MaxThresholdDistance(classification), 0);
  EXPECT_EQ(TestPeer::MaxDistance(classification), 5);
}

// --- Far enough.

TEST_F(ClassificationTest, SwitchIsFarFromTheGreatestDistanceAboveTheThresholdOn) {
  fabric.Switch("switch");
  FTClassification classification(Topology());
  const IBNode* node = fabric["switch"];
  const std::map<std::int32_t, std::map<std::int32_t, bool>> farByGreatest{
      {2, {{1, false}, {2, true}, {3, true}}},
      {4, {{2, false}, {3, false}, {4, true}, {5, true}}},
      {5, {{4, false}, {5, true}}},
      {6, {{2, false}, {3, false}, {4, true}, {5, false}, {6, true}, {7, true}}},
      {7, {{4, false}, {6, false}, {7, true}}}};
  for (const auto& [greatest, farByDistance] : farByGreatest) {
    TestPeer::MaxThresholdDistance(classification) = greatest;
    for (const auto& [distance, expected] : farByDistance) {
      TestPeer::NodeToDistance(classification).Set(*node, distance);
      bool isFar = !expected;
      EXPECT_EQ(classification.CheckDistanceTo(*node, isFar), StatusSuccess);
      EXPECT_EQ(isFar, expected) << distance << " hops, greatest " << greatest;
    }
  }
}

TEST_F(ClassificationTest, SwitchThatWasNeverReachedIsNotFarAndNoDistanceIsKnown) {
  fabric.Switch("leaf").Switch("unreached");
  FTClassification classification(Topology());
  classification.ClassifyByDistance(*fabric["leaf"]);
  bool isFar = true;
  EXPECT_EQ(classification.CheckDistanceTo(*fabric["unreached"], isFar), StatusBadData);
  EXPECT_FALSE(isFar);
  EXPECT_EQ(classification.GetErrorText(), "");
}

// --- Equality.

TEST_F(ClassificationTest, EqualRootsAndLeavesMakeEqualWhateverStandsBetween) {
  fabric.Switch("root").Switch("a").Switch("b").Switch("leaf");
  FTClassification one(Topology());
  FTClassification other(Topology());
  SetRanks(one, {Nodes({"root"}), Nodes({"a"}), Nodes({"leaf"})});
  SetRanks(other, {Nodes({"root"}), Nodes({"a", "b"}), Nodes({"leaf"})});
  EXPECT_TRUE(one.EqualsTo(other));
  EXPECT_TRUE(other.EqualsTo(one));
}

TEST_F(ClassificationTest, OneDifferingRootMakesUnequal) {
  fabric.Switch("a").Switch("b").Switch("c").Switch("leaf");
  FTClassification one(Topology());
  FTClassification other(Topology());
  SetRanks(one, {Nodes({"a", "b"}), Nodes({"leaf"})});
  SetRanks(other, {Nodes({"a", "c"}), Nodes({"leaf"})});
  EXPECT_FALSE(one.EqualsTo(other));
}

TEST_F(ClassificationTest, OneDifferingLeafMakesUnequal) {
  fabric.Switch("root").Switch("a").Switch("b").Switch("c");
  FTClassification one(Topology());
  FTClassification other(Topology());
  SetRanks(one, {Nodes({"root"}), Nodes({"a", "b"})});
  SetRanks(other, {Nodes({"root"}), Nodes({"a", "c"})});
  EXPECT_FALSE(one.EqualsTo(other));
}

TEST_F(ClassificationTest, OneMoreLeafMakesUnequal) {
  fabric.Switch("root").Switch("leaf0").Switch("leaf1");
  FTClassification one(Topology());
  FTClassification other(Topology());
  SetRanks(one, {Nodes({"root"}), Nodes({"leaf0"})});
  SetRanks(other, {Nodes({"root"}), Nodes({"leaf0", "leaf1"})});
  EXPECT_FALSE(one.EqualsTo(other));
  EXPECT_FALSE(other.EqualsTo(one));
}

TEST_F(ClassificationTest, DifferentHeightsAreUnequalEvenWithEqualRootsAndLeaves) {
  fabric.Switch("root").Switch("leaf");
  FTClassification one(Topology());
  FTClassification other(Topology());
  SetRanks(one, {Nodes({"root"}), Nodes({"leaf"})});
  SetRanks(other, {Nodes({"root"}), {}, Nodes({"leaf"})});
  EXPECT_FALSE(one.EqualsTo(other));
}

TEST_F(ClassificationTest, WithoutRanksItEqualsNothingNotEvenItself) {
  fabric.Switch("root").Switch("leaf");
  FTClassification one(Topology());
  FTClassification other(Topology());
  EXPECT_FALSE(one.EqualsTo(other));
  EXPECT_FALSE(one.EqualsTo(one));
  SetRanks(other, {Nodes({"root"}), Nodes({"leaf"})});
  EXPECT_FALSE(one.EqualsTo(other));
  EXPECT_FALSE(other.EqualsTo(one));
  EXPECT_TRUE(other.EqualsTo(other));
}

TEST_F(ClassificationTest, CountsItselfOnceAndEveryOtherThatIsEqual) {
  fabric.Switch("root").Switch("leaf");
  FTClassification one(Topology());
  FTClassification equal(Topology());
  FTClassification alsoEqual(Topology());
  FTClassification unequal(Topology());
  for (FTClassification* each : {&one, &equal, &alsoEqual}) {
    SetRanks(*each, {Nodes({"root"}), Nodes({"leaf"})});
  }
  SetRanks(unequal, {Nodes({"leaf"}), Nodes({"root"})});
  EXPECT_EQ(one.CountEquals({}), 1);
  EXPECT_EQ(one.CountEquals({&one}), 1);
  EXPECT_EQ(one.CountEquals({&unequal, &one}), 1);
  EXPECT_EQ(one.CountEquals({&equal, &unequal, &one}), 2);
  EXPECT_EQ(one.CountEquals({&equal, &unequal, &alsoEqual, &one}), 3);
  EXPECT_EQ(one.CountEquals({&equal, &alsoEqual}), 3);
}

TEST_F(ClassificationTest, WithoutRanksItCountsOnlyItself) {
  FTClassification one(Topology());
  FTClassification other(Topology());
  EXPECT_EQ(one.CountEquals({&other, &one}), 1);
}

// --- The text.

TEST_F(ClassificationTest, TextListsTheClassesFromTheNearest) {
  NodeSpec spec;
  spec.name = "root";
  spec.guid = 0x2C90300ABCDEF;
  spec.numPorts = 4;
  fabric.Node(spec).Switch("leaf0").Switch("leaf1");
  fabric.Cable("root", "leaf0").Cable("root", "leaf1");
  FTClassification classification(Topology());
  classification.ClassifyByDistance(*fabric["leaf0"]);
  auto& distanceToNodes = TestPeer::DistanceToNodes(classification);
  distanceToNodes[2].push_back(nullptr);
  distanceToNodes[3].clear();

  std::ostringstream expected;
  expected << "Classification (ptr) " << static_cast<const void*>(&classification) << "\n"
           << "distance: 0 has 1 [ 0x0000000000000002 ]\n"
              "distance: 1 has 1 [ 0x0002c90300abcdef ]\n"
              "distance: 2 has 2 [ 0x0000000000000003 NULL_ptr ]\n"
              "distance: 3 has 0 [ ]\n";
  EXPECT_EQ(classification.ToString(), expected.str());
}

}  // namespace
}  // namespace fabscope::internal
