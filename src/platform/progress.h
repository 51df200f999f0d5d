#pragma once

#include <cstddef>
#include <functional>
#include <string_view>

namespace fabscope::internal {

// Where long work of this thread tells how far it has come. The libraries know no clock and no
// terminal: until the command sets a sink, what is told is dropped.
using ProgressSink =
    std::function<void(std::string_view phase, std::size_t done, std::size_t total)>;
void SetProgressSink(ProgressSink sink);

// `done` of `total` steps of a phase ("grouping switches"). Cheap enough for every step that does
// more than look at one thing.
void ReportProgress(std::string_view phase, std::size_t done, std::size_t total);

}  // namespace fabscope::internal
