#include "cli/option_values.h"

#include <charconv>
#include <utility>

namespace fabscope::internal {

OptionProblem TakeNumber(int& target, const std::string& value, int least, int greatest) {
  int number = 0;
  const char* end = value.data() + value.size();
  const auto [stop, status] = std::from_chars(value.data(), end, number);
  if (status != std::errc() || stop != end || number < least || number > greatest) {
    return "expected a whole number from " + std::to_string(least) + " to " +
           std::to_string(greatest);
  }
  target = number;
  return std::nullopt;
}

OptionProblem TakeRegex(std::shared_ptr<regExp>& target, const std::string& value) {
  auto regex = std::make_shared<regExp>(value);
  if (!regex->IsValid()) {
    return "expected a POSIX extended regular expression: " + regex->GetError();
  }
  target = std::move(regex);
  return std::nullopt;
}

OptionProblem TakePath(std::string& target, const std::string& value) {
  if (value.empty()) return "expected the name of a file";
  target = value;
  return std::nullopt;
}

OptionProblem TakeColor(ColorWhen& target, const std::string& value) {
  if (value == "auto") {
    target = ColorWhen::Auto;
  } else if (value == "always") {
    target = ColorWhen::Always;
  } else if (value == "never") {
    target = ColorWhen::Never;
  } else {
    return "expected auto, always or never";
  }
  return std::nullopt;
}

}  // namespace fabscope::internal
