#pragma once

#include <string>

#include "fabric/ib_fabric.h"

namespace fabscope::internal {

// "sha256:" and 64 hexadecimal digits that tell one cabling from another: of the GUIDs and types of
// all nodes and of the two ports of every cable. Order, names, speeds and everything else do not
// matter, so any dump of the same cabling has the same.
std::string FabricHash(const IBFabric& fabric);

}  // namespace fabscope::internal
