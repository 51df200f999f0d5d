#include <csignal>
#include <map>
#include <string>

#include "fat_tree/status.h"
#include "support/stage_fixture.h"
#include "support/test_peer.h"

namespace fabscope::internal {
namespace {

class LinkAccountingTest : public StageTest {
 protected:
  void AddNode(const std::string& name, std::uint8_t type, bool special = false) {
    NodeSpec spec;
    spec.name = name;
    spec.type = type;
    spec.special = special;
    spec.numPorts = 8;
    fabric.Node(spec);
  }

  void AddMultiAsicSwitch(const std::string& name) {
    NodeSpec spec;
    spec.name = name;
    spec.multiAsic = true;
    spec.numPorts = 8;
    fabric.Node(spec);
  }

  void SetGroup(const std::string& node, std::uint8_t num, std::int32_t group) {
    PortSpec port;
    port.num = num;
    port.group = group;
    fabric.Port(node, port);
  }

  // Ranks by hand: any cable may then lead anywhere.
  void SetRanks(const std::vector<std::vector<std::string>>& names) {
    std::vector<NodeSet> ranks;
    for (const auto& rank : names) ranks.push_back(Nodes(rank));
    TestPeer::SetRanks(Topology(), ranks);
  }

  // "up/down" of a switch of that rank.
  std::string Count(const std::string& name, std::uint64_t rank) {
    return Text(Topology().CalculateSwitchUpDownLinks(rank, *fabric[name]));
  }
  static std::string Text(const UpDownLinks& links) {
    return std::to_string(links.up) + "/" + std::to_string(links.down);
  }

  // A switch of the last rank with those counts and, on its first port, that speed.
  void AddLeaf(const std::string& name, UpDownLinks links, std::uint32_t speed) {
    fabric.Switch(name).Host(name + ".host").Cable(name, name + ".host", speed);
    leaves_.emplace_back(name, links);
  }

  // The least ratio of a root and the leaves added.
  double MinRatio() {
    fabric.Switch("root");
    std::vector<std::string> names;
    for (const auto& [name, links] : leaves_) {
      names.push_back(name);
      TestPeer::SwitchUpDownLinks(Topology()).Set(*fabric[name], links);
    }
    SetRanks({{"root"}, names});
    EXPECT_EQ(Topology().CalculateUpDownLinksMinRatio(), StatusSuccess);
    EXPECT_EQ(Topology().GetErrorText(), "");
    EXPECT_EQ(TakeOutput(), "");
    return TestPeer::MinUpDownRatio(Topology());
  }

 private:
  std::vector<std::pair<std::string, UpDownLinks>> leaves_;
};

// --- Roots.

TEST_F(LinkAccountingTest, RootCountsCablesToTheNextRankAsDown) {
  fabric.Switch("root").Switch("mid0").Switch("mid1").Switch("leaf");
  fabric.Cable("root", "mid0").Cable("root", "mid0").Cable("root", "mid1");
  SetRanks({{"root"}, {"mid0", "mid1"}, {"leaf"}});
  EXPECT_EQ(Count("root", 0), "0/3");
}

TEST_F(LinkAccountingTest, RootCountsNeitherHostsNorRootsNorRankTwoNorUnranked) {
  fabric.Switch("root").Switch("otherRoot").Switch("mid").Switch("leaf").Switch("unranked");
  fabric.Host("host").Cable("root", "host").Cable("root", "otherRoot").Cable("root", "leaf");
  fabric.Cable("root", "unranked");
  SetRanks({{"root", "otherRoot"}, {"mid"}, {"leaf"}});
  EXPECT_EQ(Count("root", 0), "0/0");
}

TEST_F(LinkAccountingTest, RootOfTwoRanksDoesNotCountHosts) {
  fabric.Switch("root").Switch("leaf").Host("host");
  fabric.Cable("root", "leaf").Cable("root", "host");
  SetRanks({{"root"}, {"leaf"}});
  EXPECT_EQ(Count("root", 0), "0/1");
}

// --- Ranks in between.

TEST_F(LinkAccountingTest, MiddleSwitchCountsItsTwoNeighbouringRanks) {
  fabric.Switch("root").Switch("mid").Switch("leaf0").Switch("leaf1");
  fabric.Cable("mid", "root").Cable("mid", "leaf0").Cable("mid", "leaf0").Cable("mid", "leaf1");
  SetRanks({{"root"}, {"mid"}, {"leaf0", "leaf1"}});
  EXPECT_EQ(Count("mid", 1), "1/3");
}

TEST_F(LinkAccountingTest, MiddleSwitchCountsNeitherItsOwnRankNorFartherRanksNorHosts) {
  fabric.Switch("root").Switch("upper").Switch("beside").Switch("mid").Switch("leaf");
  fabric.Switch("below").Host("host");
  for (const char* other : {"root", "beside", "below", "host"}) fabric.Cable("mid", other);
  SetRanks({{"root"}, {"upper"}, {"mid", "beside"}, {"leaf"}, {"below"}});
  EXPECT_EQ(Count("mid", 2), "0/0");
}

TEST_F(LinkAccountingTest, LastPortCountsToo) {
  fabric.Switch("root", 4).Switch("leaf", 255).Host("host");
  fabric.Link("root", 4, "leaf", 255).Link("leaf", 254, "host", 1);
  SetRanks({{"root"}, {"leaf"}});
  EXPECT_EQ(Count("root", 0), "0/1");
  EXPECT_EQ(Count("leaf", 1), "1/1");
}

TEST_F(LinkAccountingTest, SwitchWithoutPortsHasNoLinks) {
  fabric.Switch("root", 0).Switch("mid", 0).Switch("leaf", 0);
  SetRanks({{"root"}, {"mid"}, {"leaf"}});
  EXPECT_EQ(Count("root", 0), "0/0");
  EXPECT_EQ(Count("mid", 1), "0/0");
  EXPECT_EQ(Count("leaf", 2), "0/0");
}

// --- Leaves.

TEST_F(LinkAccountingTest, LeafCountsHostsDownAndTheRankAboveUp) {
  fabric.Switch("root").Switch("leaf").Host("host0").Host("host1");
  fabric.Cable("leaf", "root").Cable("leaf", "root").Cable("leaf", "root");
  fabric.Cable("leaf", "host0").Cable("leaf", "host1");
  SetRanks({{"root"}, {"leaf"}});
  EXPECT_EQ(Count("leaf", 1), "3/2");
}

TEST_F(LinkAccountingTest, LeafCountsNeitherOtherRanksNorSpecialNodesNorRouters) {
  fabric.Switch("root").Switch("mid").Switch("leaf").Switch("otherLeaf").Switch("unranked");
  AddNode("special", NodeTypeCA, true);
  AddNode("router", NodeTypeRouter);
  fabric.Cable("leaf", "root").Cable("leaf", "otherLeaf").Cable("leaf", "unranked");
  fabric.Cable("leaf", "special").Cable("leaf", "router");
  SetRanks({{"root"}, {"mid"}, {"leaf", "otherLeaf"}});
  EXPECT_EQ(Count("leaf", 2), "0/0");
}

TEST_F(LinkAccountingTest, SpecialSwitchAboveCountsAsUp) {
  fabric.Switch("leaf");
  AddNode("special", NodeTypeSwitch, true);
  fabric.Cable("leaf", "special");
  SetRanks({{"special"}, {"leaf"}});
  EXPECT_EQ(Count("leaf", 1), "1/0");
}

// --- One host on several plane ports.

TEST_F(LinkAccountingTest, OrdinaryLeafCountsEveryCableToAHost) {
  fabric.Switch("root").Switch("leaf").Host("host", 3);
  for (const std::uint8_t num : std::vector<std::uint8_t>{1, 2, 3}) {
    fabric.Link("leaf", num, "host", num);
    SetGroup("host", num, 1);
  }
  SetRanks({{"root"}, {"leaf"}});
  EXPECT_EQ(Count("leaf", 1), "0/3");
}

TEST_F(LinkAccountingTest, MultiAsicLeafCountsAHostWithGroupRecordsOnce) {
  fabric.Switch("root").Host("host", 3).Host("otherHost", 2);
  AddMultiAsicSwitch("leaf");
  for (const std::uint8_t num : std::vector<std::uint8_t>{1, 2, 3}) {
    fabric.Link("leaf", num, "host", num);
    SetGroup("host", num, num);  // whatever the group is, so long as it is one
  }
  fabric.Link("leaf", 4, "otherHost", 1).Link("leaf", 5, "otherHost", 2);
  SetGroup("otherHost", 1, 1);
  SetGroup("otherHost", 2, 1);
  SetRanks({{"root"}, {"leaf"}});
  EXPECT_EQ(Count("leaf", 1), "0/2");
}

TEST_F(LinkAccountingTest, MultiAsicLeafCountsEveryCableWithoutAGroupAtTheHost) {
  fabric.Switch("root").Host("host", 6);
  AddMultiAsicSwitch("leaf");
  for (const std::uint8_t num : std::vector<std::uint8_t>{1, 2, 3, 4, 5, 6}) {
    fabric.Link("leaf", num, "host", num);
  }
  SetGroup("host", 1, 0);
  SetGroup("host", 2, 0);
  SetGroup("host", 3, -1);
  SetGroup("host", 4, -1);
  SetGroup("leaf", 5, 1);  // only the far end's record speaks
  SetGroup("leaf", 6, 1);
  SetRanks({{"root"}, {"leaf"}});
  EXPECT_EQ(Count("leaf", 1), "0/6");
}

TEST_F(LinkAccountingTest, CableWithoutAGroupCountsBesideTheHostCountedOnce) {
  fabric.Switch("root").Host("host", 3);
  AddMultiAsicSwitch("leaf");
  for (const std::uint8_t num : std::vector<std::uint8_t>{1, 2, 3}) {
    fabric.Link("leaf", num, "host", num);
  }
  SetGroup("host", 2, 1);
  SetGroup("host", 3, 1);
  SetRanks({{"root"}, {"leaf"}});
  EXPECT_EQ(Count("leaf", 1), "0/2");
}

TEST_F(LinkAccountingTest, SpecialNodeDoesNotCountForAMultiAsicLeafEither) {
  fabric.Switch("root");
  AddMultiAsicSwitch("leaf");
  AddNode("special", NodeTypeCA, true);
  fabric.Link("leaf", 1, "special", 1).Link("leaf", 2, "special", 2);
  SetGroup("special", 1, 1);
  SetRanks({{"root"}, {"leaf"}});
  EXPECT_EQ(Count("leaf", 1), "0/0");
}

TEST_F(LinkAccountingTest, HostCountsAgainForEveryLeaf) {
  fabric.Switch("root").Host("host", 2);
  AddMultiAsicSwitch("leaf0");
  AddMultiAsicSwitch("leaf1");
  fabric.Link("leaf0", 1, "host", 1).Link("leaf1", 1, "host", 2);
  SetGroup("host", 1, 1);
  SetGroup("host", 2, 1);
  SetRanks({{"root"}, {"leaf0", "leaf1"}});
  EXPECT_EQ(Count("leaf0", 1), "0/1");
  EXPECT_EQ(Count("leaf1", 1), "0/1");
}

// --- Ports that carry no tree link.

TEST_F(LinkAccountingTest, FnmPortsAndAsymmetricLinksCountNeitherUpNorDown) {
  fabric.Switch("root").Switch("leaf").Host("host", 3);
  fabric.Link("leaf", 1, "root", 1).Link("leaf", 2, "root", 2).Link("leaf", 3, "root", 3, false);
  fabric.Link("leaf", 4, "host", 1).Link("leaf", 5, "host", 2).Link("leaf", 6, "host", 3, false);
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
  SetRanks({{"root"}, {"leaf"}});
  EXPECT_EQ(Count("leaf", 1), "0/0");
  // The root's own ports are ordinary ones, so its side of the first two cables counts.
  EXPECT_EQ(Count("root", 0), "0/2");
}

TEST_F(LinkAccountingTest, PortThatIsNotThereCountsNothingAndHasNoSpeed) {
  fabric.Switch("root").Switch("leaf").Host("host").Link("leaf", 2, "host", 1, true, 0x4);
  SetRanks({{"root"}, {"leaf"}});
  EXPECT_EQ(Count("leaf", 1), "0/1");
  TestPeer::SwitchUpDownLinks(Topology()).Set(*fabric["leaf"], {1, 1});
  EXPECT_EQ(Topology().CalculateUpDownLinksMinRatio(), StatusSuccess);
  EXPECT_EQ(TestPeer::MinUpDownRatio(Topology()), 10.0);
}

TEST_F(LinkAccountingTest, PortWithoutACableCountsNothing) {
  fabric.Switch("root").Switch("leaf");
  PortSpec port;
  port.num = 1;
  port.state = 4;
  fabric.Port("leaf", port);
  SetRanks({{"root"}, {"leaf"}});
  EXPECT_EQ(Count("leaf", 1), "0/0");
}

// --- The memo.

TEST_F(LinkAccountingTest, FirstAnswerHoldsWhateverRankIsAskedForLater) {
  fabric.Switch("root").Switch("leaf").Host("host");
  fabric.Cable("leaf", "root").Cable("leaf", "host");
  SetRanks({{"root"}, {"leaf"}});
  EXPECT_EQ(Text(Topology().GetSwitchLinksData(1, *fabric["leaf"])), "1/1");
  EXPECT_EQ(Text(Topology().GetSwitchLinksData(0, *fabric["leaf"])), "1/1");
  SetRanks({{"leaf"}, {"root"}});
  EXPECT_EQ(Text(Topology().GetSwitchLinksData(0, *fabric["leaf"])), "1/1");
  EXPECT_EQ(Text(Topology().GetSwitchLinksData(1, *fabric["root"])), "1/0");
  EXPECT_EQ(TestPeer::SwitchUpDownLinks(Topology()).Count(), 2U);
}

TEST_F(LinkAccountingTest, CountingDoesNotFillTheMemo) {
  fabric.Switch("root").Switch("leaf").Cable("leaf", "root");
  SetRanks({{"root"}, {"leaf"}});
  EXPECT_EQ(Count("leaf", 1), "1/0");
  EXPECT_EQ(TestPeer::SwitchUpDownLinks(Topology()).Count(), 0U);
}

TEST_F(LinkAccountingTest, RankThatTheTreeLacksAborts) {
  fabric.Switch("root").Switch("leaf").Cable("root", "leaf");
  SetRanks({{"root"}});
  EXPECT_EXIT(Count("root", 0), ::testing::KilledBySignal(SIGABRT), "");
  EXPECT_EXIT(Count("leaf", 1), ::testing::KilledBySignal(SIGABRT), "");
}

// --- The least ratio.

TEST_F(LinkAccountingTest, LeastRatioIsNotSetWithoutASwitchThatTakesPart) {
  AddLeaf("noUp", {0, 1}, 0x4);
  AddLeaf("noDown", {1, 0}, 0x4);
  EXPECT_EQ(MinRatio(), 0.0);
}

TEST_F(LinkAccountingTest, RatioWeighsTheUpLinksOnlyWithTheSpeed) {
  AddLeaf("leaf", {3, 4}, 0x400);
  EXPECT_EQ(MinRatio(), 3 * 50.0 / 4);
}

TEST_F(LinkAccountingTest, SwitchWithoutUpLinksOrWithoutDownLinksHasNoRatio) {
  AddLeaf("noUp", {0, 1}, 0x1);
  AddLeaf("noDown", {1, 0}, 0x1);
  AddLeaf("leaf", {4, 2}, 0x4);
  AddLeaf("noUpEither", {0, 1}, 0x1);
  EXPECT_EQ(MinRatio(), 20.0);
}

TEST_F(LinkAccountingTest, LeastRatioIsKeptWhereverItStands) {
  AddLeaf("a", {2, 1}, 0x4);
  AddLeaf("least", {1, 4}, 0x4);
  AddLeaf("b", {3, 1}, 0x4);
  EXPECT_EQ(MinRatio(), 2.5);
}

TEST_F(LinkAccountingTest, LeastRatioOnceSetOnlyDecreases) {
  fabric.Switch("root").Switch("leaf").Cable("leaf", "root", 0x4);
  TestPeer::SwitchUpDownLinks(Topology()).Set(*fabric["leaf"], {2, 1});
  SetRanks({{"root"}, {"leaf"}});
  TestPeer::MinUpDownRatio(Topology()) = 7.0;
  EXPECT_EQ(Topology().CalculateUpDownLinksMinRatio(), StatusSuccess);
  EXPECT_EQ(TestPeer::MinUpDownRatio(Topology()), 7.0);
  TestPeer::MinUpDownRatio(Topology()) = 21.0;
  EXPECT_EQ(Topology().CalculateUpDownLinksMinRatio(), StatusSuccess);
  EXPECT_EQ(TestPeer::MinUpDownRatio(Topology()), 20.0);
}

TEST_F(LinkAccountingTest, RatioZeroCountsAsNotSetAndIsReplaced) {
  AddLeaf("unknownSpeed", {1, 1}, 0x8);
  AddLeaf("three", {3, 10}, 0x4);
  AddLeaf("two", {2, 10}, 0x4);
  EXPECT_EQ(MinRatio(), 2.0);
}

TEST_F(LinkAccountingTest, RatioZeroIsLessThanAnyAndGivesWayToTheNext) {
  AddLeaf("two", {2, 10}, 0x4);
  AddLeaf("unknownSpeed", {1, 1}, 0x8);
  AddLeaf("three", {3, 10}, 0x4);
  EXPECT_EQ(MinRatio(), 3.0);
}

TEST_F(LinkAccountingTest, RatioZeroStaysWhenNothingFollows) {
  AddLeaf("two", {2, 10}, 0x4);
  AddLeaf("unknownSpeed", {1, 1}, 0x8);
  EXPECT_EQ(MinRatio(), 0.0);
}

TEST_F(LinkAccountingTest, LaneSpeedsByCode) {
  const std::map<std::uint32_t, double> speeds{
      {0x0, 0.0},      {0x1, 2.5},      {0x2, 5.0},     {0x4, 10.0},        {0x8, 0.0},
      {0x100, 14.0},   {0x200, 25.0},   {0x400, 50.0},  {0x800, 100.0},     {0x1000, 0.0},
      {0x10000, 14.0}, {0x20000, 25.0}, {0x40000, 0.0}, {0x1000000, 200.0}, {0x3, 0.0}};
  for (const auto& [code, speed] : speeds) {
    TestFabric oneLeaf;
    oneLeaf.Switch("root").Switch("leaf").Cable("leaf", "root", code);
    FTTopology topology(&oneLeaf.Build(), &out, mergePercent);
    TestPeer::SetRanks(topology, {{oneLeaf["root"]}, {oneLeaf["leaf"]}});
    TestPeer::SwitchUpDownLinks(topology).Set(*oneLeaf["leaf"], {1, 1});
    EXPECT_EQ(topology.CalculateUpDownLinksMinRatio(), StatusSuccess);
    EXPECT_EQ(TestPeer::MinUpDownRatio(topology), speed) << "speed code " << code;
  }
}

TEST_F(LinkAccountingTest, SpeedOfASwitchIsThatOfItsFirstConnectedPort) {
  // Port 1 has a speed and no cable; port 2 leads to a host, off the tree for being an FNM port.
  // The host's end says another speed.
  fabric.Switch("root").Switch("leaf").Host("host");
  fabric.Link("leaf", 2, "host", 1, true, 0x4).Link("leaf", 3, "root", 1, true, 0x400);
  PortSpec uncabled;
  uncabled.num = 1;
  uncabled.speed = 0x1;
  fabric.Port("leaf", uncabled);
  PortSpec fnm;
  fnm.num = 2;
  fnm.fnm = true;
  PortSpec farEnd;
  farEnd.num = 1;
  farEnd.speed = 0x200;
  fabric.Port("leaf", fnm).Port("host", farEnd);
  TestPeer::SwitchUpDownLinks(Topology()).Set(*fabric["leaf"], {2, 4});
  SetRanks({{"root"}, {"leaf"}});
  EXPECT_EQ(Topology().CalculateUpDownLinksMinRatio(), StatusSuccess);
  EXPECT_EQ(TestPeer::MinUpDownRatio(Topology()), 5.0);
}

TEST_F(LinkAccountingTest, LastPortMayBeTheFirstConnectedOne) {
  fabric.Switch("root").Switch("leaf", 4).Link("leaf", 4, "root", 1, true, 0x4);
  TestPeer::SwitchUpDownLinks(Topology()).Set(*fabric["leaf"], {1, 1});
  SetRanks({{"root"}, {"leaf"}});
  EXPECT_EQ(Topology().CalculateUpDownLinksMinRatio(), StatusSuccess);
  EXPECT_EQ(TestPeer::MinUpDownRatio(Topology()), 10.0);
}

TEST_F(LinkAccountingTest, SwitchWithoutAnyCableHasNoSpeed) {
  fabric.Switch("root").Switch("leaf");
  TestPeer::MinUpDownRatio(Topology()) = 7.0;
  TestPeer::SwitchUpDownLinks(Topology()).Set(*fabric["leaf"], {1, 1});
  SetRanks({{"root"}, {"leaf"}});
  EXPECT_EQ(Topology().CalculateUpDownLinksMinRatio(), StatusSuccess);
  EXPECT_EQ(TestPeer::MinUpDownRatio(Topology()), 0.0);
}

TEST_F(LinkAccountingTest, RatioOfAWholeTreeIsThatOfItsThinnestSwitch) {
  AddThreeLevelTree(fabric, 2, 3, 2, 2, 4);
  RankFrom({"root0", "root1", "root2", "root3"});
  EXPECT_EQ(Topology().CalculateUpDownLinksMinRatio(), StatusSuccess);
  // Leaves have 2 links up and 4 down, middle switches 2 up and 3 down.
  EXPECT_EQ(TestPeer::MinUpDownRatio(Topology()), 2 * 50.0 / 4);
  EXPECT_EQ(TestPeer::SwitchUpDownLinks(Topology()).Count(), 14U);
  EXPECT_EQ(Text(Topology().GetSwitchLinksData(0, *fabric["root0"])), "0/2");
  EXPECT_EQ(Text(Topology().GetSwitchLinksData(1, *fabric["mid1.1"])), "2/3");
  EXPECT_EQ(Text(Topology().GetSwitchLinksData(2, *fabric["leaf0.2"])), "2/4");
}

TEST_F(LinkAccountingTest, FewerThanTwoRanksAreNoFatTree) {
  fabric.Switch("root");
  EXPECT_EQ(Topology().CalculateUpDownLinksMinRatio(), StatusBadData);
  EXPECT_EQ(Topology().GetErrorText(),
            "Cannot calculate Up/Down links. It is not a Fat-Tree topology");
  TestPeer::ErrStream(Topology()).str("");
  SetRanks({{"root"}});
  EXPECT_EQ(Topology().CalculateUpDownLinksMinRatio(), StatusBadData);
  EXPECT_EQ(Topology().GetErrorText(),
            "Cannot calculate Up/Down links. It is not a Fat-Tree topology");
}

TEST_F(LinkAccountingTest, NullSwitchEndsTheSearchForTheLeastRatio) {
  fabric.Switch("root").Switch("mid").Switch("leaf").Host("host");
  fabric.Cable("mid", "root", 0x4).Cable("mid", "leaf", 0x4).Cable("leaf", "host", 0x1);
  SetRanks({{"root"}, {"mid"}, {"leaf"}});
  TestPeer::AddNullToRank(Topology(), 2);
  EXPECT_EQ(Topology().CalculateUpDownLinksMinRatio(), StatusLookupFailed);
  EXPECT_EQ(Topology().GetErrorText(), "Cannot calculate Up/Down links. One of IB-Nodes is NULL");
  // What the ranks above gave stays; the leaf beside the null entry was not looked at.
  EXPECT_EQ(TestPeer::MinUpDownRatio(Topology()), 10.0);
  EXPECT_FALSE(TestPeer::SwitchUpDownLinks(Topology()).Has(*fabric["leaf"]));
}

}  // namespace
}  // namespace fabscope::internal
