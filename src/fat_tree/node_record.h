#pragma once

#include <string>

#include "fabric/ib_node.h"

namespace fabscope::internal {

// The text that names a switch in every report line and record: the display name, cut before its
// "/A" or "/U" part, and the ASIC; with `showGuid` 1 the system GUID and the ASIC stand in front of
// it, with 2 the node GUID, with any other number nothing.
std::string GetNodeRecord(const IBNode* node, int showGuid);
void AppendNodeRecord(std::string& text, const IBNode* node, int showGuid);

}  // namespace fabscope::internal
