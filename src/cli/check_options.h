#pragma once

#include <optional>
#include <string>
#include <vector>

#include "cli/tree_options.h"
#include "os/terminal.h"

namespace fabscope {

// `fabscope check` as the command line gives it. Files: empty when not asked for, "-" for standard
// output.
struct CheckArguments : TreeArguments {
  std::vector<std::string> operands;  // the FABRIC
  std::string dumpFile;
  std::string csvFile;
  std::string jsonFile;
  std::string htmlFile;
  std::string svgFile;
  std::string prometheusFile;
  std::string logFile;
  bool quiet = false;
  ColorWhen color = ColorWhen::Auto;
};

std::vector<BoundOption> BindOptions(CheckArguments& arguments);
extern const CommandText checkText;

// Works out what the options mean together; answers what contradicts.
std::optional<std::string> SettleArguments(CheckArguments& arguments);

}  // namespace fabscope
