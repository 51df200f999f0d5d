#include "cli/convert_options.h"

#include <array>

#include "cli/format_texts.h"
#include "cli/named_files.h"

namespace fabscope::internal {
namespace {

using Problem = OptionProblem;

constexpr const char* ofInputs = "Input";

const char* OfTree() {
  static const std::string heading = "Finding the tree (" + NamesInWords(TreeFormats()) + " only)";
  return heading.c_str();
}

std::vector<BoundOption> BindOutput(ConvertArguments& arguments) {
  static const std::string choices = ChoiceOfNames(WrittenFormats());
  static const std::string more = TitlesInWords(WrittenFormats()) + ". The endings are " +
                                  EndingsByFormat(WrittenFormats()) + ".";
  const auto takeFile = [&arguments](const std::string& value) {
    return TakePath(arguments.output, value);
  };
  const auto takeFormat = [&arguments](const std::string& value) -> Problem {
    arguments.format = FormatOfName(WrittenFormats(), value);
    if (arguments.format != nullptr) return std::nullopt;
    return "expected " + NamesInWords(WrittenFormats());
  };
  return {
      {{"-o,--output", "FILE", "Output", "the file to write (- for standard output)", "Required."},
       takeFile,
       false},
      {{"--format", choices.c_str(), "Output", "format (default: by the ending of FILE)",
        more.c_str()},
       takeFormat,
       false}};
}

// What only the search for a tree looks at is told apart from what every format takes.
void AddTreeOptions(ConvertArguments& arguments, std::vector<BoundOption>& options) {
  std::vector<BoundOption> ofTreeOnly;
  for (BoundOption& option : BindTreeOptions(arguments)) {
    const std::string name = LongName(option.text);
    if (name == "--node-name-map" || name == "--special-nodes") {
      option.text.group = ofInputs;
      options.push_back(option);
      continue;
    }
    option.text.group = OfTree();
    option.take = [take = option.take, name, &arguments](const std::string& value) {
      arguments.treeOption = name;
      return take(value);
    };
    ofTreeOnly.push_back(option);
  }
  options.insert(options.end(), ofTreeOnly.begin(), ofTreeOnly.end());
}

Problem SettleFormat(ConvertArguments& arguments) {
  if (arguments.output.empty()) return "--output FILE is required";
  if (arguments.format == nullptr) {
    arguments.format = FormatOfFile(WrittenFormats(), arguments.output);
  }
  if (arguments.format == nullptr) {
    return "--output " + arguments.output +
           " does not tell the format by its ending: give --format " +
           NamesInWords(WrittenFormats());
  }
  if (arguments.format->IsMadeOfTree() || arguments.treeOption.empty()) return std::nullopt;
  return arguments.treeOption + " is for --format " + NamesInWords(TreeFormats()) +
         " only: no other looks for a tree";
}

}  // namespace

std::vector<BoundOption> BindOptions(ConvertArguments& arguments) {
  std::vector<BoundOption> options = BindOutput(arguments);
  AddTreeOptions(arguments, options);
  return options;
}

const CommandText convertText{
    .name = "convert",
    .summary = "Converts a fabric to another format.",
    .operands = {{"FABRIC", fabricHelp}},
    .options = TextsOf<ConvertArguments>,
    .examples = {{"fabscope convert fabric.topo -o fabric.json",
                  "Turns a topology dump into a fabric document."},
                 {"fabscope convert fabric.topo -o - --format dot | dot -Tsvg > fabric.svg",
                  "Draws a picture with Graphviz."},
                 {"fabscope convert fabric.topo -o topology.conf",
                  "Writes the tree for Slurm, which places jobs by it."}},
    .statuses = {{0, "everything written"}, {2, "error"}},
    .description =
        {"If the other format cannot hold something, a message on standard error says what, and "
         "how often.",
         "For Slurm, fabscope finds the tree as check does. Leaves with their hosts, groups and "
         "one root become topology.conf. Without a tree nothing is written."},
};

std::optional<std::string> SettleArguments(ConvertArguments& arguments) {
  if (Problem problem = SettleFormat(arguments)) return problem;
  if (Problem problem = SettleTree(arguments)) return problem;
  CheckOptions& options = arguments.options;
  if (!arguments.operands.empty()) options.fabric = arguments.operands.front();
  const std::array<const std::string*, 3> inputs{&options.fabric, &options.nodeNameMap,
                                                 &options.ranks};
  const std::array<NamedOutput, 1> outputs{{{"--output", arguments.output}}};
  return ProblemOfFiles(inputs, outputs);
}

}  // namespace fabscope::internal
