#include "fabric/ib_fabric.h"

namespace fabscope::internal {

const IBNode* IBFabric::getNodeByGuid(std::uint64_t guid) const {
  const std::uint32_t index = indexByGuid_.Find(guid);
  return index == GuidIndex::None ? nullptr : &nodes_[index];
}

}  // namespace fabscope::internal
