#include "cli/check_options.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <filesystem>
#include <limits>
#include <utility>

namespace fabscope {
namespace {

using Problem = std::optional<std::string>;

Problem TakeNumber(int& target, const std::string& value, int least, int greatest) {
  int number = 0;
  const char* end = value.data() + value.size();
  const auto [stop, status] = std::from_chars(value.data(), end, number);
  if (status != std::errc() || stop != end || number < least || number > greatest) {
    return "expected a whole number from " + std::to_string(least) + " to " +
           std::to_string(greatest);
  }
  target = number;
  return std::nullopt;
}

Problem TakeRegex(std::shared_ptr<regExp>& target, const std::string& value) {
  auto regex = std::make_shared<regExp>(value);
  if (!regex->IsValid()) {
    return "expected a POSIX extended regular expression: " + regex->GetError();
  }
  target = std::move(regex);
  return std::nullopt;
}

Problem TakePath(std::string& target, const std::string& value) {
  if (value.empty()) return "expected the name of a file";
  target = value;
  return std::nullopt;
}

constexpr int anyCount = std::numeric_limits<int>::max();

constexpr std::array<CheckOption, 16> table{{
    {"--roots", "auto|smdb|regex",
     "How the roots are found: by themselves (the default), from the subnet manager's ranks, or by "
     "--root-regex",
     [](CheckArguments& arguments, const std::string& value) -> Problem {
       if (value != "auto" && value != "smdb" && value != "regex") {
         return "expected auto, smdb or regex";
       }
       arguments.roots = value;
       return std::nullopt;
     }},
    {"--root-regex", "ERE",
     "Roots are the switches whose name matches this POSIX extended regular expression",
     [](CheckArguments& arguments, const std::string& value) {
       return TakeRegex(arguments.options.rootRegex, value);
     }},
    {"--ranks", "FILE",
     "The subnet manager's ranks: CSV with the columns guid,rank; rank 0 is a root",
     [](CheckArguments& arguments, const std::string& value) {
       return TakePath(arguments.options.ranks, value);
     }},
    {"--retries", "N",
     "Automatic roots: how many further leaves may be tried, 0 or more (default 10)",
     [](CheckArguments& arguments, const std::string& value) {
       return TakeNumber(arguments.options.retries, value, 0, anyCount);
     }},
    {"--equal", "N", "Automatic roots: how many classifications must agree, 1 or more (default 2)",
     [](CheckArguments& arguments, const std::string& value) {
       return TakeNumber(arguments.options.equalClassifications, value, 1, anyCount);
     }},
    {"--merge-percent", "P",
     "How alike two sets of up-links must be to count as one group, 0 to 100 (default 70)",
     [](CheckArguments& arguments, const std::string& value) {
       return TakeNumber(arguments.options.mergePercent, value, 0, 100);
     }},
    {"--show-guid", "none|system|node", "GUID in front of every switch name (default none)",
     [](CheckArguments& arguments, const std::string& value) -> Problem {
       constexpr std::array<const char*, 3> names{"none", "system", "node"};
       for (std::size_t i = 0; i < names.size(); ++i) {
         if (value != names[i]) continue;
         arguments.options.showGuid = static_cast<int>(i);
         return std::nullopt;
       }
       return "expected none, system or node";
     }},
    {"--flids", "FILE", "FLIDs of switches: CSV with the columns guid,flid",
     [](CheckArguments& arguments, const std::string& value) {
       return TakePath(arguments.options.flids, value);
     }},
    {"--special-nodes", "ERE",
     "Names of channel adapters that are no hosts, in dumps (default \"Aggregation Node\")",
     [](CheckArguments& arguments, const std::string& value) {
       return TakeRegex(arguments.options.specialNodes, value);
     }},
    {"--node-name-map", "FILE", "Names of nodes: lines 0xGUID \"name\"",
     [](CheckArguments& arguments, const std::string& value) {
       return TakePath(arguments.options.nodeNameMap, value);
     }},
    {"--dump", "FILE", "Also write ranks and groups with their switches (- for standard output)",
     [](CheckArguments& arguments, const std::string& value) {
       return TakePath(arguments.dumpFile, value);
     }},
    {"--csv", "FILE",
     "Also write the error records as CSV (- for standard output, instead of the report)",
     [](CheckArguments& arguments, const std::string& value) {
       return TakePath(arguments.csvFile, value);
     }},
    {"--json", "FILE",
     "Also write the whole result as JSON (- for standard output, instead of the report)",
     [](CheckArguments& arguments, const std::string& value) {
       return TakePath(arguments.jsonFile, value);
     }},
    {"--log", "FILE", "Also write all messages of standard error (- for standard output)",
     [](CheckArguments& arguments, const std::string& value) {
       return TakePath(arguments.logFile, value);
     }},
    {"-q,--quiet", "", "The report without its -I- lines",
     [](CheckArguments& arguments, const std::string&) -> Problem {
       arguments.quiet = true;
       return std::nullopt;
     }},
    {"--color", "auto|always|never",
     "Tags of the report in colour: on a terminal, unless NO_COLOR is set (auto, the default), "
     "always or never",
     [](CheckArguments& arguments, const std::string& value) -> Problem {
       if (value == "auto") {
         arguments.color = ColorWhen::Auto;
       } else if (value == "always") {
         arguments.color = ColorWhen::Always;
       } else if (value == "never") {
         arguments.color = ColorWhen::Never;
       } else {
         return "expected auto, always or never";
       }
       return std::nullopt;
     }},
}};

// --root-regex and --ranks each say how the roots are found; --roots may only say the same.
Problem SettleRoots(CheckArguments& arguments) {
  CheckOptions& options = arguments.options;
  const std::string& roots = arguments.roots;
  const bool haveRegex = options.rootRegex != nullptr;
  const bool haveRanks = !options.ranks.empty();
  if (haveRegex && haveRanks) {
    return "--root-regex and --ranks contradict each other: roots come from one of them";
  }
  if (haveRegex && !roots.empty() && roots != "regex") {
    return "--roots " + roots + " and --root-regex contradict each other: allowed is --roots regex";
  }
  if (haveRanks && !roots.empty() && roots != "smdb") {
    return "--roots " + roots + " and --ranks contradict each other: allowed is --roots smdb";
  }
  if (roots == "regex" && !haveRegex) return "--roots regex needs --root-regex ERE";
  if (haveRegex) {
    options.roots = RootsFrom::Regex;
  } else if (haveRanks || roots == "smdb") {
    options.roots = RootsFrom::Smdb;
  }
  return std::nullopt;
}

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

Problem SettleFiles(const CheckArguments& arguments) {
  const CheckOptions& options = arguments.options;
  const std::array<const std::string*, 4> inputs{&options.fabric, &options.ranks, &options.flids,
                                                 &options.nodeNameMap};
  struct Output {
    const char* option;
    const std::string& file;
  };
  const std::array<Output, 4> outputs{{{"--dump ", arguments.dumpFile},
                                       {"--csv ", arguments.csvFile},
                                       {"--json ", arguments.jsonFile},
                                       {"--log ", arguments.logFile}}};

  const auto isStandardInput = [](const std::string* path) { return *path == "-"; };
  if (std::count_if(inputs.begin(), inputs.end(), isStandardInput) > 1) {
    return "standard input (-) can be read only once";
  }
  for (std::size_t i = 0; i < outputs.size(); ++i) {
    const Output& output = outputs[i];
    for (std::size_t j = 0; j < i; ++j) {
      const Output& other = outputs[j];
      if (!IsSameFile(other.file, output.file)) continue;
      return other.option + other.file + " and " + output.option + output.file +
             " contradict each other: each needs a file of its own";
    }
    for (const std::string* input : inputs) {
      if (output.file == "-" || !IsSameFile(output.file, *input)) continue;
      return output.option + output.file + " would overwrite the input " + *input;
    }
  }
  return std::nullopt;
}

}  // namespace

std::span<const CheckOption> CheckOptionTable() { return table; }

std::optional<std::string> SettleArguments(CheckArguments& arguments) {
  if (Problem problem = SettleRoots(arguments)) return problem;
  if (Problem problem = SettleFiles(arguments)) return problem;
  CheckOptions& options = arguments.options;
  if (!options.specialNodes) options.specialNodes = std::make_shared<regExp>("Aggregation Node");
  options.wantDump = !arguments.dumpFile.empty();
  return std::nullopt;
}

}  // namespace fabscope
