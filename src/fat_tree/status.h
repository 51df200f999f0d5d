#pragma once

namespace fabscope::internal {

// What the stage's operations return. A callee's non-zero status is passed up unchanged; its reason
// stands in the error stream of the object that failed.
inline constexpr int StatusSuccess = 0;
inline constexpr int StatusLookupFailed = 4;  // a null pointer in a container, or no such entry
inline constexpr int StatusBadData = 9;       // no roots, rank out of range, too few ranks, ...

}  // namespace fabscope::internal
