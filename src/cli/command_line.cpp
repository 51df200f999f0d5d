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

constexpr const char* endOfOptions = "--";

// What to say of words that the parser could not place. An option is the likeliest mistake.
std::string UnplacedWord(const std::vector<std::string>& remaining, const std::string& expected) {
  const auto end = std::find(remaining.begin(), remaining.end(), endOfOptions);
  for (auto word = remaining.begin(); word != end; ++word) {
    if (word->size() > 1 && word->front() == '-') return "unknown option " + *word;
  }
  // The mark itself is at fault only when nothing else is.
  const bool startsWithMark = end == remaining.begin() && remaining.size() > 1;
  return "unexpected argument " + remaining[startsWithMark ? 1 : 0] + ", expected " + expected;
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
    return WrongUsage(UnplacedWord(app.remaining(), expected));
  } catch (const CLI::ParseError& error) {
    return WrongUsage(error.what());
  }
  return std::nullopt;
}

// The parser would take "--quiet=no" for --quiet.
std::optional<std::string> FlagWithValue(const std::vector<std::string>& words) {
  const auto end = std::find(words.begin(), words.end(), endOfOptions);
  for (const CheckOption& option : CheckOptionTable()) {
    if (*option.metavar != '\0') continue;
    const std::string names = option.name;
    const std::string flag = names.substr(names.find("--"));
    const auto hasValue = [&](const std::string& word) { return word.starts_with(flag + "="); };
    if (std::any_of(words.begin(), end, hasValue)) return flag + " takes no value";
  }
  return std::nullopt;
}

// "--csv=" is an empty value; the parser would take the next argument for it.
std::vector<std::string> WithEmptyValues(const std::vector<std::string>& words) {
  std::vector<std::string> result;
  bool isOption = true;
  for (const std::string& word : words) {
    isOption = isOption && word != endOfOptions;
    if (isOption && word.starts_with("--") && word.find('=') == word.size() - 1) {
      result.push_back(word.substr(0, word.size() - 1));
      result.emplace_back();
    } else {
      result.push_back(word);
    }
  }
  return result;
}

int RunCheckLine(const std::vector<std::string>& words) {
  if (const auto problem = FlagWithValue(words)) return WrongUsage(*problem);
  CheckArguments arguments;
  CLI::App app("Checks the cabling of a fabric and reports what is wrong.", "fabscope check");
  AddVersionAndNote(app);
  AddCheckOptions(app, arguments);
  if (const auto status = Parse(app, WithEmptyValues(words), "one FABRIC")) return *status;
  if (const auto problem = SettleArguments(arguments)) return WrongUsage(*problem);
  return RunCheckCommand(arguments);
}

}  // namespace

int RunCommandLine(int argc, const char* const* argv) {
  std::vector<std::string> words(argv + std::min(argc, 1), argv + argc);
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
