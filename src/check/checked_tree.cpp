#include "check/checked_tree.h"

#include <utility>
#include <vector>

#include "fat_tree/status.h"

namespace fabscope {
namespace {

int BuildFromRoots(FTTopology& topology, const TreeRanks& ranks,
                   std::vector<FabricErrGeneral*>& records, std::string& message) {
  NodeSet roots;
  for (const IBNode* node : topology.GetFabric().switches) {
    if (ranks.ofNode[node->index] == 0) roots.insert(node);
  }
  return topology.Build(records, message, roots);
}

}  // namespace

CheckedTree CheckTree(const IBFabric& fabric, const TreeRanks& ranks, int mergePercent) {
  CheckedTree tree;
  tree.stream = std::make_unique<std::ostringstream>();
  tree.topology = std::make_unique<FTTopology>(&fabric, tree.stream.get(), mergePercent);
  FTTopology& topology = *tree.topology;
  std::vector<FabricErrGeneral*> records;
  if (BuildFromRoots(topology, ranks, records, tree.problem) != StatusSuccess) return tree;
  topology.SetFindingSink(
      [&tree](Finding&& finding) { tree.findings.push_back(std::move(finding)); });
  if (topology.Validate(records, tree.problem) == StatusSuccess) tree.problem.clear();
  topology.SetFindingSink(nullptr);
  tree.records = records.size();
  tree.issues = topology.GetIssuesCount();
  for (FabricErrGeneral* record : records) const std::unique_ptr<FabricErrGeneral> owner(record);
  return tree;
}

TreeRanks RanksOf(const FTTopology& topology) {
  const IBFabric& fabric = topology.GetFabric();
  TreeRanks ranks{std::vector<int>(fabric.GetNodes().size(), TreeRanks::none),
                  static_cast<int>(topology.GetRanks().size())};
  for (const IBNode* node : fabric.switches) ranks.ofNode[node->index] = topology.GetNodeRank(node);
  return ranks;
}

}  // namespace fabscope
