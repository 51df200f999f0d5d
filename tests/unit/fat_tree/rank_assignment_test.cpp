#include <list>
#include <map>

#include "fat_tree/classification.h"
#include "fat_tree/status.h"
#include "support/stage_fixture.h"

namespace fabscope::internal {
namespace {

class RankAssignmentTest : public StageTest {
 protected:
  using Ranks = std::vector<NodeSet>;

  FTClassification& Classification() {
    if (!classification_) classification_ = std::make_unique<FTClassification>(Topology());
    return *classification_;
  }

  // The ranks that one leaf's view of the fabric gives.
  Ranks RanksSeenFrom(const std::string& leaf) {
    FTClassification classification(Topology());
    EXPECT_EQ(classification.Classify(*fabric[leaf]), StatusSuccess);
    return TestPeer::Ranks(classification);
  }

  // Says by hand that the switch was reached at that distance.
  void Place(const std::string& name, std::int32_t distance) {
    TestPeer::NodeToDistance(Classification()).Set(*fabric[name], distance);
    TestPeer::DistanceToNodes(Classification())[distance].push_back(fabric[name]);
  }

  // Two switches with every kind of cable between them that is no tree link as the first sees it,
  // and a host at the first.
  void AddSwitchBesideTheTree(const std::string& name, const std::string& other) {
    fabric.Switch(name).Switch(other).Host("host");
    fabric.Link(name, 1, "host", 1).Link(name, 2, other, 2, /*symmetric=*/false);
    fabric.Link(name, 3, other, 3).Link(name, 4, other, 4);
    PortSpec fnm;
    fnm.num = 3;
    fnm.fnm = true;
    PortSpec fnm1;
    fnm1.num = 4;
    fnm1.fnm1 = true;
    fabric.Port(name, fnm).Port(name, fnm1);
  }

  // Two groups under two roots, two pods in each group, two leaves in each pod:
  // upper<group>.<root>, mid<group>.<pod>, leaf<group>.<pod>.<i>.
  void AddFourLevelTree() {
    const std::vector<std::string> two{"0", "1"};
    fabric.Switch("root0").Switch("root1");
    for (const std::string& group : two) {
      const std::string upper = "upper" + group + ".";
      for (const std::string& root : two) {
        fabric.Switch(upper + root).Cable(upper + root, "root" + root);
      }
      for (const std::string& i : two) {
        std::string pod = group;
        pod.append(".").append(i);
        fabric.Switch("mid" + pod).Switch("leaf" + pod + ".0").Switch("leaf" + pod + ".1");
        fabric.Cable("mid" + pod, "leaf" + pod + ".0").Cable("mid" + pod, "leaf" + pod + ".1");
        fabric.Cable("mid" + pod, upper + "0").Cable("mid" + pod, upper + "1");
      }
    }
  }

  Ranks FourLevelRanks() {
    return {Nodes({"root0", "root1"}), Nodes({"upper0.0", "upper0.1", "upper1.0", "upper1.1"}),
            Nodes({"mid0.0", "mid0.1", "mid1.0", "mid1.1"}),
            Nodes({"leaf0.0.0", "leaf0.0.1", "leaf0.1.0", "leaf0.1.1", "leaf1.0.0", "leaf1.0.1",
                   "leaf1.1.0", "leaf1.1.1"})};
  }

 private:
  std::unique_ptr<FTClassification> classification_;
};

// --- The choice of the height.

TEST_F(RankAssignmentTest, GreatestDistanceDecidesTheHeight) {
  const std::map<std::int32_t, std::size_t> heights{{2, 2}, {4, 3}, {6, 4}};
  for (const auto& [distance, height] : heights) {
    FTClassification classification(Topology());
    TestPeer::MaxDistance(classification) = distance;
    EXPECT_EQ(classification.SetNodesRanks(), StatusSuccess);
    EXPECT_EQ(TestPeer::Ranks(classification), Ranks(height)) << "greatest distance " << distance;
  }
}

TEST_F(RankAssignmentTest, AnyOtherGreatestDistanceEmptiesTheRanks) {
  for (const std::int32_t distance : {0, 1, 3, 5, 7, 8}) {
    FTClassification classification(Topology());
    TestPeer::Ranks(classification).resize(3);
    TestPeer::MaxDistance(classification) = distance;
    EXPECT_EQ(classification.SetNodesRanks(), StatusSuccess);
    EXPECT_TRUE(TestPeer::Ranks(classification).empty()) << "greatest distance " << distance;
  }
}

TEST_F(RankAssignmentTest, StrayBelowALeafDecidesTheHeightAndLeavesNoRanks) {
  AddTwoLevelTree(fabric, 2, 6, 0);
  fabric.Switch("stray").Cable("stray", "leaf5");
  EXPECT_EQ(RanksSeenFrom("leaf0"), Ranks());
}

TEST_F(RankAssignmentTest, ExtraRanksAreDropped) {
  FTClassification classification(Topology());
  TestPeer::Ranks(classification).resize(5);
  EXPECT_EQ(classification.Set4L_FTRanks(), StatusSuccess);
  EXPECT_EQ(TestPeer::Ranks(classification), Ranks(4));
  EXPECT_EQ(classification.Set3L_FTRanks(), StatusSuccess);
  EXPECT_EQ(TestPeer::Ranks(classification), Ranks(3));
  EXPECT_EQ(classification.Set2L_FTRanks(), StatusSuccess);
  EXPECT_EQ(TestPeer::Ranks(classification), Ranks(2));
}

TEST_F(RankAssignmentTest, DistancesAskedForInVainStayAsEmptyClasses) {
  using Classes = std::map<std::int32_t, std::list<const IBNode*>>;
  FTClassification two(Topology());
  two.Set2L_FTRanks();
  EXPECT_EQ(TestPeer::DistanceToNodes(two), (Classes{{0, {}}, {1, {}}, {2, {}}}));
  FTClassification four(Topology());
  four.Set4L_FTRanks();
  EXPECT_EQ(TestPeer::DistanceToNodes(four),
            (Classes{{0, {}}, {1, {}}, {2, {}}, {3, {}}, {4, {}}, {5, {}}, {6, {}}}));
}

// --- Two levels.

TEST_F(RankAssignmentTest, TwoLevelsAreSpinesOverTheLeafAndTheOtherLeaves) {
  AddTwoLevelTree(fabric, 2, 3, 0);
  EXPECT_EQ(RanksSeenFrom("leaf0"),
            (Ranks{Nodes({"root0", "root1"}), Nodes({"leaf0", "leaf1", "leaf2"})}));
}

TEST_F(RankAssignmentTest, TwoLevelsDoNotLookAtNeighbours) {
  // With three levels the cable between the leaves would make roots of them.
  AddTwoLevelTree(fabric, 2, 3, 0);
  fabric.Cable("leaf1", "leaf2").Cable("root0", "root1");
  EXPECT_EQ(RanksSeenFrom("leaf0"),
            (Ranks{Nodes({"root0", "root1"}), Nodes({"leaf0", "leaf1", "leaf2"})}));
}

// --- Three levels.

TEST_F(RankAssignmentTest, ThreeLevelsTellRootsFromLeavesOfThePod) {
  AddThreeLevelTree(fabric, 2, 2, 2, 1, 0);
  EXPECT_EQ(RanksSeenFrom("leaf0.0"),
            (Ranks{Nodes({"root0", "root1"}), Nodes({"mid0.0", "mid0.1", "mid1.0", "mid1.1"}),
                   Nodes({"leaf0.0", "leaf0.1", "leaf1.0", "leaf1.1"})}));
}

TEST_F(RankAssignmentTest, RootOfThreeLevelsMayReachTheOwnPodToo) {
  // Its first ports lead to distance 1, only the last one to distance 3.
  fabric.Switch("root", 3).Switch("mid0").Switch("mid1").Switch("mid2").Switch("leaf0");
  fabric.Switch("leaf1");
  fabric.Cable("root", "mid0").Cable("root", "mid1").Cable("root", "mid2");
  fabric.Cable("mid0", "leaf0").Cable("mid1", "leaf0").Cable("mid2", "leaf1");
  EXPECT_EQ(RanksSeenFrom("leaf0"),
            (Ranks{Nodes({"root"}), Nodes({"mid0", "mid1", "mid2"}), Nodes({"leaf0", "leaf1"})}));
}

TEST_F(RankAssignmentTest, CableBetweenLeavesOfThePodMakesThemLookLikeRoots) {
  AddThreeLevelTree(fabric, 2, 3, 1, 1, 0);
  fabric.Cable("leaf0.1", "leaf0.2");
  EXPECT_EQ(RanksSeenFrom("leaf0.0"),
            (Ranks{Nodes({"root0", "leaf0.1", "leaf0.2"}), Nodes({"mid0.0", "mid1.0"}),
                   Nodes({"leaf0.0", "leaf1.0", "leaf1.1", "leaf1.2"})}));
}

TEST_F(RankAssignmentTest, UnknownNeighbourDoesNotMakeARootOfThreeLevels) {
  fabric.Switch("s").Switch("unknown").Switch("mid");
  fabric.Cable("s", "unknown").Cable("s", "mid");
  Place("s", 2);
  Place("mid", 1);
  EXPECT_EQ(Classification().Set3L_FTRanks(), StatusSuccess);
  EXPECT_EQ(TestPeer::Ranks(Classification()), (Ranks{{}, Nodes({"mid"}), Nodes({"s"})}));
}

TEST_F(RankAssignmentTest, NeighbourBehindAnUnknownOneStillMakesARootOfThreeLevels) {
  fabric.Switch("s").Switch("unknown").Switch("mid");
  fabric.Cable("s", "unknown").Cable("s", "mid");
  Place("s", 2);
  Place("mid", 3);
  EXPECT_EQ(Classification().Set3L_FTRanks(), StatusSuccess);
  EXPECT_EQ(TestPeer::Ranks(Classification()), (Ranks{Nodes({"s"}), Nodes({"mid"}), {}}));
}

TEST_F(RankAssignmentTest, SwitchWithoutNeighboursIsALeafOfThreeLevels) {
  fabric.Switch("noPorts", 0).Switch("noCables").Host("host").Switch("onlyHost");
  fabric.Cable("onlyHost", "host");
  Place("noPorts", 2);
  Place("noCables", 2);
  Place("onlyHost", 2);
  EXPECT_EQ(Classification().Set3L_FTRanks(), StatusSuccess);
  EXPECT_EQ(TestPeer::Ranks(Classification()),
            (Ranks{{}, {}, Nodes({"noPorts", "noCables", "onlyHost"})}));
}

TEST_F(RankAssignmentTest, OnlyTreeLinksMakeARootOfThreeLevels) {
  AddSwitchBesideTheTree("s", "far");
  Place("s", 2);
  Place("far", 3);
  EXPECT_EQ(Classification().Set3L_FTRanks(), StatusSuccess);
  EXPECT_EQ(TestPeer::Ranks(Classification()), (Ranks{{}, Nodes({"far"}), Nodes({"s"})}));
}

// --- Four levels.

TEST_F(RankAssignmentTest, FourLevelsAreToldFromAnyLeaf) {
  AddFourLevelTree();
  const Ranks expected = FourLevelRanks();
  for (const IBNode* leaf : expected.back()) {
    EXPECT_EQ(RanksSeenFrom(std::string(leaf->name)), expected) << leaf->name;
  }
}

TEST_F(RankAssignmentTest, RootCabledToALeafOfTheGroupLooksLikeRankTwo) {
  AddFourLevelTree();
  fabric.Cable("root1", "leaf0.1.0");
  Ranks expected = FourLevelRanks();
  expected[0].erase(fabric["root1"]);
  expected[2].insert(fabric["root1"]);
  EXPECT_EQ(RanksSeenFrom("leaf0.0.0"), expected);
}

TEST_F(RankAssignmentTest, SwitchAtDistanceThreeIsARootWhenAllItsLinksGoToRankOne) {
  fabric.Switch("s", 2).Switch("a").Switch("b").Switch("below");
  fabric.Cable("s", "a").Cable("s", "b").Cable("a", "below").Cable("b", "below");
  Place("a", 2);
  Place("b", 4);
  Place("below", 5);
  Place("s", 3);
  EXPECT_EQ(Classification().Set4L_FTRanks(), StatusSuccess);
  EXPECT_EQ(TestPeer::Ranks(Classification()),
            (Ranks{Nodes({"s"}), Nodes({"a", "b"}), Nodes({"below"}), {}}));
}

TEST_F(RankAssignmentTest, OneNeighbourOnRankThreeMakesARankTwoSwitch) {
  fabric.Switch("s", 2).Switch("upper").Switch("leaf");
  fabric.Cable("s", "upper").Cable("s", "leaf");
  Place("upper", 2);  // its neighbour s is not at distance 1
  Place("leaf", 4);   // its only neighbour s is at distance 3
  Place("s", 3);
  EXPECT_EQ(Classification().Set4L_FTRanks(), StatusSuccess);
  EXPECT_EQ(TestPeer::Ranks(Classification()),
            (Ranks{{}, Nodes({"upper"}), Nodes({"s"}), Nodes({"leaf"})}));
}

TEST_F(RankAssignmentTest, UnknownNeighbourMakesARankTwoSwitch) {
  fabric.Switch("s").Switch("upper").Switch("unknown");
  fabric.Cable("s", "upper").Cable("s", "unknown");
  Place("upper", 2);
  Place("s", 3);
  EXPECT_EQ(Classification().Set4L_FTRanks(), StatusSuccess);
  EXPECT_EQ(TestPeer::Ranks(Classification()), (Ranks{{}, Nodes({"upper"}), Nodes({"s"}), {}}));
}

TEST_F(RankAssignmentTest, AnyNeighbourMakesARankTwoSwitchWhenRankOneIsEmpty) {
  fabric.Switch("s").Switch("leaf");
  fabric.Cable("s", "leaf");
  Place("leaf", 4);
  Place("s", 3);
  EXPECT_EQ(Classification().Set4L_FTRanks(), StatusSuccess);
  EXPECT_EQ(TestPeer::Ranks(Classification()), (Ranks{{}, {}, Nodes({"s"}), Nodes({"leaf"})}));
}

TEST_F(RankAssignmentTest, SwitchAtDistanceThreeWithoutNeighboursIsARoot) {
  fabric.Switch("noPorts", 0).Switch("noCables");
  Place("noPorts", 3);
  Place("noCables", 3);
  EXPECT_EQ(Classification().Set4L_FTRanks(), StatusSuccess);
  EXPECT_EQ(TestPeer::Ranks(Classification()), (Ranks{Nodes({"noPorts", "noCables"}), {}, {}, {}}));
}

TEST_F(RankAssignmentTest, OnlyTreeLinksMakeARankTwoSwitch) {
  AddSwitchBesideTheTree("s", "far");
  Place("s", 3);
  EXPECT_EQ(Classification().Set4L_FTRanks(), StatusSuccess);
  EXPECT_EQ(TestPeer::Ranks(Classification()), (Ranks{Nodes({"s"}), {}, {}, {}}));
}

TEST_F(RankAssignmentTest, OnlyTreeLinksMakeARankOneSwitch) {
  AddSwitchBesideTheTree("s", "far");
  Place("s", 2);
  Place("far", 3);
  TestPeer::Ranks(Classification()).resize(4);
  EXPECT_EQ(Classification().Set4L_DistanceToRanks(2, 1), StatusSuccess);
  EXPECT_EQ(TestPeer::Ranks(Classification()), (Ranks{{}, {}, {}, Nodes({"s"})}));
}

TEST_F(RankAssignmentTest, SplitLooksForANeighbourAtAnotherDistanceThanTheGivenOne) {
  fabric.Switch("leaf").Switch("upper").Switch("beside").Switch("near").Switch("far");
  fabric.Cable("leaf", "near");
  fabric.Cable("upper", "near").Cable("upper", "far");
  fabric.Cable("beside", "near").Cable("beside", "leaf");
  fabric.Switch("lonely", 0).Switch("lost").Switch("unknown").Cable("lost", "unknown");
  Place("near", 1);
  Place("far", 3);
  Place("upper", 2);
  Place("lonely", 2);
  Place("lost", 2);
  Place("beside", 2);
  TestPeer::Ranks(Classification()).resize(4);
  EXPECT_EQ(Classification().Set4L_DistanceToRanks(2, 1), StatusSuccess);
  // "beside" has a neighbour "leaf", but that one is not known yet.
  EXPECT_EQ(TestPeer::Ranks(Classification()),
            (Ranks{{}, Nodes({"upper"}), {}, Nodes({"lonely", "lost", "beside"})}));

  Place("leaf", 2);
  TestPeer::Ranks(Classification()) = Ranks(4);
  EXPECT_EQ(Classification().Set4L_DistanceToRanks(2, 1), StatusSuccess);
  // Two switches of the class that are cabled to each other are both on rank 1.
  EXPECT_EQ(TestPeer::Ranks(Classification()),
            (Ranks{{}, Nodes({"upper", "leaf", "beside"}), {}, Nodes({"lonely", "lost"})}));
}

TEST_F(RankAssignmentTest, SplitOfDistanceFourMeasuresAgainstDistanceThree) {
  fabric.Switch("leaf").Switch("upper").Switch("mid").Switch("below");
  fabric.Cable("leaf", "mid").Cable("upper", "mid").Cable("upper", "below");
  Place("leaf", 4);
  Place("upper", 4);
  Place("mid", 3);
  Place("below", 5);
  TestPeer::Ranks(Classification()).resize(4);
  EXPECT_EQ(Classification().Set4L_DistanceToRanks(4, 3), StatusSuccess);
  EXPECT_EQ(TestPeer::Ranks(Classification()), (Ranks{{}, Nodes({"upper"}), {}, Nodes({"leaf"})}));
}

// --- Handing sets about.

TEST_F(RankAssignmentTest, SwitchesJoinARankOnce) {
  fabric.Switch("a").Switch("b").Switch("c");
  NodeSet rank = Nodes({"a", "b"});
  Classification().SetRankToNodes({fabric["c"], fabric["b"]}, rank);
  EXPECT_EQ(rank, Nodes({"a", "b", "c"}));
}

TEST_F(RankAssignmentTest, SwapExchangesTheRanks) {
  fabric.Switch("a").Switch("b");
  TestPeer::Ranks(Classification()) = {Nodes({"a"}), Nodes({"b"})};
  Ranks other{Nodes({"a", "b"})};
  Classification().SwapRanks(other);
  EXPECT_EQ(other, (Ranks{Nodes({"a"}), Nodes({"b"})}));
  EXPECT_EQ(TestPeer::Ranks(Classification()), (Ranks{Nodes({"a", "b"})}));
}

}  // namespace
}  // namespace fabscope::internal
