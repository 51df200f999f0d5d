#pragma once

#include <span>
#include <string>

#include "cli/command_text.h"

namespace fabscope::internal {

// The manual page of a command for section 1, in the man macros of roff.
std::string ManPage(const CommandText& command);

// The manual page of fabscope itself, which leads to those of its commands.
std::string ManPage(const CommandText& tool, std::span<const CommandText* const> commands);

// "fabscope-check" of check, "fabscope" of fabscope itself: what a page is called.
std::string PageName(const CommandText& command);

}  // namespace fabscope::internal
