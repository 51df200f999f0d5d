#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>
#include <set>
#include <sstream>

#include "fat_tree/neighborhood.h"
#include "fat_tree/topology.h"
#include "synthetic/fabric_plan.h"

namespace fabscope {
namespace {

using ::testing::ElementsAre;

constexpr std::uint32_t hdr = 0x400;

std::unique_ptr<IBFabric> BuildPlan(const FabricPlan& plan) {
  FabricBuilder builder;
  plan.Fill(builder);
  return builder.Build();
}

std::vector<std::string> Names(const IBFabric& fabric) {
  std::vector<std::string> names;
  for (const IBNode& node : fabric.GetNodes()) names.push_back(node.name);
  return names;
}

// "name:port-name:port" of every cable, once.
std::vector<std::string> Cables(const IBFabric& fabric) {
  std::vector<std::string> cables;
  for (const IBPort& port : fabric.GetPorts()) {
    if (port.remotePort == nullptr || &port > port.remotePort) continue;
    cables.push_back(port.node->name + ":" + std::to_string(port.num) + "-" +
                     port.remotePort->node->name + ":" + std::to_string(port.remotePort->num));
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
      for (const IBPort* port : fabric->getNodeByGuid(node.spec.guid)->ports) {
        if (port == nullptr || port->get_remote_node() == nullptr) continue;
        if (port->get_remote_node()->nodeType == NodeTypeSwitch) {
          parents.insert(port->get_remote_node());
        }
      }
      groupsByParents[parents].insert(node.leafGroup);
      groups.insert(node.leafGroup);
    }
    EXPECT_EQ(groups.size(), groupsByParents.size());
    for (const auto& [parents, ids] : groupsByParents) EXPECT_EQ(ids.size(), 1U);
  }
}

}  // namespace
}  // namespace fabscope
