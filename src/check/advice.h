#pragma once

#include <string>

#include "check/check.h"

namespace fabscope {

// What the user can do about a tree that could not be built: one line that fits the cause, with
// examples from this fabric's own names.
std::string AdviceOnBuilding(FTTopology& topology, const CheckOptions& options);

}  // namespace fabscope
