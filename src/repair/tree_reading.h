#pragma once

#include <vector>

#include "repair/misfits.h"
#include "repair/switch_graph.h"

namespace fabscope::internal {

// What counting misfits and inferring ranks both need of a fabric, found once.
struct TreeReading {
  explicit TreeReading(const IBFabric& fabric) : graph(fabric) {}
  // `links`: those of the fabric.
  TreeReading(const IBFabric& fabric, const TreeLinks& links) : graph(fabric, links) {}

  SwitchGraph graph;
  // Of the ranks that CountMisfits was asked about last and whose groups are not proper, by number
  // in the graph.
  std::vector<int> ranks;
  Misfits misfits;
};

}  // namespace fabscope::internal
