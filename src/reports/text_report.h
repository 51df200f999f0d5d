#pragma once

#include <ostream>

#include "check/check.h"

namespace fabscope {

// The report that people read and scripts grep: what the stage wrote, the levels, the records with
// their tags, the dump if the result holds one and `withDump` is set, and the closing line. When
// the tree could not be built or validated it ends where the work ended; the reason is not part of
// it.
void WriteTextReport(const CheckResult& result, bool withDump, std::ostream& stream);

}  // namespace fabscope
