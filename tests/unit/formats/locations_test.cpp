#include "formats/locations.h"

#include <cstdio>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <unistd.h>

namespace fabscope::internal {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

class LocationsTest : public ::testing::Test {
 protected:
  ~LocationsTest() override { (void)std::remove(path.c_str()); }

  // The error without the path in front of it; an empty text when there is none.
  std::string Load(const std::string& bytes) {
    locations = {};
    std::ofstream(path, std::ios::binary) << bytes;
    const MaybeError error = LoadLocations(path, locations, warnings);
    if (!error) return "";
    EXPECT_EQ(error->file, path);
    return error->Text().substr(path.size() + 1);
  }

  Locations locations;
  Warnings warnings;
  const std::string path = ::testing::TempDir() + "locations_test_" + std::to_string(getpid()) +
                           "_" + ::testing::UnitTest::GetInstance()->current_test_info()->name();
};

IBNode Node(std::uint64_t guid, std::string_view name) {
  IBNode node;
  node.guid = guid;
  node.name = name;
  return node;
}

TEST_F(LocationsTest, ALineGivesASwitchItsPlaceByGuidOrElseByName) {
  EXPECT_EQ(Load("guid,name,rack,unit\n0x11,leaf1,R1,7\n,leaf2, R2 ,\n"), "");
  EXPECT_EQ(locations.Of(Node(0x11, "other"))->rack, "R1");
  EXPECT_EQ(locations.Of(Node(0x11, "other"))->unit, "7");
  EXPECT_EQ(locations.Of(Node(0x12, "leaf2"))->rack, "R2");
  EXPECT_EQ(locations.Of(Node(0x12, "leaf2"))->unit, "");
  // The name of a line with a GUID names nobody.
  EXPECT_EQ(locations.Of(Node(0x12, "leaf1")), nullptr);
}

TEST_F(LocationsTest, AGuidTellsMoreThanAName) {
  EXPECT_EQ(Load("guid,name,rack\n,leaf1,R1\n0x11,,R2\n"), "");
  EXPECT_EQ(locations.Of(Node(0x11, "leaf1"))->rack, "R2");
}

TEST_F(LocationsTest, ColumnsStandInAnyOrderAndCase) {
  EXPECT_EQ(Load("Unit,RACK,Name\n3,R1,leaf1\n"), "");
  EXPECT_EQ(locations.Of(Node(1, "leaf1"))->rack, "R1");
  EXPECT_EQ(locations.Of(Node(1, "leaf1"))->unit, "3");
}

TEST_F(LocationsTest, OtherColumnsAreKeptInTheirOrder) {
  EXPECT_EQ(Load("name,Row,rack,\"Row, side\"\nleaf1,7,R1,left\n"), "");
  EXPECT_THAT(locations.moreColumns, ElementsAre("Row", "Row, side"));
  EXPECT_THAT(locations.Of(Node(1, "leaf1"))->more, ElementsAre("7", "left"));
}

TEST_F(LocationsTest, BetweenQuotesAllIsTextAndTwoQuotesAreOne) {
  EXPECT_EQ(Load("name,rack\n \"a, \"\"b\"\"\" , \" R1 \"\r\n"), "");
  ASSERT_THAT(locations.byName, SizeIs(1));
  EXPECT_EQ(locations.byName.begin()->first, "a, \"b\"");
  EXPECT_EQ(locations.byName.begin()->second.rack, " R1 ");
}

TEST_F(LocationsTest, CommentsAndBlankLinesDoNotCount) {
  EXPECT_EQ(Load("# places\n\nname,rack\n # more\n\nleaf1,R1\n"), "");
  EXPECT_THAT(locations.byName, SizeIs(1));
}

TEST_F(LocationsTest, OfTwoLinesAboutOneSwitchTheLastHolds) {
  EXPECT_EQ(Load("name,rack\nleaf1,R1\nleaf1,R2\n"), "");
  EXPECT_EQ(locations.Of(Node(1, "leaf1"))->rack, "R2");
}

TEST_F(LocationsTest, ControlsAndLongFieldsAreCleanedAndCut) {
  EXPECT_EQ(Load("name,rack\nleaf1,\x1b[2J" + std::string(300, 'x') + "\n"), "");
  EXPECT_EQ(locations.Of(Node(1, "leaf1"))->rack, "?[2J" + std::string(252, 'x'));
  EXPECT_THAT(warnings.Lines("places"),
              ElementsAre("places:2: warning: field longer than 256 bytes, cut there"));
}

TEST_F(LocationsTest, TheHeaderHasTheColumnsThatMustBe) {
  const std::string expected = "expected the columns guid or name, rack and perhaps unit";
  EXPECT_EQ(Load("rack,unit\n"), "1:1: not the header line, " + expected);
  EXPECT_EQ(Load("# list\n  name,unit\n"), "2:3: not the header line, " + expected);
  EXPECT_EQ(Load("# list\n"), "2:1: the file has no header line, " + expected);
  EXPECT_EQ(Load("name,rack,room,NAME\n"), "1:16: the column \"name\" is there twice");
}

TEST_F(LocationsTest, ALineHasTheFieldsOfTheHeader) {
  EXPECT_EQ(Load("guid,rack\n0x1\n"), "2:1: expected 2 fields as in the header, found 1");
  EXPECT_EQ(Load("guid,rack\n0x1,R1,\n"), "2:1: expected 2 fields as in the header, found 3");
  EXPECT_EQ(Load("rack,guid\nR1, spine\n"),
            "2:5: not a GUID, expected 0x and 1 to 16 hexadecimal digits");
  EXPECT_EQ(Load("guid,name,rack\n,,R1\n"), "2:1: the line names no switch");
}

TEST_F(LocationsTest, AQuoteIsClosedInItsLineAndEndsItsField) {
  const std::string expected =
      "expected a closing quote, and a comma or the end of the line behind it";
  EXPECT_EQ(Load("name,rack\nleaf1,\"R1\nR2\"\n"), "2:7: " + expected);
  EXPECT_EQ(Load("name,rack\n\"leaf\"1,R1\n"), "2:1: " + expected);
  EXPECT_THAT(locations.byName, IsEmpty());
}

}  // namespace
}  // namespace fabscope::internal
