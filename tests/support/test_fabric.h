#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "fabric/fabric_builder.h"

namespace fabscope::internal {

// A tiny fabric written down in a test. Nodes are known by name and stand in the model in the order
// in which they are added; GUIDs are 1, 2, 3, ... unless a spec gives one. A mistake in the
// description fails the test at once.
//
//   TestFabric fabric;
//   fabric.Switch("root").Switch("leaf").Host("h1");
//   fabric.Cable("root", "leaf").Link("leaf", 7, "h1", 1);
//   const IBNode* leaf = fabric["leaf"];
class TestFabric {
 public:
  TestFabric& Switch(const std::string& name, std::uint8_t numPorts = 16);
  TestFabric& SwitchOfGuid(std::uint64_t guid, const std::string& name,
                           std::vector<std::uint16_t> flids = {});
  TestFabric& Host(const std::string& name, std::uint8_t numPorts = 1);
  TestFabric& Node(NodeSpec spec);  // guid 0: the next number

  TestFabric& Link(const std::string& a, std::uint8_t aPort, const std::string& b,
                   std::uint8_t bPort, bool symmetric = true, std::uint32_t speed = 0x400);
  // Both ends at the lowest port that has no link yet.
  TestFabric& Cable(const std::string& a, const std::string& b, std::uint32_t speed = 0x400);
  TestFabric& Port(const std::string& node, const PortSpec& spec);
  TestFabric& AggregatedPort(const std::vector<std::pair<std::string, std::uint8_t>>& ports,
                             std::uint64_t asymmetry);

  // Ends the description; the fabric lives as long as this object.
  IBFabric& Build();
  // A node of the built fabric (builds it if need be).
  const IBNode* operator[](const std::string& name);

 private:
  std::uint8_t NextFreePort(const std::string& name);

  FabricBuilder builder_;
  std::map<std::string, std::pair<std::uint64_t, std::uint8_t>> nodes_;  // GUID, port count
  std::unique_ptr<IBFabric> fabric_;
};

// Clean trees. Names are "root<i>", "mid<pod>.<i>", "leaf<pod>.<i>" and "host<pod>.<leaf>.<i>";
// nodes stand in the model in that order: roots, mids, leaves, hosts.

// Every leaf ("leaf0", ...) is cabled to every root.
void AddTwoLevelTree(TestFabric& fabric, int roots, int leaves, int hostsPerLeaf);
// Every leaf is cabled to every mid of its pod; mid m of every pod to the roots of group m
// ("root<m * rootsPerGroup + i>").
void AddThreeLevelTree(TestFabric& fabric, int pods, int leavesPerPod, int midsPerPod,
                       int rootsPerGroup, int hostsPerLeaf);

}  // namespace fabscope::internal
