#include "os/standard_streams.h"

#include <array>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

namespace fabscope::internal {

void OccupyClosedStreams() {
  constexpr std::array<std::pair<int, int>, 3> streams{
      {{STDIN_FILENO, O_WRONLY}, {STDOUT_FILENO, O_RDONLY}, {STDERR_FILENO, O_RDONLY}}};
  for (const auto& [stream, uselessMode] : streams) {
    // The lowest number that is free is the stream's, since those below it are in use by now.
    if (fcntl(stream, F_GETFD) < 0) open("/dev/null", uselessMode);
  }
}

}  // namespace fabscope::internal
