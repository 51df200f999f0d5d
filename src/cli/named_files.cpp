#include "cli/named_files.h"

#include <algorithm>
#include <filesystem>

namespace fabscope::internal {
namespace {

// A path from the root with all links followed; empty when the system cannot tell.
std::filesystem::path WholePath(const std::string& name) {
  std::error_code error;
  const std::filesystem::path absolute = std::filesystem::absolute(name, error);
  if (error) return {};
  std::filesystem::path whole = std::filesystem::weakly_canonical(absolute, error);
  return error ? std::filesystem::path() : whole;
}

// Whether two names are of one file, however they are spelled. Devices may be named twice.
bool IsSameFile(const std::string& a, const std::string& b) {
  namespace fs = std::filesystem;
  if (a.empty() || b.empty()) return false;
  std::error_code error;
  const fs::file_status status = fs::status(a, error);
  if (fs::exists(status) && !fs::is_regular_file(status)) return false;
  const fs::path fileA = WholePath(a);
  return !fileA.empty() && fileA == WholePath(b);
}

}  // namespace

std::string Named(const NamedOutput& output) {
  return std::string(output.option) + " " + output.file;
}

std::optional<std::string> ProblemOfFiles(std::span<const std::string* const> inputs,
                                          std::span<const NamedOutput> outputs) {
  const auto isStandardInput = [](const std::string* path) { return *path == "-"; };
  if (std::count_if(inputs.begin(), inputs.end(), isStandardInput) > 1) {
    return "standard input (-) can be read only once";
  }
  for (std::size_t i = 0; i < outputs.size(); ++i) {
    const NamedOutput& output = outputs[i];
    for (std::size_t j = 0; j < i; ++j) {
      const NamedOutput& other = outputs[j];
      if (!IsSameFile(other.file, output.file)) continue;
      return Named(other) + " and " + Named(output) +
             " contradict each other: each needs a file of its own";
    }
    for (const std::string* input : inputs) {
      if (output.file == "-" || !IsSameFile(output.file, *input)) continue;
      return Named(output) + " would overwrite the input " + *input;
    }
  }
  return std::nullopt;
}

std::optional<std::string> ProblemOfSharedInputs(std::span<const NamedInput> inputs) {
  for (const NamedInput& input : inputs) {
    if (input.file.empty()) continue;
    std::error_code error;
    const auto status = std::filesystem::status(input.file, error);
    const bool isOnce =
        input.file == "-" || (exists(status) && !is_regular_file(status) && !is_directory(status));
    if (isOnce) {
      return Named(input) + " can be read only once, and there are several fabrics: give a file";
    }
  }
  return std::nullopt;
}

}  // namespace fabscope::internal
