#pragma once

#include <string>

#include "check/check.h"

namespace fabscope::internal::fuzz {

// All reports and messages of a check in one text, for comparison with another run: groups, which
// are numbered for the whole process, count from 0.
std::string ReportsOf(const CheckResult& result);

// What the reports of one check say of each other: the JSON is JSON and holds the lines of the
// text, counts are the same wherever they are told, style changes nothing but style.
void RequireSoundReports(const CheckResult& result);

}  // namespace fabscope::internal::fuzz
