#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "cli/option_values.h"
#include "formats/write_fabric.h"
#include "platform/reg_exp.h"

namespace fabscope {

// `fabscope convert` as the command line gives it. Files: empty when not asked for, "-" for
// standard input and output.
struct ConvertArguments {
  std::vector<std::string> operands;  // the FABRIC
  std::string fabric;
  std::string output;
  std::string nodeNameMap;
  std::shared_ptr<regExp> specialNodes;
  std::optional<FabricFormat> format;  // of the output
};

std::vector<BoundOption> BindOptions(ConvertArguments& arguments);
extern const CommandText convertText;

// Works out what the options mean together; answers what is missing or contradicts.
std::optional<std::string> SettleArguments(ConvertArguments& arguments);

}  // namespace fabscope
