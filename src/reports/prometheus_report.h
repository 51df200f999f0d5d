#pragma once

#include <cstdint>
#include <ostream>

#include "check/check.h"

namespace fabscope::internal {

// When a check was done, which a report cannot know itself.
struct CheckTime {
  double seconds = 0;           // that it took
  std::int64_t finishedAt = 0;  // seconds since 1970
};

// The numbers of a check that was finished, in the text format of Prometheus, for the textfile
// collector of its node exporter. Every number bears the fabric as the user named it, so that the
// files of several fabrics can stand side by side. Needs the result's findings.
void WritePrometheusReport(const CheckResult& result, const CheckTime& time, std::ostream& stream);

}  // namespace fabscope::internal
