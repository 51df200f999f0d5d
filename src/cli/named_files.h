#pragma once

#include <optional>
#include <span>
#include <string>

namespace fabscope::internal {

// A file that the command line names for output, with the option that named it. Empty: none was
// named; "-": standard output.
struct NamedOutput {
  const char* option;
  const std::string& file;
};

// The same of a file to read.
using NamedInput = NamedOutput;

// "--csv FILE".
std::string Named(const NamedOutput& output);

// What forbids these inputs and outputs together: standard input read twice, an input overwritten,
// two outputs of one name, however it is spelled. Devices may be named twice. Empty inputs were not
// named.
std::optional<std::string> ProblemOfFiles(std::span<const std::string* const> inputs,
                                          std::span<const NamedOutput> outputs);

// What forbids reading these files once for each of several fabrics: standard input, pipes and the
// like give what they have once. Empty names were not named.
std::optional<std::string> ProblemOfSharedInputs(std::span<const NamedInput> inputs);

}  // namespace fabscope::internal
