#pragma once

#include <span>
#include <string>

#include "cli/command_text.h"

namespace fabscope::internal {

// What the shells complete behind "fabscope": its commands, their options, the words that an option
// takes, and files where a file or the fabric is wanted. Nothing is offered where anything may
// stand.
std::string BashCompletion(std::span<const CommandText* const> commands);
std::string ZshCompletion(std::span<const CommandText* const> commands);
std::string FishCompletion(std::span<const CommandText* const> commands);

}  // namespace fabscope::internal
