#include "fabric/fabric_walk.h"

namespace fabscope::internal {

IBNode* GetRemoteSwitch(const IBPort* port) {
  IBNode* remote = GetLinkedNode(port);
  return remote != nullptr && remote->nodeType == NodeTypeSwitch ? remote : nullptr;
}

std::string GetSwitchASIC(const IBNode* node) {
  const std::string& asic = node->getVortaSwitchASIC();
  return asic.empty() ? std::string() : "/" + asic;
}

}  // namespace fabscope::internal
