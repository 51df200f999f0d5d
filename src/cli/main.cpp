#include <csignal>

#include "cli/command_line.h"
#include "cli/memory.h"
#include "os/standard_streams.h"

int main(int argc, char** argv) {
  fabscope::internal::SetUpMemory();
  // A file that may not grow any more is an output that cannot be written, and told as one.
  (void)std::signal(SIGXFSZ, SIG_IGN);
  fabscope::internal::OccupyClosedStreams();
  return fabscope::internal::RunCommandLine(argc, argv);
}
