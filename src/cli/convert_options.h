#pragma once

#include <optional>
#include <string>
#include <vector>

#include "cli/tree_options.h"
#include "formats/fabric_formats.h"

namespace fabscope::internal {

// `fabscope convert` as the command line gives it. Files: empty when not asked for, "-" for
// standard input and output.
struct ConvertArguments : TreeArguments {
  std::vector<std::string> operands;  // the FABRIC
  std::string output;
  const FormatEntry* format = nullptr;  // of the output
  std::string treeOption;  // the last one given that only a search for the tree looks at, or none
};

std::vector<BoundOption> BindOptions(ConvertArguments& arguments);
extern const CommandText convertText;

// Works out what the options mean together; answers what is missing or contradicts.
std::optional<std::string> SettleArguments(ConvertArguments& arguments);

}  // namespace fabscope::internal
