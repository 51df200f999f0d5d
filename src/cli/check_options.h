#pragma once

#include <optional>
#include <span>
#include <string>

#include "check/check.h"
#include "cli/option_values.h"
#include "cli/terminal.h"

namespace fabscope {

// `fabscope check` as the command line gives it. Files: empty when not asked for, "-" for standard
// output.
struct CheckArguments {
  CheckOptions options;
  std::string dumpFile;
  std::string csvFile;
  std::string jsonFile;
  std::string htmlFile;
  std::string svgFile;
  std::string prometheusFile;
  std::string logFile;
  bool quiet = false;
  ColorWhen color = ColorWhen::Auto;
  std::string roots;  // the value of --roots; empty when it was not given
};

using CheckOption = CommandOption<CheckArguments>;

std::span<const CheckOption> CheckOptionTable();
extern const CommandText checkText;

// Works out what the options mean together; answers what contradicts.
std::optional<std::string> SettleArguments(CheckArguments& arguments);

}  // namespace fabscope
