#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "repair/neighbor_lists.h"
#include "repair/switch_heights.h"

namespace fabscope::internal {

// How alike switches are by their neighbors: 0 with none in common, 1 with all. Heights must stay
// as they are while this is asked.
class NeighborLikeness {
 public:
  NeighborLikeness(const SwitchGraph& graph, const NeighborLists& neighbors,
                   const Heights& heights);

  // To the most similar other switch of a height. Where that is less than `enough`, the answer is
  // only some number below `enough`.
  double To(std::uint32_t i, int height, double enough);
  // The same to the switches two heights below, always with the same `enough`. Many switches have
  // the same neighbors, and so the same answer.
  double ToThoseBelow(std::uint32_t i, double enough);

 private:
  // How often at most one switch is counted for this neighbor: once, and once more for each
  // parallel cable.
  std::size_t MostShared(std::uint32_t neighbor) const {
    return 1 + graph_.CablesOf(neighbor).size() - neighbors_.Of(neighbor).size();
  }

  const SwitchGraph& graph_;
  const NeighborLists& neighbors_;
  const Heights& heights_;
  std::vector<std::uint32_t> common_;  // by switch: neighbors in common; 0 between uses
  std::vector<std::uint32_t> lastAt_;  // by first neighbor: who was asked for last, or none
  std::vector<double> likeness_;       // by switch that was asked for
};

}  // namespace fabscope::internal
