#pragma once

#include <fabscope/check.h>

#include "fat_tree/findings.h"

namespace fabscope::internal {

// A finding as programs see it; for `showGuid` see GetNodeRecord.
fabscope::Finding PublicFinding(const Finding& finding, int showGuid);

}  // namespace fabscope::internal
