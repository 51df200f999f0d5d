#include "formats/node_name_map.h"

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
using ::testing::Pair;
using ::testing::UnorderedElementsAre;

class NodeNameMapTest : public ::testing::Test {
 protected:
  ~NodeNameMapTest() override { (void)std::remove(path.c_str()); }

  // The error without the path in front of it; an empty text when there is none.
  std::string Load(const std::string& bytes) {
    names.clear();
    std::ofstream(path, std::ios::binary) << bytes;
    const MaybeError error = LoadNodeNameMap(path, names, warnings);
    if (!error) return "";
    EXPECT_EQ(error->file, path);
    return error->Text().substr(path.size() + 1);
  }

  NodeNameMap names;
  Warnings warnings;
  const std::string path = ::testing::TempDir() + "node_name_map_test_" + std::to_string(getpid()) +
                           "_" + ::testing::UnitTest::GetInstance()->current_test_info()->name();
};

TEST_F(NodeNameMapTest, ALineGivesANodeItsName) {
  EXPECT_EQ(Load("0x11 \"rack 1 leaf\"\n0x00000000000000AB\t\t\"spine/2\""), "");
  EXPECT_THAT(names, UnorderedElementsAre(Pair(0x11, "rack 1 leaf"), Pair(0xab, "spine/2")));
}

TEST_F(NodeNameMapTest, CommentsAndBlankLinesDoNotCount) {
  EXPECT_EQ(Load("# names\n\n \t\n  0x11 \"a\"  # the first\n#0x12 \"b\"\n0x13 \"c\"#\n"), "");
  EXPECT_THAT(names, UnorderedElementsAre(Pair(0x11, "a"), Pair(0x13, "c")));
}

TEST_F(NodeNameMapTest, ANameMayHoldAnythingButAQuote) {
  EXPECT_EQ(Load("0x11 \" # a; b \"\n0x12 \"\"\n"), "");
  EXPECT_THAT(names, UnorderedElementsAre(Pair(0x11, " # a; b "), Pair(0x12, "")));
}

TEST_F(NodeNameMapTest, CarriageReturnsAndAByteOrderMarkDoNotCount) {
  EXPECT_EQ(Load("\xef\xbb\xbf"
                 "0x11 \"a\"\r\n\r\n0x12 \"b\"\r\n"),
            "");
  EXPECT_THAT(names, UnorderedElementsAre(Pair(0x11, "a"), Pair(0x12, "b")));
}

TEST_F(NodeNameMapTest, ALongNameIsCutWithAWarning) {
  const std::string longest(256, 'x');
  EXPECT_EQ(Load("0x11 \"" + longest + "\"\n0x12 \"" + longest + "y\"\n"), "");
  EXPECT_THAT(names, UnorderedElementsAre(Pair(0x11, longest), Pair(0x12, longest)));
  EXPECT_THAT(warnings.Lines("names"),
              ElementsAre("names:2: warning: name longer than 256 bytes, cut there"));
}

TEST_F(NodeNameMapTest, TheFirstOfTwoLinesHolds) {
  EXPECT_EQ(Load("0x11 \"first\"\n0x0011 \"second\"\n"), "");
  EXPECT_THAT(names, UnorderedElementsAre(Pair(0x11, "first")));
}

TEST_F(NodeNameMapTest, ControlCharactersBecomeQuestionMarks) {
  EXPECT_EQ(Load("0x11 \"\x1b[31mred\tleaf\x7f\"\n"), "");
  EXPECT_THAT(names, UnorderedElementsAre(Pair(0x11, "?[31mred?leaf?")));
}

TEST_F(NodeNameMapTest, AnEmptyMapNamesNothing) {
  EXPECT_EQ(Load(""), "");
  EXPECT_THAT(names, IsEmpty());
}

TEST_F(NodeNameMapTest, ALineBeginsWithAGuid) {
  const std::string message = "not a GUID, expected a line of the form 0xGUID \"name\"";
  EXPECT_EQ(Load("0x11 \"a\"\n  leaf1 \"b\"\n"), "2:3: " + message);
  EXPECT_EQ(Load("11 \"a\"\n"), "1:1: " + message);
  EXPECT_EQ(Load("0x1g \"a\"\n"), "1:1: " + message);
  EXPECT_EQ(Load("0x12345678901234567 \"a\"\n"), "1:1: " + message);
  EXPECT_EQ(Load("0x11\"a\"\n"), "1:1: " + message);
}

TEST_F(NodeNameMapTest, ANameStandsInQuotesAndEndsTheLine) {
  const std::string message = "expected a name in double quotes and nothing behind it";
  EXPECT_EQ(Load("0x11 leaf\n"), "1:6: " + message);
  EXPECT_EQ(Load("0x11\n"), "1:5: " + message);
  EXPECT_EQ(Load("0x11 \"leaf\n"), "1:6: " + message);
  EXPECT_EQ(Load("0x11 \"leaf\" 1\n"), "1:6: " + message);
  EXPECT_EQ(Load("0x11 \"a \"b\" c\"\n"), "1:6: " + message);
}

TEST_F(NodeNameMapTest, AMissingFileIsAnError) {
  const MaybeError error = LoadNodeNameMap("/nowhere/names", names, warnings);
  ASSERT_NE(error, std::nullopt);
  EXPECT_EQ(error->Text(), "/nowhere/names: No such file or directory");
}

}  // namespace
}  // namespace fabscope::internal
