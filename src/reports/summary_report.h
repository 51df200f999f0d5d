#pragma once

#include <ostream>
#include <string>

#include "check/check.h"

namespace fabscope::internal {

// What a person wants to know first, in few lines: the verdict, the size of the fabric, a line for
// each repair and each note, and how much of each kind was found. `result` was asked for repairs.
void WriteSummary(const CheckResult& result, std::ostream& stream);

// The verdict in one sentence, repairs first: "3 repairs (2 sure, 1 likely) would put this fabric
// right".
std::string VerdictOf(const CheckResult& result);

}  // namespace fabscope::internal
