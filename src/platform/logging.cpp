#include "platform/logging.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <string>
#include <utility>

namespace fabscope::internal {
namespace {

LogSink& ScreenSink() {
  static LogSink sink;
  return sink;
}

LogSink& LogFileSink() {
  static LogSink sink;
  return sink;
}

std::string Format(const char* format, std::va_list arguments) {
  char* formatted = nullptr;
  const int length = vasprintf(&formatted, format, arguments);
  if (length < 0) throw std::bad_alloc();
  std::string text(formatted, static_cast<std::size_t>(length));
  std::free(formatted);
  return text;
}

}  // namespace

void SetScreenSink(LogSink sink) { ScreenSink() = std::move(sink); }
void SetLogFileSink(LogSink sink) { LogFileSink() = std::move(sink); }

void dump_to_screen(const char* format, ...) {
  if (!ScreenSink()) return;
  std::va_list arguments;
  va_start(arguments, format);
  ScreenSink()(Format(format, arguments));
  va_end(arguments);
}

void dump_to_log_file(const char* format, ...) {
  if (!LogFileSink()) return;
  std::va_list arguments;
  va_start(arguments, format);
  LogFileSink()(Format(format, arguments));
  va_end(arguments);
}

}  // namespace fabscope::internal
