#include "cli/convert_options.h"

#include <array>

#include "cli/named_files.h"

namespace fabscope {
namespace {

using Problem = OptionProblem;

constexpr std::array<ConvertOption, 4> table{{
    {"-o,--output", "FILE", "The file to write (- for standard output); required",
     [](ConvertArguments& arguments, const std::string& value) {
       return TakePath(arguments.output, value);
     }},
    {"--format", "document|ibnetdiscover|ibsim|dot|graphml",
     "What to write: fabric document, topology dump, net file of the simulator ibsim, Graphviz or "
     "GraphML (default by the ending of FILE: .json, .topo, .net, .dot or .gv, .graphml)",
     [](ConvertArguments& arguments, const std::string& value) -> Problem {
       arguments.format = FabricFormatOfName(value);
       if (!arguments.format) return "expected document, ibnetdiscover, ibsim, dot or graphml";
       return std::nullopt;
     }},
    {"--node-name-map", "FILE", "Names of nodes: lines 0xGUID \"name\"",
     [](ConvertArguments& arguments, const std::string& value) {
       return TakePath(arguments.nodeNameMap, value);
     }},
    {"--special-nodes", "ERE",
     "Names of channel adapters that are no hosts, in dumps (default \"Aggregation Node\")",
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

std::span<const ConvertOption> ConvertOptionTable() { return table; }

std::optional<std::string> SettleArguments(ConvertArguments& arguments) {
  if (Problem problem = SettleFormat(arguments)) return problem;
  const std::array<const std::string*, 2> inputs{&arguments.fabric, &arguments.nodeNameMap};
  const std::array<NamedOutput, 1> outputs{{{"--output ", arguments.output}}};
  if (Problem problem = ProblemOfFiles(inputs, outputs)) return problem;
  if (!arguments.specialNodes)
    arguments.specialNodes = std::make_shared<regExp>("Aggregation Node");
  return std::nullopt;
}

}  // namespace fabscope
