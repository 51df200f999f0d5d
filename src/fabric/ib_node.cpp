#include "fabric/ib_node.h"

#include <algorithm>

namespace fabscope::internal {

const NodeExtras IBNode::ordinary;

IBPort* IBNode::FindPort(std::uint8_t num) const {
  const auto found =
      std::lower_bound(ports.begin(), ports.end(), num,
                       [](const IBPort& port, std::uint8_t wanted) { return port.num < wanted; });
  return found != ports.end() && found->num == num ? &*found : nullptr;
}

bool IBNode::isOnSamePlane(std::int32_t plane) const {
  const NodeExtras& extras = GetExtras();
  if (!extras.planes) return plane == extras.suitablePlane;
  return std::find(extras.planes->begin(), extras.planes->end(), plane) != extras.planes->end();
}

std::vector<std::int32_t> IBNode::GetPlanes() const {
  return GetExtras().planes.value_or(std::vector{getSuitablePlane()});
}

std::string_view IBNode::getAlternativeName() const {
  const NodeExtras& extras = GetExtras();
  return extras.displayName ? *extras.displayName : name;
}

}  // namespace fabscope::internal
