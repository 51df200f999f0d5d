#include "os/terminal.h"

#include <cstdlib>
#include <string_view>
#include <unistd.h>

namespace fabscope::internal {
namespace {

std::string_view Environment(const char* name) {
  const char* value = std::getenv(name);
  return value != nullptr ? value : "";
}

bool IsDumb() { return Environment("TERM") == "dumb"; }

}  // namespace

bool WantsColor(ColorWhen when) {
  if (when != ColorWhen::Auto) return when == ColorWhen::Always;
  return isatty(STDOUT_FILENO) == 1 && Environment("NO_COLOR").empty() && !IsDumb();
}

bool IsWatched() { return isatty(STDERR_FILENO) == 1 && !IsDumb(); }

}  // namespace fabscope::internal
