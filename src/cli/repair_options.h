#pragma once

#include <optional>
#include <string>
#include <vector>

#include "cli/tree_options.h"
#include "formats/write_fabric.h"

namespace fabscope {

// `fabscope repair` as the command line gives it. Files: empty when not asked for, "-" for standard
// input and output.
struct RepairArguments : TreeArguments {
  std::vector<std::string> operands;  // the FABRIC
  std::string jsonFile;
  std::string csvFile;
  std::string afterFile;
  std::optional<FabricFormat> afterFormat;  // set when there is a file
  std::string planFile;                     // the plan to verify
};

std::vector<BoundOption> BindOptions(RepairArguments& arguments);
extern const CommandText repairText;

// Works out what the options mean together; answers what contradicts.
std::optional<std::string> SettleArguments(RepairArguments& arguments);

}  // namespace fabscope
