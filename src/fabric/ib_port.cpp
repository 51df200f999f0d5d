#include "fabric/ib_port.h"

#include "fabric/ib_node.h"

namespace fabscope::internal {

const PortExtras IBPort::ordinary;

const PortExtras& IBPort::FindExtras() const {
  return node != nullptr ? node->GetExtras().ports.at(num) : ordinary;
}

std::uint32_t IBPort::GetState() const {
  constexpr std::uint32_t down = 1;
  constexpr std::uint32_t active = 4;
  return GetExtras().state.value_or(remotePort != nullptr ? active : down);
}

}  // namespace fabscope::internal
