#pragma once

#include "cli/check_options.h"

namespace fabscope::internal {

// Runs `fabscope check`, writes what was asked for, and answers the exit status.
int RunCheckCommand(const CheckArguments& arguments);

}  // namespace fabscope::internal
