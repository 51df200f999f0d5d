#pragma once

namespace fabscope {

// Runs the command that the command line asks for and answers its exit status.
int RunCommandLine(int argc, const char* const* argv);

}  // namespace fabscope
