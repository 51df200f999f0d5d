#pragma once

#include <optional>
#include <string>
#include <vector>

#include "cli/command_text.h"
#include "cli/option_values.h"

namespace fabscope::internal {

// A command's words: what it is given besides options goes to `operands`, options are taken.
// Answers nothing, or prints what was asked for or is wrong and answers the exit status.
// Not from several threads at a time.
std::optional<int> Parse(const CommandText& command, const std::vector<BoundOption>& options,
                         const std::vector<std::string>& words, std::vector<std::string>& operands);

// The same for words that begin with none of the commands; what is asked for or wrong there.
int ParseWithoutCommand(const CommandText& tool, const std::vector<const CommandText*>& commands,
                        const std::vector<std::string>& words);

// Says what is wrong with the words of a command, and answers the exit status.
int WrongUsage(const CommandText& command, const std::string& problem);

}  // namespace fabscope::internal
