#include "repair/rank_pair.h"

#include <algorithm>

namespace fabscope::internal {

SwitchesByRank::SwitchesByRank(const std::vector<int>& ranks) : place(ranks.size()) {
  for (std::uint32_t i = 0; i < ranks.size(); ++i) {
    if (ranks[i] < 0) continue;
    const auto rank = static_cast<std::size_t>(ranks[i]);
    if (rank >= switches.size()) switches.resize(rank + 1);
    place[i] = static_cast<std::uint32_t>(switches[rank].size());
    switches[rank].push_back(i);
  }
}

RankPair::RankPair(const SwitchGraph& graph, const std::vector<int>& ranks,
                   const SwitchesByRank& byRank, int upper)
    : spines_{byRank.switches[static_cast<std::size_t>(upper)], {}, {}},
      lines_{byRank.switches[static_cast<std::size_t>(upper) + 1], {}, {}} {
  std::vector<std::uint32_t> far;
  const auto fill = [&](Side& side, int otherRank) {
    side.first.push_back(0);
    for (const std::uint32_t number : side.switches) {
      far.clear();
      for (const std::uint32_t other : graph.FarEndsOf(number)) {
        if (ranks[other] == otherRank) far.push_back(byRank.place[other]);
      }
      if (!std::is_sorted(far.begin(), far.end())) std::sort(far.begin(), far.end());
      for (std::size_t i = 0; i < far.size();) {
        std::size_t end = i + 1;
        while (end < far.size() && far[end] == far[i]) ++end;
        side.links.push_back({far[i], static_cast<std::uint32_t>(end - i)});
        mostCables_ = std::max(mostCables_, side.links.back().count);
        i = end;
      }
      side.first.push_back(static_cast<std::uint32_t>(side.links.size()));
    }
  };
  fill(spines_, upper + 1);
  fill(lines_, upper);
}

}  // namespace fabscope::internal
