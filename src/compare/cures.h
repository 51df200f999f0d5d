#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "compare/finding_changes.h"
#include "repair/repair_plan.h"

namespace fabscope::internal {

// Which findings each step cures: their places among those of the fabric as it was, ascending. A
// finding is cured when nothing of it is left once all steps are done. A link belongs to the steps
// that plug or unplug a cable between its switches, or else to some that change one at either; any
// other finding to every step that changes a cable at one of its switches. None is known to be
// cured when not all error records of the fabric as it is are listed.
std::vector<std::vector<std::size_t>> CuresOf(std::span<const RepairStep> steps,
                                              const CheckedFabric& was, const CheckedFabric& is);

}  // namespace fabscope::internal
