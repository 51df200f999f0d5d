#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>
#include <set>
#include <sstream>

#include "fabric/fabric_walk.h"
#include "fat_tree/neighborhood.h"
#include "fat_tree/topology.h"
#include "support/speeds.h"
#include "synthetic/fabric_plan.h"

namespace fabscope::internal {
namespace {

using ::testing::ElementsAre;

std::unique_ptr<IBFabric> BuildPlan(const FabricPlan& plan) {
  FabricBuilder builder;
  plan.Fill(builder);
  return builder.Build();
}

std::vector<std::string> Names(const IBFabric& fabric) {
  std::vector<std::string> names;
  for (const IBNode& node : fabric.GetNodes()) names.emplace_back(node.name);
  return names;
}

std::string Text(const IBPort& port) {
  return std::string(port.node->name) + ":" + std::to_string(port.num);
}

// "name:port-name:port" of every cable, once.
std::vector<std::string> Cables(const IBFabric& fabric) {
  std::vector<std::string> cables;
  for (const IBPort& port : fabric.GetPorts()) {
    if (port.remotePort == nullptr || !IsFirstEnd(port)) continue;
    cables.push_back(Text(port) + "-" + Text(*port.remotePort));
  }
  return cables;
}

TEST(PlanTreeTest, TwoLevelsAreSpinesOverLeavesOverHosts) {
  const auto fabric = BuildPlan(PlanTree({{2, 3}, {1, 2}}, hdr));
  EXPECT_THAT(Names(*fabric),
              ElementsAre("host01", "host02", "host03", "host04", "host05", "host06", "leaf01",
                          "leaf02", "leaf03", "spine01", "spine02"));
  EXPECT_THAT(Cables(*fabric),
              ElementsAre("host01:1-leaf01:1", "host02:1-leaf01:2", "host03:1-leaf02:1",
                          "host04:1-leaf02:2", "host05:1-leaf03:1", "host06:1-leaf03:2",
                          "leaf01:3-spine01:1", "leaf01:4-spine02:1", "leaf02:3-spine01:2",
                          "leaf02:4-spine02:2", "leaf03:3-spine01:3", "leaf03:4-spine02:3"));
}

TEST(PlanTreeTest, ThreeLevelsHavePods) {
  const auto fabric = BuildPlan(PlanTree({{1, 2, 2}, {1, 1, 2}}, hdr));
  EXPECT_THAT(Names(*fabric), ElementsAre("host01", "host02", "host03", "host04", "pod01-agg01",
                                          "pod01-leaf01", "pod01-leaf02", "pod02-agg01",
                                          "pod02-leaf01", "pod02-leaf02", "spine01", "spine02"));
  EXPECT_THAT(Cables(*fabric),
              ElementsAre("host01:1-pod01-leaf01:1", "host02:1-pod01-leaf02:1",
                          "host03:1-pod02-leaf01:1", "host04:1-pod02-leaf02:1",
                          "pod01-agg01:1-pod01-leaf01:2", "pod01-agg01:2-pod01-leaf02:2",
                          "pod01-agg01:3-spine01:1", "pod01-agg01:4-spine02:1",
                          "pod02-agg01:1-pod02-leaf01:2", "pod02-agg01:2-pod02-leaf02:2",
                          "pod02-agg01:3-spine01:2", "pod02-agg01:4-spine02:2"));
}

TEST(PlanTreeTest, ParallelCablesStandSideBySide) {
  TreeShape shape{{1, 2}, {1, 2}};
  shape.parallel = 2;
  EXPECT_THAT(Cables(*BuildPlan(PlanTree(shape, hdr))),
              ElementsAre("host01:1-leaf01:1", "host02:1-leaf02:1", "leaf01:2-spine01:1",
                          "leaf01:3-spine01:2", "leaf01:4-spine02:1", "leaf01:5-spine02:2",
                          "leaf02:2-spine01:3", "leaf02:3-spine01:4", "leaf02:4-spine02:3",
                          "leaf02:5-spine02:4"));
}

TEST(PlanTreeTest, LevelsAboveTheThirdAreNumberedTiers) {
  const FabricPlan plan = PlanTree({{1, 1, 1, 1, 2}, {1, 1, 1, 1, 1}}, hdr);
  std::vector<std::string> names;
  for (const PlannedNode& node : plan.nodes) names.push_back(node.spec.name);
  EXPECT_THAT(names, ElementsAre("spine01", "pod01-tier4-01", "pod02-tier4-01", "pod01-core01",
                                 "pod02-core01", "pod01-agg01", "pod02-agg01", "pod01-leaf01",
                                 "pod02-leaf01", "host01", "host02"));
}

FabricPlan TwoPlanes() { return PlanTree({{1, 2}, {2, 1}, 1, 0, 2}, hdr); }

TEST(PlanTreeTest, OnTwoPlanesSwitchesHaveTwoChipsAndHostsTwiceThePorts) {
  EXPECT_THAT(Cables(*BuildPlan(TwoPlanes())),
              ElementsAre("host01:1-leaf01/U1:1", "host01:2-leaf01/U2:1", "host01:3-leaf02/U1:1",
                          "host01:4-leaf02/U2:1", "host02:1-leaf03/U1:1", "host02:2-leaf03/U2:1",
                          "host02:3-leaf04/U1:1", "host02:4-leaf04/U2:1",
                          "leaf01/U1:2-spine01/U1:1", "leaf01/U2:2-spine01/U2:1",
                          "leaf02/U1:2-spine02/U1:1", "leaf02/U2:2-spine02/U2:1",
                          "leaf03/U1:2-spine01/U1:2", "leaf03/U2:2-spine01/U2:2",
                          "leaf04/U1:2-spine02/U1:2", "leaf04/U2:2-spine02/U2:2"));
}

TEST(PlanTreeTest, TheChipsOfASystemAreOfTheMultiAsicFamilyEachOnItsPlane) {
  const auto fabric = BuildPlan(TwoPlanes());
  std::map<std::string_view, const IBNode*> nodes;
  for (const IBNode& node : fabric->GetNodes()) nodes[node.name] = &node;
  for (const int plane : {1, 2}) {
    const IBNode& chip = *nodes.at("spine02/U" + std::to_string(plane));
    EXPECT_TRUE(chip.isVortaSwitch());
    EXPECT_EQ(chip.getVortaSwitchASIC(), std::to_string(plane));
    EXPECT_EQ(chip.getPlanesNumber(), 2);
    EXPECT_EQ(chip.getSuitablePlane(), plane);
    EXPECT_THAT(chip.GetPlanes(), ElementsAre(plane));
    EXPECT_EQ(chip.systemGuid, nodes.at("spine02/U1")->guid);
  }
  EXPECT_NE(nodes.at("spine01/U1")->systemGuid, nodes.at("spine02/U1")->systemGuid);
  EXPECT_FALSE(nodes.at("host01")->isVortaSwitch());
  EXPECT_EQ(nodes.at("host01")->getPlanesNumber(), 2);
}

TEST(PlanTreeTest, ThePortsOfACableOnAllPlanesAreOneAggregatedPortAtEachEnd) {
  const auto fabric = BuildPlan(TwoPlanes());
  std::map<const APort*, std::vector<std::string>> members;
  for (const IBPort& port : fabric->GetPorts()) {
    ASSERT_NE(port.GetAPort(), nullptr);
    EXPECT_EQ(port.GetAPort()->asymmetry, 0U);
    EXPECT_EQ(port.GetPlaneMultiplicity(), 2);
    const std::string group =
        port.GetGroup() ? " of group " + std::to_string(port.GetGroup()->number) : "";
    members[port.GetAPort()].push_back(Text(port) + group);
  }
  std::set<std::vector<std::string>> aports;
  for (const auto& [aport, ports] : members) aports.insert(ports);
  EXPECT_THAT(
      aports,
      ElementsAre(
          ElementsAre("host01:1 of group 1", "host01:2 of group 1"),
          ElementsAre("host01:3 of group 2", "host01:4 of group 2"),
          ElementsAre("host02:1 of group 1", "host02:2 of group 1"),
          ElementsAre("host02:3 of group 2", "host02:4 of group 2"),
          ElementsAre("leaf01/U1:1", "leaf01/U2:1"), ElementsAre("leaf01/U1:2", "leaf01/U2:2"),
          ElementsAre("leaf02/U1:1", "leaf02/U2:1"), ElementsAre("leaf02/U1:2", "leaf02/U2:2"),
          ElementsAre("leaf03/U1:1", "leaf03/U2:1"), ElementsAre("leaf03/U1:2", "leaf03/U2:2"),
          ElementsAre("leaf04/U1:1", "leaf04/U2:1"), ElementsAre("leaf04/U1:2", "leaf04/U2:2"),
          ElementsAre("spine01/U1:1", "spine01/U2:1"), ElementsAre("spine01/U1:2", "spine01/U2:2"),
          ElementsAre("spine02/U1:1", "spine02/U2:1"),
          ElementsAre("spine02/U1:2", "spine02/U2:2")));
}

TEST(PlanTreeTest, OnOnePlaneNothingIsAggregated) {
  const auto fabric = BuildPlan(PlanTree({{1, 2}, {2, 1}}, hdr));
  EXPECT_TRUE(fabric->GetAPorts().empty());
  for (const IBPort& port : fabric->GetPorts()) EXPECT_EQ(port.GetPlaneMultiplicity(), 1);
  for (const IBNode& node : fabric->GetNodes()) EXPECT_FALSE(node.isVortaSwitch());
}

TEST(PlanTreeTest, EveryChipHasAGuidOfItsOwnOnTheWidestAndHighestTree) {
  const FabricPlan plan =
      PlanTree({{2, 2, 2, 2, 2, 2, 2, 2}, {1, 2, 2, 2, 2, 2, 2, 2}, 1, 0, 16}, hdr);
  std::set<std::uint64_t> guids;
  std::size_t chips = 0;
  for (std::size_t i = 0; i < plan.nodes.size(); ++i) {
    for (unsigned plane = 1; plane <= (plan.IsSwitch(i) ? 16U : 1U); ++plane, ++chips) {
      guids.insert(plan.NodeOnPlane(i, plane).guid);
    }
  }
  EXPECT_EQ(guids.size(), chips);
}

TEST(PlanTreeTest, RanksAndFlidsAreGivenOnRequest) {
  FabricPlan plan = PlanTree({{1, 2, 2}, {1, 1, 1}}, hdr);
  const auto told = [&plan] {
    std::vector<std::string> lines;
    for (const PlannedNode& node : plan.nodes) {
      std::string line = node.spec.name + " " + std::to_string(node.spec.smdbRank);
      for (const std::uint16_t flid : node.spec.flids) line += " " + std::to_string(flid);
      lines.push_back(line);
    }
    return lines;
  };
  EXPECT_THAT(told(),
              ElementsAre("spine01 255", "pod01-agg01 255", "pod02-agg01 255", "pod01-leaf01 255",
                          "pod01-leaf02 255", "pod02-leaf01 255", "pod02-leaf02 255", "host01 255",
                          "host02 255", "host03 255", "host04 255"));
  plan.GiveRanks();
  ASSERT_EQ(plan.GiveFlids(), std::nullopt);
  EXPECT_THAT(told(),
              ElementsAre("spine01 0", "pod01-agg01 1", "pod02-agg01 1", "pod01-leaf01 2 1 2",
                          "pod01-leaf02 2 1 2", "pod02-leaf01 2 3 4", "pod02-leaf02 2 3 4",
                          "host01 255", "host02 255", "host03 255", "host04 255"));
}

TEST(PlanTreeTest, ThereAreFlidsForSoManyGroupsAndNoMore) {
  FabricPlan plan = PlanTree({{1, 1, 129, 190}, {1, 1, 1, 1}}, hdr);  // 24,510 groups
  EXPECT_EQ(plan.GiveFlids(), std::nullopt);
  FabricPlan greater = PlanTree({{1, 1, 128, 192}, {1, 1, 1, 1}}, hdr);  // 24,576
  EXPECT_EQ(greater.GiveFlids(),
            "there are more groups of leaves than FLIDs for them: a fabric has 49151");
}

TEST(PlanTreeTest, NumbersAreAsWideAsTheGreatest) {
  const FabricPlan plan = PlanTree({{2, 60}, {1, 2}}, hdr);
  std::set<std::string> names;
  for (const PlannedNode& node : plan.nodes) names.insert(node.spec.name);
  EXPECT_TRUE(names.contains("host001") && names.contains("host120"));
  EXPECT_TRUE(names.contains("leaf01") && names.contains("leaf60"));
  EXPECT_EQ(names.size(), plan.nodes.size());
}

TEST(PlanTreeTest, EveryHeightIsACleanTreeOfItsRanks) {
  const std::vector<TreeShape> shapes{{{2, 5}, {1, 3}},
                                      {{3, 2, 4}, {1, 2, 3}},
                                      {{2, 2, 2, 3}, {1, 2, 2, 2}},
                                      {{4, 4, 8}, {1, 4, 4}}};
  for (const TreeShape& shape : shapes) {
    const FabricPlan plan = PlanTree(shape, hdr);
    const auto fabric = BuildPlan(plan);
    std::ostringstream output;
    std::vector<FabricErrGeneral*> errors;
    std::string message;
    FTTopology topology(fabric.get(), &output, 70);
    ASSERT_EQ(topology.Build(errors, message, 10, 2), 0) << message;
    ASSERT_EQ(topology.Validate(errors, message), 0) << message;
    EXPECT_TRUE(errors.empty());
    EXPECT_EQ(topology.GetIssuesCount(), 0U);
    for (const PlannedNode& node : plan.nodes) {
      EXPECT_EQ(topology.GetNodeRank(fabric->getNodeByGuid(node.spec.guid)), node.rank)
          << node.spec.name;
    }
  }
}

TEST(PlanTreeTest, LeafGroupsAreTheNeighborhoods) {
  for (const TreeShape& shape :
       {TreeShape{{2, 5}, {1, 3}}, TreeShape{{1, 3, 4}, {1, 2, 2}}, TreeShape{{1, 3, 4}, {2, 2, 2}},
        TreeShape{{1, 2, 2, 3}, {1, 2, 2, 2}}}) {
    const FabricPlan plan = PlanTree(shape, hdr);
    const auto fabric = BuildPlan(plan);
    std::map<std::set<const IBNode*>, std::set<std::size_t>> groupsByParents;
    std::set<std::size_t> groups;
    for (const PlannedNode& node : plan.nodes) {
      if (node.rank != plan.levels - 1) continue;
      std::set<const IBNode*> parents;
      for (const IBPort& port : fabric->getNodeByGuid(node.spec.guid)->ports) {
        const IBNode* parent = port.get_remote_node();
        if (parent != nullptr && parent->nodeType == NodeTypeSwitch) parents.insert(parent);
      }
      groupsByParents[parents].insert(node.leafGroup);
      groups.insert(node.leafGroup);
    }
    EXPECT_EQ(groups.size(), groupsByParents.size());
    for (const auto& [parents, ids] : groupsByParents) EXPECT_EQ(ids.size(), 1U);
  }
}

}  // namespace
}  // namespace fabscope::internal
