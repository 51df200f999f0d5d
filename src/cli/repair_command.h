#pragma once

#include "cli/repair_options.h"

namespace fabscope::internal {

// Runs `fabscope repair`, writes what was asked for, and answers the exit status.
int RunRepairCommand(const RepairArguments& arguments);

}  // namespace fabscope::internal
