#include "manual/man_page.h"

#include <algorithm>
#include <cctype>
#include <utility>
#include <vector>

#include "platform/version.h"

namespace fabscope::internal {
namespace {

// Text that roff prints as it is. A plain "-" would become a typographic hyphen, which nobody can
// paste into a shell.
std::string Plain(const std::string& text) {
  std::string result;
  for (const char letter : text) {
    const bool beginsLine = result.empty() || result.back() == '\n';
    if (beginsLine && (letter == '.' || letter == '\'')) result += "\\&";
    if (letter == '\\') {
      result += "\\e";
    } else if (letter == '-') {
      result += "\\-";
    } else {
      result += letter;
    }
  }
  return result;
}

std::string Bold(const std::string& text) { return "\\fB" + Plain(text) + "\\fR"; }
std::string Italic(const std::string& text) { return "\\fI" + Plain(text) + "\\fR"; }

// A clause as a sentence.
std::string Sentence(std::string text) {
  text.front() = static_cast<char>(std::toupper(static_cast<unsigned char>(text.front())));
  return text.back() == '.' ? text : text + '.';
}

// "Checks the cabling." as what a page is listed by: "checks the cabling".
std::string Listed(std::string summary) {
  summary.front() = static_cast<char>(std::tolower(static_cast<unsigned char>(summary.front())));
  if (summary.back() == '.') summary.pop_back();
  return summary;
}

class Page {
 public:
  explicit Page(const CommandText& command) : command_(command) {
    std::string title = PageName(command);
    std::transform(title.begin(), title.end(), title.begin(),
                   [](unsigned char letter) { return std::toupper(letter); });
    Line(".TH " + title + R"( 1 "" ")" + GetToolVersion() + R"(" "User Commands")");
    Section("NAME");
    Line(Plain(PageName(command)) + " \\- " + Plain(Listed(command.summary)));
    Section("SYNOPSIS");
  }

  void Line(const std::string& line) { text_ += line + '\n'; }
  void Section(const std::string& name) { Line(".SH " + name); }

  void Description() {
    Section("DESCRIPTION");
    for (const char* paragraph : command_.description) {
      if (paragraph != *command_.description.begin()) Line(".PP");
      Line(Plain(paragraph));
    }
    for (const OperandText& operand : command_.operands) {
      Line(".TP");
      Line(Italic(NameOf(operand)));
      Line(Plain(Sentence(operand.help)));
    }
  }

  void Options() {
    Section("OPTIONS");
    std::vector<OptionText> options = command_.options();
    const std::vector<OptionText> common = CommonOptions();
    options.insert(options.end(), common.begin(), common.end());
    std::string group;
    for (const OptionText& option : options) {
      if (group != option.group) Line(std::string(".SS \"") + option.group + '"');
      group = option.group;
      Option(option);
    }
  }

  void Option(const OptionText& option) {
    std::string names = ShortName(option).empty() ? "" : Bold(ShortName(option)) + ", ";
    names += Bold(LongName(option));
    if (*option.metavar != '\0') names += ' ' + Italic(option.metavar);
    Line(".TP");
    Line(names);
    Line(Plain(Sentence(option.help)));
    if (*option.more != '\0') Line(Plain(option.more));
  }

  void Statuses() {
    Section("EXIT STATUS");
    for (const StatusText& status : command_.statuses) {
      Line(".TP");
      Line(Bold(std::to_string(status.status)));
      Line(Plain(Sentence(status.meaning)));
    }
  }

  void Examples() {
    Section("EXAMPLES");
    for (const ExampleText& example : command_.examples) {
      if (&example != command_.examples.begin()) Line(".PP");
      Line(Plain(example.purpose));
      Line(".PP");
      Line(".nf");
      Line(".RS");
      Line(Plain(example.command));
      Line(".RE");
      Line(".fi");
    }
  }

  std::string Take() { return std::move(text_); }

 private:
  const CommandText& command_;
  std::string text_;
};

}  // namespace

std::string PageName(const CommandText& command) {
  return *command.name == '\0' ? "fabscope" : std::string("fabscope-") + command.name;
}

std::string ManPage(const CommandText& command) {
  Page page(command);
  std::string synopsis = Bold(FullName(command)) + " [" + Italic("OPTIONS") + "]";
  for (const OperandText& operand : command.operands) synopsis += ' ' + Italic(operand.name);
  page.Line(synopsis);
  page.Description();
  page.Options();
  page.Statuses();
  page.Examples();
  page.Section("SEE ALSO");
  page.Line(Bold("fabscope") + "(1)");
  return page.Take();
}

std::string ManPage(const CommandText& tool, std::span<const CommandText* const> commands) {
  Page page(tool);
  page.Line(Bold("fabscope") + ' ' + Italic("COMMAND") + " [" + Italic("OPTIONS") + "] [" +
            Italic("FABRIC...") + "]");
  page.Description();
  page.Section("COMMANDS");
  for (const CommandText* command : commands) {
    page.Line(".TP");
    page.Line(Bold(command->name));
    page.Line(Plain(command->summary));
  }
  page.Options();
  page.Statuses();
  page.Examples();
  page.Section("SEE ALSO");
  std::string pages;
  for (const CommandText* command : commands) {
    pages += (pages.empty() ? "" : ", ") + Bold(PageName(*command)) + "(1)";
  }
  page.Line(pages);
  return page.Take();
}

}  // namespace fabscope::internal
