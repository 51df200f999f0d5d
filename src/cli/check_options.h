#pragma once

#include <optional>
#include <span>
#include <string>

#include "check/check.h"

namespace fabscope {

// `fabscope check` as the command line gives it.
struct CheckArguments {
  CheckOptions options;
  std::string dumpFile;  // empty: not asked for; "-": standard output
  std::string csvFile;
  std::string roots;  // the value of --roots; empty when it was not given
};

// One option. The table of them makes the parser and the help.
struct CheckOption {
  const char* name;
  const char* metavar;
  const char* help;
  // Takes the value over, or answers what is allowed instead.
  std::optional<std::string> (*take)(CheckArguments& arguments, const std::string& value);
};

std::span<const CheckOption> CheckOptionTable();

// Works out what the options mean together; answers what contradicts.
std::optional<std::string> SettleArguments(CheckArguments& arguments);

}  // namespace fabscope
