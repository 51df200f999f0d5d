#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "synthetic/fabric_plan.h"
#include "synthetic/faults.h"

namespace fabscope::internal {

// What was done to a plan, as JSON: for every fault, in the order in which they were done, all that
// it has changed, named as the fabric names it (the chips of a system one by one). What a fault has
// not changed is left out, but for `before` and `after`, the links.
std::string TruthText(const FabricPlan& plan, std::uint64_t seed,
                      std::span<const InjectedFault> faults);

}  // namespace fabscope::internal
