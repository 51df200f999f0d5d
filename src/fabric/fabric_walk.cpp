#include "fabric/fabric_walk.h"

namespace fabscope::internal {

std::string GetSwitchASIC(const IBNode* node) {
  const std::string& asic = node->getVortaSwitchASIC();
  return asic.empty() ? std::string() : "/" + asic;
}

}  // namespace fabscope::internal
