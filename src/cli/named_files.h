#pragma once

#include <optional>
#include <span>
#include <string>

namespace fabscope {

// A file that the command line names for output, with what named it ("--csv "). Empty: none was
// named; "-": standard output.
struct NamedOutput {
  const char* option;
  const std::string& file;
};

// What forbids these inputs and outputs together: standard input read twice, an input overwritten,
// two outputs of one name, however it is spelled. Devices may be named twice. Empty inputs were not
// named.
std::optional<std::string> ProblemOfFiles(std::span<const std::string* const> inputs,
                                          std::span<const NamedOutput> outputs);

}  // namespace fabscope
