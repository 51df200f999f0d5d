#pragma once

#include <algorithm>
#include <cstddef>
#include <span>
#include <string>
#include <tuple>

#include "fabric/ib_node.h"

namespace fabscope::internal {

// The ports that can take part in a tree, in order: port 1 to the node's last. Entries may be null.
// Port 0, a switch's management port, never takes part.
inline std::span<IBPort* const> GetTreePorts(const IBNode& node) {
  const std::size_t end = std::min<std::size_t>(std::size_t{node.numPorts} + 1, node.ports.size());
  return end > 1 ? node.ports.subspan(1, end - 1) : std::span<IBPort*>();
}

// The node at the other end of a port whose link counts, else null: ports of the two FNM kinds and
// asymmetric links carry neither hosts nor tree links. A null port has no far end.
inline IBNode* GetLinkedNode(const IBPort* port) {
  if (port == nullptr || port->isFNMPort() || port->isFNM1Port()) return nullptr;
  return port->isSymmetricLink() ? port->get_remote_node() : nullptr;
}

// The same for tree links, whose far end is a switch.
IBNode* GetRemoteSwitch(const IBPort* port);

// Whether a port with a cable comes before the cable's other end, by node and then by number: who
// walks over all ports and asks this meets every cable once.
inline bool IsFirstEnd(const IBPort& port) {
  const IBPort& far = *port.remotePort;
  return std::tie(port.node->index, port.num) < std::tie(far.node->index, far.num);
}

// "/" and the ASIC designation of a switch of the multi-ASIC family, or nothing.
std::string GetSwitchASIC(const IBNode* node);

}  // namespace fabscope::internal
