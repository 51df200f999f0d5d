#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "repair/switch_graph.h"

namespace fabscope::internal {

// The switches that each switch of a graph is cabled to, each once and in ascending order.
class NeighborLists {
 public:
  explicit NeighborLists(const SwitchGraph& graph) : first_(graph.Count()), count_(graph.Count()) {
    std::size_t all = 0;
    for (std::uint32_t i = 0; i < graph.Count(); ++i) {
      first_[i] = all;
      all += graph.CablesOf(i).size();
    }
    neighbors_.resize(all);
    for (std::uint32_t i = 0; i < graph.Count(); ++i) {
      for (const std::uint32_t other : graph.FarEndsOf(i)) {
        const auto known = Of(other);
        if (known.empty() || known.back() != i) neighbors_[first_[other] + count_[other]++] = i;
      }
    }
  }

  std::span<const std::uint32_t> Of(std::uint32_t i) const {
    return {neighbors_.data() + first_[i], count_[i]};
  }

 private:
  std::vector<std::uint32_t> neighbors_;
  std::vector<std::size_t> first_;    // by switch
  std::vector<std::uint32_t> count_;  // likewise
};

}  // namespace fabscope::internal
