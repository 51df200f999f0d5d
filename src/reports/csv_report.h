#pragma once

#include <ostream>

#include "check/check.h"

namespace fabscope::internal {

// The error records as CSV: a header line, then a line of six fields for each record.
void WriteCsvReport(const CheckResult& result, std::ostream& stream);

}  // namespace fabscope::internal
