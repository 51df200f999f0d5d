#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <string_view>

#include "fabric/ib_node.h"

namespace fabscope::internal {

// How formats speak of a kind of node.
struct NodeKind {
  std::uint8_t type;         // as in NodeInfo
  std::string_view name;     // in documents and graphs
  std::string_view word;     // in dumps, at the start of its record
  std::string_view guidKey;  // on the line before
  char letter;               // before its GUID in the quotes
};

// In the order of their records in a dump.
inline constexpr std::array<NodeKind, 3> nodeKinds{
    {{NodeTypeSwitch, "switch", "Switch", "switchguid", 'S'},
     {NodeTypeCA, "ca", "Ca", "caguid", 'H'},
     {NodeTypeRouter, "router", "Rt", "rtguid", 'R'}}};

inline const NodeKind& KindOf(const IBNode& node) {
  return *std::find_if(nodeKinds.begin(), nodeKinds.end() - 1,
                       [&](const NodeKind& kind) { return kind.type == node.nodeType; });
}

inline bool IsSwitch(const IBNode& node) { return node.nodeType == NodeTypeSwitch; }

}  // namespace fabscope::internal
