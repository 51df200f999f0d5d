#include "platform/reg_exp.h"

#include <gtest/gtest.h>

namespace fabscope::internal {
namespace {

TEST(RegExpTest, KeepsItsSourceText) {
  const regExp expression("^core-[0-9]+$");
  EXPECT_TRUE(expression.IsValid());
  EXPECT_EQ(expression.GetError(), "");
  EXPECT_EQ(expression.GetExpression(), "^core-[0-9]+$");
}

TEST(RegExpTest, MatchesAnywhereInTheText) {
  const regExp expression("core");
  EXPECT_TRUE(expression.Matches("core"));
  EXPECT_TRUE(expression.Matches("rack7-core-3"));
  EXPECT_FALSE(expression.Matches("rack7-cor-3"));
}

TEST(RegExpTest, ATextIsFoundWhereItsGroupIs) {
  const std::string words = "aabab";
  for (std::size_t begin = 0; begin <= words.size(); ++begin) {
    for (std::size_t size = 0; begin + size <= words.size(); ++size) {
      const std::string text = words.substr(begin, size);
      for (const std::string name : {"", "a", "ab", "ba", "aab", "b ab", "AB", "aaba\nb"}) {
        EXPECT_EQ(regExp(text).Matches(name), regExp("(" + text + ")").Matches(name))
            << text << " in " << name;
      }
    }
  }
}

TEST(RegExpTest, AnchorsHoldTheMatchToTheEnds) {
  const regExp expression("^core$");
  EXPECT_TRUE(expression.Matches("core"));
  EXPECT_FALSE(expression.Matches("core1"));
  EXPECT_FALSE(expression.Matches("1core"));
}

TEST(RegExpTest, ALineEndIsACharacterLikeAnyOther) {
  EXPECT_TRUE(regExp("a.b").Matches("a\nb"));
  EXPECT_FALSE(regExp("^b").Matches("a\nb"));
  EXPECT_FALSE(regExp("a$").Matches("a\nb"));
}

TEST(RegExpTest, SpeaksTheExtendedSyntax) {
  const regExp expression("^(core|spine)[0-9]{2}+$");
  EXPECT_TRUE(expression.Matches("core01"));
  EXPECT_TRUE(expression.Matches("spine42"));
  EXPECT_FALSE(expression.Matches("leaf42"));
  EXPECT_FALSE(expression.Matches("core1"));
}

TEST(RegExpTest, TakesManySubExpressions) {
  const regExp expression("^(a)(b)(c)(d)(e)(f)(g)(h)(i)(j)(k)(l)$");
  EXPECT_TRUE(expression.Matches("abcdefghijkl"));
  EXPECT_FALSE(expression.Matches("abcdefghijk"));
}

TEST(RegExpTest, DistinguishesUpperAndLowerCase) { EXPECT_FALSE(regExp("core").Matches("CORE")); }

TEST(RegExpTest, MatchesByteForByte) {
  const regExp twoBytes("^..$");
  EXPECT_TRUE(twoBytes.Matches("\xc3\xa9"));  // one letter of UTF-8
  EXPECT_TRUE(twoBytes.Matches("\xff\xfe"));  // not UTF-8 at all
  EXPECT_FALSE(twoBytes.Matches("\xff"));
}

TEST(RegExpTest, AnExpressionThatDoesNotCompileSaysWhyAndMatchesNothing) {
  const regExp expression("core(");
  EXPECT_FALSE(expression.IsValid());
  EXPECT_NE(expression.GetError(), "");  // the words are the C library's
  EXPECT_EQ(expression.GetExpression(), "core(");
  EXPECT_FALSE(expression.Matches("core("));
}

std::string Repeated(std::size_t count, const std::string& text) {
  std::string repeated;
  for (std::size_t i = 0; i < count; ++i) repeated += text;
  return repeated;
}

TEST(RegExpTest, GroupsAreBounded) {
  EXPECT_TRUE(regExp(Repeated(5000, "(core)|") + "x").Matches("core"));
  const regExp tooMany(Repeated(5001, "(core)|") + "x");
  EXPECT_EQ(tooMany.GetError(), "it has more than 5000 groups");
  EXPECT_FALSE(tooMany.Matches("core"));
}

TEST(RegExpTest, GroupsInsideEachOtherAreBounded) {
  const auto nested = [](std::size_t count) {
    return std::string(count, '(') + "core" + std::string(count, ')');
  };
  EXPECT_TRUE(regExp(nested(1000)).Matches("core"));
  const regExp tooMany(nested(1001));
  EXPECT_EQ(tooMany.GetError(), "it has more than 1000 groups inside each other");
  EXPECT_FALSE(tooMany.Matches("core"));
}

TEST(RegExpTest, RepetitionsAreBounded) {
  EXPECT_TRUE(regExp("^x{10000}$").Matches(std::string(10000, 'x')));
  for (const char* expression : {"x{20000}", "(ab){1,6000}", "((x{30}){30}){30}", "x{200,}{200}",
                                 "x++++++++++++++++", "((((((((((((x+)+)+)+)+)+)+)+)+)+)+)+)+"}) {
    EXPECT_EQ(regExp(expression).GetError(),
              "its repetitions stand for more than 10000 characters");
  }
}

TEST(RegExpTest, PartsInARowThatMayBeEmptyAreBounded) {
  for (const std::string& expression :
       {std::string("(){32767}"), std::string("(x?){32767}"), Repeated(2001, "x?"),
        std::string(101, '^'), "x" + std::string(2001, '*'), Repeated(700, "(x*)")}) {
    const regExp tooMany(expression);
    EXPECT_FALSE(tooMany.IsValid()) << expression;
    EXPECT_FALSE(tooMany.Matches("x"));
  }
  EXPECT_EQ(regExp(Repeated(2001, "x?")).GetError(),
            "it has more than 2000 parts in a row that may be empty");
  EXPECT_TRUE(regExp(Repeated(1000, "x?")).Matches(""));
}

TEST(RegExpTest, ALongListOfNamesIsTaken) {
  std::string names = "^(spine-0";
  for (int i = 1; i < 1500; ++i) names += "|spine-" + std::to_string(i);
  const regExp list(names + ")$");
  EXPECT_EQ(list.GetError(), "");
  EXPECT_TRUE(list.Matches("spine-1234"));
  EXPECT_FALSE(list.Matches("spine-1500"));
}

TEST(RegExpTest, AnExpressionMayReferBackToItsGroups) {
  const regExp twins(R"(^(leaf|spine)-\1$)");
  EXPECT_TRUE(twins.Matches("leaf-leaf"));
  EXPECT_FALSE(twins.Matches("leaf-spine"));
}

}  // namespace
}  // namespace fabscope::internal
