#include "cli/convert_command.h"

#include <memory>
#include <string>

#include "cli/exit_status.h"
#include "cli/messages.h"
#include "cli/output_file.h"
#include "cli/progress_line.h"
#include "cli/terminal.h"
#include "fabric/fabric_builder.h"
#include "formats/diagnostics.h"
#include "formats/load_fabric.h"
#include "formats/node_name_map.h"

namespace fabscope {
namespace {

constexpr const char* standardStream = "-";

class ConvertCommand {
 public:
  explicit ConvertCommand(const ConvertArguments& arguments) : arguments_(arguments) {}

  int Run() {
    if (const MaybeError error = Load()) {
      messages_.Tell(error->Text());
      return ExitFailed;
    }
    TellWarnings();
    if (!Write()) return ExitFailed;
    TellLosses();
    return ExitClean;
  }

 private:
  MaybeError Load();
  bool Write();
  void TellWarnings();
  void TellLosses();

  const ConvertArguments& arguments_;
  Messages messages_;
  Warnings warnings_;
  std::unique_ptr<IBFabric> fabric_;
};

// The name map comes first: its names decide the order of a dump's nodes.
MaybeError ConvertCommand::Load() {
  const ProgressLine line(IsWatched());
  NodeNameMap names;
  if (!arguments_.nodeNameMap.empty()) {
    if (MaybeError error = LoadNodeNameMap(arguments_.nodeNameMap, names)) return error;
  }
  FabricBuilder builder;
  if (MaybeError error = LoadFabric(arguments_.fabric, &names, arguments_.specialNodes.get(),
                                    builder, warnings_)) {
    return error;
  }
  fabric_ = builder.Build();
  return std::nullopt;
}

void ConvertCommand::TellWarnings() {
  const bool isStandard = arguments_.fabric == standardStream;
  for (const std::string& line : warnings_.Lines(isStandard ? "<stdin>" : arguments_.fabric)) {
    messages_.Tell(line);
  }
}

bool ConvertCommand::Write() {
  const auto write = [this](std::ostream& stream) {
    WriteFabric(*fabric_, *arguments_.format, stream);
  };
  const auto problem = arguments_.output == standardStream ? WriteStandardOutput(write)
                                                           : WriteFile(arguments_.output, write);
  if (problem) messages_.Tell(*problem);
  return !problem;
}

void ConvertCommand::TellLosses() {
  const bool isStandard = arguments_.output == standardStream;
  const std::string start = (isStandard ? "<stdout>" : arguments_.output) + ": warning: ";
  for (const std::string& loss : LossesOf(*fabric_, *arguments_.format)) {
    messages_.Tell(start + loss);
  }
}

}  // namespace

int RunConvertCommand(const ConvertArguments& arguments) { return ConvertCommand(arguments).Run(); }

}  // namespace fabscope
