#pragma once

#include <cstddef>
#include <initializer_list>
#include <string>
#include <vector>

namespace fabscope::internal {

// How commands and their options are called, and what is told of them. The parser, the help, the
// manual pages and the completions are all made from these, so they cannot differ.

struct OptionText {
  const char* name;  // "--name" or "-n,--name"
  // Empty: the option takes no value. "a|b|c": one of these words. "FILE": a path.
  const char* metavar;
  const char* group;  // the heading below which it stands
  const char* help;   // a line of the help
  const char* more;   // what the manual page adds to it: whole sentences, or nothing
};

// What a command is given besides options; each is required.
struct OperandText {
  const char* name;  // "FABRIC"; "FABRIC..." takes one or more
  const char* help;  // a line of the help
};

// "FABRIC" of "FABRIC...".
inline std::string NameOf(const OperandText& operand) {
  const std::string name = operand.name;
  return name.substr(0, name.find("..."));
}

inline bool TakesSeveral(const OperandText& operand) { return NameOf(operand) != operand.name; }

struct ExampleText {
  const char* command;
  const char* purpose;
};

struct StatusText {
  int status;
  const char* meaning;
};

struct CommandText {
  const char* name;     // "check"; empty for fabscope itself
  const char* summary;  // a sentence
  std::initializer_list<OperandText> operands;
  std::vector<OptionText> (*options)();  // its own
  std::initializer_list<ExampleText> examples;
  std::initializer_list<StatusText> statuses;
  std::initializer_list<const char*> description;  // paragraphs of the manual page
};

// "fabscope check", "fabscope".
inline std::string FullName(const CommandText& command) {
  return *command.name == '\0' ? "fabscope" : std::string("fabscope ") + command.name;
}

// "-q" of "-q,--quiet"; empty if there is none.
inline std::string ShortName(const OptionText& option) {
  const std::string names = option.name;
  const std::size_t comma = names.find(',');
  return comma == std::string::npos ? "" : names.substr(0, comma);
}

// "--quiet" of "-q,--quiet".
inline std::string LongName(const OptionText& option) {
  const std::string names = option.name;
  return names.substr(names.find(',') + 1);
}

// The words that an option's value may be; none if it is not one of a few words.
std::vector<std::string> ChoicesOf(const OptionText& option);

// What every command has, besides its own.
inline constexpr OptionText askForHelp{"-h,--help", "", "Help", "this help", ""};
inline constexpr OptionText askForVersion{"--version", "", "Help", "the version of fabscope", ""};
std::vector<OptionText> CommonOptions();

// Of options that several commands have.
inline constexpr const char* specialNodesHelp = "adapters not counted as hosts (regex)";
inline constexpr const char* specialNodesMore =
    "A POSIX extended regular expression for names in a dump; fabric documents have a flag for "
    "it. The default is \"Aggregation Node\".";
inline constexpr const char* nodeNameMapHelp = "names of nodes (lines: 0xGUID \"name\")";
inline constexpr const char* nodeNameMapMore =
    "The format of the standard InfiniBand diagnostics. The names replace those of the fabric "
    "before anything else looks at them.";

// What FABRIC means, as a help tells it.
inline constexpr const char* fabricHelp =
    "topology dump or fabric document, also gzip; - for standard input";

}  // namespace fabscope::internal
