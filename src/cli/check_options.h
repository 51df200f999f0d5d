#pragma once

#include <optional>
#include <span>
#include <string>

#include "check/check.h"
#include "cli/terminal.h"

namespace fabscope {

// `fabscope check` as the command line gives it. Files: empty when not asked for, "-" for standard
// output.
struct CheckArguments {
  CheckOptions options;
  std::string dumpFile;
  std::string csvFile;
  std::string jsonFile;
  std::string logFile;
  bool quiet = false;
  ColorWhen color = ColorWhen::Auto;
  std::string roots;  // the value of --roots; empty when it was not given
};

// One option. The table of them makes the parser and the help.
struct CheckOption {
  const char* name;     // "--name" or "-n,--name"
  const char* metavar;  // empty: the option takes no value
  const char* help;
  // Takes the value (empty when there is none) over, or answers what is allowed instead.
  std::optional<std::string> (*take)(CheckArguments& arguments, const std::string& value);
};

std::span<const CheckOption> CheckOptionTable();

// Works out what the options mean together; answers what contradicts.
std::optional<std::string> SettleArguments(CheckArguments& arguments);

}  // namespace fabscope
