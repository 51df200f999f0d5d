#include "cli/check_options.h"

#include <array>
#include <utility>

#include "reports/csv_report.h"
#include "reports/html_report.h"
#include "reports/json_report.h"
#include "reports/prometheus_report.h"
#include "reports/svg_report.h"
#include "reports/work_order.h"
#include "text/text_fields.h"

namespace fabscope::internal {
namespace {

using Problem = OptionProblem;

constexpr std::array<CommandOption<CheckArguments>, 3> checkOptions{{
    {showGuidText,
     [](CheckArguments& arguments, const std::string& value) {
       return TakeShowGuid(arguments.options.showGuid, value);
     }},
    {{"--flids", "FILE", ofGroups, "FLIDs of switches (CSV: guid,flid)",
      "One line per FLID. They add to those of a fabric document."},
     [](CheckArguments& arguments, const std::string& value) {
       return TakePath(arguments.options.flids, value);
     }},
    {locationsText,
     [](CheckArguments& arguments, const std::string& value) {
       return TakePath(arguments.options.locations, value);
     }},
}};

constexpr std::array<CommandOption<CheckArguments>, 4> reportTable{{
    {{"-s,--summary", "", ofReport, "a few lines: what to do, and what was found",
      "In place of the report: the verdict, a line for each repair, and counts."},
     [](CheckArguments& arguments, const std::string&) -> Problem {
       arguments.summary = true;
       return std::nullopt;
     }},
    {maxRecordsText,
     [](CheckArguments& arguments, const std::string& value) {
       return TakeMaxRecords(arguments.options.mostRecords, value);
     }},
    {quietText,
     [](CheckArguments& arguments, const std::string&) -> Problem {
       arguments.quiet = true;
       return std::nullopt;
     }},
    {colorText, [](CheckArguments& arguments,
                   const std::string& value) { return TakeColor(arguments.color, value); }},
}};

CheckTime TimeOf(const CheckRun& run) {
  const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - run.start;
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  return {taken.count(), std::chrono::duration_cast<std::chrono::seconds>(now).count()};
}

void AskForCures(CheckOptions& options) {
  options.wantRepairs = true;
  options.wantMisfits = true;
}

void WriteWorkOrderOf(const CheckRun& run, std::ostream& stream) {
  const CheckResult& result = run.result;
  const RepairPlan nothing;
  WriteWorkOrder({*result.fabric, result.repairs ? result.repairs->plan : nothing,
                  result.locations.get(), result.showGuid},
                 stream);
}

constexpr std::array<Output<CheckRun>, 8> checkOutputs{{
    {.text = {"--dump", "FILE", alsoWritten, "ranks and groups with their switches",
              "With - it follows the report."},
     .due = Due::Done,
     .dash = Dash::IsInReport,
     .write = [](const CheckRun& run,
                 std::ostream& stream) { WriteForPeople(run.result.dump, stream); },
     .ask = [](CheckOptions& options) { options.wantDump = true; }},
    {.text = {"--csv", "FILE", alsoWritten, "the error records as CSV",
              "With - it replaces the report."},
     .due = Due::Built,
     .dash = Dash::ReplacesReport,
     .write = [](const CheckRun& run,
                 std::ostream& stream) { WriteCsvReport(run.result, stream); }},
    {.text = {"--json", "FILE", alsoWritten, "the whole result as JSON",
              "With - it replaces the report. With several fabrics, one line each."},
     .due = Due::Read,
     .dash = Dash::ReplacesReport,
     .write = [](const CheckRun& run,
                 std::ostream& stream) { WriteJsonReport(run.result, run.style, stream); },
     .ask = AskForCures,
     .ofSeveral = true},
    {.text = {"--html", "FILE", alsoWritten, "a page to open, mail or attach",
              "It loads nothing and needs no network. With - it replaces the report."},
     .due = Due::Read,
     .dash = Dash::ReplacesReport,
     .write = [](const CheckRun& run,
                 std::ostream& stream) { WriteHtmlReport(run.result, stream); },
     .ask = AskForCures},
    {.text = workOrderText,
     .due = Due::Done,
     .dash = Dash::ReplacesReport,
     .write = WriteWorkOrderOf,
     .ask = AskForCures},
    {.text = {"--svg", "FILE", alsoWritten, "a picture of the tree, for documents",
              "With more than 256 switches, groups are folded. With - it replaces the report."},
     .due = Due::Built,
     .dash = Dash::ReplacesReport,
     .write = [](const CheckRun& run,
                 std::ostream& stream) { WriteSvgReport(run.result, stream); }},
    {.text = {"--prometheus", "FILE", alsoWritten, "metrics for the Prometheus node exporter",
              "For its textfile collector: put FILE into the collector's folder, with the ending "
              ".prom. It is written only when a check finishes, so an old time in it means that "
              "checks fail. With - it replaces the report."},
     .due = Due::Done,
     .dash = Dash::ReplacesReport,
     .write = [](const CheckRun& run,
                 std::ostream& stream) { WritePrometheusReport(run.result, TimeOf(run), stream); },
     .ask = [](CheckOptions& options) { options.wantMisfits = true; }},
    {.text = {"--log", "FILE", alsoWritten, "all messages of standard error", ""},
     .due = Due::AtEnd,
     .dash = Dash::IsBehind,
     .write = [](const CheckRun& run, std::ostream& stream) { stream << run.messages.GetLog(); },
     .ofSeveral = true},
}};

Problem SettleFiles(const CheckArguments& arguments) {
  const CheckOptions& options = arguments.options;
  std::vector<const std::string*> inputs;
  for (const std::string& fabric : arguments.operands) inputs.push_back(&fabric);
  inputs.insert(inputs.end(),
                {&options.ranks, &options.flids, &options.nodeNameMap, &options.locations});
  return ProblemOfFiles(inputs, NamedOutputs(CheckOutputs(), arguments.outputs));
}

Problem SettleSeveral(const CheckArguments& arguments) {
  if (arguments.operands.size() < 2) return std::nullopt;
  if (arguments.summary)
    return "--summary takes one FABRIC: of several there is a line each anyway";
  for (const Output<CheckRun>& output : CheckOutputs()) {
    const NamedOutput named{output.text.name, arguments.outputs.Of(output.text.name)};
    if (output.ofSeveral || named.file.empty()) continue;
    return Named(named) + " takes one FABRIC: of several there is --json";
  }
  const CheckOptions& options = arguments.options;
  const std::array<NamedInput, 3> shared{{{"--ranks", options.ranks},
                                          {"--flids", options.flids},
                                          {"--node-name-map", options.nodeNameMap}}};
  return ProblemOfSharedInputs(shared);
}

}  // namespace

Outputs<CheckRun> CheckOutputs() { return checkOutputs; }

std::vector<BoundOption> BindOptions(CheckArguments& arguments) {
  std::vector<BoundOption> options = Bind(checkOptions, arguments, BindTreeOptions(arguments));
  BindOutputs(CheckOutputs(), arguments.outputs, options);
  return Bind(reportTable, arguments, std::move(options));
}

const CommandText checkText{
    .name = "check",
    .summary = "Checks the cabling of a fabric and reports what is wrong.",
    .operands = {{"FABRIC...", fabricHelp}},
    .options = TextsOf<CheckArguments>,
    .examples = {{"ibnetdiscover | fabscope check - --html page.html",
                  "Checks the fabric of this host and writes a page (ibnetdiscover needs root)."},
                 {"fabscope check --summary fabric.topo", "Says what to do, in a few lines."},
                 {"fabscope check --quiet fabric.topo", "Reports only the findings."},
                 {"fabscope check --root-regex '^spine' fabric.topo",
                  "Names the roots, if fabscope finds the wrong ones."},
                 {"fabscope check --json - fabric.topo.gz", "Writes the result for a program."},
                 {"fabscope check --quiet --json results.jsonl archive/*.topo",
                  "Checks many fabrics at once and lists those with findings."}},
    .statuses = {{0, "nothing found"}, {1, "something found"}, {2, "error"}},
    .description =
        {"Finds the fat tree that the switches of a fabric form, groups them into neighborhoods "
         "and connectivity groups, and reports which switches and ports are at fault: missing "
         "links, invalid links, uneven link counts, suspected blocking, "
         "asymmetric aggregated ports, and FLIDs in several neighborhoods.",
         "The report goes to standard output, messages go to standard error. Files are written "
         "whole or not at all. If the fabric cannot be read, nothing is written.",
         "Several fabrics are checked at the same time, on all cores. The report then has one line "
         "for each, and the exit status is the highest of all. If one cannot be read, the others "
         "are still checked."},
};

std::optional<std::string> SettleArguments(CheckArguments& arguments) {
  if (Problem problem = SettleTree(arguments)) return problem;
  if (!arguments.operands.empty()) arguments.options.fabric = arguments.operands.front();
  if (Problem problem = SettleSeveral(arguments)) return problem;
  if (Problem problem = SettleLocations(arguments.options, arguments.outputs)) return problem;
  if (Problem problem = SettleFiles(arguments)) return problem;
  AskForOutputs(CheckOutputs(), arguments.outputs, arguments.options);
  if (arguments.summary) AskForCures(arguments.options);
  return std::nullopt;
}

}  // namespace fabscope::internal
