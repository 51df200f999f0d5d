#include "manual/man_page.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "cli/commands.h"
#include "platform/version.h"

namespace fabscope::internal {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

const CommandText described{
    .name = "try",
    .summary = "Tries things.",
    .operands = {{"IN", "what is read; - for standard input"}, {"MORE...", "what else is read"}},
    .options =
        [] {
          return std::vector<OptionText>{{"-a,--all", "", "First group", "All of them", "Or none."},
                                         {"--in", "FILE", "Second", "What is read", ""}};
        },
    .examples = {{"fabscope try 'a\\ b'", "Tries it."}, {".hidden", "Tries that."}},
    .statuses = {{0, "yes"}},
    .description = {"First paragraph.", "'Second' paragraph."},
};

TEST(ManPageTest, ThePageBeginsWithItsTitleAndTheVersion) {
  const std::string title = "FABSCOPE-TRY";
  EXPECT_THAT(ManPage(described), StartsWith(".TH " + title + R"( 1 "" ")" + GetToolVersion() +
                                             R"(" "User Commands")" + "\n"));
}

TEST(ManPageTest, LinesThatRoffWouldTakeForItsOwnAreEscaped) {
  const std::string page = ManPage(described);
  EXPECT_THAT(page, HasSubstr(R"(.SH DESCRIPTION
First paragraph.
.PP
\&'Second' paragraph.
.TP
\fIIN\fR
What is read; \- for standard input.
.TP
\fIMORE\fR
What else is read.
.SH OPTIONS
.SS "First group"
.TP
\fB\-a\fR, \fB\-\-all\fR
All of them.
Or none.
.SS "Second"
.TP
\fB\-\-in\fR \fIFILE\fR
What is read.
)"));
  EXPECT_THAT(page, HasSubstr(R"(.SH EXAMPLES
Tries it.
.PP
.nf
.RS
fabscope try 'a\e b'
.RE
.fi
.PP
Tries that.
.PP
.nf
.RS
\&.hidden
.RE
.fi
)"));
}

TEST(ManPageTest, OperandsStandInTheSynopsis) {
  EXPECT_THAT(ManPage(described), HasSubstr(R"(.SH SYNOPSIS
\fBfabscope try\fR [\fIOPTIONS\fR] \fIIN\fR \fIMORE...\fR
)"));
}

TEST(ManPageTest, ThePageOfTheToolLeadsToThoseOfItsCommands) {
  const std::string page = ManPage(toolText, CommandTexts());
  EXPECT_THAT(page, HasSubstr(".SH COMMANDS\n.TP\n\\fBcheck\\fR\nChecks the cabling"));
  EXPECT_THAT(page, HasSubstr(".SH SEE ALSO\n\\fBfabscope\\-check\\fR(1), "
                              "\\fBfabscope\\-repair\\fR(1), \\fBfabscope\\-diff\\fR(1), "
                              "\\fBfabscope\\-generate\\fR(1), \\fBfabscope\\-convert\\fR(1)\n"));
}

TEST(ManPageTest, EveryOptionHasItsPlace) {
  for (const CommandText* command : CommandTexts()) {
    const std::string page = ManPage(*command);
    for (const OptionText& option : command->options()) {
      std::string name;
      for (const char letter : LongName(option))
        name += letter == '-' ? "\\-" : std::string(1, letter);
      EXPECT_THAT(page, HasSubstr("\\fB" + name + "\\fR"));
    }
  }
}

}  // namespace
}  // namespace fabscope::internal
