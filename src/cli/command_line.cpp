#include "cli/command_line.h"

#include <algorithm>
#include <iostream>
#include <new>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

#include "cli/commands.h"
#include "cli/exit_status.h"

namespace fabscope::internal {
namespace {

// Must not need any memory itself.
int OutOfMemory() {
  std::cerr << "fabscope: out of memory\n";
  return ExitFailed;
}

}  // namespace

int RunCommandLine(int argc, const char* const* argv) {
  try {
    return RunCommand(std::vector<std::string>(argv + std::min(argc, 1), argv + argc));
  } catch (const std::bad_alloc&) {
    return OutOfMemory();
  } catch (const std::length_error&) {  // more than any memory could hold
    return OutOfMemory();
  } catch (const std::system_error& error) {
    std::cerr << "fabscope: cannot start a thread: " << error.code().message() << '\n';
    return ExitFailed;
  }
}

}  // namespace fabscope::internal
