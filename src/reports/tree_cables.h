#pragma once

#include <algorithm>
#include <cstdint>

#include "fat_tree/topology.h"

namespace fabscope::internal {

// Whether a cable is to be taken from this of its two ends. Both know of it, but for one that
// counts at one end only.
inline bool IsEndToTake(const FTTopology& topology, const IBNode& node, const TreeLink& link) {
  const bool isFirst =
      node.index < link.remote || (node.index == link.remote && link.port <= link.remotePort);
  if (isFirst) return true;
  const auto back = topology.GetTreeLinks().Of(topology.GetFabric().GetNodes()[link.remote]);
  return std::none_of(back.begin(), back.end(),
                      [&](const TreeLink& other) { return other.port == link.remotePort; });
}

// Calls take(node, link) once for every cable between switches that counts for the tree, in the
// order of the model and then of ports.
template <typename Take>
void ForEachTreeCable(const FTTopology& topology, Take take) {
  for (const IBNode* node : topology.GetFabric().switches) {
    for (const TreeLink& link : topology.GetTreeLinks().Of(*node)) {
      if (IsEndToTake(topology, *node, link)) take(*node, link);
    }
  }
}

}  // namespace fabscope::internal
