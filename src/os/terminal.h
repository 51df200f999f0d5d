#pragma once

namespace fabscope::internal {

enum class ColorWhen { Auto, Always, Never };

// Whether what goes to standard output is to be coloured. With Auto: on a terminal that can show
// colours, unless the environment's NO_COLOR is set to something.
bool WantsColor(ColorWhen when);

// Whether somebody may be looking at standard error: it is a terminal that can go back in a line.
bool IsWatched();

}  // namespace fabscope::internal
