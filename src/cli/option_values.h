#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "cli/command_text.h"
#include "platform/reg_exp.h"

namespace fabscope {

// Why an option's value is not allowed, or nothing.
using OptionProblem = std::optional<std::string>;

// One option of a command.
template <typename Arguments>
struct CommandOption {
  OptionText text;
  // Takes the value (empty when there is none) over, or answers what is allowed instead.
  OptionProblem (*take)(Arguments& arguments, const std::string& value);
  bool repeatable = false;  // every value is taken over, in order; otherwise the last one holds
};

template <typename Arguments, std::size_t count>
std::vector<OptionText> TextsOf(const std::array<CommandOption<Arguments>, count>& table) {
  std::vector<OptionText> texts;
  texts.reserve(count);
  for (const CommandOption<Arguments>& option : table) texts.push_back(option.text);
  return texts;
}

// Values that many options take. A value that is not allowed leaves the target alone.
OptionProblem TakeNumber(int& target, const std::string& value, int least, int greatest);
OptionProblem TakeRegex(std::shared_ptr<regExp>& target, const std::string& value);
OptionProblem TakePath(std::string& target, const std::string& value);

}  // namespace fabscope
