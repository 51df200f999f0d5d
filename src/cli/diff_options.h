#pragma once

#include <optional>
#include <string>
#include <vector>

#include "cli/outputs.h"
#include "cli/tree_options.h"
#include "compare/difference.h"
#include "os/terminal.h"

namespace fabscope::internal {

// `fabscope diff` as the command line gives it.
struct DiffArguments : TreeArguments {
  std::vector<std::string> operands;  // OLD and NEW
  OutputFiles outputs;
  std::string planFile;  // empty when not asked for
  bool quiet = false;
  ColorWhen color = ColorWhen::Auto;
};

Outputs<Difference> DiffOutputs();

std::vector<BoundOption> BindOptions(DiffArguments& arguments);
extern const CommandText diffText;

// Works out what the options mean together; answers what contradicts.
std::optional<std::string> SettleArguments(DiffArguments& arguments);

}  // namespace fabscope::internal
