#include "reports/slurm_topology.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <vector>

#include "platform/version.h"
#include "support/report_fixture.h"

namespace fabscope::internal {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class SlurmTopologyTest : public ReportTest {
 protected:
  // "leaf0: host0 host1", "N0: leaf0 leaf1", "root = C0 C1: N0 N1". Groups are numbered from 0
  // here, neighborhoods (N) and connectivity groups (C) apart.
  std::vector<std::string> Tree(const std::string& rootRegex = "^root") {
    topology = MakeSlurmTopology(*Check(rootRegex).topology);
    EXPECT_EQ(result.status, CheckStatus::Done) << result.message;
    std::vector<std::string> lines;
    for (const SlurmTopology::Switch& entry : topology.switches) {
      std::string line = Short(entry.name);
      if (!entry.groups.empty()) line += " =";
      for (const std::string& group : entry.groups) line += " " + Short(group);
      line += ":";
      for (const auto* names : {&entry.hosts, &entry.switches}) {
        for (const std::string& name : *names) line += " " + Short(name);
      }
      lines.push_back(line);
    }
    return lines;
  }

  std::string Short(const std::string& name) {
    for (const auto& groups : result.topology->GetNeighborhoods()) {
      for (const FTNeighborhood* group : groups) {
        const bool isLast = result.topology->IsLastRankNeighborhood(group->GetRank());
        const auto id = std::to_string(group->GetId());
        if (name == (isLast ? "neighborhood-" : "connectivity-group-") + id) {
          return (isLast ? "N" : "C") + std::to_string(group->GetId() - FirstId(isLast));
        }
      }
    }
    return name;
  }
  std::uint64_t FirstId(bool ofNeighborhoods) const {
    const auto& all = result.topology->GetNeighborhoods();
    const auto& groups = ofNeighborhoods ? all.back() : all.front();
    return groups.front()->GetId();
  }

  // Two zones of two pods of two leaves. Mid m of a pod is cabled to core m of its zone, core m of
  // every zone to root m.
  void AddFourLevelTree() {
    fabric.Switch("root0").Switch("root1");
    for (const char* name : {"core00", "core01", "core10", "core11"}) fabric.Switch(name);
    for (const std::string pod : {"00", "01", "10", "11"}) {
      const std::string mid = "mid" + pod;
      fabric.Switch(mid + "0").Switch(mid + "1");
    }
    for (const std::string pod : {"00", "01", "10", "11"}) {
      const std::string mid = "mid" + pod;
      for (const char* number : {"0", "1"}) {
        const std::string leaf = pod + number;
        fabric.Switch("leaf" + leaf).Host("h" + leaf).Cable("leaf" + leaf, "h" + leaf);
        fabric.Cable("leaf" + leaf, mid + "0").Cable("leaf" + leaf, mid + "1");
      }
      const std::string core = "core" + pod.substr(0, 1);
      fabric.Cable(mid + "0", core + "0").Cable(mid + "1", core + "1");
    }
    for (const std::string zone : {"core0", "core1"}) {
      fabric.Cable(zone + "0", "root0").Cable(zone + "1", "root1");
    }
  }

  SlurmTopology topology;
};

TEST_F(SlurmTopologyTest, RootOfTwoLevelsIsTheNeighborhood) {
  AddTwoLevelTree(fabric, 2, 2, 2);
  EXPECT_THAT(Tree(), ElementsAre("leaf0: host0.0 host0.1", "leaf1: host1.0 host1.1",
                                  "root = N0: leaf0 leaf1"));
  EXPECT_EQ(topology.hosts, 4U);
  EXPECT_THAT(topology.losses, IsEmpty());
}

TEST_F(SlurmTopologyTest, ConnectivityGroupsOfTheSamePodsAreOne) {
  AddThreeLevelTree(fabric, 2, 2, 2, 1, 1);
  EXPECT_THAT(Tree(), ElementsAre("leaf0_0: host0.0.0", "leaf0_1: host0.1.0", "leaf1_0: host1.0.0",
                                  "leaf1_1: host1.1.0", "N0 = N0: leaf0_0 leaf0_1",
                                  "N1 = N1: leaf1_0 leaf1_1", "root = C0 C1: N0 N1"));
  EXPECT_THAT(topology.losses, ElementsAre("renamed: 4 leaves that Slurm could not take or tell "
                                           "apart, the first is leaf0.0, now leaf0_0"));
}

TEST_F(SlurmTopologyTest, ZonesOfFourLevelsStandApart) {
  AddFourLevelTree();
  EXPECT_THAT(Tree(),
              ElementsAre("leaf000: h000", "leaf001: h001", "leaf010: h010", "leaf011: h011",
                          "leaf100: h100", "leaf101: h101", "leaf110: h110", "leaf111: h111",
                          "N0 = N0: leaf000 leaf001", "N1 = N1: leaf010 leaf011",
                          "N2 = N2: leaf100 leaf101", "N3 = N3: leaf110 leaf111",
                          "C2 = C2 C3: N0 N1", "C4 = C4 C5: N2 N3", "root = C0 C1: C2 C4"));
}

TEST_F(SlurmTopologyTest, SpineOfTwoNeighborhoodsBelongsToTheOneWithMoreLines) {
  AddFourLevelTree();
  fabric.Cable("leaf100", "mid000");
  const auto tree = Tree();
  ASSERT_THAT(result.topology->GetNeighborhoods().back().at(2)->GetSpines(),
              ::testing::Contains(fabric["mid000"]))
      << "the check cannot tell whose it is";
  EXPECT_THAT(std::vector<std::string>(tree.end() - 3, tree.end()),
              ElementsAre("C2 = C2 C3: N0 N1", "C4 = C4 C5: N2 N3", "root = C0 C1: C2 C4"));
}

TEST_F(SlurmTopologyTest, NeighborhoodWithoutASpineOfItsOwnGoesByTheOthersSpines) {
  for (const std::string i : {"0", "1", "2", "3"}) fabric.Switch("root" + i);
  for (const std::string i : {"0", "1", "2", "3"})
    fabric.Switch("mid" + i).Cable("mid" + i, "root" + i);
  const auto addLeaf = [this](const std::string& name, const std::string& mids) {
    fabric.Switch(name).Host("h-" + name).Cable(name, "h-" + name);
    for (const char mid : mids) fabric.Cable(name, std::string("mid") + mid);
  };
  addLeaf("a1", "01");
  addLeaf("a2", "01");
  addLeaf("b1", "23");
  addLeaf("b2", "23");
  addLeaf("c", "02");
  const auto tree = Tree();
  EXPECT_THAT(std::vector<std::string>(tree.end() - 4, tree.end()),
              ElementsAre("N0 = N0: a1 a2", "N1 = N1: c", "N2 = N2: b1 b2",
                          "root = C0 C1 C2 C3: N0 N1 N2"));
}

TEST_F(SlurmTopologyTest, TreesThatNothingJoinsHaveOneRootAboveThem) {
  for (const std::string i : {"0", "1"}) {
    fabric.Switch("root" + i).Switch("leaf" + i).Host("h" + i);
    fabric.Cable("leaf" + i, "root" + i).Cable("leaf" + i, "h" + i);
  }
  EXPECT_THAT(Tree(), ElementsAre("leaf0: h0", "leaf1: h1", "N0 = N0: leaf0", "N1 = N1: leaf1",
                                  "root: N0 N1"));
}

TEST_F(SlurmTopologyTest, GroupsAreOneThroughOthersToo) {
  for (const std::string i : {"0", "1", "2"}) fabric.Switch("root" + i);
  for (const char* mid : {"mid-a1", "mid-a2", "mid-b0", "mid-b1"}) fabric.Switch(mid);
  fabric.Cable("mid-a1", "root1").Cable("mid-a2", "root2");
  fabric.Cable("mid-b0", "root0").Cable("mid-b1", "root1");
  fabric.Switch("a").Host("ha").Cable("a", "ha").Cable("a", "mid-a1").Cable("a", "mid-a2");
  fabric.Switch("b").Host("hb").Cable("b", "hb").Cable("b", "mid-b0").Cable("b", "mid-b1");
  EXPECT_THAT(Tree(),
              ElementsAre("a: ha", "b: hb", "N0 = N0: a", "N1 = N1: b", "root = C0 C1 C2: N0 N1"));
}

TEST_F(SlurmTopologyTest, HostAboveTheLeavesStandsBesideThoseOfItsGroup) {
  AddThreeLevelTree(fabric, 2, 1, 2, 1, 1);
  fabric.Host("gate").Cable("mid1.0", "gate").Host("admin").Cable("root1", "admin");
  EXPECT_THAT(Tree(), ElementsAre("root1: admin", "mid1_0: gate", "leaf0_0: host0.0.0",
                                  "leaf1_0: host1.0.0", "N0 = N0: leaf0_0",
                                  "N1 = N1: mid1_0 leaf1_0", "root = C0 C1: root1 N0 N1"));
}

TEST_F(SlurmTopologyTest, SwitchWithHostsInNoGroupStandsRightUnderTheRoot) {
  AddTwoLevelTree(fabric, 1, 2, 1);
  fabric.Switch("root9").Host("h").Cable("root9", "h");
  EXPECT_THAT(Tree(), ElementsAre("leaf0: host0.0", "leaf1: host1.0", "root9: h",
                                  "N0 = N0: leaf0 leaf1", "root: root9 N0"));
}

TEST_F(SlurmTopologyTest, SwitchWithHostsButWithoutLeavesBelowIsALeafOfTheGroupAbove) {
  AddThreeLevelTree(fabric, 1, 1, 1, 1, 1);
  fabric.Switch("short").Host("h").Cable("short", "root0").Cable("short", "h");
  EXPECT_THAT(Tree(), ElementsAre("leaf0_0: host0.0.0", "short: h", "N0 = N0: leaf0_0",
                                  "root = C0: short N0"));
}

TEST_F(SlurmTopologyTest, LeavesAndGroupsWithoutHostsAreLeftOut) {
  AddFourLevelTree();
  fabric.Switch("bare").Cable("bare", "mid000").Cable("bare", "mid001");
  for (const std::string m : {"0", "1"})
    fabric.Switch("bare-mid" + m).Cable("bare-mid" + m, "core0" + m);
  fabric.Switch("bare-leaf").Cable("bare-leaf", "bare-mid0").Cable("bare-leaf", "bare-mid1");
  const auto tree = Tree();
  ASSERT_EQ(result.topology->GetNeighborhoods().back().size(), 5U);
  EXPECT_EQ(tree.size(), 8U + 4U + 2U + 1U);
  EXPECT_THAT(topology.losses, ElementsAre("left out: 2 leaves without hosts, the first is bare"));
}

TEST_F(SlurmTopologyTest, HostOfSeveralLeavesStandsUnderTheOneWithMostOfItsCables) {
  fabric.Switch("root").Switch("leaf0").Switch("leaf1").Switch("leaf2");
  fabric.Host("n1 HCA-1").Host("n1 HCA-2", 2).Host("n2 HCA-1").Host("n2 HCA-2").Host("n0");
  for (const char* leaf : {"leaf0", "leaf1", "leaf2"}) fabric.Cable("root", leaf);
  fabric.Cable("n1 HCA-1", "leaf0").Cable("n1 HCA-2", "leaf1").Cable("n1 HCA-2", "leaf1");
  fabric.Cable("n2 HCA-1", "leaf2").Cable("n2 HCA-2", "leaf0").Cable("n0", "leaf0");
  EXPECT_THAT(Tree(), ElementsAre("leaf0: n0 n2", "leaf1: n1", "root = N0: leaf0 leaf1"));
  EXPECT_EQ(topology.hosts, 3U);
  EXPECT_THAT(topology.losses,
              ElementsAre("put under one switch: 2 hosts with cables to several, the first is n1",
                          "left out: 1 leaf with hosts that stand under others, leaf2"));
}

TEST_F(SlurmTopologyTest, HostOfALeafAndAHigherSwitchStandsUnderTheLeaf) {
  AddTwoLevelTree(fabric, 1, 2, 1);
  fabric.Host("n1 HCA-1").Host("n1 HCA-2").Host("n1 HCA-3");
  fabric.Cable("root0", "n1 HCA-1").Cable("root0", "n1 HCA-2").Cable("leaf1", "n1 HCA-3");
  EXPECT_THAT(Tree(), ElementsAre("leaf0: host0.0", "leaf1: host1.0 n1", "root = N0: leaf0 leaf1"));
  EXPECT_THAT(topology.losses,
              ElementsAre("put under one switch: 1 host with cables to several, n1"));
}

TEST_F(SlurmTopologyTest, WhatIsNoHostOrHasNoNameOrPlaceIsLeftOut) {
  AddTwoLevelTree(fabric, 1, 1, 1);
  NodeSpec special;
  special.type = NodeTypeCA;
  special.name = "special";
  special.numPorts = 1;
  special.special = true;
  fabric.Node(special).Cable("leaf0", "special");
  NodeSpec router;
  router.type = NodeTypeRouter;
  router.name = "router";
  router.numPorts = 1;
  fabric.Node(router).Cable("leaf0", "router");
  fabric.Host("a,b x").Cable("leaf0", "a,b x");
  fabric.Host("unplugged").Host("back-to-back").Cable("unplugged", "back-to-back");
  fabric.Switch("outside").Host("h").Cable("outside", "h");
  EXPECT_THAT(Tree(), ElementsAre("leaf0: host0.0", "root = N0: leaf0"));
  EXPECT_THAT(topology.losses,
              ElementsAre("left out: 1 adapter of a host that Slurm cannot name, \"a,b x\"",
                          "left out: 3 hosts without a cable to a switch of the tree, the first is "
                          "back-to-back"));
}

TEST_F(SlurmTopologyTest, CableThatCountsAtOneEndOnlyStillTellsWhereAHostIs) {
  AddTwoLevelTree(fabric, 1, 1, 1);
  fabric.Host("h").Link("h", 1, "leaf0", 5, false);
  EXPECT_THAT(Tree(), ElementsAre("leaf0: h host0.0", "root = N0: leaf0"));
}

TEST_F(SlurmTopologyTest, TreeWithoutHostsIsEmpty) {
  AddTwoLevelTree(fabric, 1, 2, 0);
  EXPECT_THAT(Tree(), IsEmpty());
  EXPECT_EQ(topology.hosts, 0U);
}

TEST_F(SlurmTopologyTest, SwitchesAreKnownByTheirOwnNamesWhereGroupsAreNotCalledSo) {
  AddTwoLevelTree(fabric, 1, 1, 0);
  fabric.Switch("root").Host("h").Cable("root", "root0").Cable("root", "h");
  EXPECT_THAT(Tree("^root0"),
              ElementsAre("root-0x0000000000000003: h", "root = N0: root-0x0000000000000003"));
  EXPECT_THAT(topology.losses,
              ElementsAre("left out: 1 leaf without hosts, leaf0",
                          "renamed: 1 leaf that Slurm could not take or tell apart, root, now "
                          "root-0x0000000000000003"));
}

TEST_F(SlurmTopologyTest, FileHasALineForEachSwitchAndTellsWhatItWasMadeOf) {
  AddTwoLevelTree(fabric, 1, 3, 1);
  Check("^root");
  topology.switches = {{"leaf0", {}, {"h1", "h2"}, {}},
                       {"leaf1", {}, {"h3"}, {}},
                       {"neighborhood-0", {"neighborhood-0"}, {}, {"leaf0", "leaf1"}},
                       {"connectivity-group-0",
                        {"connectivity-group-0", "connectivity-group-2"},
                        {},
                        {"neighborhood-0"}},
                       {"root", {}, {}, {"connectivity-group-0"}}};
  topology.hosts = 3;
  const auto text = [this] {
    std::ostringstream stream;
    WriteSlurmTopology(result, topology, stream);
    return stream.str();
  };
  result.input = "net\n.topo";
  EXPECT_EQ(text(), "# topology.conf of Slurm, for TopologyPlugin=topology/tree, made by " +
                        std::string(GetToolVersion()) +
                        "\n"
                        "# of net?.topo: hosts 3, leaves 2, levels of switches 2\n"
                        "SwitchName=leaf0 Nodes=h[1-2]\n"
                        "SwitchName=leaf1 Nodes=h3\n"
                        "SwitchName=neighborhood-0 Switches=leaf[0-1]\n"
                        "# connectivity-group-0 stands for connectivity-group-[0,2]\n"
                        "SwitchName=connectivity-group-0 Switches=neighborhood-0\n"
                        "SwitchName=root Switches=connectivity-group-0\n");
  result.input = "-";
  topology.switches = {{"root", {"neighborhood-0"}, {}, {"leaf0"}}};
  EXPECT_EQ(text().substr(text().find("\n# of ")),
            "\n# of <stdin>: hosts 3, leaves 0, levels of switches 2\n"
            "# root stands for neighborhood-0\n"
            "SwitchName=root Switches=leaf0\n");
}

}  // namespace
}  // namespace fabscope::internal
