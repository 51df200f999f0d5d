#include "manual/completions.h"

#include <string_view>
#include <vector>

namespace fabscope::internal {
namespace {

using Commands = std::span<const CommandText* const>;

// The options of a command, those of every command behind them.
std::vector<OptionText> OptionsOf(const CommandText& command) {
  std::vector<OptionText> options = command.options();
  const std::vector<OptionText> common = CommonOptions();
  options.insert(options.end(), common.begin(), common.end());
  return options;
}

std::string Joined(const std::vector<std::string>& words, const char* between) {
  std::string text;
  for (const std::string& word : words) text += (text.empty() ? "" : between) + word;
  return text;
}

bool TakesFile(const OptionText& option) { return option.metavar == std::string_view("FILE"); }

// A text between single quotes, as all three shells read it.
std::string Quoted(const std::string& text) {
  std::string result = "'";
  for (const char letter : text) result += letter == '\'' ? "'\\''" : std::string(1, letter);
  return result + "'";
}

// Both names of an option.
std::vector<std::string> NamesOf(const OptionText& option) {
  if (ShortName(option).empty()) return {LongName(option)};
  return {ShortName(option), LongName(option)};
}

std::vector<std::string> NamesOf(Commands commands) {
  std::vector<std::string> names;
  for (const CommandText* command : commands) names.emplace_back(command->name);
  return names;
}

std::vector<std::string> NamesOf(const std::vector<OptionText>& options) {
  std::vector<std::string> names;
  for (const OptionText& option : options) {
    for (const std::string& name : NamesOf(option)) names.push_back(name);
  }
  return names;
}

// What stands behind an option, for bash: "check:--roots) ... ;;".
std::string BashValues(const CommandText& command, const OptionText& option) {
  if (*option.metavar == '\0') return "";
  std::vector<std::string> patterns;
  for (const std::string& name : NamesOf(option)) {
    patterns.push_back(std::string(command.name) + ':' + name);
  }
  const std::vector<std::string> choices = ChoicesOf(option);
  std::string action = "return";
  if (!choices.empty()) action = "_fabscope_words " + Quoted(Joined(choices, " ")) + "; return";
  if (TakesFile(option)) action = "_fabscope_files; return";
  return "    " + Joined(patterns, " | ") + ") " + action + " ;;\n";
}

// A text inside an option's [...] or between colons.
std::string ZshText(const std::string& text) {
  std::string result;
  for (const char letter : text) {
    if (letter == '[' || letter == ']' || letter == ':' || letter == '\\') result += '\\';
    result += letter;
  }
  return result;
}

std::string ZshOption(const OptionText& option) {
  std::string value;
  if (*option.metavar != '\0') {
    const std::vector<std::string> choices = ChoicesOf(option);
    std::string action = " ";
    if (!choices.empty()) action = "(" + Joined(choices, " ") + ")";
    if (TakesFile(option)) action = "_files";
    value =
        (choices.empty() ? ":" + ZshText(option.metavar) : std::string(":value")) + ":" + action;
  }
  const std::string help = "[" + ZshText(option.help) + "]";
  const std::string mark = value.empty() ? "" : "=";
  if (ShortName(option).empty()) return Quoted(LongName(option) + mark + help + value);
  const std::string either = "(" + ShortName(option) + " " + LongName(option) + ")";
  const std::string shortMark = value.empty() ? "" : "+";
  return Quoted(either + ShortName(option) + shortMark + help + value) + " " +
         Quoted(either + LongName(option) + mark + help + value);
}

// "'1:OLD:_files'"; "'*:FABRIC:_files'" of one that may come again.
std::vector<std::string> ZshOperands(const CommandText& command) {
  std::vector<std::string> result;
  for (const OperandText& operand : command.operands) {
    const std::string place = TakesSeveral(operand) ? "*" : std::to_string(result.size() + 1);
    result.push_back(Quoted(place + ":" + NameOf(operand) + ":_files"));
  }
  return result;
}

std::string FishOption(const std::string& condition, const OptionText& option) {
  std::string line = "complete -c fabscope -n " + Quoted(condition);
  if (!ShortName(option).empty()) line += " -s " + ShortName(option).substr(1);
  line += " -l " + LongName(option).substr(2);
  const std::vector<std::string> choices = ChoicesOf(option);
  if (TakesFile(option)) {
    line += " -r -F";
  } else if (*option.metavar != '\0') {
    line += " -x";
    if (!choices.empty()) line += " -a " + Quoted(Joined(choices, " "));
  }
  return line + " -d " + Quoted(option.help) + "\n";
}

}  // namespace

std::string BashCompletion(Commands commands) {
  std::string text = R"(# Completions of fabscope for bash.

_fabscope_words() { mapfile -t COMPREPLY < <(compgen -W "$1" -- "$current"); }

_fabscope_files() {
  compopt -o filenames
  mapfile -t COMPREPLY < <(compgen -f -- "$current")
}

_fabscope() {
  local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
  # "--roots=au" comes as three words.
  if [[ $current == '=' ]]; then
    current=
  elif [[ $previous == '=' ]]; then
    previous=${COMP_WORDS[COMP_CWORD - 2]}
  fi
  COMPREPLY=()
  if ((COMP_CWORD == 1)); then
    _fabscope_words )";
  text += Quoted(Joined(NamesOf(commands), " ") + " " + Joined(NamesOf(CommonOptions()), " "));
  text += R"(
    return
  fi
  case ${COMP_WORDS[1]}:$previous in
)";
  for (const CommandText* command : commands) {
    for (const OptionText& option : OptionsOf(*command)) text += BashValues(*command, option);
  }
  text += "  esac\n  case ${COMP_WORDS[1]}:$current in\n";
  for (const CommandText* command : commands) {
    text += std::string("    ") + command->name + ":-*) _fabscope_words " +
            Quoted(Joined(NamesOf(OptionsOf(*command)), " ")) + " ;;\n";
    if (command->operands.size() != 0)
      text += std::string("    ") + command->name + ":*) _fabscope_files ;;\n";
  }
  return text + "  esac\n}\n\ncomplete -F _fabscope fabscope\n";
}

std::string ZshCompletion(Commands commands) {
  std::string text = R"(#compdef fabscope
# Completions of fabscope for zsh.

_fabscope() {
  if (( CURRENT == 2 )); then
    local -a commands=(
)";
  for (const CommandText* command : commands) {
    text += "      " + Quoted(std::string(command->name) + ":" + ZshText(command->summary)) + "\n";
  }
  text += R"(    )
    _describe command commands
    _arguments)";
  for (const OptionText& option : CommonOptions()) text += " " + ZshOption(option);
  text += R"(
    return
  fi
  local command=$words[2]
  shift words
  (( CURRENT-- ))
  case $command in
)";
  for (const CommandText* command : commands) {
    text += std::string("    ") + command->name + ")\n      _arguments -s -S";
    for (const OptionText& option : OptionsOf(*command))
      text += " \\\n        " + ZshOption(option);
    for (const std::string& operand : ZshOperands(*command)) text += " \\\n        " + operand;
    text += "\n      ;;\n";
  }
  return text + "  esac\n}\n\n_fabscope \"$@\"\n";
}

std::string FishCompletion(Commands commands) {
  const std::string noCommand = "not __fish_seen_subcommand_from " + Joined(NamesOf(commands), " ");
  std::string text = "# Completions of fabscope for fish.\n\ncomplete -c fabscope -f\n";
  for (const CommandText* command : commands) {
    text += "complete -c fabscope -n " + Quoted(noCommand) + " -a " + command->name + " -d " +
            Quoted(command->summary) + "\n";
  }
  for (const OptionText& option : CommonOptions()) text += FishOption(noCommand, option);
  for (const CommandText* command : commands) {
    const std::string condition = std::string("__fish_seen_subcommand_from ") + command->name;
    text += "\n";
    if (command->operands.size() != 0)
      text += "complete -c fabscope -n " + Quoted(condition) + " -F\n";
    for (const OptionText& option : OptionsOf(*command)) text += FishOption(condition, option);
  }
  return text;
}

}  // namespace fabscope::internal
