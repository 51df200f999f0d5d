#include <string>
#include <vector>

#include "fat_tree/status.h"
#include "support/stage_fixture.h"

namespace fabscope::internal {
namespace {

class AportChecksTest : public StageTest {
 protected:
  AportChecksTest() {
    fabric.Switch("spine0").Switch("spine1").Switch("line0").Switch("line1").Host("host", 16);
  }

  // A cable between two plane ports of equal number.
  void PlaneCable(const std::string& a, const std::string& b, std::uint8_t num) {
    fabric.Link(a, num, b, num).Port(a, PlanePort(num)).Port(b, PlanePort(num));
  }
  static PortSpec PlanePort(std::uint8_t num) {
    PortSpec port;
    port.num = num;
    port.planeMultiplicity = 4;
    return port;
  }

  // The group has number 5. Of the tree's two pairs of ranks the lower one is the last.
  FTNeighborhood& Group(std::uint64_t rank) {
    TestPeer::Neighborhoods(Topology()).resize(2);
    group_ = std::make_unique<FTNeighborhood>(&Topology(), 5, rank);
    TestPeer::Spines(*group_) = Nodes({"spine0", "spine1"});
    TestPeer::Lines(*group_) = Nodes({"line0", "line1"});
    return *group_;
  }
  FTNeighborhood& Neighborhood() { return Group(1); }
  FTNeighborhood& ConnectivityGroup() { return Group(0); }

  // What the whole check writes.
  std::string Report(FTNeighborhood& group) {
    EXPECT_EQ(group.CheckAsymmetricAPorts(out), StatusSuccess);
    EXPECT_EQ(group.GetErrorText(), "");
    return TakeOutput();
  }

 private:
  std::unique_ptr<FTNeighborhood> group_;
};

// --- Cables inside the group.

TEST_F(AportChecksTest, FabricOfOnePlaneGivesNoReport) {
  fabric.Link("spine0", 1, "line0", 1).Link("line0", 2, "host", 2);
  EXPECT_EQ(Report(Neighborhood()), "");
  EXPECT_EQ(Topology().GetIssuesCount(), 0U);
}

TEST_F(AportChecksTest, PlanePortsWithoutAnAggregatedPortGiveNoReport) {
  PlaneCable("spine0", "line0", 1);
  PlaneCable("line0", "host", 2);
  EXPECT_EQ(Report(Neighborhood()), "");
}

TEST_F(AportChecksTest, SymmetricAggregatedPortsGiveNoReport) {
  PlaneCable("spine0", "line0", 1);
  PlaneCable("line0", "host", 2);
  fabric.AggregatedPort({{"spine0", 1}}, 0).AggregatedPort({{"line0", 1}}, 0);
  fabric.AggregatedPort({{"line0", 2}}, 0);
  EXPECT_EQ(Report(Neighborhood()), "");
  EXPECT_EQ(Topology().GetIssuesCount(), 0U);
}

TEST_F(AportChecksTest, AsymmetryAtTheSpineCountsOnce) {
  PlaneCable("spine0", "line0", 1);
  fabric.AggregatedPort({{"spine0", 1}}, 1);
  EXPECT_EQ(Report(Neighborhood()), "-W- Neighborhood 5: found 1 asymmetric APort\n");
  EXPECT_EQ(Topology().GetIssuesCount(), 1U);
}

TEST_F(AportChecksTest, AsymmetryAtTheLineCountsOnce) {
  PlaneCable("spine0", "line0", 1);
  fabric.AggregatedPort({{"line0", 1}}, 1);
  EXPECT_EQ(Report(Neighborhood()), "-W- Neighborhood 5: found 1 asymmetric APort\n");
  EXPECT_EQ(Topology().GetIssuesCount(), 1U);
}

TEST_F(AportChecksTest, AsymmetryAtBothEndsOfACableCountsTwice) {
  PlaneCable("spine0", "line0", 1);
  fabric.AggregatedPort({{"spine0", 1}}, 1).AggregatedPort({{"line0", 1}}, 1);
  EXPECT_EQ(Report(Neighborhood()), "-W- Neighborhood 5: found 2 asymmetric APorts\n");
  EXPECT_EQ(Topology().GetIssuesCount(), 2U);
}

TEST_F(AportChecksTest, AggregatedPortInsideTheGroupCountsForEachOfItsPorts) {
  for (const std::uint8_t num : std::vector<std::uint8_t>{1, 2, 3, 4}) {
    PlaneCable("spine0", "line0", num);
  }
  fabric.AggregatedPort({{"spine0", 1}, {"spine0", 2}, {"spine0", 3}, {"spine0", 4}}, 1);
  EXPECT_EQ(Report(Neighborhood()), "-W- Neighborhood 5: found 4 asymmetric APorts\n");
  EXPECT_EQ(Topology().GetIssuesCount(), 4U);
}

TEST_F(AportChecksTest, AnyBitOfTheMarkIsAnAsymmetry) {
  PlaneCable("spine0", "line0", 1);
  fabric.AggregatedPort({{"spine0", 1}}, std::uint64_t{1} << 63);
  EXPECT_EQ(Report(Neighborhood()), "-W- Neighborhood 5: found 1 asymmetric APort\n");
}

TEST_F(AportChecksTest, AllSpinesOfAGroupAreCountedTogether) {
  PlaneCable("spine0", "line0", 1);
  PlaneCable("spine1", "line1", 16);
  fabric.AggregatedPort({{"spine0", 1}}, 1).AggregatedPort({{"spine1", 16}}, 1);
  EXPECT_EQ(Report(Neighborhood()), "-W- Neighborhood 5: found 2 asymmetric APorts\n");
}

TEST_F(AportChecksTest, CableThatLeavesTheGroupIsIgnored) {
  fabric.Switch("outside");
  PlaneCable("spine0", "outside", 1);
  PlaneCable("spine0", "spine1", 2);
  PlaneCable("line0", "outside", 3);
  PlaneCable("line0", "line1", 4);
  fabric.AggregatedPort({{"spine0", 1}, {"spine0", 2}}, 1);
  fabric.AggregatedPort({{"line0", 3}, {"line0", 4}}, 1);
  EXPECT_EQ(Report(Neighborhood()), "");
  EXPECT_EQ(Topology().GetIssuesCount(), 0U);
}

TEST_F(AportChecksTest, ConnectivityGroupIsCalledOneAndHasNoHosts) {
  PlaneCable("spine0", "line0", 1);
  PlaneCable("line0", "host", 2);
  fabric.AggregatedPort({{"spine0", 1}}, 1).AggregatedPort({{"line0", 2}}, 1);
  EXPECT_EQ(Report(ConnectivityGroup()), "-W- Connectivity group 5: found 1 asymmetric APort\n");
  EXPECT_EQ(Topology().GetIssuesCount(), 1U);
}

// --- Cables to hosts.

TEST_F(AportChecksTest, AsymmetryTowardsAHostIsReportedBehindTheInnerOnes) {
  PlaneCable("spine0", "line0", 1);
  PlaneCable("line0", "host", 2);
  fabric.AggregatedPort({{"spine0", 1}}, 1).AggregatedPort({{"line0", 1}, {"line0", 2}}, 1);
  EXPECT_EQ(Report(Neighborhood()),
            "-W- Neighborhood 5: found 2 asymmetric APorts\n"
            "-W- Neighborhood 5: found 1 asymmetric APort connected to CAs\n");
  EXPECT_EQ(Topology().GetIssuesCount(), 3U);
}

TEST_F(AportChecksTest, AggregatedPortTowardsHostsCountsOnceForItsLeaf) {
  for (const std::uint8_t num : std::vector<std::uint8_t>{1, 2, 3, 4}) {
    PlaneCable("line0", "host", num);
  }
  fabric.AggregatedPort({{"line0", 1}, {"line0", 2}, {"line0", 3}, {"line0", 4}}, 1);
  EXPECT_EQ(Report(Neighborhood()),
            "-W- Neighborhood 5: found 1 asymmetric APort connected to CAs\n");
  EXPECT_EQ(Topology().GetIssuesCount(), 1U);
}

TEST_F(AportChecksTest, EveryAggregatedPortTowardsHostsCounts) {
  PlaneCable("line0", "host", 1);
  PlaneCable("line0", "host", 16);
  fabric.AggregatedPort({{"line0", 1}}, 1).AggregatedPort({{"line0", 16}}, 1);
  EXPECT_EQ(Report(Neighborhood()),
            "-W- Neighborhood 5: found 2 asymmetric APorts connected to CAs\n");
  EXPECT_EQ(Topology().GetIssuesCount(), 2U);
}

TEST_F(AportChecksTest, LeavesThatShareNothingAreCountedTogether) {
  for (const std::uint8_t num : std::vector<std::uint8_t>{1, 2, 3, 4}) {
    const auto second = static_cast<std::uint8_t>(num + 4);
    PlaneCable("line0", "host", num);
    PlaneCable("line1", "host", second);
  }
  fabric.AggregatedPort({{"line0", 1}, {"line0", 2}, {"line0", 3}, {"line0", 4}}, 1);
  fabric.AggregatedPort({{"line1", 5}, {"line1", 6}, {"line1", 7}, {"line1", 8}}, 1);
  EXPECT_EQ(Report(Neighborhood()),
            "-W- Neighborhood 5: found 2 asymmetric APorts connected to CAs\n");
  EXPECT_EQ(Topology().GetIssuesCount(), 2U);
}

TEST_F(AportChecksTest, CheckOfCablesToHostsCallsEveryGroupANeighborhood) {
  PlaneCable("line0", "host", 1);
  fabric.AggregatedPort({{"line0", 1}}, 1);
  EXPECT_EQ(ConnectivityGroup().CheckExternalAPorts(out), StatusSuccess);
  EXPECT_EQ(TakeOutput(), "-W- Neighborhood 5: found 1 asymmetric APort connected to CAs\n");
}

TEST_F(AportChecksTest, AggregatedPortOverTwoLeavesCountsForEachOfThem) {
  PlaneCable("line0", "host", 1);
  PlaneCable("line1", "host", 2);
  fabric.AggregatedPort({{"line0", 1}, {"line1", 2}}, 1);
  EXPECT_EQ(Report(Neighborhood()),
            "-W- Neighborhood 5: found 2 asymmetric APorts connected to CAs\n");
}

TEST_F(AportChecksTest, AsymmetryAtTheHostIsNotLookedAt) {
  PlaneCable("line0", "host", 1);
  fabric.AggregatedPort({{"host", 1}}, 1);
  EXPECT_EQ(Report(Neighborhood()), "");
}

TEST_F(AportChecksTest, SpecialNodesAreHostsAndRoutersAreNot) {
  NodeSpec special;
  special.name = "special";
  special.type = NodeTypeCA;
  special.special = true;
  special.numPorts = 4;
  NodeSpec router;
  router.name = "router";
  router.type = NodeTypeRouter;
  router.numPorts = 4;
  fabric.Node(special).Node(router);
  PlaneCable("line0", "special", 1);
  PlaneCable("line0", "router", 2);
  fabric.AggregatedPort({{"line0", 1}}, 1).AggregatedPort({{"line0", 2}}, 1);
  EXPECT_EQ(Report(Neighborhood()),
            "-W- Neighborhood 5: found 1 asymmetric APort connected to CAs\n");
}

TEST_F(AportChecksTest, HostsOfSpinesAreNotLookedAt) {
  PlaneCable("spine0", "host", 1);
  fabric.AggregatedPort({{"spine0", 1}}, 1);
  EXPECT_EQ(Report(Neighborhood()), "");
}

// --- Which ports take part.

TEST_F(AportChecksTest, PortsThatDoNotTakePartAreNotCounted) {
  std::vector<std::pair<std::string, std::uint8_t>> upper;
  std::vector<std::pair<std::string, std::uint8_t>> towardsHost;
  const auto add = [&](std::uint8_t num, const auto& change) {
    for (const auto& [from, to, shift] :
         {std::tuple{"spine0", "line0", 0}, std::tuple{"line0", "host", 8}}) {
      const auto port = static_cast<std::uint8_t>(num + shift);
      PortSpec spec = PlanePort(port);
      change(spec);
      fabric.Link(from, port, to, port).Port(from, spec).Port(to, PlanePort(port));
    }
    upper.emplace_back("spine0", num);
    towardsHost.emplace_back("line0", static_cast<std::uint8_t>(num + 8));
  };
  add(1, [](PortSpec& port) { port.planeMultiplicity = 1; });
  add(2, [](PortSpec& port) { port.planeMultiplicity = 0; });
  add(3, [](PortSpec& port) { port.planeMultiplicity = -2; });
  add(4, [](PortSpec& port) { port.inSubFabric = false; });
  add(5, [](PortSpec& port) { port.fnm = true; });
  add(6, [](PortSpec& port) { port.fnm1 = true; });
  fabric.AggregatedPort(upper, 1).AggregatedPort(towardsHost, 1);
  EXPECT_EQ(Report(Neighborhood()), "");
  EXPECT_EQ(Topology().GetIssuesCount(), 0U);
}

TEST_F(AportChecksTest, PortWithoutACableDoesNotTakePart) {
  fabric.Port("spine0", PlanePort(1)).Port("line0", PlanePort(1));
  fabric.AggregatedPort({{"spine0", 1}}, 1).AggregatedPort({{"line0", 1}}, 1);
  EXPECT_EQ(Report(Neighborhood()), "");
}

TEST_F(AportChecksTest, FarPortWithoutAnOwnerDoesNotTakePart) {
  PlaneCable("spine0", "line0", 1);
  PlaneCable("line0", "host", 2);
  fabric.AggregatedPort({{"spine0", 1}}, 1).AggregatedPort({{"line0", 2}}, 1);
  FTNeighborhood& group = Neighborhood();
  fabric["line0"]->getPort(1)->node = nullptr;
  fabric["host"]->getPort(2)->node = nullptr;
  EXPECT_EQ(Report(group), "");
}

TEST_F(AportChecksTest, TwoPlanesAreEnoughToTakePart) {
  PortSpec twoPlanes;
  twoPlanes.num = 1;
  twoPlanes.planeMultiplicity = 2;
  fabric.Link("spine0", 1, "line0", 1).Port("spine0", twoPlanes);
  fabric.AggregatedPort({{"spine0", 1}}, 1);
  EXPECT_EQ(Report(Neighborhood()), "-W- Neighborhood 5: found 1 asymmetric APort\n");
}

TEST_F(AportChecksTest, FarPortNeedNotTakePartItself) {
  PortSpec far = PlanePort(1);
  far.planeMultiplicity = 1;
  far.inSubFabric = false;
  far.fnm = true;
  fabric.Link("spine0", 1, "line0", 1).Port("spine0", PlanePort(1)).Port("line0", far);
  fabric.AggregatedPort({{"line0", 1}}, 1);
  EXPECT_EQ(Report(Neighborhood()), "-W- Neighborhood 5: found 1 asymmetric APort\n");
}

TEST_F(AportChecksTest, AsymmetricLinkTakesPart) {
  // Whether the two ends of one link fit is another question than whether the planes do.
  fabric.Link("spine0", 1, "line0", 1, false).Port("spine0", PlanePort(1));
  fabric.AggregatedPort({{"spine0", 1}}, 1);
  EXPECT_EQ(Report(Neighborhood()), "-W- Neighborhood 5: found 1 asymmetric APort\n");
}

TEST_F(AportChecksTest, PortThatIsDownTakesPartAsLongAsItIsCabled) {
  PortSpec down = PlanePort(1);
  down.state = 1;
  fabric.Link("spine0", 1, "line0", 1).Port("spine0", down);
  fabric.AggregatedPort({{"spine0", 1}}, 1);
  EXPECT_EQ(Report(Neighborhood()), "-W- Neighborhood 5: found 1 asymmetric APort\n");
}

// --- Null switches.

TEST_F(AportChecksTest, NullSpineEndsTheCheckBeforeTheHosts) {
  PlaneCable("spine0", "line0", 1);
  PlaneCable("line0", "host", 2);
  fabric.AggregatedPort({{"spine0", 1}}, 1).AggregatedPort({{"line0", 2}}, 1);
  FTNeighborhood& group = Neighborhood();
  TestPeer::Spines(group).insert(nullptr);
  EXPECT_EQ(group.CheckAsymmetricAPorts(out), StatusLookupFailed);
  EXPECT_EQ(TakeOutput(), "");
  EXPECT_EQ(group.GetErrorText(),
            "Cannot check APorts internal links symmetry for the neighborhood: 5. "
            "One of its IB-Nodes is NULL");
}

TEST_F(AportChecksTest, NullSpineOfAConnectivityGroupIsToldAsSuch) {
  FTNeighborhood& group = ConnectivityGroup();
  TestPeer::Spines(group).insert(nullptr);
  EXPECT_EQ(group.CheckAsymmetricAPorts(out), StatusLookupFailed);
  EXPECT_EQ(group.GetErrorText(),
            "Cannot check APorts internal links symmetry for the connectivity group: 5. "
            "One of its IB-Nodes is NULL");
}

TEST_F(AportChecksTest, NullLineOfANeighborhoodIsToldAsOfAConnectivityGroup) {
  PlaneCable("spine0", "line0", 1);
  fabric.AggregatedPort({{"spine0", 1}}, 1);
  FTNeighborhood& group = Neighborhood();
  TestPeer::Lines(group).insert(nullptr);
  EXPECT_EQ(group.CheckAsymmetricAPorts(out), StatusLookupFailed);
  EXPECT_EQ(TakeOutput(), "-W- Neighborhood 5: found 1 asymmetric APort\n");
  EXPECT_EQ(group.GetErrorText(),
            "Cannot check APorts external links symmetry for the connectivity group: 5. "
            "One of its IB-Nodes is NULL");
  EXPECT_EQ(Topology().GetIssuesCount(), 1U);
}

TEST_F(AportChecksTest, NullLineOfAConnectivityGroupIsNotMet) {
  FTNeighborhood& group = ConnectivityGroup();
  TestPeer::Lines(group).insert(nullptr);
  EXPECT_EQ(Report(group), "");
}

}  // namespace
}  // namespace fabscope::internal
