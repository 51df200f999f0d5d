#include "cli/convert_command.h"

#include <memory>
#include <string>
#include <vector>

#include "check/check.h"
#include "cli/exit_status.h"
#include "cli/messages.h"
#include "cli/output_file.h"
#include "cli/progress_line.h"
#include "cli/standard_streams.h"
#include "cli/terminal.h"
#include "fabric/fabric_builder.h"
#include "formats/diagnostics.h"
#include "formats/load_fabric.h"
#include "formats/node_name_map.h"
#include "reports/slurm_topology.h"

namespace fabscope {
namespace {

class ConvertCommand {
 public:
  explicit ConvertCommand(const ConvertArguments& arguments) : arguments_(arguments) {}

  int Run() { return arguments_.isSlurm ? WriteTree() : WriteAll(); }

 private:
  // The fabric with all that the format can hold.
  int WriteAll();
  // The tree that a check finds in it.
  int WriteTree();

  MaybeError Load();
  bool Write(const WriteTo& write);
  void TellLosses(const std::vector<std::string>& losses);

  const ConvertArguments& arguments_;
  const CheckOptions& options_ = arguments_.options;
  Messages messages_;
  Warnings warnings_;
  std::unique_ptr<IBFabric> fabric_;
};

int ConvertCommand::WriteAll() {
  if (const MaybeError error = Load()) {
    messages_.Tell(error->Text());
    return ExitFailed;
  }
  const bool isStandard = options_.fabric == standardStream;
  for (const std::string& line : warnings_.Lines(isStandard ? "<stdin>" : options_.fabric)) {
    messages_.Tell(line);
  }
  const bool isWritten =
      Write([this](std::ostream& stream) { WriteFabric(*fabric_, *arguments_.format, stream); });
  if (!isWritten) return ExitFailed;
  TellLosses(LossesOf(*fabric_, *arguments_.format));
  return ExitClean;
}

int ConvertCommand::WriteTree() {
  const CheckResult result = [this] {
    const ProgressLine line(IsWatched());
    return RunCheck(options_);
  }();
  if (result.inputError) {
    messages_.Tell(result.inputError->Text());
    return ExitFailed;
  }
  for (const std::string& warning : result.warnings) messages_.Tell(warning);
  if (result.status != CheckStatus::Done) {
    messages_.Tell(result.message);
    if (!result.advice.empty()) messages_.Tell(result.advice);
  }
  if (!result.roots.doubt.empty()) messages_.Tell(result.roots.doubt);
  if (result.status != CheckStatus::Done) return ExitFailed;

  const SlurmTopology topology = MakeSlurmTopology(*result.topology);
  const bool hasHosts = !topology.switches.empty();
  const bool isWritten = hasHosts && Write([&](std::ostream& stream) {
                           WriteSlurmTopology(result, topology, stream);
                         });
  if (isWritten || !hasHosts) TellLosses(topology.losses);
  if (!hasHosts) messages_.Tell("no host of the fabric has a place in its tree");
  return isWritten ? ExitClean : ExitFailed;
}

// The name map comes first: its names decide the order of a dump's nodes.
MaybeError ConvertCommand::Load() {
  const ProgressLine line(IsWatched());
  NodeNameMap names;
  if (!options_.nodeNameMap.empty()) {
    if (MaybeError error = LoadNodeNameMap(options_.nodeNameMap, names)) return error;
  }
  FabricBuilder builder;
  if (MaybeError error =
          LoadFabric(options_.fabric, &names, options_.specialNodes.get(), builder, warnings_)) {
    return error;
  }
  fabric_ = builder.Build();
  return std::nullopt;
}

bool ConvertCommand::Write(const WriteTo& write) {
  const auto problem = WriteOutput(arguments_.output, write);
  if (problem) messages_.Tell(*problem);
  return !problem;
}

void ConvertCommand::TellLosses(const std::vector<std::string>& losses) {
  const bool isStandard = arguments_.output == standardStream;
  const std::string start = (isStandard ? "<stdout>" : arguments_.output) + ": warning: ";
  for (const std::string& loss : losses) messages_.Tell(start + loss);
}

}  // namespace

int RunConvertCommand(const ConvertArguments& arguments) { return ConvertCommand(arguments).Run(); }

}  // namespace fabscope
