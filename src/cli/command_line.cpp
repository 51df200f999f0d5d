#include "cli/command_line.h"

#include <CLI/CLI.hpp>
#include <iostream>
#include <string>
#include <vector>

#include "cli/check_command.h"
#include "cli/check_options.h"
#include "cli/exit_status.h"
#include "cli/output_file.h"
#include "platform/logging.h"

namespace fabscope {
namespace {

constexpr const char* description = "Finds the wrong cables of an InfiniBand fat tree.";
constexpr const char* statusNote =
    "Exit status: 0 nothing found, 1 something found, 2 the work could not be done.";

int WrongUsage(const std::string& problem) {
  std::cerr << "fabscope: " << problem << " (see fabscope --help)\n";
  return ExitFailed;
}

// The parser names all arguments that it could not place, good ones among them; the user wants the
// one at fault.
std::string UnexpectedArgument(const std::vector<std::string>& remaining, bool haveCommand) {
  for (const std::string& argument : remaining) {
    if (argument.size() > 1 && argument[0] == '-') return "unknown option " + argument;
  }
  const std::string& first = remaining.front();
  return haveCommand ? "unexpected argument " + first + ", expected one FABRIC"
                     : "unknown command " + first + ", expected check";
}

int PrintAndLeave(const std::string& text) {
  const auto problem = WriteStandardOutput([&](std::ostream& stream) { stream << text; });
  if (!problem) return ExitClean;
  std::cerr << "fabscope: " << *problem << '\n';
  return ExitFailed;
}

void AddCheck(CLI::App& command, CheckArguments& arguments) {
  command
      .add_option("FABRIC", arguments.options.fabric,
                  "Fabric document (JSON) or topology dump of ibnetdiscover, plain or gzip; - for "
                  "standard input")
      ->type_name("");
  for (const CheckOption& option : CheckOptionTable()) {
    command
        .add_option_function<std::string>(
            option.name,
            [&option, &arguments](const std::string& value) {
              const auto problem = option.take(arguments, value);
              if (problem) {
                throw CLI::ValidationError(option.name,
                                           "\"" + value + "\" is not allowed, " + *problem);
              }
            },
            option.help)
        ->type_name(option.metavar)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeLast);
  }
}

}  // namespace

int RunCommandLine(int argc, const char* const* argv) {
  CheckArguments arguments;
  CLI::App app(description, "fabscope");
  app.set_version_flag("--version", "fabscope " FABSCOPE_VERSION);
  app.footer(statusNote);
  CLI::App* check = app.add_subcommand("check", "Checks the cabling of a fabric and reports");
  check->footer(statusNote);
  AddCheck(*check, arguments);

  try {
    app.parse(argc, argv);
  } catch (const CLI::CallForHelp&) {
    return PrintAndLeave(app.help());
  } catch (const CLI::CallForVersion& version) {
    return PrintAndLeave(std::string(version.what()) + "\n");
  } catch (const CLI::ExtrasError&) {
    return WrongUsage(UnexpectedArgument(app.remaining(true), check->parsed()));
  } catch (const CLI::ParseError& error) {
    return WrongUsage(error.what());
  }
  if (!check->parsed()) return WrongUsage("no command given, expected check");
  if (arguments.options.fabric.empty()) return WrongUsage("check needs the name of a FABRIC file");
  if (const auto problem = SettleArguments(arguments)) return WrongUsage(*problem);

  SetScreenSink([](std::string_view text) { std::cerr << text; });
  return RunCheckCommand(arguments);
}

}  // namespace fabscope
