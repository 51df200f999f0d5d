#include "cli/convert_command.h"

#include <string>

#include "check/check.h"
#include "check/load_input.h"
#include "cli/exit_status.h"
#include "cli/outputs.h"
#include "os/progress_line.h"
#include "os/terminal.h"
#include "reports/slurm_topology.h"

namespace fabscope::internal {
namespace {

class ConvertCommand {
 public:
  explicit ConvertCommand(const ConvertArguments& arguments) : arguments_(arguments) {}

  int Run() { return arguments_.format->IsMadeOfTree() ? WriteTree() : WriteAll(); }

 private:
  // The fabric with all that the format can hold.
  int WriteAll();
  // The tree that a check finds in it; Slurm's is the only format of one.
  int WriteTree();

  bool Write(const WriteTo& write) { return WriteOrTell(arguments_.output, write, messages_); }

  const ConvertArguments& arguments_;
  const CheckOptions& options_ = arguments_.options;
  Messages messages_;
};

int ConvertCommand::WriteAll() {
  const LoadedInput input = [this] {
    const ProgressLine line(IsWatched());
    return LoadInput(options_);
  }();
  if (input.error) {
    messages_.Tell(input.error->Text());
    return ExitFailed;
  }
  for (const std::string& warning : input.warnings) messages_.Tell(warning);
  const FabricFormat format = *arguments_.format->format;
  const bool isWritten =
      Write([&](std::ostream& stream) { WriteFabric(*input.fabric, format, stream); });
  if (!isWritten) return ExitFailed;
  TellLosses(arguments_.output, LossesOf(*input.fabric, format), messages_);
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
  if (isWritten || !hasHosts) TellLosses(arguments_.output, topology.losses, messages_);
  if (!hasHosts) messages_.Tell("no host of the fabric has a place in its tree");
  return isWritten ? ExitClean : ExitFailed;
}

}  // namespace

int RunConvertCommand(const ConvertArguments& arguments) { return ConvertCommand(arguments).Run(); }

}  // namespace fabscope::internal
