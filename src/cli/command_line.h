#pragma once

namespace fabscope::internal {

// Runs the command that the command line asks for and answers its exit status. When memory runs out
// it says so, and that is the end of the run, or of the whole process.
int RunCommandLine(int argc, const char* const* argv);

}  // namespace fabscope::internal
