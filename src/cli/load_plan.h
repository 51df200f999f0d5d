#pragma once

#include <string>

#include "cli/messages.h"
#include "compare/repair_document.h"

namespace fabscope::internal {

// Reads the plan of repairs that a command line names. False when there is none in it, and why was
// told.
bool LoadPlan(const std::string& file, RepairDocument& plan, Messages& messages);

}  // namespace fabscope::internal
