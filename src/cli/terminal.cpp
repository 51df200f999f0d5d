#include "cli/terminal.h"

#include <cstdlib>
#include <string_view>
#include <unistd.h>

namespace fabscope {
namespace {

std::string_view Environment(const char* name) {
  const char* value = std::getenv(name);
  return value != nullptr ? value : "";
}

}  // namespace

bool WantsColor(ColorWhen when) {
  if (when != ColorWhen::Auto) return when == ColorWhen::Always;
  return isatty(STDOUT_FILENO) == 1 && Environment("NO_COLOR").empty() &&
         Environment("TERM") != "dumb";
}

}  // namespace fabscope
