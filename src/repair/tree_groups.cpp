#include "repair/tree_groups.h"

#include <utility>

namespace fabscope::internal {

TreeGroups::TreeGroups(const SwitchGraph& switchGraph, std::vector<int> ranksOfSwitches)
    : graph(switchGraph), ranks(std::move(ranksOfSwitches)) {
  SwitchesByRank byRank(ranks);
  for (std::size_t upper = 0; upper + 1 < byRank.switches.size(); ++upper) {
    pairs.emplace_back(graph, ranks, byRank, static_cast<int>(upper));
    groupings.push_back(FindGroups(pairs.back()));
  }
  place = std::move(byRank.place);
}

}  // namespace fabscope::internal
