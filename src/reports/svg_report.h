#pragma once

#include <ostream>

#include "check/check.h"

namespace fabscope::internal {

// The tree with its findings as a still picture (SVG) for documents. The tree must have been built;
// the result should hold its findings. In a large tree the switches of a group are folded.
void WriteSvgReport(const CheckResult& result, std::ostream& stream);

}  // namespace fabscope::internal
