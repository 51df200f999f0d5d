#include "cli/help_text.h"

#include <algorithm>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <vector>

#include "cli/check_options.h"
#include "cli/commands.h"
#include "cli/convert_options.h"
#include "cli/generate_options.h"
#include "synthetic/faults.h"

namespace fabscope::internal {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Le;
using ::testing::SizeIs;
using ::testing::StartsWith;

std::vector<std::string> LinesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

std::vector<std::string> AllHelps() {
  std::vector<std::string> helps{HelpText(toolText, CommandTexts())};
  for (const CommandText* command : CommandTexts()) helps.push_back(HelpText(*command));
  return helps;
}

TEST(HelpTextTest, EveryHelpFitsAScreenAndStartsWithAnExample) {
  for (const std::string& help : AllHelps()) {
    EXPECT_THAT(help, StartsWith("Example: "));
    EXPECT_THAT(LinesOf(help), SizeIs(Le(44U))) << help;
    for (const std::string& line : LinesOf(help)) EXPECT_THAT(line, SizeIs(Le(80U)));
  }
}

TEST(HelpTextTest, EveryOptionIsToldBelowItsGroup) {
  for (const CommandText* command : CommandTexts()) {
    const std::vector<std::string> lines = LinesOf(HelpText(*command));
    for (const OptionText& option : command->options()) {
      const auto told = std::find_if(lines.begin(), lines.end(), [&](const std::string& line) {
        return line.starts_with("  ") && line.find(LongName(option)) != std::string::npos;
      });
      ASSERT_NE(told, lines.end()) << option.name;
      const auto heading = std::find_if(std::make_reverse_iterator(told), lines.rend(),
                                        [](const std::string& line) { return line.back() == ':'; });
      EXPECT_EQ(*heading, std::string(option.group) + ':');
    }
  }
}

const CommandText small{
    .name = "try",
    .summary = "Tries things.",
    .operands = {{"FABRIC", fabricHelp}},
    .options =
        [] {
          return std::vector<OptionText>{
              {"-a,--all", "", "Group", "all of them", ""},
              {"--one", "first|second", "Group",
               "a help that is so long that it does not fit into what is left of its line", ""},
              {"--a-name-and-its-value", "AND-BOTH", "Group", "stand above the help", ""}};
        },
    .examples = {{"fabscope try net", "Tries it."}},
    .statuses = {{0, "yes"}, {1, "no"}},
    .description = {"It tries."},
};

TEST(HelpTextTest, HelpIsWrappedBelowItsColumn) {
  EXPECT_EQ(HelpText(small), R"(Example: fabscope try net

Usage: fabscope try [OPTIONS] FABRIC
Tries things.

  FABRIC  topology dump or fabric document, also gzip; - for standard input

Group:
  -a, --all                     all of them
  --one first|second            a help that is so long that it does not fit into
                                what is left of its line
  --a-name-and-its-value AND-BOTH
                                stand above the help

Help:
  -h, --help                    this help
  --version                     the version of fabscope

Exit status: 0 yes, 1 no
)");
}

TEST(HelpTextTest, TheHelpOfTheToolNamesItsCommands) {
  EXPECT_EQ(HelpText(small, std::vector<const CommandText*>{&small}),
            R"(Example: fabscope try net

Usage: fabscope try COMMAND [OPTIONS] [FABRIC...]
Tries things.

Commands (for help: fabscope COMMAND --help):
  try         Tries things.

Help:
  -h, --help                    this help
  --version                     the version of fabscope

Exit status: 0 yes, 1 no
)");
}

std::vector<std::string> NamesOf(const std::vector<OptionText>& options) {
  std::vector<std::string> names;
  for (const OptionText& option : options) names.emplace_back(option.name);
  return names;
}

TEST(CommandTextTest, OptionsWithAShortNameHaveALongOne) {
  EXPECT_THAT(NamesOf(CommonOptions()), ElementsAre("-h,--help", "--version"));
  EXPECT_THAT(NamesOf(checkText.options()), Contains("-q,--quiet"));
  EXPECT_THAT(NamesOf(checkText.options()), Contains("-s,--summary"));
  EXPECT_THAT(
      NamesOf(convertText.options()),
      ElementsAre("-o,--output", "--format", "--special-nodes", "--node-name-map", "--roots",
                  "--root-regex", "--ranks", "--retries", "--equal", "--merge-percent"));
  EXPECT_THAT(NamesOf(generateText.options()), Contains("-o,--output"));
}

TEST(CommandTextTest, ChoicesAreTheWordsOfAMetavar) {
  EXPECT_THAT(ChoicesOf({"--x", "a|bc|d", "", "", ""}), ElementsAre("a", "bc", "d"));
  EXPECT_THAT(ChoicesOf({"--x", "FILE", "", "", ""}), IsEmpty());
  EXPECT_THAT(ChoicesOf({"--x", "", "", "", ""}), IsEmpty());
}

TEST(CommandTextTest, AnOptionMayHaveAShortName) {
  EXPECT_EQ(ShortName({"-q,--quiet", "", "", "", ""}), "-q");
  EXPECT_EQ(LongName({"-q,--quiet", "", "", "", ""}), "--quiet");
  EXPECT_EQ(ShortName({"--quiet", "", "", "", ""}), "");
  EXPECT_EQ(LongName({"--quiet", "", "", "", ""}), "--quiet");
}

TEST(CommandTextTest, AllKindsOfFaultsAreTold) {
  const std::vector<OptionText> options = generateText.options();
  const auto fault = std::find_if(options.begin(), options.end(), [](const OptionText& option) {
    return LongName(option) == "--fault";
  });
  ASSERT_NE(fault, options.end());
  for (const FaultKind kind : AllFaultKinds()) {
    EXPECT_THAT(fault->more, HasSubstr(std::string(FaultName(kind))));
  }
}

}  // namespace
}  // namespace fabscope::internal
