#pragma once

#include "cli/convert_options.h"

namespace fabscope::internal {

// Runs `fabscope convert`: reads a fabric, writes it, says what of it the format could not hold,
// and answers the exit status.
int RunConvertCommand(const ConvertArguments& arguments);

}  // namespace fabscope::internal
