#pragma once

#include "cli/generate_options.h"

namespace fabscope::internal {

// Runs `fabscope generate`, writes what was asked for, and answers the exit status.
int RunGenerateCommand(const GenerateArguments& arguments);

}  // namespace fabscope::internal
