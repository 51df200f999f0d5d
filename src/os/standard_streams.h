#pragma once

namespace fabscope::internal {

// What stands for standard input or output where a file is named.
inline constexpr const char* standardStream = "-";

// Standard streams that are closed would be given to the next files that are opened, and what is
// meant for the screen would go into them. From now on they cannot be read or written, as if they
// were closed, and are in use.
void OccupyClosedStreams();

}  // namespace fabscope::internal
