#include "cli/repair_options.h"

#include <array>
#include <utility>

#include "cli/format_texts.h"
#include "reports/repair_report.h"

namespace fabscope {
namespace {

using Problem = OptionProblem;

constexpr const char* ofPlan = "A plan of another day";

constexpr OptionText rootsText{
    "--roots", "inferred|smdb|regex", ofRoots,
    "from the whole fabric (inferred), or as the next two say",
    "inferred looks at all cables at once, so that a few wrong ones do not mislead it; smdb takes "
    "the ranks of --ranks, or else those of a fabric document; regex takes the switches that "
    "--root-regex names. The default is inferred."};

constexpr std::array<CommandOption<RepairArguments>, 1> groupTable{{
    {showGuidText,
     [](RepairArguments& arguments, const std::string& value) {
       return TakeShowGuid(arguments.options.showGuid, value);
     }},
}};

constexpr std::array<CommandOption<RepairArguments>, 1> planTable{{
    {{"--verify", "FILE", ofPlan, "tell which steps of the plan are done in FABRIC",
      "FILE is what --json has written. A line for each step, then the repairs that FABRIC needs "
      "and the plan does not have. A plan is refused when fewer than half of the switches that it "
      "names are in FABRIC."},
     [](RepairArguments& arguments, const std::string& value) {
       return TakePath(arguments.planFile, value);
     }},
}};

using OutputTable = std::array<Output<RepairRun>, 3>;

const OutputTable& GetOutputTable() {
  static const std::string moreOfAfter =
      "The endings are those of fabscope convert: " + EndingsByFormat(FabricFormats()) + ".";
  static const OutputTable table{{
      {.text = {"--csv", "FILE", alsoWritten, "a row for each end of a cable that changes, as CSV",
                "Alternatives are not in it. With - it takes the place of the report."},
       .due = Due::Done,
       .dash = Dash::ReplacesReport,
       .write = [](const RepairRun& run,
                   std::ostream& stream) { WriteRepairCsv(run.result, stream); }},
      {.text = {"--json", "FILE", alsoWritten, "the plan as JSON",
                "--verify reads it again. With - it takes the place of the report."},
       .due = Due::Read,
       .dash = Dash::ReplacesReport,
       .write = [](const RepairRun& run,
                   std::ostream& stream) { WriteRepairJson(run.result, stream); }},
      {.text = {"--after", "FILE", alsoWritten,
                "the fabric as it will be (format: by the ending of FILE)", moreOfAfter.c_str()},
       .due = Due::Done,
       .dash = Dash::IsBehind,
       .write =
           [](const RepairRun& run, std::ostream& stream) {
             WriteFabric(run.result.Repaired(), *run.afterFormat, stream);
           },
       .losses =
           [](const RepairRun& run) { return LossesOf(run.result.Repaired(), *run.afterFormat); }},
  }};
  return table;
}

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
  const std::string& file = arguments.outputs.Of("--after");
  if (file.empty()) return std::nullopt;
  arguments.afterFormat = FabricFormatOfFile(file);
  if (arguments.afterFormat) return std::nullopt;
  return "--after " + file + " does not tell the format by its ending: expected " +
         EndingsInWords(FabricFormats());
}

Problem SettleFiles(const RepairArguments& arguments) {
  const CheckOptions& options = arguments.options;
  const std::vector<NamedOutput> outputs = NamedOutputs(RepairOutputs(), arguments.outputs);
  if (!arguments.planFile.empty() && !outputs.empty()) {
    return Named(outputs.front()) +
           " and --verify contradict each other: nothing is written where a plan is verified";
  }
  const std::array<const std::string*, 4> inputs{&options.fabric, &options.ranks,
                                                 &options.nodeNameMap, &arguments.planFile};
  return ProblemOfFiles(inputs, outputs);
}

}  // namespace

Outputs<RepairRun> RepairOutputs() { return GetOutputTable(); }

std::vector<BoundOption> BindOptions(RepairArguments& arguments) {
  std::vector<BoundOption> options = Bind(groupTable, arguments, BindRootsAndGroups(arguments));
  BindOutputs(RepairOutputs(), arguments.outputs, options);
  return Bind(planTable, arguments, std::move(options));
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
