#include "cli/parser.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <iostream>
#include <utility>

#include "cli/exit_status.h"
#include "cli/format_texts.h"
#include "cli/help_text.h"
#include "os/output_file.h"
#include "platform/version.h"
#include "text/text_fields.h"

namespace fabscope::internal {
namespace {

constexpr const char* endOfOptions = "--";

int PrintAndLeave(const std::string& text) {
  const auto problem = WriteStandardOutput([&](std::ostream& stream) { stream << text; });
  if (!problem) return ExitClean;
  std::cerr << "fabscope: " << *problem << '\n';
  return ExitFailed;
}

void AddOption(CLI::App& app, const BoundOption& option) {
  const OptionText& text = option.text;
  const auto take = [&option](const std::string& value) {
    if (const auto problem = option.take(value)) {
      throw CLI::ValidationError(LongName(option.text),
                                 "\"" + value + "\" is not allowed, " + *problem);
    }
  };
  if (*text.metavar == '\0') {
    app.add_flag_callback(text.name, [take] { take({}); });
    return;
  }
  const auto takeAll = [take](const CLI::results_t& values) {
    for (const std::string& value : values) take(value);
    return true;
  };
  app.add_option(text.name, takeAll)
      ->type_name(text.metavar)
      ->multi_option_policy(option.repeatable ? CLI::MultiOptionPolicy::TakeAll
                                              : CLI::MultiOptionPolicy::TakeLast);
}

void AddOperand(CLI::App& app, const OperandText& operand, std::vector<std::string>& operands) {
  const auto take = [&operands](const CLI::results_t& values) {
    operands.insert(operands.end(), values.begin(), values.end());
    return true;
  };
  app.add_option(NameOf(operand), take)->type_name("")->required();
  // The parser would take "[a,b]" for two.
  if (TakesSeveral(operand)) app.allow_extras();
}

// The operands that followed the first one.
void TakeFurther(const CLI::App& app, std::vector<std::string>& operands) {
  std::vector<std::string> further = app.remaining();
  const auto mark = std::find(further.begin(), further.end(), endOfOptions);
  if (mark != further.end()) further.erase(mark);
  operands.insert(operands.end(), further.begin(), further.end());
}

// What an argument that has no place should have been: "one FABRIC", "OLD and NEW".
std::string ExpectedOperands(const CommandText& command) {
  if (command.operands.size() == 0) return "options only";
  if (command.operands.size() == 1) return "one " + NameOf(*command.operands.begin());
  std::string names;
  for (const OperandText& operand : command.operands) {
    names += (names.empty() ? "" : " and ") + NameOf(operand);
  }
  return names;
}

bool IsOption(const std::string& word) { return word.size() > 1 && word.front() == '-'; }

bool TakesValue(const CLI::Option& option) { return option.get_items_expected_max() > 0; }

// Whether it is flags of one letter written as one word.
bool AreFlags(const CLI::App& app, const std::string& word) {
  return !word.starts_with("--") && std::all_of(word.begin() + 1, word.end(), [&](char letter) {
    const CLI::Option* option = app.get_option_no_throw(std::string("-") + letter);
    return option != nullptr && !TakesValue(*option);
  });
}

// Every option as a word of its own and its value as the next. The parser would take "--quiet=no"
// for --quiet, the word behind "--csv=" for its value, and "-5" for FABRIC.
std::vector<std::string> SeparateWords(const CLI::App& app, const std::vector<std::string>& words) {
  std::vector<std::string> result;
  bool optionsEnded = false;
  for (auto word = words.begin(); word != words.end(); ++word) {
    optionsEnded = optionsEnded || *word == endOfOptions;
    if (optionsEnded || !IsOption(*word) || AreFlags(app, *word)) {
      result.push_back(*word);
      continue;
    }
    const std::size_t nameEnd = std::min(word->find('='), word->size());
    const std::string name = word->substr(0, nameEnd);
    const CLI::Option* option = app.get_option_no_throw(name);
    if (option == nullptr) {
      throw CLI::ParseError("unknown option " + *word, CLI::ExitCodes::ExtrasError);
    }
    const bool hasValue = nameEnd < word->size();
    if (hasValue && !TakesValue(*option)) {
      throw CLI::ParseError(name + " takes no value", CLI::ExitCodes::ConversionError);
    }
    result.push_back(name);
    if (hasValue) {
      result.push_back(word->substr(nameEnd + 1));
    } else if (TakesValue(*option) && word + 1 != words.end()) {
      result.push_back(*++word);
    }
  }
  return result;
}

// The mark itself is at fault only when nothing else is.
std::string UnplacedWord(const std::vector<std::string>& remaining, const std::string& expected) {
  const bool startsWithMark = remaining.front() == endOfOptions && remaining.size() > 1;
  return "unexpected argument " + remaining[startsWithMark ? 1 : 0] + ", expected " + expected;
}

std::optional<int> Parse(CLI::App& app, const CommandText& command,
                         const std::vector<std::string>& line, const std::string& expected,
                         const std::function<std::string()>& help) {
  app.set_version_flag("--version", GetToolVersion());
  try {
    std::vector<std::string> words = SeparateWords(app, line);
    std::reverse(words.begin(), words.end());  // as the parser wants them
    app.parse(std::move(words));
  } catch (const CLI::CallForHelp&) {
    return PrintAndLeave(help());
  } catch (const CLI::CallForVersion& version) {
    return PrintAndLeave(std::string(version.what()) + "\n");
  } catch (const CLI::ExtrasError&) {
    return WrongUsage(command, UnplacedWord(app.remaining(), expected));
  } catch (const CLI::ParseError& error) {
    return WrongUsage(command, error.what());
  }
  return std::nullopt;
}

// "check, generate or convert".
std::string NamesOf(const std::vector<const CommandText*>& commands) {
  std::vector<std::string> names;
  names.reserve(commands.size());
  for (const CommandText* command : commands) names.emplace_back(command->name);
  return InWords(names);
}

}  // namespace

int WrongUsage(const CommandText& command, const std::string& problem) {
  std::cerr << "fabscope: " << TextForPeople(CleanText(problem)) << " (see " << FullName(command)
            << " --help)\n";
  return ExitFailed;
}

std::optional<int> Parse(const CommandText& command, const std::vector<BoundOption>& options,
                         const std::vector<std::string>& words,
                         std::vector<std::string>& operands) {
  CLI::App app;
  for (const OperandText& operand : command.operands) AddOperand(app, operand, operands);
  for (const BoundOption& option : options) AddOption(app, option);
  const auto help = [&] { return HelpText(command); };
  const auto status = Parse(app, command, words, ExpectedOperands(command), help);
  if (!status) TakeFurther(app, operands);
  return status;
}

int ParseWithoutCommand(const CommandText& tool, const std::vector<const CommandText*>& commands,
                        const std::vector<std::string>& words) {
  CLI::App app;
  // Behind "--" the parser must know them.
  for (const CommandText* command : commands) app.add_subcommand(command->name);
  const auto help = [&] { return HelpText(tool, commands); };
  const std::string expected = NamesOf(commands);
  if (const auto status = Parse(app, tool, words, "one of the commands " + expected, help)) {
    return *status;
  }
  return WrongUsage(tool, "no command given, expected " + expected);
}

}  // namespace fabscope::internal
