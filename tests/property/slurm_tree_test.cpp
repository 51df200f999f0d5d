// What Slurm insists on, whatever the fabric: names that are unique, nodes that stand once,
// switches that lead somewhere and have one parent.

#include <algorithm>
#include <gtest/gtest.h>
#include <map>
#include <set>
#include <sstream>
#include <string>

#include "property/stage_run.h"
#include "reports/slurm_topology.h"

namespace fabscope::internal {
namespace {

using reference::RandomCase;

constexpr std::uint64_t firstSeed = 60'000;
constexpr std::uint64_t seeds = 1'000;
constexpr int leastTrees = 300;

// Calls check(run, topology) for validated trees on which there is a host.
template <typename Check>
void ForEachTree(Check check) {
  int trees = 0;
  for (std::uint64_t seed = firstSeed; seed < firstSeed + seeds; ++seed) {
    SCOPED_TRACE(seed);
    StageRun run(RandomCase(seed));
    if (!run.RunAll()) continue;
    const SlurmTopology topology = MakeSlurmTopology(*run.topology);
    if (topology.switches.empty()) continue;
    ++trees;
    check(run, topology);
    if (testing::Test::HasFailure()) return;
  }
  EXPECT_GE(trees, leastTrees);
}

// The host of an adapter, or nothing where its name is none.
std::string HostOf(const IBNode& node) {
  constexpr const char* letters =
      "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-_.";
  std::string word;
  std::istringstream(std::string(node.name)) >> word;
  return word.find_first_not_of(letters) == std::string::npos ? word : std::string();
}

// Switches with a rank by the hosts that are cabled to them.
std::map<std::string, std::set<const IBNode*>> SwitchesOfHosts(const StageRun& run) {
  std::map<std::string, std::set<const IBNode*>> switches;
  for (const IBPort& port : run.model->GetPorts()) {
    const IBNode* far = port.get_remote_node();
    if (port.node->nodeType != NodeTypeCA || port.node->isSpecialNode()) continue;
    const std::string host = HostOf(*port.node);
    if (host.empty() || far == nullptr || run.topology->GetNodeRank(far) < 0) continue;
    switches[host].insert(far);
  }
  return switches;
}

TEST(SlurmTreePropertyTest, EveryHostOfTheTreeStandsOnce) {
  ForEachTree([](const StageRun& run, const SlurmTopology& topology) {
    std::multiset<std::string> placed;
    for (const auto& entry : topology.switches) {
      placed.insert(entry.hosts.begin(), entry.hosts.end());
    }
    std::multiset<std::string> expected;
    for (const auto& [host, switches] : SwitchesOfHosts(run)) expected.insert(host);
    EXPECT_EQ(placed, expected);
    EXPECT_EQ(topology.hosts, expected.size());
  });
}

TEST(SlurmTreePropertyTest, EverySwitchButTheRootHasOneParentBehindIt) {
  ForEachTree([](const StageRun&, const SlurmTopology& topology) {
    std::map<std::string, int> parents;
    for (const auto& entry : topology.switches) {
      EXPECT_NE(entry.hosts.empty(), entry.switches.empty()) << entry.name;
      for (const std::string& name : entry.switches) {
        ASSERT_TRUE(parents.contains(name)) << name << " stands before " << entry.name;
        ++parents[name];
      }
      EXPECT_TRUE(parents.emplace(entry.name, 0).second) << entry.name << " stands twice";
    }
    EXPECT_EQ(topology.switches.back().name, "root");
    for (const auto& [name, count] : parents) EXPECT_EQ(count, name == "root" ? 0 : 1) << name;
  });
}

TEST(SlurmTreePropertyTest, HostsOfALeafAreBelowItsNeighborhood) {
  std::size_t hosts = 0;
  ForEachTree([&](const StageRun& run, const SlurmTopology& topology) {
    std::map<std::string, const SlurmTopology::Switch*> parents;  // by host and by switch
    for (const auto& entry : topology.switches) {
      for (const std::string& host : entry.hosts) parents["host " + host] = &entry;
      for (const std::string& name : entry.switches) parents[name] = &entry;
    }
    std::map<const IBNode*, std::string> neighborhoods;
    for (const FTNeighborhood* group : run.topology->GetNeighborhoods().back()) {
      const std::string name = "neighborhood-" + std::to_string(group->GetId());
      for (const IBNode* line : group->GetLines()) neighborhoods[line] = name;
    }
    for (const auto& [host, switches] : SwitchesOfHosts(run)) {
      const auto at = neighborhoods.find(*switches.begin());
      if (switches.size() > 1 || at == neighborhoods.end()) continue;
      const auto& groups = parents.at(parents.at("host " + host)->name)->groups;
      EXPECT_NE(std::find(groups.begin(), groups.end(), at->second), groups.end()) << host;
      ++hosts;
    }
  });
  EXPECT_GE(hosts, 1'000U);
}

}  // namespace
}  // namespace fabscope::internal
