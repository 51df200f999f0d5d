#pragma once

#include <string>

#include "fabric/ib_fabric.h"

namespace fabscope {

// Whether one of the switch's cables leads to a host: a channel adapter that is no special node.
bool LeadsToHost(const IBNode& node);

// "name the roots with --root-regex ERE, for example ...": the cure for roots that were not found,
// or were found in the wrong place. The example is made from this fabric's own names.
std::string NameTheRoots(const IBFabric& fabric);

}  // namespace fabscope
