#include "repair/tree_groups.h"

#include <algorithm>
#include <utility>

namespace fabscope {

TreeGroups::TreeGroups(const SwitchGraph& switchGraph, std::vector<int> ranksOfSwitches)
    : graph(switchGraph), ranks(std::move(ranksOfSwitches)), place(graph.Count()) {
  int last = -1;
  for (const int rank : ranks) last = std::max(last, rank);
  std::vector<std::uint32_t> count(static_cast<std::size_t>(last + 1));
  for (std::uint32_t i = 0; i < graph.Count(); ++i) {
    if (ranks[i] >= 0) place[i] = count[static_cast<std::size_t>(ranks[i])]++;
  }
  for (int upper = 0; upper < last; ++upper) {
    pairs.emplace_back(graph, ranks, upper);
    groupings.push_back(FindGroups(pairs.back()));
  }
}

}  // namespace fabscope
