#pragma once

#include <optional>
#include <string>
#include <vector>

#include "check/repair_run.h"
#include "cli/outputs.h"
#include "cli/tree_options.h"
#include "formats/write_fabric.h"

namespace fabscope::internal {

// `fabscope repair` as the command line gives it.
struct RepairArguments : TreeArguments {
  std::vector<std::string> operands;  // the FABRIC
  OutputFiles outputs;
  std::optional<FabricFormat> afterFormat;  // of --after; set when it is given
  std::string planFile;                     // the plan to verify; empty when not asked for
};

// A run of it, as its outputs tell of it.
struct RepairRun {
  const RepairResult& result;
  std::optional<FabricFormat> afterFormat;
};

// In the order in which a help lists them.
Outputs<RepairRun> RepairOutputs();

std::vector<BoundOption> BindOptions(RepairArguments& arguments);
extern const CommandText repairText;

// Works out what the options mean together; answers what contradicts.
std::optional<std::string> SettleArguments(RepairArguments& arguments);

}  // namespace fabscope::internal
