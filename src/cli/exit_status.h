#pragma once

namespace fabscope::internal {

// What every command ends with; scripts rely on it.
inline constexpr int ExitClean = 0;
inline constexpr int ExitFindings = 1;
inline constexpr int ExitFailed = 2;  // with the reason on standard error

}  // namespace fabscope::internal
