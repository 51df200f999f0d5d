#include "text/text_fields.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <limits>
#include <optional>
#include <string>

namespace fabscope::internal {
namespace {

constexpr std::uint64_t all = std::numeric_limits<std::uint64_t>::max();

TEST(TextFieldsTest, ControlCharactersBecomeQuestionMarks) {
  for (int i = 0; i < 256; ++i) {
    const std::string text = {'a', static_cast<char>(i), 'b'};
    const bool isControl = i < 0x20 || i == 0x7f || (i >= 0x80 && i < 0xa0);
    EXPECT_EQ(CleanText(text), isControl ? "a?b" : text) << i;
  }
  EXPECT_EQ(CleanText(""), "");
}

TEST(TextFieldsTest, C1ControlsBecomeOneQuestionMarkEach) {
  EXPECT_EQ(CleanText("a\xc2\x80\xc2\x9f\xc2\xa0z"), "a??\xc2\xa0z");
  EXPECT_EQ(CleanText("\xc2\x9b"
                      "31m"),
            "?31m");
}

TEST(TextFieldsTest, BytesInsideOfACharacterAreNoControls) {
  const std::string text = "caf\xc3\x89 \xe2\x82\xac \xf0\x9f\x98\x80";
  EXPECT_EQ(CleanText(text), text);
  EXPECT_EQ(CleanText("\xe2\x82"), "\xe2?");
  EXPECT_EQ(CleanText("\xe2\xc2\x85"), "\xe2?");
}

TEST(TextFieldsTest, PeopleSeeAQuestionMarkForEachBidirectionalControl) {
  for (const char last : {'\xaa', '\xab', '\xac', '\xad', '\xae'}) {
    EXPECT_EQ(TextForPeople(std::string("a\xe2\x80") + last + "z"), "a?z");
  }
  for (const char last : {'\xa6', '\xa7', '\xa8', '\xa9'}) {
    EXPECT_EQ(TextForPeople(std::string("a\xe2\x81") + last + "z"), "a?z");
  }
  const std::string others =
      "\xe2\x80\xa9 \xe2\x80\xaf \xe2\x81\xa5 \xe2\x81\xaa \xe2\x82\xa6 \xe2\x80";
  EXPECT_EQ(TextForPeople(others), others);
  EXPECT_EQ(TextForPeople("\xe2\x81\xa6\xe2\x81\xa9"), "??");
}

TEST(TextFieldsTest, LongTextsAreCutAtAWholeCharacter) {
  std::string text(MostTextBytes, 'x');
  EXPECT_FALSE(CutText(text));
  EXPECT_EQ(text.size(), MostTextBytes);
  for (const std::string character : {"y", "\xc3\x89", "\xe2\x82\xac", "\xf0\x9f\x98\x80"}) {
    for (std::size_t inside = 0; inside < character.size(); ++inside) {
      const std::string before(MostTextBytes - inside, 'x');
      text = before + character + "zzzz";
      EXPECT_TRUE(CutText(text));
      EXPECT_EQ(text, before);
    }
  }
  text = std::string(MostTextBytes + 9, '\x80');
  EXPECT_TRUE(CutText(text));
  EXPECT_EQ(text.size(), MostTextBytes);
}

TEST(TextFieldsTest, BlanksAreTrimmedAtBothEnds) {
  EXPECT_EQ(Trimmed(" \t\r a b \r\t"), "a b");
  EXPECT_EQ(Trimmed(" \t"), "");
  EXPECT_EQ(Trimmed(""), "");
  EXPECT_EQ(Trimmed("\na\n"), "\na\n");
}

TEST(TextFieldsTest, AHexNumberHasOneToSixteenDigits) {
  EXPECT_EQ(ParseHex("0"), 0U);
  EXPECT_EQ(ParseHex("aF9"), 0xaf9U);
  EXPECT_EQ(ParseHex("ffffffffffffffff"), all);
  EXPECT_EQ(ParseHex("0000000000000001"), 1U);
  EXPECT_EQ(ParseHex("00000000000000001"), std::nullopt);
  EXPECT_EQ(ParseHex(""), std::nullopt);
  EXPECT_EQ(ParseHex("0x1"), std::nullopt);
  EXPECT_EQ(ParseHex("12 "), std::nullopt);
  EXPECT_EQ(ParseHex("-1"), std::nullopt);
}

TEST(TextFieldsTest, HexDigitsAreThoseOfBothCases) {
  for (int i = 0; i < 256; ++i) {
    const auto c = static_cast<char>(i);
    const std::string digits = "0123456789abcdefABCDEF";
    const std::size_t place = digits.find(c);
    const int value =
        place == std::string::npos ? -1 : static_cast<int>(place > 15 ? place - 6 : place);
    EXPECT_EQ(HexDigit(c), value) << i;
  }
}

TEST(TextFieldsTest, AGuidBeginsWith0x) {
  EXPECT_EQ(ParseGuid("0x2c9"), 0x2c9U);
  EXPECT_EQ(ParseGuid("0x0"), 0U);
  EXPECT_EQ(ParseGuid("0xFFFFFFFFFFFFFFFF"), all);
  EXPECT_EQ(ParseGuid("2c9"), std::nullopt);
  EXPECT_EQ(ParseGuid("0X2c9"), std::nullopt);
  EXPECT_EQ(ParseGuid("0x"), std::nullopt);
  EXPECT_EQ(ParseGuid(""), std::nullopt);
  EXPECT_EQ(ParseGuid("0x10000000000000000"), std::nullopt);
}

TEST(TextFieldsTest, ANumberIsDecimalAndAtMostItsLimit) {
  EXPECT_EQ(ParseNumber("0", 0), 0U);
  EXPECT_EQ(ParseNumber("255", 255), 255U);
  EXPECT_EQ(ParseNumber("0255", 255), 255U);
  EXPECT_EQ(ParseNumber("256", 255), std::nullopt);
  EXPECT_EQ(ParseNumber("18446744073709551615", all), all);
  EXPECT_EQ(ParseNumber("18446744073709551616", all), std::nullopt);
  EXPECT_EQ(ParseNumber("99999999999999999999", all), std::nullopt);
  EXPECT_EQ(ParseNumber("", 255), std::nullopt);
  EXPECT_EQ(ParseNumber("-1", 255), std::nullopt);
  EXPECT_EQ(ParseNumber("+1", 255), std::nullopt);
  EXPECT_EQ(ParseNumber(" 1", 255), std::nullopt);
  EXPECT_EQ(ParseNumber("1 ", 255), std::nullopt);
  EXPECT_EQ(ParseNumber("0x1", 255), std::nullopt);
}

TEST(TextFieldsTest, NoNumberAboveItsLimitIsRead) {
  for (std::uint64_t number = 0; number < 70000; ++number) {
    const std::string digits = std::to_string(number);
    for (const std::uint64_t limit : {0U, 9U, 10U, 255U, 65535U}) {
      EXPECT_EQ(ParseNumber(digits, limit).has_value(), number <= limit) << digits << ' ' << limit;
    }
  }
}

TEST(TextFieldsTest, ACursorWalksAlongItsLine) {
  LineCursor cursor("ab  \t12x", 100);
  EXPECT_EQ(cursor.Offset(), 100U);
  EXPECT_FALSE(cursor.Take('b'));
  EXPECT_TRUE(cursor.Take('a'));
  EXPECT_EQ(cursor.TakeWord(), "b");
  cursor.SkipBlanks();
  EXPECT_EQ(cursor.Offset(), 105U);
  EXPECT_EQ(cursor.Peek(), '1');
  EXPECT_EQ(cursor.TakeWhile(IsDigit), "12");
  EXPECT_EQ(cursor.Rest(), "x");
  EXPECT_FALSE(cursor.Take("xy"));
  EXPECT_TRUE(cursor.Take("x"));
  EXPECT_TRUE(cursor.AtEnd());
}

TEST(TextFieldsTest, ACursorStopsAtTheEndOfItsLine) {
  LineCursor cursor("", 7);
  EXPECT_TRUE(cursor.AtEnd());
  EXPECT_EQ(cursor.Peek(), '\0');
  EXPECT_FALSE(cursor.Take('\0'));
  EXPECT_EQ(cursor.TakeWord(), "");
  cursor.SkipBlanks();
  EXPECT_EQ(cursor.Offset(), 7U);
}

TEST(TextFieldsTest, ANulByteIsACharacterLikeOthers) {
  LineCursor cursor(std::string_view("\0a", 2), 0);
  EXPECT_FALSE(cursor.AtEnd());
  EXPECT_TRUE(cursor.Take('\0'));
  EXPECT_EQ(cursor.Rest(), "a");
}

}  // namespace
}  // namespace fabscope::internal
