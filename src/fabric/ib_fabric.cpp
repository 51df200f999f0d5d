#include "fabric/ib_fabric.h"

namespace fabscope {

const IBNode* IBFabric::getNodeByGuid(std::uint64_t guid) const {
  const auto found = indexByGuid_.find(guid);
  return found == indexByGuid_.end() ? nullptr : &nodes_[found->second];
}

}  // namespace fabscope
