#include "cli/repair_options.h"

#include <array>

#include "cli/named_files.h"

namespace fabscope {
namespace {

using Problem = OptionProblem;

constexpr const char* ofOutputs = "Also write (- for standard output)";
constexpr const char* ofPlan = "A plan of another day";

constexpr OptionText rootsText{
    "--roots", "inferred|smdb|regex", ofRoots,
    "from the whole fabric (inferred), or as the next two say",
    "inferred looks at all cables at once, so that a few wrong ones do not mislead it; smdb takes "
    "the ranks of --ranks, or else those of a fabric document; regex takes the switches that "
    "--root-regex names. The default is inferred."};

constexpr std::array<CommandOption<RepairArguments>, 5> table{{
    {showGuidText,
     [](RepairArguments& arguments, const std::string& value) {
       return TakeShowGuid(arguments.options.showGuid, value);
     }},
    {{"--csv", "FILE", ofOutputs, "a row for each end of a cable that changes, as CSV",
      "Alternatives are not in it. With - it takes the place of the report."},
     [](RepairArguments& arguments, const std::string& value) {
       return TakePath(arguments.csvFile, value);
     }},
    {{"--json", "FILE", ofOutputs, "the plan as JSON",
      "--verify reads it again. With - it takes the place of the report."},
     [](RepairArguments& arguments, const std::string& value) {
       return TakePath(arguments.jsonFile, value);
     }},
    {{"--after", "FILE", ofOutputs, "the fabric as it will be (format: by the ending of FILE)",
      "The endings are those of fabscope convert: .json, .topo, .net, .dot or .gv, .graphml."},
     [](RepairArguments& arguments, const std::string& value) {
       return TakePath(arguments.afterFile, value);
     }},
    {{"--verify", "FILE", ofPlan, "tell which steps of the plan are done in FABRIC",
      "FILE is what --json has written. A line for each step, then the repairs that FABRIC needs "
      "and the plan does not have. A plan is refused when fewer than half of the switches that it "
      "names are in FABRIC."},
     [](RepairArguments& arguments, const std::string& value) {
       return TakePath(arguments.planFile, value);
     }},
}};

Problem TakeRoots(RepairArguments& arguments, const std::string& value) {
  if (value != "inferred" && value != "smdb" && value != "regex") {
    return "expected inferred, smdb or regex";
  }
  arguments.roots = value;
  return std::nullopt;
}

// Those of a search by distances have no meaning here.
std::vector<BoundOption> BindRootsAndGroups(RepairArguments& arguments) {
  std::vector<BoundOption> options;
  for (const BoundOption& option : BindTreeOptions(arguments)) {
    const std::string name = LongName(option.text);
    if (name == "--retries" || name == "--equal") continue;
    if (name != "--roots") {
      options.push_back(option);
      continue;
    }
    const auto take = [&arguments](const std::string& value) {
      return TakeRoots(arguments, value);
    };
    options.push_back({rootsText, take, false});
  }
  return options;
}

Problem SettleFormat(RepairArguments& arguments) {
  if (arguments.afterFile.empty()) return std::nullopt;
  arguments.afterFormat = FabricFormatOfFile(arguments.afterFile);
  if (arguments.afterFormat) return std::nullopt;
  return "--after " + arguments.afterFile +
         " does not tell the format by its ending: expected .json, .topo, .net, .dot, .gv or "
         ".graphml";
}

Problem SettleFiles(const RepairArguments& arguments) {
  const CheckOptions& options = arguments.options;
  const std::array<NamedOutput, 3> outputs{{{"--csv ", arguments.csvFile},
                                            {"--json ", arguments.jsonFile},
                                            {"--after ", arguments.afterFile}}};
  for (const NamedOutput& output : outputs) {
    if (arguments.planFile.empty() || output.file.empty()) continue;
    return output.option + output.file +
           " and --verify contradict each other: nothing is written "
           "where a plan is verified";
  }
  const std::array<const std::string*, 4> inputs{&options.fabric, &options.ranks,
                                                 &options.nodeNameMap, &arguments.planFile};
  return ProblemOfFiles(inputs, outputs);
}

}  // namespace

std::vector<BoundOption> BindOptions(RepairArguments& arguments) {
  return Bind(table, arguments, BindRootsAndGroups(arguments));
}

const CommandText repairText{
    .name = "repair",
    .summary = "Tells which cables to move so that a fabric is a proper fat tree.",
    .operands = {{"FABRIC", fabricHelp}},
    .options = TextsOf<RepairArguments>,
    .examples = {{"fabscope repair fabric.topo --json plan.json",
                  "The cables to move, and the same as a plan to come back to."},
                 {"ibnetdiscover | fabscope repair --verify plan.json -",
                  "What of that plan is done by now."},
                 {"fabscope repair fabric.topo --after repaired.json",
                  "Also the fabric as it will be."}},
    .statuses = {{0, "nothing to do"}, {1, "something to do"}, {2, "the work could not be done"}},
    .description =
        {"Finds the few cables that are in a wrong place, and tells for each what to unplug and "
         "where it goes. No plan of the cabling is needed: what most cables agree on is the "
         "tree.",
         "Every repair is proven: the fabric as it will be is checked as by fabscope check, and "
         "the last line tells what is left.",
         "[sure] may be done as it stands: every other explanation of the cabling needs at least "
         "two changes more. [likely] is worth a look first: the group is unusual, or few cables "
         "speak for it. [ask] has alternatives that do as well; names, places or an older dump "
         "decide.",
         "Where too much is wrong to tell what belongs where, it says so and proposes nothing for "
         "that part."},
};

std::optional<std::string> SettleArguments(RepairArguments& arguments) {
  if (Problem problem = SettleTree(arguments)) return problem;
  if (!arguments.operands.empty()) arguments.options.fabric = arguments.operands.front();
  if (Problem problem = SettleFormat(arguments)) return problem;
  return SettleFiles(arguments);
}

}  // namespace fabscope
