#include "cli/check_options.h"

#include <array>

#include "cli/named_files.h"

namespace fabscope {
namespace {

using Problem = OptionProblem;

constexpr const char* ofOutputs = "Also write (- for standard output)";

constexpr std::array<CommandOption<CheckArguments>, 12> table{{
    {showGuidText,
     [](CheckArguments& arguments, const std::string& value) {
       return TakeShowGuid(arguments.options.showGuid, value);
     }},
    {{"--flids", "FILE", ofGroups, "FLIDs of switches (CSV: guid,flid)",
      "One line per FLID. They add to those of a fabric document."},
     [](CheckArguments& arguments, const std::string& value) {
       return TakePath(arguments.options.flids, value);
     }},
    {{"--dump", "FILE", ofOutputs, "ranks and groups with their switches",
      "With - it follows the report."},
     [](CheckArguments& arguments, const std::string& value) {
       return TakePath(arguments.dumpFile, value);
     }},
    {{"--csv", "FILE", ofOutputs, "the error records as CSV", "With - it replaces the report."},
     [](CheckArguments& arguments, const std::string& value) {
       return TakePath(arguments.csvFile, value);
     }},
    {{"--json", "FILE", ofOutputs, "the whole result as JSON",
      "With - it replaces the report. With several fabrics, one line each."},
     [](CheckArguments& arguments, const std::string& value) {
       return TakePath(arguments.jsonFile, value);
     }},
    {{"--html", "FILE", ofOutputs, "a page to open, mail or attach",
      "It loads nothing and needs no network. With - it replaces the report."},
     [](CheckArguments& arguments, const std::string& value) {
       return TakePath(arguments.htmlFile, value);
     }},
    {{"--svg", "FILE", ofOutputs, "a picture of the tree, for documents",
      "With more than 256 switches, groups are folded. With - it replaces the report."},
     [](CheckArguments& arguments, const std::string& value) {
       return TakePath(arguments.svgFile, value);
     }},
    {{"--prometheus", "FILE", ofOutputs, "metrics for the Prometheus node exporter",
      "For its textfile collector: put FILE into the collector's folder, with the ending .prom. It "
      "is written only when a check finishes, so an old time in it means that checks fail. With - "
      "it replaces the report."},
     [](CheckArguments& arguments, const std::string& value) {
       return TakePath(arguments.prometheusFile, value);
     }},
    {{"--log", "FILE", ofOutputs, "all messages of standard error", ""},
     [](CheckArguments& arguments, const std::string& value) {
       return TakePath(arguments.logFile, value);
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

Problem SettleFiles(const CheckArguments& arguments) {
  const CheckOptions& options = arguments.options;
  std::vector<const std::string*> inputs;
  for (const std::string& fabric : arguments.operands) inputs.push_back(&fabric);
  inputs.insert(inputs.end(), {&options.ranks, &options.flids, &options.nodeNameMap});
  const std::array<NamedOutput, 7> outputs{{{"--dump ", arguments.dumpFile},
                                            {"--csv ", arguments.csvFile},
                                            {"--json ", arguments.jsonFile},
                                            {"--html ", arguments.htmlFile},
                                            {"--svg ", arguments.svgFile},
                                            {"--prometheus ", arguments.prometheusFile},
                                            {"--log ", arguments.logFile}}};
  return ProblemOfFiles(inputs, outputs);
}

// These files tell of one fabric.
Problem SettleSeveral(const CheckArguments& arguments) {
  if (arguments.operands.size() < 2) return std::nullopt;
  const std::array<NamedOutput, 5> ofOne{{{"--dump ", arguments.dumpFile},
                                          {"--csv ", arguments.csvFile},
                                          {"--html ", arguments.htmlFile},
                                          {"--svg ", arguments.svgFile},
                                          {"--prometheus ", arguments.prometheusFile}}};
  for (const NamedOutput& output : ofOne) {
    if (output.file.empty()) continue;
    return output.option + output.file + " takes one FABRIC: of several there is --json";
  }
  const CheckOptions& options = arguments.options;
  const std::array<NamedInput, 3> shared{{{"--ranks ", options.ranks},
                                          {"--flids ", options.flids},
                                          {"--node-name-map ", options.nodeNameMap}}};
  return ProblemOfSharedInputs(shared);
}

}  // namespace

std::vector<BoundOption> BindOptions(CheckArguments& arguments) {
  return Bind(table, arguments, BindTreeOptions(arguments));
}

const CommandText checkText{
    .name = "check",
    .summary = "Checks the cabling of a fabric and reports what is wrong.",
    .operands = {{"FABRIC...", fabricHelp}},
    .options = TextsOf<CheckArguments>,
    .examples = {{"ibnetdiscover | fabscope check - --html page.html",
                  "Checks the fabric of this host and writes a page (ibnetdiscover needs root)."},
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
  if (Problem problem = SettleFiles(arguments)) return problem;
  CheckOptions& options = arguments.options;
  options.wantDump = !arguments.dumpFile.empty();
  options.wantRepairs = !arguments.jsonFile.empty() || !arguments.htmlFile.empty();
  options.wantMisfits = !arguments.jsonFile.empty() || !arguments.htmlFile.empty() ||
                        !arguments.prometheusFile.empty();
  return std::nullopt;
}

}  // namespace fabscope
