#include "reports/json_report.h"

#include <gtest/gtest.h>
#include <sstream>
#include <utility>

#include "platform/version.h"
#include "support/stage_fixture.h"

namespace fabscope::internal {
namespace {

// A check of a fabric that the test describes, from roots that it names.
class JsonReportTest : public StageTest {
 protected:
  void Check(const std::string& rootRegex) {
    result.input = "dir/my \"fabric\".json";
    result.roots.method = RootsFrom::Regex;
    result.topology = std::make_unique<FTTopology>(&fabric.Build(), &out, mergePercent);
    regExp regex(rootRegex);
    result.topology->SetFindingSink(
        [this](Finding&& finding) { result.findings.Add(std::move(finding)); });
    result.status = CheckStatus::NotBuilt;
    const int built = result.topology->Build(errors, result.message, regex);
    result.buildOutput = TakeOutput();
    if (built == 0) {
      result.levelsReport = result.topology->LevelsReport();
      const int validated = result.topology->Validate(errors, result.message);
      result.status = validated == 0 ? CheckStatus::Done : CheckStatus::NotValidated;
      result.validateOutput = TakeOutput();
    }
    result.issuesCount = result.topology->GetIssuesCount();
  }

  std::string Json(const TextStyle& style = {}) {
    std::ostringstream json;
    WriteJsonReport(result, style, json);
    return json.str();
  }

  // The number of a group of the checked tree.
  std::string Id(std::size_t rank) const {
    return std::to_string(result.topology->GetNeighborhoods()[rank][0]->GetId());
  }

  const std::string head = std::string(R"({"format":"fabscope-result","version":1,"tool":")") +
                           GetToolVersion() + R"(","input":"dir/my \"fabric\".json",)";
  const std::string roots = R"("roots":{"method":"regex","misfits":0,"doubt":""},)";
  CheckResult result;
};

TEST_F(JsonReportTest, TellsRanksGroupsAndTheReportOfACleanFabric) {
  AddThreeLevelTree(fabric, 1, 1, 1, 1, 1);
  Check("^root");
  const std::string group = Id(0);
  const std::string hood = Id(1);
  EXPECT_EQ(Json(), head + R"("status":"clean","message":"",)" + roots + R"("ranks":[
["0x0000000000000001"],
["0x0000000000000002"],
["0x0000000000000003"]],"groups":[
{"kind":"connectivity group","id":)" +
                        group + R"(,"rank":0,"spines":["0x0000000000000001"],)" +
                        R"("lines":["0x0000000000000002"],)" +
                        R"("totalSpineUplinks":0,"totalInternalLinks":0},
{"kind":"neighborhood","id":)" +
                        hood + R"(,"rank":1,"spines":["0x0000000000000002"],)" +
                        R"("lines":["0x0000000000000003"],)" +
                        R"("totalSpineUplinks":1,"totalInternalLinks":1}],"records":[],)" +
                        R"("issues":0,"findings":[],"repairs":[],"report":[
"-I- Detecting roots by the regular exp: ^root",
"3 level Fat-Tree was discovered: ",
"\u0009 rank: 0(Roots) #switches: 1",
"\u0009 rank: 1 #switches: 1",
"\u0009 rank: 2 #switches: 1",
"",
"-I- Connectivity group )" +
                        group + R"(: all spines have the same number of downlinks: 1",
"-I- Connectivity group )" +
                        group + R"(: all lines have the same number of uplinks: 1",
"-I- Connectivity group )" +
                        group + R"(: all lines have the same number of downlinks: 1",
"",
"-I- Neighborhood )" + hood +
                        R"(: all spines have the same number of uplinks: 1",
"-I- Neighborhood )" + hood +
                        R"(: all spines have the same number of downlinks: 1",
"-I- Neighborhood )" + hood +
                        R"(: all lines have the same number of uplinks: 1",
"-I- Neighborhood )" + hood +
                        R"(: all lines have the same number of downlinks: 1",
"",
"",
"",
"-I- Fat-tree check: 0 error records, 0 issues"]}
)");
}

TEST_F(JsonReportTest, TellsUplinksAndInternalLinksOfAGroupApart) {
  AddThreeLevelTree(fabric, 1, 1, 1, 2, 1);
  Check("^root");
  const std::string json = Json();
  const std::size_t hood = json.find(R"({"kind":"neighborhood")");
  EXPECT_EQ(json.substr(hood, json.find('\n', hood) - hood),
            R"({"kind":"neighborhood","id":)" + Id(1) +
                R"(,"rank":1,"spines":["0x0000000000000003"],"lines":["0x0000000000000004"],)" +
                R"("totalSpineUplinks":2,"totalInternalLinks":1}],"records":[],"issues":0,)" +
                R"("findings":[],"repairs":[],"report":[)");
}

TEST_F(JsonReportTest, TellsRecordsWithEventAndLevel) {
  AddTwoLevelTree(fabric, 2, 3, 0);
  fabric.Switch("leaf").Cable("root0", "root1").Cable("leaf", "root0");
  Check("^root");
  const std::string hood = Id(0);
  const std::string json = Json({.quiet = true});
  EXPECT_EQ(json.substr(0, json.find(R"("findings":)")).substr(json.find(R"("records")")),
            R"("records":[
{"event":"INVALID_LINK","level":2,"description":"Neighborhood )" +
                hood + R"j( : invalid link between switches (root0 port: 4) and (root1 port: 4)"},
{"event":"MISSING_LINK","level":3,"description":"Neighborhood )j" +
                hood + R"j(: missing link between switches (root1) and (leaf)"}],"issues":4,)j");
  EXPECT_EQ(json.substr(0, json.find(R"("ranks")")),
            head + R"("status":"findings","message":"",)" + roots);
}

TEST_F(JsonReportTest, TellsFindingsRecordsFirst) {
  AddTwoLevelTree(fabric, 2, 2, 0);
  fabric.Switch("leaf").Cable("leaf", "root0");
  Check("^root");
  const std::string hood = Id(0);
  const std::string json = Json();
  const std::string start = R"(,"groupKind":"neighborhood","groups":[)" + hood + R"(],"issues":)";
  EXPECT_EQ(json.substr(0, json.find(R"("repairs")")).substr(json.find(R"("findings":)")),
            R"("findings":[
{"kind":"missing-link","level":3)" +
                start + R"(0,"spine":"0x0000000000000002","line":"0x0000000000000005"},
{"kind":"uneven-links","level":3)" +
                start + R"(2,"set":"spines","direction":"down","expected":3,)" +
                R"("counts":[{"count":2,"switches":["0x0000000000000002"]}]},
{"kind":"uneven-links","level":3)" +
                start + R"(2,"set":"lines","direction":"up","expected":2,)" +
                R"("counts":[{"count":1,"switches":["0x0000000000000005"]}]}],)");
}

TEST_F(JsonReportTest, TellsWhichRootsWereUsedAndWhatSpeaksAgainstThem) {
  fabric.Switch("a");
  Check("a");
  const auto toldRoots = [this](const RootsUsed& used) {
    result.roots = used;
    const std::string json = Json();
    const std::size_t start = json.find(R"("roots":)");
    return json.substr(start, json.find(R"("ranks":)") - start);
  };
  EXPECT_EQ(toldRoots({RootsFrom::Search, 0, "", ""}),
            R"("roots":{"method":"search","misfits":0,"doubt":""},)");
  EXPECT_EQ(toldRoots({RootsFrom::Inferred, 12, "-W- Roots: ...", "a \"leaf\""}),
            R"("roots":{"method":"inferred","misfits":12,"doubt":"a \"leaf\""},)");
  EXPECT_EQ(toldRoots({RootsFrom::Smdb, 3, "", ""}),
            R"("roots":{"method":"smdb","misfits":3,"doubt":""},)");
}

TEST_F(JsonReportTest, RecordsOrIssuesAloneAreFindings) {
  AddTwoLevelTree(fabric, 1, 2, 0);
  Check("^root");
  const auto status = [this] {
    const std::string json = Json();
    const std::size_t key = json.find(R"("status")");
    return json.substr(key, json.find(',', key) - key);
  };
  EXPECT_EQ(status(), R"("status":"clean")");
  result.issuesCount = 1;
  EXPECT_EQ(status(), R"("status":"findings")");
  result.issuesCount = 0;
  result.findings.Add(MissingLink{0, fabric["root0"], fabric["leaf0"], true});
  EXPECT_EQ(status(), R"("status":"findings")");
}

TEST_F(JsonReportTest, OfATreeThatWasNotBuiltHoldsTheMessage) {
  fabric.Switch("a");
  Check("^nothing");
  EXPECT_EQ(
      Json(),
      head +
          R"("status":"failed","message":"Cannot build Fat-Tree topology. )"
          R"(Failed to fill tree's ranks by the regular expression: )"
          R"(No root was provided for creating topology",)" +
          roots +
          R"("ranks":[],"groups":[],"records":[],"issues":0,"findings":[],"repairs":[],"report":[
"-I- Detecting roots by the regular exp: ^nothing"]}
)");
}

TEST_F(JsonReportTest, OfATreeThatWasNotValidatedHoldsWhatThereWasUntilThen) {
  fabric.Switch("a");
  Check("a");
  EXPECT_EQ(Json(), head +
                        R"("status":"failed","message":"Cannot validate Fat-Tree topology. )"
                        R"(Cannot calculate Up/Down links. It is not a Fat-Tree topology",)" +
                        roots + R"("ranks":[
["0x0000000000000001"]],"groups":[],"records":[],"issues":0,"findings":[],"repairs":[],"report":[
"-I- Detecting roots by the regular exp: a",
"1 level Fat-Tree was discovered: ",
"\u0009 rank: 0(Roots) #switches: 1"]}
)");
}

TEST_F(JsonReportTest, ReplacesBytesThatAreNoText) {
  fabric.Switch("a");
  Check("a");
  result.message = "no\xff";
  EXPECT_NE(Json().find("\"message\":\"no\xef\xbf\xbd\","), std::string::npos);
}

TEST_F(JsonReportTest, ReportHasTheStyleOfTheRunButNoColour) {
  fabric.Switch("a");
  Check("a");
  const std::string json = Json({.quiet = true, .color = true});
  EXPECT_EQ(json.substr(json.find(R"("report")")), R"("report":[
"1 level Fat-Tree was discovered: ",
"\u0009 rank: 0(Roots) #switches: 1"]}
)");
}

TEST_F(JsonReportTest, ReportHoldsTheDumpWhereTheRunShowsIt) {
  AddTwoLevelTree(fabric, 1, 1, 0);
  Check("^root");
  result.dump = "dumped\n\tall of it\n";
  const auto end = [](const std::string& json) { return json.substr(json.rfind("\"\",\n\"")); };
  EXPECT_EQ(end(Json({.withDump = true, .quiet = true})), R"("",
"dumped",
"\u0009all of it",
""]}
)");
}

TEST_F(JsonReportTest, OfManyRecordsHoldsEachOfThemOnce) {
  AddTwoLevelTree(fabric, 1, 1, 0);
  Check("^root");
  constexpr std::size_t count = 3000;
  std::string records;
  for (std::size_t i = 0; i < count; ++i) {
    result.findings.Add(MissingLink{i, fabric["root0"], fabric["leaf0"], true});
    records += (i == 0 ? "\n" : ",\n") +
               std::string(R"({"event":"MISSING_LINK","level":3,"description":"Neighborhood )") +
               std::to_string(i) + R"j(: missing link between switches (root0) and (leaf0)"})j";
  }
  const std::string json = Json();
  const std::size_t start = json.find(R"("records":[)") + 11;
  EXPECT_EQ(json.substr(start, json.find(R"(],"issues")") - start), records);
}

TEST_F(JsonReportTest, TellsHowManyRecordsAreNotListed) {
  AddTwoLevelTree(fabric, 1, 1, 0);
  Check("^root");
  EXPECT_EQ(Json().find("recordsNotListed"), std::string::npos);
  result.findings = FindingList(0);
  result.findings.Add(MissingLink{0, fabric["root0"], fabric["leaf0"], true});
  const std::string json = Json();
  EXPECT_NE(json.find(R"("records":[],"recordsNotListed":1,"issues":0,"findings":[])"),
            std::string::npos);
  EXPECT_NE(json.find(R"("status":"findings")"), std::string::npos);
  EXPECT_NE(json.find("\"-W- 1 more error record is not listed (--max-records)\""),
            std::string::npos);
}

}  // namespace
}  // namespace fabscope::internal
