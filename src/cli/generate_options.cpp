#include "cli/generate_options.h"

#include <array>
#include <charconv>
#include <utility>

#include "cli/format_texts.h"
#include "cli/named_files.h"
#include "formats/link_speeds.h"

namespace fabscope::internal {
namespace {

using Problem = OptionProblem;

constexpr int maxFaults = 1'000'000;

constexpr const char* ofTree = "Tree";
constexpr const char* ofFaults = "Faults";

Problem TakeSeed(std::uint64_t& target, const std::string& value) {
  std::uint64_t number = 0;
  const char* end = value.data() + value.size();
  const auto [stop, status] = std::from_chars(value.data(), end, number);
  if (status != std::errc() || stop != end) {
    return "expected a whole number from 0 to 18446744073709551615";
  }
  target = number;
  return std::nullopt;
}

Problem TakeFault(std::vector<FaultRequest>& faults, const std::string& value) {
  const std::size_t sign = value.find('=');
  const auto kind = FaultOfName(value.substr(0, sign));
  if (!kind) {
    std::string names;
    for (const FaultKind known : AllFaultKinds()) {
      names.append(names.empty() ? "" : ", ").append(FaultName(known));
    }
    return "expected KIND=COUNT, with a KIND of " + names;
  }
  int count = 0;
  const std::string number = sign == std::string::npos ? "" : value.substr(sign + 1);
  if (const Problem problem = TakeNumber(count, number, 1, maxFaults)) {
    return *problem + " behind " + std::string(FaultName(*kind)) + "=";
  }
  faults.push_back({*kind, count});
  return std::nullopt;
}

constexpr std::array<CommandOption<GenerateArguments>, 13> generateOptions{{
    {{"--xgft", "\"h; m1,...; w1,...\"", ofTree, "an extended generalised fat tree",
      "h levels of switches; m children of each switch and w parents of each node, level by level "
      "from the leaves up."},
     [](GenerateArguments& arguments, const std::string& value) -> Problem {
       TreeShape shape;
       if (Problem problem = ParseXgft(value, shape)) return problem;
       arguments.xgft = std::move(shape);
       return std::nullopt;
     }},
    {{"--levels", "L", ofTree, "with --radix: L levels of switches", "1 to 8."},
     [](GenerateArguments& arguments, const std::string& value) {
       return TakeNumber(arguments.levels, value, 1, 8);
     }},
    {{"--radix", "K", ofTree, "with --levels: switches of K ports",
      "Half of the ports lead up; all ports of a root lead down. An even number from 2 to 254."},
     [](GenerateArguments& arguments, const std::string& value) {
       return TakeNumber(arguments.radix, value, 2, 254);
     }},
    {{"--pods", "N", ofTree, "with --levels: N subtrees below the roots",
      "The default is as many as the roots have ports for."},
     [](GenerateArguments& arguments, const std::string& value) {
       return TakeNumber(arguments.pods, value, 1, 254);
     }},
    {{"--hosts-per-leaf", "H", ofTree, "with --levels: hosts per leaf (default K/2)", "1 to 254."},
     [](GenerateArguments& arguments, const std::string& value) {
       return TakeNumber(arguments.hostsPerLeaf, value, 1, 254);
     }},
    {{"--parallel", "N", ofTree, "cables to each parent, a trunk (default 1)", "1 to 255."},
     [](GenerateArguments& arguments, const std::string& value) {
       return TakeNumber(arguments.parallel, value, 1, 255);
     }},
    {{"--planes", "N", ofTree, "N planes (default 1)",
      "Each switch has N chips, and ports are aggregated. 1 to 16."},
     [](GenerateArguments& arguments, const std::string& value) {
       return TakeNumber(arguments.planes, value, 1, 16);
     }},
    {{"--flids", "", ofTree, "give each neighborhood FLIDs of its own", ""},
     [](GenerateArguments& arguments, const std::string&) -> Problem {
       arguments.flids = true;
       return std::nullopt;
     }},
    {{"--speed", "NAME", ofTree, "speed of all links (default HDR)",
      "SDR, DDR, QDR, FDR10, FDR, EDR20, EDR, HDR, NDR or XDR."},
     [](GenerateArguments& arguments, const std::string& value) -> Problem {
       const auto speed = SpeedCode(value);
       if (!speed) return "expected SDR, DDR, QDR, FDR10, FDR, EDR20, EDR, HDR, NDR or XDR";
       arguments.speed = *speed;
       return std::nullopt;
     }},
    {{"--fault", "KIND=COUNT", ofFaults, "add COUNT faults of a kind; may be repeated",
      "The kinds are missing-link, swapped-cables, moved-cable, same-rank-link, root-link, "
      "missing-host, slow-link, dead-switch, stray-host, asymmetric-aport and shared-flid. COUNT "
      "is 1 to 1000000."},
     [](GenerateArguments& arguments, const std::string& value) {
       return TakeFault(arguments.faults, value);
     },
     true},
    {{"--seed", "S", ofFaults, "decides where faults are (default 1)",
      "The same options and seed give the same fabric."},
     [](GenerateArguments& arguments, const std::string& value) {
       return TakeSeed(arguments.seed, value);
     }},
    {{"--truth", "FILE", ofFaults, "also write what the faults changed, as JSON",
      "- is standard output."},
     [](GenerateArguments& arguments, const std::string& value) {
       return TakePath(arguments.truthFile, value);
     }},
    {{"-o,--output", "FILE", "Output", "the file to write (default -, standard output)", ""},
     [](GenerateArguments& arguments, const std::string& value) {
       return TakePath(arguments.outputFile, value);
     }},
}};

BoundOption BindFormat(GenerateArguments& arguments) {
  static const std::string choices = ChoiceOfNames(FabricFormats());
  static const std::string more = "The endings are " + EndingsByFormat(FabricFormats()) +
                                  "; any other means a fabric document.";
  const auto take = [&arguments](const std::string& value) -> Problem {
    const auto format = FabricFormatOfName(value);
    if (!format) return "expected " + NamesInWords(FabricFormats());
    arguments.givenFormat = format;
    return std::nullopt;
  };
  return {{"--format", choices.c_str(), "Output", "format (default: by the ending of FILE)",
           more.c_str()},
          take,
          false};
}

Problem SettleRadixTree(GenerateArguments& arguments) {
  const auto levels = static_cast<unsigned>(arguments.levels);
  const auto radix = static_cast<unsigned>(arguments.radix);
  const auto pods = static_cast<unsigned>(arguments.pods);
  const auto hosts = static_cast<unsigned>(arguments.hostsPerLeaf);
  const auto parallel = static_cast<unsigned>(arguments.parallel);
  if (levels == 0 || radix == 0) {
    return "no tree is given, expected --xgft or --levels and --radix";
  }
  if (levels == 1 && pods != 0) return "--pods needs --levels 2 or more";
  if (Problem problem = ProblemOfRadixTree(levels, radix, pods, hosts, parallel)) return problem;
  arguments.shape = RadixTree(levels, radix, pods, hosts, parallel);
  return std::nullopt;
}

Problem SettleTree(GenerateArguments& arguments) {
  const std::array<std::pair<const char*, int>, 4> ofRadixTree{
      {{"--levels", arguments.levels},
       {"--radix", arguments.radix},
       {"--pods", arguments.pods},
       {"--hosts-per-leaf", arguments.hostsPerLeaf}}};
  if (!arguments.xgft) {
    if (Problem problem = SettleRadixTree(arguments)) return problem;
  } else {
    for (const auto& [name, value] : ofRadixTree) {
      if (value == 0) continue;
      return std::string("--xgft and ") + name +
             " contradict each other: the tree comes from one of them";
    }
    arguments.shape = *arguments.xgft;
    arguments.shape.parallel = static_cast<unsigned>(arguments.parallel);
  }
  arguments.shape.planes = static_cast<unsigned>(arguments.planes);
  return ProblemOf(arguments.shape);
}

Problem SettleFaults(const GenerateArguments& arguments) {
  for (const FaultRequest& request : arguments.faults) {
    if (request.kind == FaultKind::AsymmetricAPort && arguments.planes < 2) {
      return "--fault asymmetric-aport needs --planes 2 or more: a fabric of one plane has no "
             "aggregated ports";
    }
    if (request.kind == FaultKind::SharedFlid && !arguments.flids) {
      return "--fault shared-flid needs --flids";
    }
  }
  return std::nullopt;
}

}  // namespace

std::vector<BoundOption> BindOptions(GenerateArguments& arguments) {
  std::vector<BoundOption> options = Bind(generateOptions, arguments);
  options.push_back(BindFormat(arguments));
  return options;
}

const CommandText generateText{
    .name = "generate",
    .summary = "Writes a fat tree of any size, with faults on request.",
    .operands = {},
    .options = TextsOf<GenerateArguments>,
    .examples =
        {{"fabscope generate --levels 3 --radix 8 --fault missing-link=2 -o a.json",
          "Writes a tree of 80 switches with two cables missing."},
         {"fabscope generate --xgft '2; 4,8; 1,4' --truth truth.json --fault swapped-cables=1 -o "
          "fabric.topo",
          "Writes a topology dump, and what is wrong in it."}},
    .statuses = {{0, "everything written"}, {2, "error"}},
    .description = {"Makes fabrics for tests. Give either --xgft, or both --levels and --radix. "
                    "Faults are added one after another, at places that --seed decides."},
};

std::optional<std::string> SettleArguments(GenerateArguments& arguments) {
  if (Problem problem = SettleTree(arguments)) return problem;
  if (Problem problem = SettleFaults(arguments)) return problem;
  const std::array<NamedOutput, 2> outputs{
      {{"--output", arguments.outputFile}, {"--truth", arguments.truthFile}}};
  if (Problem problem = ProblemOfFiles({}, outputs)) return problem;
  const auto byEnding = FabricFormatOfFile(arguments.outputFile);
  arguments.format = arguments.givenFormat.value_or(byEnding.value_or(FabricFormat::Document));
  return std::nullopt;
}

}  // namespace fabscope::internal
