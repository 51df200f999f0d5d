#include "cli/help_text.h"

#include <algorithm>
#include <sstream>

namespace fabscope::internal {
namespace {

constexpr std::size_t width = 80;
constexpr std::size_t helpColumn = 32;

// `words` from column `column` on, in lines of at most 80 columns; the first one begins where the
// text ends.
void AppendWrapped(std::string& text, const std::string& words, std::size_t column) {
  std::size_t used = text.size() - (text.rfind('\n') + 1);
  std::istringstream stream(words);
  bool isFirst = true;
  for (std::string word; stream >> word; isFirst = false) {
    if (used + 1 + word.size() > width && used > column) {
      text += '\n' + std::string(column, ' ');
      used = column;
    } else if (!isFirst) {
      text += ' ';
      ++used;
    }
    text += word;
    used += word.size();
  }
  text += '\n';
}

// What stands at the left, and what is told of it at the right.
void AppendEntry(std::string& text, const std::string& entry, const std::string& help,
                 std::size_t column) {
  text += "  " + entry;
  const std::size_t used = 2 + entry.size();
  // Two blanks tell one from the other; otherwise the help has the next line.
  text += used + 2 > column ? '\n' + std::string(column, ' ') : std::string(column - used, ' ');
  AppendWrapped(text, help, column);
}

std::string EntryOf(const OptionText& option) {
  std::string entry = ShortName(option);
  if (!entry.empty()) entry += ", ";
  entry += LongName(option);
  if (*option.metavar != '\0') entry += std::string(" ") + option.metavar;
  return entry;
}

void AppendOptions(std::string& text, const std::vector<OptionText>& options) {
  std::string group;
  for (const OptionText& option : options) {
    if (group != option.group) text += std::string("\n") + option.group + ":\n";
    group = option.group;
    AppendEntry(text, EntryOf(option), option.help, helpColumn);
  }
}

void AppendHead(std::string& text, const CommandText& command, const std::string& usage) {
  text += std::string("Example: ") + command.examples.begin()->command + "\n\n";
  text += "Usage: " + FullName(command) + usage + '\n';
  AppendWrapped(text, command.summary, 0);
}

void AppendStatuses(std::string& text, const CommandText& command) {
  std::string words;
  for (const StatusText& status : command.statuses) {
    words += (words.empty() ? "Exit status: " : ", ") + std::to_string(status.status) + ' ' +
             status.meaning;
  }
  text += '\n';
  AppendWrapped(text, words, 0);
}

}  // namespace

std::string HelpText(const CommandText& command) {
  std::string text;
  std::string usage = " [OPTIONS]";
  for (const OperandText& operand : command.operands) usage += std::string(" ") + operand.name;
  AppendHead(text, command, usage);
  if (command.operands.size() != 0) text += '\n';
  for (const OperandText& operand : command.operands) {
    AppendEntry(text, NameOf(operand), operand.help, 10);
  }
  std::vector<OptionText> options = command.options();
  const std::vector<OptionText> common = CommonOptions();
  options.insert(options.end(), common.begin(), common.end());
  AppendOptions(text, options);
  AppendStatuses(text, command);
  return text;
}

std::string HelpText(const CommandText& tool, std::span<const CommandText* const> commands) {
  std::string text;
  AppendHead(text, tool, " COMMAND [OPTIONS] [FABRIC...]");
  text += "\nCommands (for help: fabscope COMMAND --help):\n";
  for (const CommandText* command : commands) {
    AppendEntry(text, command->name, command->summary, 14);
  }
  AppendOptions(text, CommonOptions());
  AppendStatuses(text, tool);
  return text;
}

}  // namespace fabscope::internal
