#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "repair/switch_graph.h"

namespace fabscope::internal {

// The switches of each rank, as they are numbered.
struct SwitchesByRank {
  // `ranks` by number in the graph; below 0 for those that have none.
  explicit SwitchesByRank(const std::vector<int>& ranks);

  std::vector<std::vector<std::uint32_t>> switches;  // by rank
  std::vector<std::uint32_t> place;                  // by switch: among those of its rank
};

// The cables between a rank and the next one down. Switches are numbered anew, from 0 on each side:
// spines above, lines below, both in the order of the graph.
class RankPair {
 public:
  struct Link {
    std::uint32_t far = 0;    // on the other side
    std::uint32_t count = 0;  // cables between the two, at least 1
  };

  // `ranks` by number in the graph. The pair of `upper` and `upper` + 1.
  RankPair(const SwitchGraph& graph, const std::vector<int>& ranks, const SwitchesByRank& byRank,
           int upper);

  const std::vector<std::uint32_t>& Spines() const { return spines_.switches; }
  const std::vector<std::uint32_t>& Lines() const { return lines_.switches; }
  std::span<const Link> OfSpine(std::uint32_t spine) const { return spines_.Of(spine); }
  std::span<const Link> OfLine(std::uint32_t line) const { return lines_.Of(line); }
  // Between any two of them.
  std::uint32_t MostCables() const { return mostCables_; }

 private:
  struct Side {
    std::vector<std::uint32_t> switches;
    std::vector<std::uint32_t> first;
    std::vector<Link> links;

    std::span<const Link> Of(std::uint32_t i) const {
      return {links.data() + first[i], links.data() + first[i + 1]};
    }
  };

  Side spines_;
  Side lines_;
  std::uint32_t mostCables_ = 0;
};

}  // namespace fabscope::internal
