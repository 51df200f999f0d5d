#pragma once

#include <ostream>

#include "check/check.h"

namespace fabscope::internal {

// The result as one HTML page that needs nothing else: the page that web/ builds, with the JSON
// result, the switches and their cables in it as data. For any result whose input could be read; it
// should hold its findings.
//
// Texts from the fabric stand in the page as data only, and its content security policy allows no
// script but the page's own.
void WriteHtmlReport(const CheckResult& result, std::ostream& stream);

}  // namespace fabscope::internal
