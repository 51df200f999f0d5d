#pragma once

#include <functional>
#include <optional>
#include <ostream>
#include <string>

namespace fabscope::internal {

using WriteTo = std::function<void(std::ostream& stream)>;

// Writes a file whole or not at all: to a temporary file beside the target, which then takes its
// name. A target that is no regular file (a terminal, a pipe, /dev/null) is written to directly,
// and a symbolic link stays one. Answers what went wrong.
std::optional<std::string> WriteFile(const std::string& path, const WriteTo& write);

// Writes to standard output and makes sure that all of it arrived.
std::optional<std::string> WriteStandardOutput(const WriteTo& write);

// Either, as the user has named it: "-" is standard output.
std::optional<std::string> WriteOutput(const std::string& name, const WriteTo& write);

}  // namespace fabscope::internal
