#pragma once

#include <string>

#include "fabric/ib_node.h"

namespace fabscope::internal {

// What people call a node: "switch", "host" or "router".
inline std::string NodeTypeName(const IBNode& node) {
  if (node.nodeType == NodeTypeSwitch) return "switch";
  return node.nodeType == NodeTypeCA ? "host" : "router";
}

}  // namespace fabscope::internal
