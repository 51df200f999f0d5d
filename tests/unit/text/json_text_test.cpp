#include "text/json_text.h"

#include <gtest/gtest.h>
#include <string>

#include "text/json_members.h"
#include "text/utf8.h"

namespace fabscope::internal {
namespace {

std::string Json(const std::string& text) {
  std::string json = "[";
  AppendJsonString(json, text);
  return json.substr(1);
}

// What stands for a byte that is not part of valid UTF-8.
const std::string replaced = "\xef\xbf\xbd";

TEST(JsonTextTest, AStringStandsInQuotes) {
  EXPECT_EQ(Json(""), "\"\"");
  EXPECT_EQ(Json("leaf 1/2"), "\"leaf 1/2\"");
}

TEST(JsonTextTest, QuotesBackslashesAndControlCharactersAreEscaped) {
  EXPECT_EQ(Json("a\"b\\c"), R"("a\"b\\c")");
  EXPECT_EQ(Json(std::string("\0\n\t\x1f\x20\x7f", 6)), "\"\\u0000\\u000a\\u0009\\u001f \x7f\"");
}

TEST(JsonTextTest, BidirectionalControlsAreEscaped) {
  EXPECT_EQ(Json("\xe2\x80\xaa \xe2\x80\xae \xe2\x80\xac \xe2\x80\xac \xe2\x81\xa6 \xe2\x81\xa9"),
            R"("\u202a \u202e \u202c \u202c \u2066 \u2069")");
  EXPECT_EQ(Json("\xe2\x80\xaf\xe2\x81\xaa"), "\"\xe2\x80\xaf\xe2\x81\xaa\"");
}

TEST(JsonTextTest, AListMayHoldGuids) {
  std::string json;
  {
    JsonMembers list(json, '[', ']');
    list.Guid(0x2c9);
    list.Guid(0xffffffffffffffff);
  }
  EXPECT_EQ(json, R"(["0x00000000000002c9","0xffffffffffffffff"])");
}

TEST(JsonTextTest, ValidUtf8StaysAsItIs) {
  for (const std::string text :
       {"\xc2\x80", "\xdf\xbf", "\xe0\xa0\x80", "\xed\x9f\xbf", "\xee\x80\x80", "\xef\xbf\xbf",
        "\xf0\x90\x80\x80", "\xf4\x8f\xbf\xbf", "caf\xc3\xa9 \xf0\x9f\x98\x80!"}) {
    EXPECT_EQ(Json(text), "\"" + text + "\"");
    EXPECT_EQ(FirstInvalidUtf8(text), text.size());
  }
}

TEST(JsonTextTest, BytesThatAreNotUtf8AreReplaced) {
  EXPECT_EQ(Json("caf\xe9!"), "\"caf" + replaced + "!\"");
  EXPECT_EQ(Json("\x80"), "\"" + replaced + "\"");
  EXPECT_EQ(Json("\xff\xfe"), "\"" + replaced + replaced + "\"");
  EXPECT_EQ(Json("\xe9\"\\"), "\"" + replaced + R"(\"\\")");
  EXPECT_EQ(Json("\xc3\xc3\xa9"), "\"" + replaced + "\xc3\xa9\"");
}

TEST(JsonTextTest, OverlongFormsSurrogatesAndValuesBeyondTheLastAreNotUtf8) {
  for (const std::string text :
       {"\xc0\x80", "\xc1\xbf", "\xe0\x9f\xbf", "\xed\xa0\x80", "\xed\xbf\xbf", "\xf0\x8f\xbf\xbf",
        "\xf4\x90\x80\x80", "\xf5\x80\x80\x80", "\xf8\x80\x80\x80\x80"}) {
    EXPECT_EQ(FirstInvalidUtf8(text), 0U);
    std::string expected;
    for (std::size_t i = 0; i < text.size(); ++i) expected += replaced;
    EXPECT_EQ(Json(text), "\"" + expected + "\"");
  }
}

TEST(JsonTextTest, ASequenceThatWasCutIsNotUtf8) {
  for (const std::string text : {"\xc3", "\xe2\x82", "\xe2", "\xf0\x9f\x98", "\xf0\x9f", "\xf0"}) {
    EXPECT_EQ(FirstInvalidUtf8("ab" + text), 2U);
    EXPECT_EQ(FirstInvalidUtf8("ab" + text + "c"), 2U);
  }
}

TEST(JsonTextTest, TheFirstInvalidByteIsBehindAllValidOnes) {
  EXPECT_EQ(FirstInvalidUtf8(""), 0U);
  EXPECT_EQ(FirstInvalidUtf8("abc"), 3U);
  EXPECT_EQ(FirstInvalidUtf8("caf\xc3\xa9 \xe9 \xff"), 6U);
}

}  // namespace
}  // namespace fabscope::internal
