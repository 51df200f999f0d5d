#include <csignal>
#include <limits>
#include <malloc.h>

#include "cli/command_line.h"
#include "os/standard_streams.h"

int main(int argc, char** argv) {
  // Memory that one step has given back is for the next: it costs more to get it from the system
  // again than to use it.
  constexpr int most = 1 << 25;
  mallopt(M_MMAP_THRESHOLD, most);
  mallopt(M_TRIM_THRESHOLD, std::numeric_limits<int>::max());
  // A file that may not grow any more is an output that cannot be written, and told as one.
  (void)std::signal(SIGXFSZ, SIG_IGN);
  fabscope::internal::OccupyClosedStreams();
  return fabscope::internal::RunCommandLine(argc, argv);
}
