#include "cli/parser.h"

#include <algorithm>
#include <functional>
#include <getopt.h>
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

bool TakesValue(const BoundOption& option) { return *option.text.metavar != '\0'; }

struct GivenOption {
  const BoundOption* option;
  std::string value;  // empty if it takes none
};

// Takes the words of a command apart. Each option has a code for getopt_long, by its place.
class WordReader {
 public:
  explicit WordReader(const std::vector<BoundOption>& options) : options_(options) {
    names_.reserve(options.size());  // getopt_long keeps pointers to them
    for (const BoundOption& option : options) {
      const int code = firstCode + static_cast<int>(names_.size());
      const int takes = TakesValue(option) ? required_argument : no_argument;
      names_.push_back(LongName(option.text).substr(2));
      longOptions_.push_back({names_.back().c_str(), takes, nullptr, code});
      if (const std::string name = ShortName(option.text); !name.empty()) {
        letters_ += name.substr(1) + (TakesValue(option) ? ":" : "");
      }
    }
    longOptions_.push_back({});
  }

  // Answers what is wrong with them.
  std::optional<std::string> Read(std::vector<std::string> words) {
    std::string tool = "fabscope";
    std::vector<char*> arguments{tool.data()};
    for (std::string& word : words) arguments.push_back(word.data());
    const int count = static_cast<int>(arguments.size());
    arguments.push_back(nullptr);
    opterr = 0;
    for (optind = 0;;) {  // 0: from the start again
      const char* word = arguments[static_cast<std::size_t>(std::max(optind, 1))];
      const int code =
          getopt_long(count, arguments.data(), letters_.c_str(), longOptions_.data(), nullptr);
      if (code == -1) break;
      if (auto problem = Take(code, word)) return problem;
    }
    operands.insert(operands.end(), arguments.begin() + optind, arguments.end() - 1);
    return std::nullopt;
  }

  std::vector<GivenOption> given;
  std::vector<std::string> operands;

 private:
  static constexpr int firstCode = 256;  // above all letters
  static constexpr int operandCode = 1;

  std::optional<std::string> Take(int code, const std::string& word) {
    if (code == operandCode) {
      operands.emplace_back(optarg);
      return std::nullopt;
    }
    const BoundOption* option = Find(code == '?' || code == ':' ? optopt : code);
    if (option == nullptr || IsAbbreviated(*option, word)) return "unknown option " + word;
    if (code == '?') return LongName(option->text) + " takes no value";
    if (code == ':') return LongName(option->text) + " needs " + option->text.metavar;
    given.push_back({option, TakesValue(*option) ? optarg : ""});
    return std::nullopt;
  }
  const BoundOption* Find(int code) const {
    if (code >= firstCode) return &options_[static_cast<std::size_t>(code - firstCode)];
    const auto found = std::find_if(options_.begin(), options_.end(), [&](const BoundOption& it) {
      return ShortName(it.text) == std::string("-") + static_cast<char>(code);
    });
    return found == options_.end() ? nullptr : &*found;
  }
  // Which getopt_long allows. As soon as there is another option it would mean something else.
  static bool IsAbbreviated(const BoundOption& option, const std::string& word) {
    return word.starts_with("--") && word.substr(0, word.find('=')) != LongName(option.text);
  }

  const std::vector<BoundOption>& options_;
  std::vector<std::string> names_;
  std::vector<option> longOptions_;
  std::string letters_ = "-:";  // operands in their place; what lacks its value is told apart
};

int PrintAndLeave(const std::string& text) {
  const auto problem = WriteStandardOutput([&](std::ostream& stream) { stream << text; });
  if (!problem) return ExitClean;
  std::cerr << "fabscope: " << *problem << '\n';
  return ExitFailed;
}

// Where an option is given twice, the last one holds.
std::optional<std::string> TakeValues(const std::vector<GivenOption>& given) {
  for (auto it = given.begin(); it != given.end(); ++it) {
    const auto isSame = [&](const GivenOption& other) { return other.option == it->option; };
    if (!it->option->repeatable && std::any_of(it + 1, given.end(), isSame)) continue;
    if (const auto problem = it->option->take(it->value)) {
      return LongName(it->option->text) + ": \"" + it->value + "\" is not allowed, " + *problem;
    }
  }
  return std::nullopt;
}

// Takes the options; those that every command has are answered.
std::optional<int> TakeOptions(const CommandText& command, std::vector<BoundOption> options,
                               const std::vector<std::string>& words,
                               const std::function<std::string()>& help,
                               std::vector<std::string>& operands) {
  std::string answer;
  const auto answerWith = [&](const OptionText& question, std::function<std::string()> text) {
    options.push_back({question,
                       [&answer, text = std::move(text)](const std::string&) {
                         answer = text();
                         return OptionProblem();
                       },
                       false});
  };
  answerWith(askForHelp, help);
  answerWith(askForVersion, [] { return std::string(GetToolVersion()) + "\n"; });
  WordReader reader(options);
  if (const auto problem = reader.Read(words)) return WrongUsage(command, *problem);
  if (const auto problem = TakeValues(reader.given)) return WrongUsage(command, *problem);
  operands = std::move(reader.operands);
  if (answer.empty()) return std::nullopt;
  return PrintAndLeave(answer);
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

std::optional<std::string> ProblemOfOperands(const CommandText& command,
                                             const std::vector<std::string>& operands) {
  const std::size_t expected = command.operands.size();
  if (operands.size() < expected) {
    return NameOf(command.operands.begin()[operands.size()]) + " is required";
  }
  const bool areSeveral = expected != 0 && TakesSeveral(command.operands.begin()[expected - 1]);
  if (operands.size() == expected || areSeveral) return std::nullopt;
  return "unexpected argument " + operands[expected] + ", expected " + ExpectedOperands(command);
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
  const auto help = [&] { return HelpText(command); };
  if (const auto status = TakeOptions(command, options, words, help, operands)) return status;
  if (const auto problem = ProblemOfOperands(command, operands)) {
    return WrongUsage(command, *problem);
  }
  return std::nullopt;
}

int ParseWithoutCommand(const CommandText& tool, const std::vector<const CommandText*>& commands,
                        const std::vector<std::string>& words) {
  const auto help = [&] { return HelpText(tool, commands); };
  std::vector<std::string> operands;
  if (const auto status = TakeOptions(tool, {}, words, help, operands)) return *status;
  const std::string expected = NamesOf(commands);
  if (operands.empty()) return WrongUsage(tool, "no command given, expected " + expected);
  return WrongUsage(tool, "unexpected argument " + operands.front() +
                              ", expected one of the commands " + expected);
}

}  // namespace fabscope::internal
