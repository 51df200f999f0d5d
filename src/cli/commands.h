#pragma once

#include <string>
#include <vector>

#include "cli/command_text.h"

namespace fabscope::internal {

// fabscope itself, and its commands in the order in which they are told.
extern const CommandText toolText;
std::vector<const CommandText*> CommandTexts();

// Runs the command that the words ask for, and answers its exit status.
int RunCommand(const std::vector<std::string>& words);

}  // namespace fabscope::internal
