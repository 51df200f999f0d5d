#pragma once

#include <functional>
#include <ostream>
#include <string_view>

#include "check/check.h"
#include "reports/text_report.h"

namespace fabscope::internal {

// The whole result as one JSON document, also when the fabric could not be read, or its tree not be
// built or validated: roots, ranks, groups, records, counts, findings as far as the result holds
// them, and the lines of the text report in the style that it has in this run.
// docs/check-result.schema.json describes it.
void WriteJsonReport(const CheckResult& result, const TextStyle& style, std::ostream& stream);

// The same piece by piece, without a line end behind it: a result can hold millions of records.
using TakePiece = std::function<void(std::string_view piece)>;
void ForEachPieceOfJson(const CheckResult& result, const TextStyle& style, const TakePiece& take);

}  // namespace fabscope::internal
