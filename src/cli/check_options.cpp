#include "cli/check_options.h"

#include <array>
#include <limits>

#include "cli/named_files.h"

namespace fabscope {
namespace {

using Problem = OptionProblem;

constexpr int anyCount = std::numeric_limits<int>::max();

constexpr std::array<CheckOption, 18> table{{
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
    {"--html", "FILE",
     "Also write the result as a page to look at (- for standard output, instead of the report)",
     [](CheckArguments& arguments, const std::string& value) {
       return TakePath(arguments.htmlFile, value);
     }},
    {"--svg", "FILE",
     "Also draw the tree, for documents (- for standard output, instead of the report)",
     [](CheckArguments& arguments, const std::string& value) {
       return TakePath(arguments.svgFile, value);
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

Problem SettleFiles(const CheckArguments& arguments) {
  const CheckOptions& options = arguments.options;
  const std::array<const std::string*, 4> inputs{&options.fabric, &options.ranks, &options.flids,
                                                 &options.nodeNameMap};
  const std::array<NamedOutput, 6> outputs{{{"--dump ", arguments.dumpFile},
                                            {"--csv ", arguments.csvFile},
                                            {"--json ", arguments.jsonFile},
                                            {"--html ", arguments.htmlFile},
                                            {"--svg ", arguments.svgFile},
                                            {"--log ", arguments.logFile}}};
  return ProblemOfFiles(inputs, outputs);
}

}  // namespace

std::span<const CheckOption> CheckOptionTable() { return table; }

std::optional<std::string> SettleArguments(CheckArguments& arguments) {
  if (Problem problem = SettleRoots(arguments)) return problem;
  if (Problem problem = SettleFiles(arguments)) return problem;
  CheckOptions& options = arguments.options;
  if (!options.specialNodes) options.specialNodes = std::make_shared<regExp>("Aggregation Node");
  options.wantDump = !arguments.dumpFile.empty();
  options.wantFindings =
      !arguments.jsonFile.empty() || !arguments.htmlFile.empty() || !arguments.svgFile.empty();
  return std::nullopt;
}

}  // namespace fabscope
