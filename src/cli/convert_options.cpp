#include "cli/convert_options.h"

#include <array>

#include "cli/named_files.h"

namespace fabscope {
namespace {

using Problem = OptionProblem;

constexpr const char* ofOutputs = "Output";
constexpr const char* ofInputs = "Input";
constexpr const char* ofTree = "Finding the tree (slurm only)";

constexpr const char* slurmName = "slurm";
constexpr const char* slurmEnding = ".conf";

constexpr std::array<CommandOption<ConvertArguments>, 2> table{{
    {{"-o,--output", "FILE", ofOutputs, "the file to write (- for standard output)", "Required."},
     [](ConvertArguments& arguments, const std::string& value) {
       return TakePath(arguments.output, value);
     }},
    {{"--format", "document|ibnetdiscover|ibsim|dot|graphml|slurm", ofOutputs,
      "format (default: by the ending of FILE)",
      "Fabric document, topology dump, net file of the simulator ibsim, Graphviz, GraphML or "
      "Slurm's topology.conf. The endings are .json, .topo, .net, .dot or .gv, .graphml, .conf."},
     [](ConvertArguments& arguments, const std::string& value) -> Problem {
       arguments.format = FabricFormatOfName(value);
       arguments.isSlurm = value == slurmName;
       if (arguments.format || arguments.isSlurm) return std::nullopt;
       return "expected document, ibnetdiscover, ibsim, dot, graphml or slurm";
     }},
}};

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
    option.text.group = ofTree;
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
  if (!arguments.format && !arguments.isSlurm) {
    arguments.format = FabricFormatOfFile(arguments.output);
    arguments.isSlurm = arguments.output.ends_with(slurmEnding);
  }
  if (!arguments.format && !arguments.isSlurm) {
    return "--output " + arguments.output +
           " does not tell the format by its ending: give --format document, ibnetdiscover, "
           "ibsim, dot, graphml or slurm";
  }
  if (arguments.isSlurm || arguments.treeOption.empty()) return std::nullopt;
  return arguments.treeOption + " is for --format slurm only: no other looks for a tree";
}

}  // namespace

std::vector<BoundOption> BindOptions(ConvertArguments& arguments) {
  std::vector<BoundOption> options = Bind(table, arguments);
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
         "one "
         "root become topology.conf. Without a tree nothing is written."},
};

std::optional<std::string> SettleArguments(ConvertArguments& arguments) {
  if (Problem problem = SettleFormat(arguments)) return problem;
  if (Problem problem = SettleTree(arguments)) return problem;
  CheckOptions& options = arguments.options;
  if (!arguments.operands.empty()) options.fabric = arguments.operands.front();
  const std::array<const std::string*, 3> inputs{&options.fabric, &options.nodeNameMap,
                                                 &options.ranks};
  const std::array<NamedOutput, 1> outputs{{{"--output ", arguments.output}}};
  return ProblemOfFiles(inputs, outputs);
}

}  // namespace fabscope
