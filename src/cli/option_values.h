#pragma once

#include <array>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "cli/command_text.h"
#include "os/terminal.h"
#include "platform/reg_exp.h"

namespace fabscope::internal {

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

// An option and the arguments that its values go to; these must outlive it.
struct BoundOption {
  OptionText text;
  std::function<OptionProblem(const std::string& value)> take;
  bool repeatable;
};

// Behind those that there are already.
template <typename Arguments, std::size_t count>
std::vector<BoundOption> Bind(const std::array<CommandOption<Arguments>, count>& table,
                              Arguments& arguments, std::vector<BoundOption> options = {}) {
  for (const CommandOption<Arguments>& option : table) {
    const auto take = option.take;
    options.push_back(
        {option.text,
         [take, &arguments](const std::string& value) { return take(arguments, value); },
         option.repeatable});
  }
  return options;
}

template <typename Arguments>
std::vector<OptionText> TextsOf() {
  Arguments arguments;
  std::vector<OptionText> texts;
  for (const BoundOption& option : BindOptions(arguments)) texts.push_back(option.text);
  return texts;
}

// Values that many options take. A value that is not allowed leaves the target alone.
OptionProblem TakeNumber(int& target, const std::string& value, int least, int greatest);
OptionProblem TakeRegex(std::shared_ptr<regExp>& target, const std::string& value);
OptionProblem TakePath(std::string& target, const std::string& value);
OptionProblem TakeColor(ColorWhen& target, const std::string& value);

// Of every command that has a report.
inline constexpr const char* ofReport = "Report";
inline constexpr OptionText quietText{"-q,--quiet", "", ofReport,
                                      "leave out the lines that start with -I-", ""};
inline constexpr OptionText colorText{
    "--color", "auto|always|never", ofReport, "colour the tags (auto: on a terminal)",
    "With auto there are no colours if NO_COLOR is set or TERM is dumb."};

}  // namespace fabscope::internal
