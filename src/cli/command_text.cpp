#include "cli/command_text.h"

#include <sstream>

namespace fabscope::internal {

std::vector<std::string> ChoicesOf(const OptionText& option) {
  const std::string words = option.metavar;
  if (words.find('|') == std::string::npos) return {};
  std::vector<std::string> choices;
  std::istringstream stream(words);
  for (std::string word; std::getline(stream, word, '|');) choices.push_back(word);
  return choices;
}

std::vector<OptionText> CommonOptions() { return {askForHelp, askForVersion}; }

}  // namespace fabscope::internal
