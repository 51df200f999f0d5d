#include "reports/html_report.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <sstream>
#include <string>

#include "reports/json_report.h"
#include "support/report_fixture.h"

namespace fabscope::internal {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

class HtmlReportTest : public ReportTest {
 protected:
  std::string Page(const std::string& rootRegex) {
    std::ostringstream page;
    WriteHtmlReport(Check(rootRegex), page);
    return page.str();
  }

  static std::string DataOf(const std::string& page) {
    const std::string start = R"(<script id="data" type="application/json">)";
    const std::size_t at = page.find(start);
    EXPECT_NE(at, std::string::npos);
    const std::string data = page.substr(at + start.size());
    return data.substr(0, data.find("</script>"));
  }

  // What stands behind the result.
  static std::string SwitchesAndCables(const std::string& page) {
    const std::string data = DataOf(page);
    const std::size_t begin = data.find(R"(,"switches":)");
    return data.substr(begin, data.find(R"(,"told":)") - begin);
  }
};

TEST_F(HtmlReportTest, DataIsTheResultWithSwitchesAndCables) {
  AddTwoLevelTree(fabric, 1, 2, 1);
  const std::string page = Page("^root");
  std::string json;
  ForEachPieceOfJson(result, {}, [&](std::string_view piece) { json += piece; });
  EXPECT_EQ(DataOf(page), R"({"result":)" + json +
                              R"(,"switches":[["0x0000000000000001","root0",0,0,0,2],)"
                              R"(["0x0000000000000002","leaf0",1,1,1,1],)"
                              R"(["0x0000000000000003","leaf1",1,1,1,1]],)"
                              R"("cables":[0,1,1,2,0,2,2,2],)"
                              R"("told":{"verdict":"no faults found","notes":[],"advice":"",)"
                              R"("date":"","places":[]}})");
}

TEST_F(HtmlReportTest, SwitchesCountWithoutTheNodesBetweenThem) {
  fabric.Switch("root").Host("host").Switch("leaf").Cable("leaf", "host").Cable("root", "leaf");
  EXPECT_EQ(SwitchesAndCables(Page("^root")),
            R"(,"switches":[["0x0000000000000001","root",0,0,0,1],)"
            R"(["0x0000000000000003","leaf",1,1,1,1]],)"
            R"("cables":[0,1,1,2])");
}

TEST_F(HtmlReportTest, SwitchOutsideTheTreeHasNoRankAndNoCounts) {
  AddTwoLevelTree(fabric, 1, 1, 0);
  fabric.Switch("stray");
  EXPECT_THAT(SwitchesAndCables(Page("^root")), HasSubstr(R"("stray",-1,0,-1,-1])"));
}

TEST_F(HtmlReportTest, TreeThatWasNotBuiltShowsItsSwitchesAndCables) {
  AddTwoLevelTree(fabric, 1, 1, 1);
  const std::string page = Page("^nothing");
  EXPECT_THAT(page, HasSubstr(R"("status":"failed")"));
  EXPECT_EQ(SwitchesAndCables(page), R"(,"switches":[["0x0000000000000001","root0",-1,0,-1,-1],)"
                                     R"(["0x0000000000000002","leaf0",-1,1,-1,-1]],)"
                                     R"("cables":[0,1,1,2])");
}

TEST_F(HtmlReportTest, TellsWhatToDoAboutAFailure) {
  AddTwoLevelTree(fabric, 1, 1, 1);
  Check("^nothing");
  result.advice = "name the \"roots\"";
  std::ostringstream page;
  WriteHtmlReport(result, page);
  EXPECT_THAT(DataOf(page.str()), HasSubstr(R"("advice":"name the \"roots\"",)"));
}

TEST_F(HtmlReportTest, TellsWhereSwitchesStand) {
  AddTwoLevelTree(fabric, 1, 2, 1);
  Locations locations;
  locations.byName["leaf1"] = {"R \"2\"", "7", {}};
  locations.byName["host0.0"] = {"R1", "1", {}};
  Check("^root");
  result.locations = std::make_shared<Locations>(locations);
  std::ostringstream page;
  WriteHtmlReport(result, page);
  EXPECT_THAT(DataOf(page.str()), HasSubstr(R"("places":[[2,"R \"2\"","7"]]})"));
}

TEST_F(HtmlReportTest, TreeOfRootsOnlyHasNoCounts) {
  fabric.Switch("root");
  EXPECT_THAT(SwitchesAndCables(Page("^root")), HasSubstr(R"("root",0,0,-1,-1])"));
}

TEST_F(HtmlReportTest, CableThatCountsAtOneEndOnlyStandsOnce) {
  AddTwoLevelTree(fabric, 1, 2, 0);
  PortSpec fnm;
  fnm.num = 1;
  fnm.fnm = true;
  fabric.Port("root0", fnm);  // seen from the leaf alone, which is the later switch
  EXPECT_THAT(SwitchesAndCables(Page("^root")), HasSubstr(R"("cables":[0,2,2,1,1,1,0,1])"));
}

TEST_F(HtmlReportTest, CableBetweenTwoPortsOfOneSwitchStandsOnce) {
  fabric.Switch("root").Switch("leaf").Cable("root", "leaf").Link("root", 7, "root", 9);
  EXPECT_THAT(SwitchesAndCables(Page("^root")), HasSubstr(R"("cables":[0,1,1,1,0,7,0,9])"));
}

TEST_F(HtmlReportTest, NamesCannotEndTheirElement) {
  fabric.Switch("</script><script>alert(1)</script><!--").Switch("root");
  const std::string page = Page("^root");
  EXPECT_THAT(page, Not(HasSubstr("alert(1)<")));
  EXPECT_THAT(DataOf(page),
              HasSubstr(R"("\u003c/script>\u003cscript>alert(1)\u003c/script>\u003c!--")"));
}

}  // namespace
}  // namespace fabscope::internal
