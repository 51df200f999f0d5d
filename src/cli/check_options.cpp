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
      "A line for each FLID. They add to those of a fabric document."},
     [](CheckArguments& arguments, const std::string& value) {
       return TakePath(arguments.options.flids, value);
     }},
    {{"--dump", "FILE", ofOutputs, "ranks and groups with their switches",
      "With - it follows the report."},
     [](CheckArguments& arguments, const std::string& value) {
       return TakePath(arguments.dumpFile, value);
     }},
    {{"--csv", "FILE", ofOutputs, "the error records as CSV",
      "With - it takes the place of the report."},
     [](CheckArguments& arguments, const std::string& value) {
       return TakePath(arguments.csvFile, value);
     }},
    {{"--json", "FILE", ofOutputs, "the whole result as JSON",
      "With - it takes the place of the report. Of several fabrics a line each."},
     [](CheckArguments& arguments, const std::string& value) {
       return TakePath(arguments.jsonFile, value);
     }},
    {{"--html", "FILE", ofOutputs, "a page to look at, to mail or to attach",
      "It loads nothing and needs no network. With - it takes the place of the report."},
     [](CheckArguments& arguments, const std::string& value) {
       return TakePath(arguments.htmlFile, value);
     }},
    {{"--svg", "FILE", ofOutputs, "a picture of the tree, for documents",
      "Of more than 256 switches groups are folded. With - it takes the place of the report."},
     [](CheckArguments& arguments, const std::string& value) {
       return TakePath(arguments.svgFile, value);
     }},
    {{"--prometheus", "FILE", ofOutputs, "numbers for the node exporter of Prometheus",
      "For its textfile collector: give FILE the ending .prom in the collector's folder. It is "
      "written when the check was finished, so an old time in it tells that checks fail. With - it "
      "takes the place of the report."},
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
                  "Checks the fabric that this host is part of, and writes a page to look at."},
                 {"fabscope check --quiet fabric.topo", "Reports nothing but what was found."},
                 {"fabscope check --root-regex '^spine' fabric.topo",
                  "Names the roots, where they cannot be found by themselves."},
                 {"fabscope check --json - fabric.topo.gz", "The result for a program."},
                 {"fabscope check --quiet --json results.jsonl archive/*.topo",
                  "Checks many fabrics at once, and names those with findings."}},
    .statuses = {{0, "nothing found"}, {1, "something found"}, {2, "the work could not be done"}},
    .description =
        {"Finds the fat tree that the switches of a fabric form, groups them into neighborhoods "
         "and connectivity groups, and reports which switches and ports are at fault: missing "
         "links, links that do not belong there, uneven link counts, suspected blocking, "
         "asymmetric aggregated ports, and FLIDs of several neighborhoods.",
         "The report is on standard output, messages are on standard error. Files are written "
         "whole or not at all, and nothing is written when the fabric cannot be read.",
         "Several fabrics are checked at the same time, on all cores. The report is then a line "
         "for "
         "each, and the exit status the highest of theirs; one that cannot be read does not keep "
         "the others from being checked."},
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
