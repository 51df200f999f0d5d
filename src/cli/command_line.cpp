#include "cli/command_line.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <new>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <unistd.h>
#include <utility>
#include <vector>

#include "cli/check_command.h"
#include "cli/check_options.h"
#include "cli/command_texts.h"
#include "cli/convert_command.h"
#include "cli/convert_options.h"
#include "cli/exit_status.h"
#include "cli/generate_command.h"
#include "cli/generate_options.h"
#include "cli/help_text.h"
#include "cli/output_file.h"
#include "formats/text_fields.h"
#include "platform/version.h"

namespace fabscope {
namespace {

int WrongUsage(const CLI::App& app, const std::string& problem) {
  std::cerr << "fabscope: " << CleanText(problem) << " (see " << app.get_name() << " --help)\n";
  return ExitFailed;
}

int PrintAndLeave(const std::string& text) {
  const auto problem = WriteStandardOutput([&](std::ostream& stream) { stream << text; });
  if (!problem) return ExitClean;
  std::cerr << "fabscope: " << *problem << '\n';
  return ExitFailed;
}

template <typename Arguments>
void AddOptions(CLI::App& app, std::span<const CommandOption<Arguments>> table,
                Arguments& arguments) {
  for (const CommandOption<Arguments>& option : table) {
    const auto take = [&option, &arguments](const std::string& value) {
      const auto problem = option.take(arguments, value);
      if (problem) {
        throw CLI::ValidationError(LongName(option.text),
                                   "\"" + value + "\" is not allowed, " + *problem);
      }
    };
    if (*option.text.metavar == '\0') {
      app.add_flag_callback(
          option.text.name, [take] { take({}); }, option.text.help);
    } else {
      const auto takeAll = [take](const CLI::results_t& values) {
        for (const std::string& value : values) take(value);
        return true;
      };
      app.add_option(option.text.name, takeAll, option.text.help)
          ->type_name(option.text.metavar)
          ->multi_option_policy(option.repeatable ? CLI::MultiOptionPolicy::TakeAll
                                                  : CLI::MultiOptionPolicy::TakeLast);
    }
  }
}

void AddFabric(CLI::App& app, std::string& fabric) {
  app.add_option("FABRIC", fabric)->type_name("")->required();
}

constexpr const char* endOfOptions = "--";

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

// Parses and answers nothing, or prints what was asked for or is wrong and answers the exit status.
// `expected` names what an argument that has no place should have been.
std::optional<int> Parse(CLI::App& app, const std::vector<std::string>& line,
                         const std::string& expected, std::string (*help)()) {
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
    return WrongUsage(app, UnplacedWord(app.remaining(), expected));
  } catch (const CLI::ParseError& error) {
    return WrongUsage(app, error.what());
  }
  return std::nullopt;
}

int RunCheckLine(const std::vector<std::string>& words) {
  CheckArguments arguments;
  CLI::App app("", "fabscope check");
  AddFabric(app, arguments.options.fabric);
  AddOptions(app, CheckOptionTable(), arguments);
  const auto help = [] { return HelpText(checkText); };
  if (const auto status = Parse(app, words, "one FABRIC", help)) return *status;
  if (const auto problem = SettleArguments(arguments)) return WrongUsage(app, *problem);
  return RunCheckCommand(arguments);
}

int RunGenerateLine(const std::vector<std::string>& words) {
  GenerateArguments arguments;
  CLI::App app("", "fabscope generate");
  AddOptions(app, GenerateOptionTable(), arguments);
  const auto help = [] { return HelpText(generateText); };
  if (const auto status = Parse(app, words, "options only", help)) return *status;
  if (const auto problem = SettleArguments(arguments)) return WrongUsage(app, *problem);
  return RunGenerateCommand(arguments);
}

int RunConvertLine(const std::vector<std::string>& words) {
  ConvertArguments arguments;
  CLI::App app("", "fabscope convert");
  AddFabric(app, arguments.fabric);
  AddOptions(app, ConvertOptionTable(), arguments);
  const auto help = [] { return HelpText(convertText); };
  if (const auto status = Parse(app, words, "one FABRIC", help)) return *status;
  if (const auto problem = SettleArguments(arguments)) return WrongUsage(app, *problem);
  return RunConvertCommand(arguments);
}

struct Command {
  const CommandText* text;
  int (*run)(const std::vector<std::string>& words);
};

constexpr std::array<Command, 3> commands{{
    {&checkText, RunCheckLine},
    {&generateText, RunGenerateLine},
    {&convertText, RunConvertLine},
}};

// "check, generate or convert".
std::string CommandNames() {
  std::string names = commands.front().text->name;
  for (std::size_t i = 1; i < commands.size(); ++i) {
    names += std::string(i + 1 < commands.size() ? ", " : " or ") + commands[i].text->name;
  }
  return names;
}

int RunWords(std::vector<std::string> words) {
  for (const Command& command : commands) {
    if (words.empty() || words.front() != command.text->name) continue;
    words.erase(words.begin());
    return command.run(words);
  }
  CLI::App app("", "fabscope");
  // They were taken care of above; behind "--" the parser must know them.
  for (const Command& command : commands) app.add_subcommand(command.text->name);
  const auto help = [] { return HelpText(toolText, CommandTexts()); };
  if (const auto status = Parse(app, words, "one of the commands " + CommandNames(), help)) {
    return *status;
  }
  return WrongUsage(app, "no command given, expected " + CommandNames());
}

// Must not need any memory itself.
int OutOfMemory() {
  std::cerr << "fabscope: out of memory\n";
  return ExitFailed;
}

// The parser of the command line has operations that promise not to throw, and yet need memory.
[[noreturn]] void EndWithoutMemory() {
  try {
    if (const auto exception = std::current_exception()) std::rethrow_exception(exception);
  } catch (const std::bad_alloc&) {
    _exit(OutOfMemory());
  } catch (...) {
    std::abort();
  }
  std::abort();
}

}  // namespace

int RunCommandLine(int argc, const char* const* argv) {
  std::set_terminate(EndWithoutMemory);
  try {
    return RunWords(std::vector<std::string>(argv + std::min(argc, 1), argv + argc));
  } catch (const std::bad_alloc&) {
    return OutOfMemory();
  } catch (const std::length_error&) {  // more than any memory could hold
    return OutOfMemory();
  }
}

}  // namespace fabscope
