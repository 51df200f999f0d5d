#pragma once

#include <memory>
#include <optional>
#include <string>

#include "platform/reg_exp.h"

namespace fabscope {

// Why an option's value is not allowed, or nothing.
using OptionProblem = std::optional<std::string>;

// One option of a command. The table of a command's options makes its parser and its help.
template <typename Arguments>
struct CommandOption {
  const char* name;     // "--name" or "-n,--name"
  const char* metavar;  // empty: the option takes no value
  const char* help;
  // Takes the value (empty when there is none) over, or answers what is allowed instead.
  OptionProblem (*take)(Arguments& arguments, const std::string& value);
  bool repeatable = false;  // every value is taken over, in order; otherwise the last one holds
};

// Values that many options take. A value that is not allowed leaves the target alone.
OptionProblem TakeNumber(int& target, const std::string& value, int least, int greatest);
OptionProblem TakeRegex(std::shared_ptr<regExp>& target, const std::string& value);
OptionProblem TakePath(std::string& target, const std::string& value);

}  // namespace fabscope
