#pragma once

#include <string>

namespace fabscope::internal {

// Makes a description safe between the quotes of a CSV field: double quotes are doubled, control
// characters (line ends included) become blanks, so that a record stays one line.
std::string DescToCsvDesc(const std::string& description);
// The same, between its quotes.
std::string QuotedCsv(const std::string& description);

}  // namespace fabscope::internal
