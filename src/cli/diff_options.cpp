#include "cli/diff_options.h"

#include <array>
#include <utility>

#include "reports/difference_report.h"

namespace fabscope::internal {
namespace {

constexpr std::array<Output<Difference>, 1> diffOutputs{{
    {.text = {"--json", "FILE", ofReport, "also write it as JSON (- for standard output)",
              "With - it replaces the report."},
     .due = Due::Read,
     .dash = Dash::ReplacesReport,
     .write = WriteDifferenceJson},
}};

constexpr std::array<CommandOption<DiffArguments>, 4> diffOptions{{
    {{"--plan", "FILE", ofReport, "also say which steps of the repair plan are done",
      "FILE comes from fabscope repair --json. It is refused if fewer than half of the switches "
      "that it names are in NEW."},
     [](DiffArguments& arguments, const std::string& value) {
       return TakePath(arguments.planFile, value);
     }},
    {maxRecordsText,
     [](DiffArguments& arguments, const std::string& value) {
       return TakeMaxRecords(arguments.options.mostRecords, value);
     }},
    {quietText,
     [](DiffArguments& arguments, const std::string&) -> OptionProblem {
       arguments.quiet = true;
       return std::nullopt;
     }},
    {colorText, [](DiffArguments& arguments,
                   const std::string& value) { return TakeColor(arguments.color, value); }},
}};

}  // namespace

Outputs<Difference> DiffOutputs() { return diffOutputs; }

std::vector<BoundOption> BindOptions(DiffArguments& arguments) {
  std::vector<BoundOption> options = BindTreeOptions(arguments);
  BindOutputs(DiffOutputs(), arguments.outputs, options);
  return Bind(diffOptions, arguments, std::move(options));
}

const CommandText diffText{
    .name = "diff",
    .summary = "Shows what changed between two dumps of a fabric.",
    .operands = {{"OLD", "the fabric as it was: a dump or document, as for check"},
                 {"NEW", "the fabric as it is; - for standard input"}},
    .options = TextsOf<DiffArguments>,
    .examples = {{"ibnetdiscover | fabscope diff yesterday.topo -",
                  "Shows what changed since yesterday."},
                 {"fabscope diff --json - monday.topo tuesday.topo",
                  "Writes the changes for a program."},
                 {"fabscope diff --plan plan.json monday.topo tuesday.topo",
                  "Also shows which of Monday's repairs are done."}},
    .statuses = {{0, "no difference"}, {1, "something differs"}, {2, "error"}},
    .description =
        {"Lists which switches, hosts and cables came, went or moved, which links changed speed, "
         "and which findings of fabscope check are cured or new: one line each, and nothing if "
         "nothing differs.",
         "Nodes with the same GUID are the same. If a node went and another came with its name, "
         "the hardware was replaced. If one end of a cable stayed in its port, the cable has "
         "moved. Group numbers do not matter.",
         "If one of the trees cannot be built or validated, or has more error records than "
         "--max-records, findings are not compared, and the exit status is 2."},
};

std::optional<std::string> SettleArguments(DiffArguments& arguments) {
  if (OptionProblem problem = SettleTree(arguments)) return problem;
  std::vector<const std::string*> inputs;
  for (const std::string& fabric : arguments.operands) inputs.push_back(&fabric);
  inputs.insert(inputs.end(),
                {&arguments.options.ranks, &arguments.options.nodeNameMap, &arguments.planFile});
  const std::array<NamedInput, 2> shared{
      {{"--ranks", arguments.options.ranks}, {"--node-name-map", arguments.options.nodeNameMap}}};
  if (OptionProblem problem = ProblemOfSharedInputs(shared)) return problem;
  return ProblemOfFiles(inputs, NamedOutputs(DiffOutputs(), arguments.outputs));
}

}  // namespace fabscope::internal
