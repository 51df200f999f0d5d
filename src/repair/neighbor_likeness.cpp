#include "repair/neighbor_likeness.h"

#include <algorithm>
#include <span>
#include <utility>

namespace fabscope::internal {

NeighborLikeness::NeighborLikeness(const SwitchGraph& graph, const NeighborLists& neighbors,
                                   const Heights& heights)
    : graph_(graph),
      neighbors_(neighbors),
      heights_(heights),
      common_(graph.Count()),
      lastAt_(graph.Count(), SwitchGraph::none),
      likeness_(graph.Count()) {}

double NeighborLikeness::To(std::uint32_t i, int height, double enough) {
  std::vector<std::uint32_t> touched;
  const std::span<const std::uint32_t> neighbors = neighbors_.Of(i);
  std::uint32_t most = 0;
  std::size_t left = 0;
  for (const std::uint32_t neighbor : neighbors) left += MostShared(neighbor);
  // What is counted more than once makes what both have together seem less.
  const std::size_t extra = left - neighbors.size();
  const std::size_t leastAll = neighbors.size() > extra ? neighbors.size() - extra : 0;
  for (const std::uint32_t neighbor : neighbors) {
    if (static_cast<double>(most + left) < enough * static_cast<double>(leastAll)) break;
    left -= MostShared(neighbor);
    std::uint32_t last = i;  // parallel cables stand together where ports are cabled in order
    for (const std::uint32_t twin : graph_.FarEndsOf(neighbor)) {
      if (twin == i || twin == last || heights_[twin] != height) continue;
      last = twin;
      if (common_[twin]++ == 0) touched.push_back(twin);
      most = std::max(most, common_[twin]);
    }
  }
  double best = 0;
  for (const std::uint32_t twin : touched) {
    const double shared = std::min<double>(common_[twin], static_cast<double>(neighbors.size()));
    const double all = static_cast<double>(neighbors.size() + neighbors_.Of(twin).size()) - shared;
    if (all > 0) best = std::max(best, shared / all);
    common_[twin] = 0;
  }
  return best;
}

double NeighborLikeness::ToThoseBelow(std::uint32_t i, double enough) {
  const std::span<const std::uint32_t> neighbors = neighbors_.Of(i);
  if (neighbors.empty()) return 0;
  const std::uint32_t other = std::exchange(lastAt_[neighbors.front()], i);
  const bool isSame = other != SwitchGraph::none && heights_[other] == heights_[i] &&
                      std::ranges::equal(neighbors_.Of(other), neighbors);
  likeness_[i] = isSame ? likeness_[other] : To(i, heights_[i] - 2, enough);
  return likeness_[i];
}

}  // namespace fabscope::internal
