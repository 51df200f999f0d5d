#pragma once

#include <algorithm>
#include <functional>
#include <set>
#include <vector>

#include "fabric/ib_node.h"

namespace fabscope::internal {

// Switches ordered by address, which is model order. Every walk of the stage over switches follows
// it, so it decides the order of all output.
using NodeSet = std::set<const IBNode*>;

// Adds many nodes in one go. In order, each finds its place beside the one before.
inline void AddNodes(std::vector<const IBNode*> nodes, NodeSet& set) {
  const std::less<> before;
  std::sort(nodes.begin(), nodes.end(), before);
  auto next = set.begin();
  for (const IBNode* node : nodes) {
    while (next != set.end() && before(*next, node)) ++next;
    next = std::next(set.insert(next, node));
  }
}

}  // namespace fabscope::internal
