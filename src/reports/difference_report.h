#pragma once

#include <ostream>

#include "compare/difference.h"
#include "reports/text_report.h"

namespace fabscope::internal {

// What is different, for people and grep: a line each, "cable moved: ...". Nothing when nothing is.
// What was done of a plan stands at the end.
void WriteDifferenceReport(const Difference& difference, const TextStyle& style,
                           std::ostream& stream);

// The same as one JSON document; docs/difference.schema.json describes it.
void WriteDifferenceJson(const Difference& difference, std::ostream& stream);

}  // namespace fabscope::internal
