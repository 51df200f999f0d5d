#pragma once

#include <string>

#include "fabric/ib_node.h"

namespace fabscope {

// The switch at the other end of a port that counts as a tree link, else null: ports of the two
// FNM kinds, asymmetric links and peers other than switches carry no tree link. A null port has no
// far end.
IBNode* GetRemoteSwitch(const IBPort* port);

// "/" and the ASIC designation of a switch of the multi-ASIC family, or nothing.
std::string GetSwitchASIC(const IBNode* node);

}  // namespace fabscope
