#include "fabric/fabric_walk.h"

namespace fabscope {

IBNode* GetRemoteSwitch(const IBPort* port) {
  if (port == nullptr) return nullptr;
  if (port->isFNMPort() || port->isFNM1Port()) return nullptr;
  if (!port->isSymmetricLink()) return nullptr;
  IBNode* remote = port->get_remote_node();
  if (remote == nullptr) return nullptr;
  return remote->nodeType == NodeTypeSwitch ? remote : nullptr;
}

std::string GetSwitchASIC(const IBNode* node) {
  const std::string& asic = node->getVortaSwitchASIC();
  return asic.empty() ? std::string() : "/" + asic;
}

}  // namespace fabscope
