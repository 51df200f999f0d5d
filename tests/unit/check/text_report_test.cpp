#include "reports/text_report.h"

#include <gtest/gtest.h>
#include <sstream>

#include "reports/csv_report.h"

namespace fabscope {
namespace {

class Record final : public FabricErrGeneral {
 public:
  Record(const std::string& text, EnFabricErrLevel_t recordLevel) {
    description = text;
    level = recordLevel;
  }
  std::string GetCSVErrorLine() override { return "csv of " + description; }
  std::string GetErrorLine() override { return description; }
};

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
  result.records.push_back(std::make_unique<Record>("wrong", EN_FABRIC_ERR_ERROR));
  result.records.push_back(std::make_unique<Record>("odd", EN_FABRIC_ERR_WARNING));
  result.issuesCount = 1;
  EXPECT_EQ(TextOf(result, false),
            "built\nlevels\nvalidated\n\n-E- wrong\n-W- odd\n"
            "\n-I- Fat-tree check: 2 error records, 1 issues\n");
}

TEST(TextReportTest, ShowsTheDumpBetweenRecordsAndClosingLine) {
  CheckResult result = FinishedCheck();
  result.records.push_back(std::make_unique<Record>("wrong", EN_FABRIC_ERR_ERROR));
  EXPECT_EQ(TextOf(result, true),
            "built\nlevels\nvalidated\n\n-E- wrong\ndumped\n"
            "\n-I- Fat-tree check: 1 error records, 0 issues\n");
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
  result.records.push_back(std::make_unique<Record>("wrong", EN_FABRIC_ERR_ERROR));
  EXPECT_EQ(TextOf(result, true), "built\nlevels\nvalidated\n\n-E- wrong\n");
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
  result.records.push_back(std::make_unique<Record>("-I- wrong", EN_FABRIC_ERR_ERROR));
  std::ostringstream stream;
  WriteTextReport(result, style, stream);
  return stream.str();
}

TEST(TextReportTest, WhenQuietLacksTheInformationLinesAndNothingElse) {
  EXPECT_EQ(TextOf({.quiet = true}),
            "built\nlevels\n-W- odd\n\t -I- a name\n-E- wrong\n\n-E- -I- wrong\n\n");
}

TEST(TextReportTest, InColourPaintsTheTagAtTheStartOfALineOnly) {
  EXPECT_EQ(TextOf({.color = true}),
            "built\nlevels\n\033[36m-I-\033[0m all well\n\033[33m-W-\033[0m odd\n\t -I- a name\n"
            "\033[31m-E-\033[0m wrong\n\n\033[31m-E-\033[0m -I- wrong\n\n"
            "\033[36m-I-\033[0m Fat-tree check: 1 error records, 0 issues\n");
}

TEST(CsvReportTest, IsAHeaderAndALineForEachRecord) {
  CheckResult result = FinishedCheck();
  result.records.push_back(std::make_unique<Record>("one", EN_FABRIC_ERR_ERROR));
  result.records.push_back(std::make_unique<Record>("two", EN_FABRIC_ERR_WARNING));
  std::ostringstream stream;
  WriteCsvReport(result, stream);
  EXPECT_EQ(stream.str(),
            "Scope,NodeId,PortId,PortNumber,Event,Description\ncsv of one\ncsv of two\n");
}

}  // namespace
}  // namespace fabscope
