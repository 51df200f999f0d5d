#include "cli/generate_options.h"

#include <array>
#include <charconv>
#include <utility>

#include "cli/named_files.h"
#include "formats/link_speeds.h"

namespace fabscope {
namespace {

using Problem = OptionProblem;

constexpr int maxFaults = 1'000'000;

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

constexpr std::array<GenerateOption, 14> table{{
    {"--xgft", "\"h; m1,...; w1,...\"",
     "An extended generalised fat tree: h levels of switches, m children of each switch and w "
     "parents of each node by level, from the leaves up",
     [](GenerateArguments& arguments, const std::string& value) -> Problem {
       TreeShape shape;
       if (Problem problem = ParseXgft(value, shape)) return problem;
       arguments.xgft = std::move(shape);
       return std::nullopt;
     }},
    {"--levels", "L", "With --radix: a tree of L levels of switches",
     [](GenerateArguments& arguments, const std::string& value) {
       return TakeNumber(arguments.levels, value, 1, 8);
     }},
    {"--radix", "K", "With --levels: switches have K ports, half of them up (the roots none)",
     [](GenerateArguments& arguments, const std::string& value) {
       return TakeNumber(arguments.radix, value, 2, 254);
     }},
    {"--pods", "N",
     "With --levels: N subtrees below the roots (default: all that the roots have ports for)",
     [](GenerateArguments& arguments, const std::string& value) {
       return TakeNumber(arguments.pods, value, 1, 254);
     }},
    {"--hosts-per-leaf", "H", "With --levels: H hosts at each leaf (default K/2)",
     [](GenerateArguments& arguments, const std::string& value) {
       return TakeNumber(arguments.hostsPerLeaf, value, 1, 254);
     }},
    {"--parallel", "N", "N cables between a switch and each of its parents (default 1)",
     [](GenerateArguments& arguments, const std::string& value) {
       return TakeNumber(arguments.parallel, value, 1, 255);
     }},
    {"--planes", "N", "N planes: switches of N chips, aggregated ports (default 1)",
     [](GenerateArguments& arguments, const std::string& value) {
       return TakeNumber(arguments.planes, value, 1, 16);
     }},
    {"--flids", "", "Leaves have FLIDs, those of each neighborhood its own",
     [](GenerateArguments& arguments, const std::string&) -> Problem {
       arguments.flids = true;
       return std::nullopt;
     }},
    {"--speed", "NAME", "Speed of the links: SDR, ..., HDR (the default), NDR, XDR",
     [](GenerateArguments& arguments, const std::string& value) -> Problem {
       const auto speed = SpeedCode(value);
       if (!speed) return "expected SDR, DDR, QDR, FDR10, FDR, EDR20, EDR, HDR, NDR or XDR";
       arguments.speed = *speed;
       return std::nullopt;
     }},
    {"--seed", "S", "The same seed makes the same fabric and the same faults (default 1)",
     [](GenerateArguments& arguments, const std::string& value) {
       return TakeSeed(arguments.seed, value);
     }},
    {"--fault", "KIND=COUNT", "Also make COUNT faults of this kind; may be given again",
     [](GenerateArguments& arguments, const std::string& value) {
       return TakeFault(arguments.faults, value);
     },
     true},
    {"--truth", "FILE", "Also write what the faults have changed, as JSON (- for standard output)",
     [](GenerateArguments& arguments, const std::string& value) {
       return TakePath(arguments.truthFile, value);
     }},
    {"--format", "NAME",
     "document, ibnetdiscover, ibsim, dot or graphml (default: by the ending of FILE, else "
     "document)",
     [](GenerateArguments& arguments, const std::string& value) -> Problem {
       const auto format = FabricFormatOfName(value);
       if (!format) return "expected document, ibnetdiscover, ibsim, dot or graphml";
       arguments.givenFormat = format;
       return std::nullopt;
     }},
    {"-o,--output", "FILE", "Where the fabric is written (default -, standard output)",
     [](GenerateArguments& arguments, const std::string& value) {
       return TakePath(arguments.outputFile, value);
     }},
}};

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

std::span<const GenerateOption> GenerateOptionTable() { return table; }

std::optional<std::string> SettleArguments(GenerateArguments& arguments) {
  if (Problem problem = SettleTree(arguments)) return problem;
  if (Problem problem = SettleFaults(arguments)) return problem;
  const std::array<NamedOutput, 2> outputs{
      {{"--output ", arguments.outputFile}, {"--truth ", arguments.truthFile}}};
  if (Problem problem = ProblemOfFiles({}, outputs)) return problem;
  const auto byEnding = FabricFormatOfFile(arguments.outputFile);
  arguments.format = arguments.givenFormat.value_or(byEnding.value_or(FabricFormat::Document));
  return std::nullopt;
}

}  // namespace fabscope
