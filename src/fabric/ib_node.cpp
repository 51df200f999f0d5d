#include "fabric/ib_node.h"

#include <cstdlib>

namespace fabscope::internal {

IBPort* IBNode::getPort(std::uint8_t num) const {
  if (num == 0) {
    if (nodeType != NodeTypeSwitch) return nullptr;
    // A switch without its management port was not made by a builder.
    if (ports.empty()) std::abort();
    return ports[0];
  }
  return num < ports.size() ? ports[num] : nullptr;
}

}  // namespace fabscope::internal
