#include "reports/text_report.h"

#include <gtest/gtest.h>
#include <sstream>
#include <string>

#include "reports/csv_report.h"
#include "support/test_fabric.h"

namespace fabscope::internal {
namespace {

// Switches that records can name.
struct Switches {
  Switches() { fabric.Switch("a").Switch("b"); }

  MissingLink Missing(std::uint64_t group) { return {group, fabric["a"], fabric["b"], true}; }
  InvalidLink BetweenRoots() { return {5, 5, {fabric["a"], 1, 0, fabric["b"], 2, 0}, true}; }

  TestFabric fabric;
};

constexpr const char* missing3 = "-E- Neighborhood 3: missing link between switches (a) and (b)\n";

CheckResult FinishedCheck() {
  CheckResult result;
  result.status = CheckStatus::Done;
  result.buildOutput = "built\n";
  result.levelsReport = "levels\n";
  result.validateOutput = "validated\n";
  result.dump = "dumped\n";
  result.message = "why it failed";
  return result;
}

std::string TextOf(const CheckResult& result, bool withDump) {
  std::ostringstream stream;
  WriteTextReport(result, {.withDump = withDump}, stream);
  return stream.str();
}

TEST(TextReportTest, OfACleanFabricIsTheStagesOutputAndTheClosingLine) {
  EXPECT_EQ(TextOf(FinishedCheck(), false),
            "built\nlevels\nvalidated\n\n-I- Fat-tree check: 0 error records, 0 issues\n");
}

TEST(TextReportTest, ShowsRecordsInTheirOrderTaggedByLevelBehindAnEmptyLine) {
  CheckResult result = FinishedCheck();
  Switches switches;
  result.findings.Add(switches.Missing(3));
  result.findings.Add(switches.BetweenRoots());
  result.findings.Add(SharedFlid{7, {1, 2}});
  result.issuesCount = 1;
  EXPECT_EQ(TextOf(result, false),
            "built\nlevels\nvalidated\n\n" + std::string(missing3) +
                "-W- Neighborhood 5 : invalid link between switches (a port: 1) and (b port: 2)\n"
                "\n-I- Fat-tree check: 2 error records, 1 issues\n");
}

TEST(TextReportTest, ShowsTheDumpBetweenRecordsAndClosingLine) {
  CheckResult result = FinishedCheck();
  Switches switches;
  result.findings.Add(switches.Missing(3));
  EXPECT_EQ(TextOf(result, true), "built\nlevels\nvalidated\n\n" + std::string(missing3) +
                                      "dumped\n\n-I- Fat-tree check: 1 error records, 0 issues\n");
}

TEST(TextReportTest, TheNoticeOfRootsStandsOnTopAlsoWhenQuiet) {
  CheckResult result = FinishedCheck();
  result.roots.notice = "-W- Roots: others are used";
  std::ostringstream stream;
  WriteTextReport(result, {.quiet = true, .color = true}, stream);
  EXPECT_EQ(stream.str(),
            "\033[33m-W-\033[0m Roots: others are used\nbuilt\nlevels\nvalidated\n\n");
}

TEST(TextReportTest, OfATreeThatWasNotBuiltEndsWithWhatBuildingWrote) {
  CheckResult result;
  result.status = CheckStatus::NotBuilt;
  result.buildOutput = "built until here\n";
  result.message = "why it failed";
  EXPECT_EQ(TextOf(result, true), "built until here\n");
}

TEST(TextReportTest, OfATreeThatWasNotValidatedEndsWithTheRecordsUntilThen) {
  CheckResult result = FinishedCheck();
  result.status = CheckStatus::NotValidated;
  Switches switches;
  result.findings.Add(switches.Missing(3));
  EXPECT_EQ(TextOf(result, true), "built\nlevels\nvalidated\n\n" + std::string(missing3));
}

TEST(TextReportTest, ShowsALineThatDoesNotEndAllTheSame) {
  CheckResult result = FinishedCheck();
  result.validateOutput = "validated\nuntil here";
  EXPECT_EQ(TextOf(result, false),
            "built\nlevels\nvalidated\nuntil here\n"
            "\n-I- Fat-tree check: 0 error records, 0 issues\n");
}

std::string TextOf(const TextStyle& style) {
  CheckResult result = FinishedCheck();
  result.validateOutput = "-I- all well\n-W- odd\n\t -I- a name\n-E- wrong\n";
  Switches switches;
  result.findings.Add(switches.Missing(3));
  std::ostringstream stream;
  WriteTextReport(result, style, stream);
  return stream.str();
}

TEST(TextReportTest, WhenQuietLacksTheInformationLinesAndNothingElse) {
  EXPECT_EQ(TextOf({.quiet = true}),
            "built\nlevels\n-W- odd\n\t -I- a name\n-E- wrong\n\n" + std::string(missing3) + "\n");
}

TEST(TextReportTest, InColourPaintsTheTagAtTheStartOfALineOnly) {
  EXPECT_EQ(TextOf({.color = true}),
            "built\nlevels\n\033[36m-I-\033[0m all well\n\033[33m-W-\033[0m odd\n\t -I- a name\n"
            "\033[31m-E-\033[0m wrong\n\n"
            "\033[31m-E-\033[0m Neighborhood 3: missing link between switches (a) and (b)\n\n"
            "\033[36m-I-\033[0m Fat-tree check: 1 error records, 0 issues\n");
}

TEST(TextReportTest, TellsHowManyRecordsAreNotListedAlsoWhenQuiet) {
  CheckResult result = FinishedCheck();
  Switches switches;
  result.findings = FindingList(1);
  for (const std::uint64_t group : {3U, 4U, 5U}) result.findings.Add(switches.Missing(group));
  result.findings.Add(SharedFlid{7, {1, 2}});
  result.issuesCount = 1;
  EXPECT_EQ(result.findings.size(), 2U) << "what issues count is always kept";
  EXPECT_EQ(TextOf(result, false), "built\nlevels\nvalidated\n\n" + std::string(missing3) +
                                       "-W- 2 more error records are not listed (--max-records)\n"
                                       "\n-I- Fat-tree check: 3 error records, 1 issues\n");
  std::ostringstream stream;
  WriteTextReport(result, {.quiet = true}, stream);
  EXPECT_NE(stream.str().find("-W- 2 more error records are not listed"), std::string::npos);
}

TEST(CsvReportTest, IsAHeaderAndALineForEachRecord) {
  CheckResult result = FinishedCheck();
  Switches switches;
  result.findings = FindingList(2);
  result.findings.Add(switches.Missing(3));
  result.findings.Add(switches.BetweenRoots());
  result.findings.Add(SharedFlid{7, {1, 2}});
  const std::string listed =
      "Scope,NodeId,PortId,PortNumber,Event,Description\n"
      "CLUSTER,0x0,0x0,0x0,MISSING_LINK,"
      "\"Neighborhood 3: missing link between switches (a) and (b)\"\n"
      "CLUSTER,0x0,0x0,0x0,INVALID_LINK,"
      "\"Neighborhood 5 : invalid link between switches (a port: 1) and (b port: 2)\"\n";
  std::ostringstream stream;
  WriteCsvReport(result, stream);
  EXPECT_EQ(stream.str(), listed);
  result.findings.Add(switches.Missing(4));
  stream.str({});
  WriteCsvReport(result, stream);
  EXPECT_EQ(stream.str(), listed +
                              "CLUSTER,0x0,0x0,0x0,NOT_LISTED,"
                              "\"1 more error record is not listed (--max-records)\"\n");
}

}  // namespace
}  // namespace fabscope::internal
