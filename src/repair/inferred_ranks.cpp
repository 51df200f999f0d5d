// Ranks count from the roots, heights from the leaves: what hangs together is turned over.

#include "repair/inferred_ranks.h"

#include <algorithm>
#include <map>
#include <vector>

#include "repair/switch_graph.h"
#include "repair/switch_heights.h"

namespace fabscope::internal {
namespace {

// By switch: the number of the part of the fabric that hangs together.
std::vector<std::uint32_t> FindParts(const SwitchGraph& graph, std::uint32_t& count) {
  std::vector<std::uint32_t> part(graph.Count(), SwitchGraph::none);
  std::vector<std::uint32_t> open;
  count = 0;
  for (std::uint32_t first = 0; first < graph.Count(); ++first) {
    if (part[first] != SwitchGraph::none) continue;
    part[first] = count;
    open.push_back(first);
    while (!open.empty()) {
      const std::uint32_t i = open.back();
      open.pop_back();
      for (const std::uint32_t other : graph.FarEndsOf(i)) {
        if (part[other] != SwitchGraph::none) continue;
        part[other] = count;
        open.push_back(other);
      }
    }
    ++count;
  }
  return part;
}

}  // namespace

TreeRanks InferRanks(const IBFabric& fabric) { return InferRanks(fabric, TreeReading(fabric)); }

TreeRanks InferRanks(const IBFabric& fabric, const TreeReading& reading) {
  const SwitchGraph& graph = reading.graph;
  TreeRanks ranks;
  ranks.ofNode.assign(fabric.GetNodes().size(), TreeRanks::none);
  if (graph.Count() == 0) return ranks;
  const Heights heights = FindHeights(reading);
  std::uint32_t partCount = 0;
  const std::vector<std::uint32_t> part = FindParts(graph, partCount);
  std::vector<std::uint32_t> size(partCount);
  std::vector<int> top(partCount, UnknownHeight);
  for (std::uint32_t i = 0; i < graph.Count(); ++i) {
    ++size[part[i]];
    top[part[i]] = std::max(top[part[i]], heights[i]);
  }
  const auto largest =
      static_cast<std::size_t>(std::max_element(size.begin(), size.end()) - size.begin());
  // A piece that faults cut off is as high as the tree that it was cut from.
  for (std::size_t i = 0; i < partCount; ++i) {
    if (top[i] != UnknownHeight && 2 * size[i] < size[largest])
      top[i] = std::max(top[i], top[largest]);
  }
  const auto rankOf = [&](std::uint32_t i) { return top[part[i]] - heights[i]; };
  // Where much is wrong, no switch may be left at a height between two others.
  std::map<int, int> levels;
  for (std::uint32_t i = 0; i < graph.Count(); ++i) {
    if (heights[i] != UnknownHeight) levels.emplace(rankOf(i), 0);
  }
  for (auto& [rank, level] : levels) level = ranks.levels++;
  for (std::uint32_t i = 0; i < graph.Count(); ++i) {
    if (heights[i] != UnknownHeight) ranks.ofNode[graph.NodeOf(i).index] = levels.at(rankOf(i));
  }
  return ranks;
}

}  // namespace fabscope::internal
