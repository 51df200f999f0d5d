#pragma once

#include <string>

#include "fabric/ib_node.h"

namespace fabscope {

// The text that names a switch in every report line and record: the display name, cut before its
// "/A" or "/U" part, and the ASIC; with FTTopology::Show_GUID 1 the system GUID and the ASIC, with
// 2 the node GUID, stand in front of it.
std::string GetNodeRecord(const IBNode* node);

}  // namespace fabscope
