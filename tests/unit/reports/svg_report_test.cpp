#include "reports/svg_report.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sstream>
#include <string>

#include "support/report_fixture.h"

namespace fabscope::internal {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

class SvgReportTest : public ReportTest {
 protected:
  std::string Picture(const std::string& rootRegex) {
    std::ostringstream picture;
    WriteSvgReport(Check(rootRegex), picture);
    return picture.str();
  }

  static std::size_t Count(const std::string& text, const std::string& what) {
    std::size_t count = 0;
    for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1)) {
      ++count;
    }
    return count;
  }
};

TEST_F(SvgReportTest, CleanTreeShowsSwitchesCablesAndItsGroup) {
  AddTwoLevelTree(fabric, 2, 3, 1);
  const std::string picture = Picture("^root");
  EXPECT_THAT(picture, HasSubstr(">No faults found</text>"));
  EXPECT_THAT(picture, HasSubstr(">net.topo: 2 levels, 5 switches, 1 group</text>"));
  EXPECT_THAT(picture, HasSubstr(">roots: 2</text>"));
  EXPECT_THAT(picture, HasSubstr(">leaves: 3</text>"));
  EXPECT_EQ(Count(picture, "<circle class=\"switch\""), 5U);
  EXPECT_EQ(Count(picture, "<path class=\"cable\""), 6U);
  EXPECT_EQ(Count(picture, "<rect class=\"box\""), 1U);
  for (const char* kind : {"\"missing\"", "\"invalid\"", "\"uneven\"", "\"badge\""}) {
    EXPECT_THAT(picture, Not(HasSubstr(kind)));
  }
}

TEST_F(SvgReportTest, MissingCableIsDashedAndItsEndsAndGroupAreMarked) {
  AddTwoLevelTree(fabric, 2, 2, 0);
  fabric.Switch("leaf").Cable("leaf", "root0");
  const std::string picture = Picture("^root");
  EXPECT_THAT(picture, HasSubstr(">1 missing link, 2 uneven counts</text>"));
  EXPECT_EQ(Count(picture, "<path class=\"missing\""), 2U) << "the cable and the legend";
  EXPECT_EQ(Count(picture, "<path class=\"uneven\""), 3U) << "root1, leaf and the legend";
  EXPECT_THAT(picture, HasSubstr("class=\"badgetext\" x="));
  EXPECT_EQ(Count(picture, ">3</text>"), 1U) << "three findings in the group";
  EXPECT_THAT(picture, Not(HasSubstr("\"invalid\"")));
}

TEST_F(SvgReportTest, TitleTellsHowManyRecordsAreNotListed) {
  AddTwoLevelTree(fabric, 3, 2, 0);
  fabric.Switch("leaf").Cable("leaf", "root0");
  mostRecords = 1;
  const std::string picture = Picture("^root");
  EXPECT_THAT(picture, HasSubstr(">1 missing link, 2 uneven counts (1 more not listed)</text>"));
  EXPECT_EQ(Count(picture, "<path class=\"missing\""), 2U) << "one cable and the legend";
}

TEST_F(SvgReportTest, CableInsideARankIsDrawnAsInvalidAndNotAsCable) {
  AddTwoLevelTree(fabric, 1, 2, 0);
  fabric.Cable("leaf0", "leaf1");
  const std::string picture = Picture("^root");
  EXPECT_THAT(picture, HasSubstr(">1 invalid link</text>"));
  EXPECT_EQ(Count(picture, "<path class=\"invalid\""), 2U);
  EXPECT_EQ(Count(picture, "<path class=\"cross\""), 2U);
  EXPECT_EQ(Count(picture, "<path class=\"cable\""), 2U);
}

TEST_F(SvgReportTest, IssuesWithoutWrongCablesAreToldToo) {
  AddTwoLevelTree(fabric, 2, 2, 0);
  PortSpec plane;
  plane.num = 1;
  plane.planeMultiplicity = 2;
  fabric.Port("root0", plane).AggregatedPort({{"root0", 1}}, 1);
  EXPECT_THAT(Picture("^root"), HasSubstr(">1 case of asymmetric ports</text>"));
}

TEST_F(SvgReportTest, ParallelCablesAreOneThickerLine) {
  fabric.Switch("root").Switch("leaf");
  for (int i = 0; i < 4; ++i) fabric.Cable("root", "leaf");
  const std::string picture = Picture("^root");
  EXPECT_EQ(Count(picture, "<path class=\"cable\""), 1U);
  EXPECT_THAT(picture, HasSubstr("<path class=\"cable\" stroke-width=\"2.0\""));
}

TEST_F(SvgReportTest, NamesAreWordsAndCutWhereTheyAreLong) {
  const std::string name = "<b a=\"&\">" + std::string(40, 'x');
  fabric.Switch("root").Switch(name).Cable("root", name);
  const std::string picture = Picture("^root");
  const std::string escaped = "&lt;b a=&quot;&amp;&quot;&gt;";
  EXPECT_THAT(picture, HasSubstr("<title>" + escaped + std::string(40, 'x') + "</title>"));
  EXPECT_THAT(picture, HasSubstr(">" + escaped + std::string(15, 'x') + "\u2026</text>"));
  EXPECT_THAT(picture, Not(HasSubstr("<b")));
}

TEST_F(SvgReportTest, NamesAreCutBetweenCharacters) {
  std::string name;
  for (int i = 0; i < 30; ++i) name += "\u00e4";
  fabric.Switch("root").Switch(name).Cable("root", name);
  EXPECT_THAT(Picture("^root"), HasSubstr(">" + name.substr(0, 48) + "\u2026</text>"));
}

TEST_F(SvgReportTest, SwitchesOutsideTheTreeAreToldInWords) {
  AddTwoLevelTree(fabric, 1, 1, 0);
  fabric.Switch("stray");
  EXPECT_THAT(Picture("^root"), HasSubstr("1 group (1 more are not part of the tree)"));
}

TEST_F(SvgReportTest, TreeThatWasNotValidatedSaysWhy) {
  fabric.Switch("root");
  EXPECT_THAT(Picture("^root"), HasSubstr(">Not validated: Cannot validate Fat-Tree topology. "));
}

TEST_F(SvgReportTest, LargeTreeIsFoldedAndKeepsItsFaults) {
  for (int r = 0; r < 2; ++r) fabric.Switch("root" + std::to_string(r), 255);
  for (int l = 0; l < 255; ++l) {
    fabric.Switch("leaf" + std::to_string(l), 2);
    fabric.Cable("leaf" + std::to_string(l), "root0");
    if (l != 7) fabric.Cable("leaf" + std::to_string(l), "root1");
  }
  const std::string picture = Picture("^root");
  EXPECT_THAT(picture, Not(HasSubstr("<circle")));
  EXPECT_THAT(picture, HasSubstr(">255</text>"));
  EXPECT_EQ(Count(picture, "<path class=\"missing\""), 2U);
  EXPECT_THAT(picture, HasSubstr("switches of a group, folded"));
}

}  // namespace
}  // namespace fabscope::internal
