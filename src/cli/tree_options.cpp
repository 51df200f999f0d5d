#include "cli/tree_options.h"

#include <array>
#include <limits>
#include <string_view>

namespace fabscope::internal {
namespace {

using Problem = OptionProblem;

constexpr int anyCount = std::numeric_limits<int>::max();

std::optional<RootsFrom> MethodOf(std::string_view name) {
  if (name == "auto") return RootsFrom::Auto;
  if (name == "search") return RootsFrom::Search;
  if (name == "inferred") return RootsFrom::Inferred;
  if (name == "smdb") return RootsFrom::Smdb;
  if (name == "regex") return RootsFrom::Regex;
  return std::nullopt;
}

constexpr std::array<CommandOption<TreeArguments>, 8> treeOptions{{
    {{"--roots", "auto|search|inferred|smdb|regex", ofRoots, "how to find the roots (default auto)",
      "search finds the roots by the distances of switches from leaves. inferred finds them from "
      "all cables at once, so a few wrong cables do not mislead it. auto uses search, unless it "
      "finds no roots or the inferred roots leave fewer misfits: cables to remove plus cables "
      "missing until the tree is proper. smdb uses the ranks of --ranks, otherwise those of the "
      "fabric document. regex uses the switches that --root-regex names."},
     [](TreeArguments& arguments, const std::string& value) -> Problem {
       if (!MethodOf(value)) return "expected auto, search, inferred, smdb or regex";
       arguments.roots = value;
       return std::nullopt;
     }},
    {{"--root-regex", "ERE", ofRoots, "roots are the switches whose name matches",
      "A POSIX extended regular expression, matched anywhere in the name, byte by byte. Implies "
      "--roots regex."},
     [](TreeArguments& arguments, const std::string& value) {
       return TakeRegex(arguments.options.rootRegex, value);
     }},
    {{"--ranks", "FILE", ofRoots, "the subnet manager's ranks (CSV: guid,rank)",
      "Rank 0 is a root; switches not in FILE have no rank. Implies --roots smdb."},
     [](TreeArguments& arguments, const std::string& value) {
       return TakePath(arguments.options.ranks, value);
     }},
    {{"--retries", "N", ofRoots, "search: further leaves to try (default 10)",
      "Leaves are tried until --equal of them give the same roots. 0 or more."},
     [](TreeArguments& arguments, const std::string& value) {
       arguments.searchOption = "--retries " + value;
       return TakeNumber(arguments.options.retries, value, 0, anyCount);
     }},
    {{"--equal", "N", ofRoots, "search: leaves that must agree (default 2)",
      "1 or more. A higher number is safer but fails more often."},
     [](TreeArguments& arguments, const std::string& value) {
       arguments.searchOption = "--equal " + value;
       return TakeNumber(arguments.options.equalClassifications, value, 1, anyCount);
     }},
    {{"--merge-percent", "P", ofGroups, "how alike up-links in a group are (default 70)",
      "Two sets of up-links that are more than this percentage alike form one group. 0 to 100. A "
      "lower number merges different groups when several leaves are damaged; a higher one splits "
      "off leaves of small groups."},
     [](TreeArguments& arguments, const std::string& value) {
       return TakeNumber(arguments.options.mergePercent, value, 0, 100);
     }},
    {{"--special-nodes", "ERE", ofGroups, specialNodesHelp, specialNodesMore},
     [](TreeArguments& arguments, const std::string& value) {
       return TakeRegex(arguments.options.specialNodes, value);
     }},
    {{"--node-name-map", "FILE", ofGroups, nodeNameMapHelp, nodeNameMapMore},
     [](TreeArguments& arguments, const std::string& value) {
       return TakePath(arguments.options.nodeNameMap, value);
     }},
}};

// --root-regex and --ranks each say how the roots are found; --roots may only say the same.
Problem SettleRoots(TreeArguments& arguments) {
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
  if (roots == "inferred" && !arguments.searchOption.empty()) {
    return "--roots inferred and " + arguments.searchOption +
           " contradict each other: allowed is --roots auto or search";
  }
  if (haveRegex) {
    options.roots = RootsFrom::Regex;
  } else if (haveRanks) {
    options.roots = RootsFrom::Smdb;
  } else {
    options.roots = MethodOf(roots).value_or(RootsFrom::Auto);
  }
  return std::nullopt;
}

}  // namespace

OptionProblem TakeMaxRecords(std::uint64_t& target, const std::string& value) {
  int number = 0;
  if (OptionProblem problem = TakeNumber(number, value, 0, anyCount)) return problem;
  target = static_cast<std::uint64_t>(number);
  return std::nullopt;
}

OptionProblem TakeShowGuid(int& target, const std::string& value) {
  constexpr std::array<const char*, 3> names{"none", "system", "node"};
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (value != names[i]) continue;
    target = static_cast<int>(i);
    return std::nullopt;
  }
  return "expected none, system or node";
}

Problem SettleLocations(const CheckOptions& options, const OutputFiles& outputs) {
  if (options.locations.empty()) return std::nullopt;
  for (const char* output : {"--work-order", "--html"}) {
    if (!outputs.Of(output).empty()) return std::nullopt;
  }
  return "--locations " + options.locations +
         " needs --work-order FILE or, of a check, --html FILE: nothing else shows places";
}

std::vector<BoundOption> BindTreeOptions(TreeArguments& arguments) {
  return Bind(treeOptions, arguments);
}

std::optional<std::string> SettleTree(TreeArguments& arguments) {
  if (Problem problem = SettleRoots(arguments)) return problem;
  CheckOptions& options = arguments.options;
  if (!options.specialNodes) options.specialNodes = std::make_shared<regExp>("Aggregation Node");
  return std::nullopt;
}

}  // namespace fabscope::internal
