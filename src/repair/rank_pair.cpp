#include "repair/rank_pair.h"

#include <algorithm>

namespace fabscope {

RankPair::RankPair(const SwitchGraph& graph, const std::vector<int>& ranks, int upper) {
  std::vector<std::uint32_t> place(graph.Count());
  for (std::uint32_t i = 0; i < graph.Count(); ++i) {
    if (ranks[i] != upper && ranks[i] != upper + 1) continue;
    Side& side = ranks[i] == upper ? spines_ : lines_;
    place[i] = static_cast<std::uint32_t>(side.switches.size());
    side.switches.push_back(i);
  }
  std::vector<std::uint32_t> far;
  const auto fill = [&](Side& side, int otherRank) {
    side.first.push_back(0);
    for (const std::uint32_t number : side.switches) {
      far.clear();
      for (const std::uint32_t other : graph.FarEndsOf(number)) {
        if (ranks[other] == otherRank) far.push_back(place[other]);
      }
      if (!std::is_sorted(far.begin(), far.end())) std::sort(far.begin(), far.end());
      for (std::size_t i = 0; i < far.size();) {
        std::size_t end = i + 1;
        while (end < far.size() && far[end] == far[i]) ++end;
        side.links.push_back({far[i], static_cast<std::uint32_t>(end - i)});
        i = end;
      }
      cableCount_ += far.size();
      side.first.push_back(static_cast<std::uint32_t>(side.links.size()));
    }
  };
  fill(spines_, upper + 1);
  fill(lines_, upper);
  cableCount_ /= 2;
}

}  // namespace fabscope
