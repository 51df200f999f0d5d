#pragma once

#include <functional>
#include <ostream>
#include <string>
#include <string_view>

#include "check/check.h"

namespace fabscope::internal {

struct TextStyle {
  bool withDump = false;  // the dump, if the result holds one, stands before the closing line
  bool quiet = false;     // without the "-I- " lines
  bool color = false;     // tags in colour, for a terminal
};

// The report that people read and scripts grep: which roots were preferred, what the stage wrote,
// the levels, the records with their tags, the dump and the closing line. When the tree could not
// be built or validated it ends where the work ended; the reason is not part of it.
void WriteTextReport(const CheckResult& result, const TextStyle& style, std::ostream& stream);

// How many error records are more than are listed, and what lists them; empty when all are.
std::string RecordsNotListedText(const CheckResult& result);

// A line with a tag of its own, in the same style; `start` stands before the tag.
void WriteReportLine(std::string_view line, const TextStyle& style, std::ostream& stream,
                     std::string_view start = {});

// The report line by line, without line ends and colour.
using TakeLine = std::function<void(std::string_view line)>;
void ForEachReportLine(const CheckResult& result, const TextStyle& style, const TakeLine& take);

}  // namespace fabscope::internal
