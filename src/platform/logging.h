#pragma once

#include <functional>
#include <string_view>

namespace fabscope::internal {

// Where the two channels lead. The libraries never print by themselves: until the command sets a
// channel, what is sent to it is dropped.
using LogSink = std::function<void(std::string_view text)>;
void SetScreenSink(LogSink sink);
void SetLogFileSink(LogSink sink);

// printf-style messages for the person at the screen and for the log file. No line end is added.
[[gnu::format(printf, 1, 2)]] void dump_to_screen(const char* format, ...);
[[gnu::format(printf, 1, 2)]] void dump_to_log_file(const char* format, ...);

}  // namespace fabscope::internal
