#pragma once

#include <vector>

#include "repair/steps.h"

namespace fabscope::internal {

// Gives every step its class, and those that are ambiguous their alternatives.
void JudgeSteps(const IBFabric& fabric, const TreeGroups& groups, const Changes& changes,
                std::vector<PlannedStep>& steps);

}  // namespace fabscope::internal
