#pragma once

#include <optional>
#include <string>
#include <vector>

#include "cli/tree_options.h"
#include "os/terminal.h"

namespace fabscope {

// `fabscope diff` as the command line gives it. Files: empty when not asked for, "-" for standard
// output.
struct DiffArguments : TreeArguments {
  std::vector<std::string> operands;  // OLD and NEW
  std::string jsonFile;
  std::string planFile;
  bool quiet = false;
  ColorWhen color = ColorWhen::Auto;
};

std::vector<BoundOption> BindOptions(DiffArguments& arguments);
extern const CommandText diffText;

// Works out what the options mean together; answers what contradicts.
std::optional<std::string> SettleArguments(DiffArguments& arguments);

}  // namespace fabscope
