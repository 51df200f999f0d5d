#pragma once

#include "cli/diff_options.h"

namespace fabscope::internal {

// Runs `fabscope diff`, writes what was asked for, and answers the exit status.
int RunDiffCommand(const DiffArguments& arguments);

}  // namespace fabscope::internal
