#pragma once

#include <string>
#include <tuple>

#include "fabric/ib_node.h"

namespace fabscope::internal {

// The node at the other end of a port whose link counts, else null: ports of the two FNM kinds and
// asymmetric links carry neither hosts nor tree links.
inline IBNode* GetLinkedNode(const IBPort& port) {
  if (port.isFNMPort() || port.isFNM1Port()) return nullptr;
  return port.isSymmetricLink() ? port.get_remote_node() : nullptr;
}

// The same for tree links, whose far end is a switch.
inline IBNode* GetRemoteSwitch(const IBPort& port) {
  IBNode* remote = GetLinkedNode(port);
  return remote != nullptr && remote->nodeType == NodeTypeSwitch ? remote : nullptr;
}

// Whether a port with a cable comes before the cable's other end, by node and then by number: who
// walks over all ports and asks this meets every cable once.
inline bool IsFirstEnd(const IBPort& port) {
  const IBPort& far = *port.remotePort;
  return std::tie(port.node->index, port.num) < std::tie(far.node->index, far.num);
}

// "/" and the ASIC designation of a switch of the multi-ASIC family, or nothing.
std::string GetSwitchASIC(const IBNode* node);

}  // namespace fabscope::internal
