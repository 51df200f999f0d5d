#pragma once

#include <cstdint>

#include "fabric/ib_node.h"

namespace fabscope::internal {

// A link at fault between two switches. For a link between an upper and a lower switch node1 is
// the upper one. A missing link has port 0 and a rank of all ones at both ends: there is no port.
struct FTLinkIssue {
  const IBNode* node1 = nullptr;
  std::uint8_t port1 = 0;
  std::uint64_t rank1 = 0;
  const IBNode* node2 = nullptr;
  std::uint8_t port2 = 0;
  std::uint64_t rank2 = 0;
};

}  // namespace fabscope::internal
