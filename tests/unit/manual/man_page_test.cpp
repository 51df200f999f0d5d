#include "manual/man_page.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "cli/command_texts.h"
#include "platform/version.h"

namespace fabscope {
namespace {

using ::testing::HasSubstr;

const CommandText small{
    .name = "try",
    .summary = "Tries things.",
    .takesFabric = false,
    .options =
        [] {
          return std::vector<OptionText>{{"-a,--all", "", "First group", "all of them", "Or none."},
                                         {"--in", "FILE", "Second", "what is read", ""}};
        },
    .examples = {{"fabscope try 'a\\b'", "Tries it."}, {".hidden", "Tries that."}},
    .statuses = {{0, "yes"}},
    .description = {"First paragraph.", "'Second' paragraph."},
};

TEST(ManPageTest, APageHasTheSectionsOfACommand) {
  EXPECT_EQ(ManPage(small), ".TH FABSCOPE-TRY 1 \"\" \"" + std::string(GetToolVersion()) +
                                R"(" "User Commands"
.SH NAME
fabscope\-try \- tries things
.SH SYNOPSIS
\fBfabscope try\fR [\fIOPTIONS\fR]
.SH DESCRIPTION
First paragraph.
.PP
\&'Second' paragraph.
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
.SS "Help"
.TP
\fB\-h\fR, \fB\-\-help\fR
This help.
.TP
\fB\-\-version\fR
The version of fabscope.
.SH EXIT STATUS
.TP
\fB0\fR
Yes.
.SH EXAMPLES
Tries it.
.PP
.nf
.RS
fabscope try 'a\eb'
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
.SH SEE ALSO
\fBfabscope\fR(1)
)");
}

TEST(ManPageTest, ThePageOfTheToolLeadsToThoseOfItsCommands) {
  const std::string page = ManPage(toolText, CommandTexts());
  EXPECT_THAT(page, HasSubstr(".SH COMMANDS\n.TP\n\\fBcheck\\fR\nChecks the cabling"));
  EXPECT_THAT(page, HasSubstr(".SH SEE ALSO\n\\fBfabscope\\-check\\fR(1), "
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
    EXPECT_EQ(page.find("FABRIC\\fR is a topology dump") != std::string::npos,
              command->takesFabric);
  }
}

}  // namespace
}  // namespace fabscope
