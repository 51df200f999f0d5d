#include "cli/command_line.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <iostream>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "cli/check_command.h"
#include "cli/check_options.h"
#include "cli/exit_status.h"
#include "cli/output_file.h"
#include "platform/version.h"

namespace fabscope {
namespace {

constexpr const char* statusNote =
    "Exit status: 0 nothing found, 1 something found, 2 the work could not be done.";

int WrongUsage(const std::string& problem) {
  std::cerr << "fabscope: " << problem << " (see fabscope --help)\n";
  return ExitFailed;
}

int PrintAndLeave(const std::string& text) {
  const auto problem = WriteStandardOutput([&](std::ostream& stream) { stream << text; });
  if (!problem) return ExitClean;
  std::cerr << "fabscope: " << *problem << '\n';
  return ExitFailed;
}

void AddVersionAndNote(CLI::App& app) {
  app.set_version_flag("--version", GetToolVersion());
  app.footer(statusNote);
}

void AddCheckOptions(CLI::App& app, CheckArguments& arguments) {
  app.add_option("FABRIC", arguments.options.fabric,
                 "Fabric document (JSON) or topology dump of ibnetdiscover, plain or gzip; - for "
                 "standard input")
      ->type_name("")
      ->required();
  for (const CheckOption& option : CheckOptionTable()) {
    const auto take = [&option, &arguments](const std::string& value) {
      const auto problem = option.take(arguments, value);
      if (problem) {
        throw CLI::ValidationError(option.name, "\"" + value + "\" is not allowed, " + *problem);
      }
    };
    if (*option.metavar == '\0') {
      app.add_flag_callback(
          option.name, [take] { take({}); }, option.help);
    } else {
      app.add_option_function<std::string>(option.name, take, option.help)
          ->type_name(option.metavar)
          ->multi_option_policy(CLI::MultiOptionPolicy::TakeLast);
    }
  }
}

// Parses and answers nothing, or prints what was asked for or is wrong and answers the exit status.
// `expected` names what an argument that has no place should have been.
std::optional<int> Parse(CLI::App& app, std::vector<std::string> words,
                         const std::string& expected) {
  try {
    std::reverse(words.begin(), words.end());  // as the parser wants them
    app.parse(std::move(words));
  } catch (const CLI::CallForHelp&) {
    return PrintAndLeave(app.help());
  } catch (const CLI::CallForVersion& version) {
    return PrintAndLeave(std::string(version.what()) + "\n");
  } catch (const CLI::ExtrasError&) {
    // The parser names all arguments that it could not place; an option is the likelier mistake.
    const std::vector<std::string> remaining = app.remaining();
    for (const std::string& word : remaining) {
      if (word.size() > 1 && word[0] == '-') return WrongUsage("unknown option " + word);
    }
    return WrongUsage("unexpected argument " + remaining.front() + ", expected " + expected);
  } catch (const CLI::ParseError& error) {
    return WrongUsage(error.what());
  }
  return std::nullopt;
}

// The parser would take "--quiet=no" for --quiet.
std::optional<std::string> FlagWithValue(const std::vector<std::string>& words) {
  const auto endOfOptions = std::find(words.begin(), words.end(), "--");
  for (const CheckOption& option : CheckOptionTable()) {
    if (*option.metavar != '\0') continue;
    const std::string names = option.name;
    const std::string flag = names.substr(names.find("--"));
    const auto hasValue = [&](const std::string& word) { return word.starts_with(flag + "="); };
    if (std::any_of(words.begin(), endOfOptions, hasValue)) return flag + " takes no value";
  }
  return std::nullopt;
}

int RunCheckLine(const std::vector<std::string>& words) {
  if (const auto problem = FlagWithValue(words)) return WrongUsage(*problem);
  CheckArguments arguments;
  CLI::App app("Checks the cabling of a fabric and reports what is wrong.", "fabscope check");
  AddVersionAndNote(app);
  AddCheckOptions(app, arguments);
  if (const auto status = Parse(app, words, "one FABRIC")) return *status;
  if (const auto problem = SettleArguments(arguments)) return WrongUsage(*problem);

  return RunCheckCommand(arguments);
}

// "--csv=" is an empty value; the parser would take the next argument for it.
std::vector<std::string> Words(int argc, const char* const* argv) {
  std::vector<std::string> words;
  for (int i = 1; i < argc; ++i) {
    std::string word = argv[i];
    const bool hasEmptyValue = word.starts_with("--") && word.find('=') == word.size() - 1;
    if (hasEmptyValue) word.pop_back();
    words.push_back(std::move(word));
    if (hasEmptyValue) words.emplace_back();
  }
  return words;
}

}  // namespace

int RunCommandLine(int argc, const char* const* argv) {
  std::vector<std::string> words = Words(argc, argv);
  if (!words.empty() && words.front() == "check") {
    words.erase(words.begin());
    return RunCheckLine(words);
  }
  CLI::App app("Finds the wrong cables of an InfiniBand fat tree.", "fabscope");
  AddVersionAndNote(app);
  // For the help only: the command's own line was taken care of above.
  app.add_subcommand("check", "Checks the cabling of a fabric (fabscope check --help)");
  if (const auto status = Parse(app, words, "the command check")) return *status;
  return WrongUsage("no command given, expected check");
}

}  // namespace fabscope
