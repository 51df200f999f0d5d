#include "cli/convert_options.h"

#include <array>

#include "cli/named_files.h"

namespace fabscope {
namespace {

using Problem = OptionProblem;

constexpr const char* ofOutputs = "What is written";
constexpr const char* ofInputs = "How the fabric is read";

constexpr std::array<CommandOption<ConvertArguments>, 4> table{{
    {{"-o,--output", "FILE", ofOutputs, "the file to write (- for standard output)", "Required."},
     [](ConvertArguments& arguments, const std::string& value) {
       return TakePath(arguments.output, value);
     }},
    {{"--format", "document|ibnetdiscover|ibsim|dot|graphml", ofOutputs,
      "what to write (default: by the ending of FILE)",
      "Fabric document, topology dump, net file of the simulator ibsim, Graphviz or GraphML. The "
      "endings are .json, .topo, .net, .dot or .gv, .graphml."},
     [](ConvertArguments& arguments, const std::string& value) -> Problem {
       arguments.format = FabricFormatOfName(value);
       if (!arguments.format) return "expected document, ibnetdiscover, ibsim, dot or graphml";
       return std::nullopt;
     }},
    {{"--node-name-map", "FILE", ofInputs, nodeNameMapHelp, nodeNameMapMore},
     [](ConvertArguments& arguments, const std::string& value) {
       return TakePath(arguments.nodeNameMap, value);
     }},
    {{"--special-nodes", "ERE", ofInputs, specialNodesHelp, specialNodesMore},
     [](ConvertArguments& arguments, const std::string& value) {
       return TakeRegex(arguments.specialNodes, value);
     }},
}};

Problem SettleFormat(ConvertArguments& arguments) {
  if (arguments.output.empty()) return "--output FILE is required";
  if (!arguments.format) arguments.format = FabricFormatOfFile(arguments.output);
  if (arguments.format) return std::nullopt;
  return "--output " + arguments.output +
         " does not tell the format by its ending: give --format document, ibnetdiscover, ibsim, "
         "dot or graphml";
}

}  // namespace

std::vector<BoundOption> BindOptions(ConvertArguments& arguments) { return Bind(table, arguments); }

const CommandText convertText{
    .name = "convert",
    .summary = "Reads a fabric of any format and writes it in another.",
    .operands = {{"FABRIC", fabricHelp}},
    .options = TextsOf<ConvertArguments>,
    .examples = {{"fabscope convert fabric.topo -o fabric.json",
                  "A fabric document of a topology dump."},
                 {"fabscope convert fabric.topo -o - --format dot | dot -Tsvg > fabric.svg",
                  "A picture by Graphviz."}},
    .statuses = {{0, "all was written"}, {2, "the work could not be done"}},
    .description = {"What the other format cannot hold is told on standard error, with how often "
                    "it occurs."},
};

std::optional<std::string> SettleArguments(ConvertArguments& arguments) {
  if (Problem problem = SettleFormat(arguments)) return problem;
  if (!arguments.operands.empty()) arguments.fabric = arguments.operands.front();
  const std::array<const std::string*, 2> inputs{&arguments.fabric, &arguments.nodeNameMap};
  const std::array<NamedOutput, 1> outputs{{{"--output ", arguments.output}}};
  if (Problem problem = ProblemOfFiles(inputs, outputs)) return problem;
  if (!arguments.specialNodes)
    arguments.specialNodes = std::make_shared<regExp>("Aggregation Node");
  return std::nullopt;
}

}  // namespace fabscope
