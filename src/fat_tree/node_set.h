#pragma once

#include <set>

#include "fabric/ib_node.h"

namespace fabscope {

// Switches ordered by address, which is model order. Every walk of the stage over switches follows
// it, so it decides the order of all output.
using NodeSet = std::set<const IBNode*>;

}  // namespace fabscope
