#include "check/checked_tree.h"

#include <utility>
#include <vector>

#include "fat_tree/status.h"

namespace fabscope::internal {
namespace {

int BuildFromRoots(FTTopology& topology, const TreeRanks& ranks, std::string& message) {
  NodeSet roots;
  for (const IBNode* node : topology.GetFabric().switches) {
    if (ranks.ofNode[node->index] == 0) roots.insert(node);
  }
  std::vector<FabricErrGeneral*> none;
  return topology.Build(none, message, roots);
}

}  // namespace

CheckedTree CheckTree(const IBFabric& fabric, const TreeRanks& ranks, int mergePercent) {
  CheckedTree tree;
  tree.stream = std::make_unique<std::ostringstream>();
  tree.topology = std::make_unique<FTTopology>(&fabric, tree.stream.get(), mergePercent);
  FTTopology& topology = *tree.topology;
  if (BuildFromRoots(topology, ranks, tree.problem) != StatusSuccess) return tree;
  topology.SetFindingSink([&tree](Finding&& finding) { tree.findings.Add(std::move(finding)); });
  std::vector<FabricErrGeneral*> none;  // there is a sink for them
  if (topology.Validate(none, tree.problem) == StatusSuccess) tree.problem.clear();
  topology.SetFindingSink(nullptr);
  tree.issues = topology.GetIssuesCount();
  return tree;
}

TreeRanks RanksOf(const FTTopology& topology) {
  const IBFabric& fabric = topology.GetFabric();
  TreeRanks ranks{std::vector<int>(fabric.GetNodes().size(), TreeRanks::none),
                  static_cast<int>(topology.GetRanks().size())};
  for (const IBNode* node : fabric.switches) ranks.ofNode[node->index] = topology.GetNodeRank(node);
  return ranks;
}

}  // namespace fabscope::internal
