#pragma once

#include <span>
#include <string>

#include "cli/command_text.h"

namespace fabscope::internal {

// The help of a command: an example first, then its options by group, in lines of at most 80
// columns.
std::string HelpText(const CommandText& command);

// The help of fabscope itself, which names its commands.
std::string HelpText(const CommandText& tool, std::span<const CommandText* const> commands);

}  // namespace fabscope::internal
