#pragma once

#include <span>

#include "cli/command_text.h"

namespace fabscope {

// fabscope itself, and its commands in the order in which they are told.
extern const CommandText toolText;
std::span<const CommandText* const> CommandTexts();

}  // namespace fabscope
