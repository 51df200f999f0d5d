#pragma once

#include "cli/check_options.h"
#include "cli/messages.h"

namespace fabscope::internal {

// `fabscope check` of several fabrics, as many at a time as the machine has cores: a line of the
// report and of the JSON result for each, in the order of the command line. Answers the exit
// status: the highest that a fabric alone would give.
int CheckSeveral(const CheckArguments& arguments, Messages& messages);

}  // namespace fabscope::internal
