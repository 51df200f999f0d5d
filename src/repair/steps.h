#pragma once

#include <cstddef>
#include <vector>

#include "repair/changes.h"
#include "repair/repair_plan.h"

namespace fabscope::internal {

// A step and the targets (places in Changes::targets) that it brings about.
struct PlannedStep {
  RepairStep step;
  std::vector<std::size_t> targets;
};

// The changes as steps that can be done one after another.
std::vector<PlannedStep> OrderSteps(const TreeGroups& groups, const Changes& changes);

}  // namespace fabscope::internal
