#pragma once

#include <string>

#include "check/check.h"
#include "fabric/ib_fabric.h"
#include "fat_tree/tree_links.h"

namespace fabscope::internal {

// "name the roots with --root-regex ERE, for example ...": the cure for roots that were not found,
// or were found in the wrong place. The example is made from this fabric's own names; where these
// are all alike, something else is proposed that was not tried with `method`.
// `links`: those of the fabric.
std::string NameTheRoots(const IBFabric& fabric, const TreeLinks& links, RootsFrom method);

}  // namespace fabscope::internal
