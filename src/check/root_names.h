#pragma once

#include <string>

#include "fabric/ib_fabric.h"

namespace fabscope::internal {

// "name the roots with --root-regex ERE, for example ...": the cure for roots that were not found,
// or were found in the wrong place. The example is made from this fabric's own names.
std::string NameTheRoots(const IBFabric& fabric);

}  // namespace fabscope::internal
