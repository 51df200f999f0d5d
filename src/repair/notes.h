#pragma once

#include <vector>

#include "repair/changes.h"

namespace fabscope::internal {

// What a person should know besides the steps.
std::vector<RepairNote> FindNotes(const TreeGroups& groups, const Changes& changes);

}  // namespace fabscope::internal
