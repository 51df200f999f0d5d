#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "repairs/plain_repair.h"

namespace fabscope::internal::plain {

struct Verdict {
  // What the plan promises and does not keep, in words; empty when it keeps all.
  std::vector<std::string> complaints;
  // States between steps that leave a switch with hosts alone, where no other order of the steps
  // was found that does not.
  std::size_t cuts = 0;
  bool isProperAfterwards = false;
};

// Holds a plan against its fabric, as plainly as possible: every step is done by hand, and groups
// are counted anew. `built` is what the steps are said to make of the fabric, null when they are
// said not to be doable.
Verdict VerifyPlan(const Fabric& fabric, const Plan& plan, const Fabric* built);

}  // namespace fabscope::internal::plain
