#pragma once

#include <string>

#include "fat_tree/findings.h"

namespace fabscope::internal {

// Appends a finding as a JSON object: its kind, level, groups and issues, and what its kind tells
// of switches, ports and counts. docs/check-result.schema.json describes it.
void AppendFinding(std::string& json, const Finding& finding);

}  // namespace fabscope::internal
