#include "cli/repair_options.h"

#include <array>
#include <utility>

#include "cli/format_texts.h"
#include "reports/repair_report.h"
#include "reports/work_order.h"

namespace fabscope::internal {
namespace {

using Problem = OptionProblem;

constexpr const char* ofPlan = "Earlier plan";

constexpr OptionText rootsText{
    "--roots", "inferred|smdb|regex", ofRoots, "how to find the roots (default inferred)",
    "inferred finds the roots from all cables at once, so a few wrong cables do not mislead it. "
    "smdb uses the ranks of --ranks, otherwise those of the fabric document. regex uses the "
    "switches that --root-regex names."};

constexpr std::array<CommandOption<RepairArguments>, 2> repairOptions{{
    {showGuidText,
     [](RepairArguments& arguments, const std::string& value) {
       return TakeShowGuid(arguments.options.showGuid, value);
     }},
    {locationsText,
     [](RepairArguments& arguments, const std::string& value) {
       return TakePath(arguments.options.locations, value);
     }},
}};

constexpr std::array<CommandOption<RepairArguments>, 1> planTable{{
    {{"--verify", "FILE", ofPlan, "say which steps of the plan are done in FABRIC",
      "FILE comes from --json. Prints one line per step, then the repairs that FABRIC needs and "
      "the plan does not have. A plan is refused if fewer than half of the switches that it names "
      "are in FABRIC."},
     [](RepairArguments& arguments, const std::string& value) {
       return TakePath(arguments.planFile, value);
     }},
}};

using OutputTable = std::array<Output<RepairRun>, 4>;

const OutputTable& GetOutputTable() {
  static const std::string moreOfAfter =
      "The endings are those of fabscope convert: " + EndingsByFormat(FabricFormats()) + ".";
  static const OutputTable table{{
      {.text = {"--csv", "FILE", alsoWritten, "one row per cable end that changes, as CSV",
                "Alternatives are not included. With - it replaces the report."},
       .due = Due::Done,
       .dash = Dash::ReplacesReport,
       .write = [](const RepairRun& run,
                   std::ostream& stream) { WriteRepairCsv(run.result, stream); }},
      {.text = workOrderText,
       .due = Due::Done,
       .dash = Dash::ReplacesReport,
       .write =
           [](const RepairRun& run, std::ostream& stream) {
             const RepairResult& result = run.result;
             WriteWorkOrder(
                 {*result.fabric, result.proven.plan, result.locations.get(), result.showGuid},
                 stream);
           }},
      {.text = {"--json", "FILE", alsoWritten, "the plan as JSON",
                "For --verify. With - it replaces the report."},
       .due = Due::Read,
       .dash = Dash::ReplacesReport,
       .write = [](const RepairRun& run,
                   std::ostream& stream) { WriteRepairJson(run.result, stream); }},
      {.text = {"--after", "FILE", alsoWritten, "the repaired fabric (format: ending of FILE)",
                moreOfAfter.c_str()},
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
  const std::array<const std::string*, 5> inputs{&options.fabric, &options.ranks,
                                                 &options.locations, &options.nodeNameMap,
                                                 &arguments.planFile};
  return ProblemOfFiles(inputs, outputs);
}

}  // namespace

Outputs<RepairRun> RepairOutputs() { return GetOutputTable(); }

std::vector<BoundOption> BindOptions(RepairArguments& arguments) {
  std::vector<BoundOption> options = Bind(repairOptions, arguments, BindRootsAndGroups(arguments));
  BindOutputs(RepairOutputs(), arguments.outputs, options);
  return Bind(planTable, arguments, std::move(options));
}

const CommandText repairText{
    .name = "repair",
    .summary = "Says which cables to move for a proper fat tree.",
    .operands = {{"FABRIC", fabricHelp}},
    .options = TextsOf<RepairArguments>,
    .examples = {{"fabscope repair fabric.topo --json plan.json",
                  "Shows the cables to move, and saves them as a plan."},
                 {"ibnetdiscover | fabscope repair --verify plan.json -",
                  "Shows which steps of that plan are done by now."},
                 {"fabscope repair fabric.topo --after repaired.json",
                  "Also writes the repaired fabric."}},
    .statuses = {{0, "nothing to do"}, {1, "something to do"}, {2, "error"}},
    .description =
        {"Finds the few cables in the wrong place, and says for each what to unplug and where it "
         "goes. No cabling plan is needed: the tree is what most cables agree on.",
         "Every plan is tried on a copy: the repaired fabric is checked as by fabscope check, and "
         "the last line says what is left.",
         "[sure]: do it as written. Any other explanation takes at least two more changes, or the "
         "ports clearly speak against it. [likely]: look first. Few cables support the step, or "
         "much around it is wrong. [ask]: choose. The alternatives need no more changes; names, "
         "racks or an older dump decide.",
         "Where too much is wrong to tell what belongs where, fabscope says so and proposes "
         "nothing for that part."},
};

std::optional<std::string> SettleArguments(RepairArguments& arguments) {
  if (Problem problem = SettleTree(arguments)) return problem;
  if (!arguments.operands.empty()) arguments.options.fabric = arguments.operands.front();
  if (Problem problem = SettleFormat(arguments)) return problem;
  if (Problem problem = SettleLocations(arguments.options, arguments.outputs)) return problem;
  return SettleFiles(arguments);
}

}  // namespace fabscope::internal
