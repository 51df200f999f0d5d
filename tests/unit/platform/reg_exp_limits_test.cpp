#include "platform/reg_exp_limits.h"

#include <gtest/gtest.h>

#include "platform/reg_exp.h"

namespace fabscope {
namespace {

constexpr const char* tooLarge =
    "it is too large, allowed are 200 groups inside each other, 2000 repetitions and 200000 "
    "letters, with all repetitions written out";

std::string Times(std::size_t times, const std::string& text) {
  std::string all;
  for (std::size_t i = 0; i < times; ++i) all += text;
  return all;
}

TEST(RegExpLimitsTest, OrdinaryExpressionsAreFarBelowThem) {
  EXPECT_EQ(ProblemOfRegExp(""), "");
  EXPECT_EQ(ProblemOfRegExp("^(core|spine)-?[0-9]{2,4}+(/U[[:digit:]]+)*$"), "");
  EXPECT_EQ(ProblemOfRegExp(Times(1000, "(^spine[0-9]+-rack17.*$)|")), "");
}

TEST(RegExpLimitsTest, NestedGroups) {
  EXPECT_EQ(ProblemOfRegExp(Times(199, "(") + "a" + Times(199, ")")), "");
  EXPECT_EQ(ProblemOfRegExp(Times(200, "(") + "a" + Times(200, ")")), tooLarge);
  EXPECT_EQ(ProblemOfRegExp(Times(100000, "(")), tooLarge);
  EXPECT_EQ(ProblemOfRegExp(Times(1000, "(a)")), "");
}

TEST(RegExpLimitsTest, LettersOfCountedRepetitions) {
  EXPECT_EQ(ProblemOfRegExp("(a{200}){1000}"), "");
  EXPECT_EQ(ProblemOfRegExp("(a{200}){1001}"), tooLarge);
  EXPECT_EQ(ProblemOfRegExp("a{255}{255}{255}"), tooLarge);
  EXPECT_EQ(ProblemOfRegExp("((ab){1000,}){101}"), tooLarge);
  EXPECT_EQ(ProblemOfRegExp("a{99999999999999999999}"), tooLarge);
  EXPECT_EQ(ProblemOfRegExp(Times(300, "(a{30000}") + Times(300, "){30000}")), tooLarge);
}

TEST(RegExpLimitsTest, RepetitionsWrittenOut) {
  EXPECT_EQ(ProblemOfRegExp(Times(2000, "a*")), "");
  EXPECT_EQ(ProblemOfRegExp(Times(2001, "a*")), tooLarge);
  EXPECT_EQ(ProblemOfRegExp("(a?){2001}"), tooLarge);
  EXPECT_EQ(ProblemOfRegExp("a{,2001}"), tooLarge);
  EXPECT_EQ(ProblemOfRegExp("a{10,2010}"), "");
  EXPECT_EQ(ProblemOfRegExp("a" + Times(10, "+")), "");  // 1023
  EXPECT_EQ(ProblemOfRegExp("a" + Times(11, "+")), tooLarge);
}

TEST(RegExpLimitsTest, BackReferences) {
  EXPECT_EQ(ProblemOfRegExp("(a*)*\\1"), "back-references are no part of them");
  EXPECT_EQ(ProblemOfRegExp("(a)(b)\\9"), "back-references are no part of them");
  EXPECT_EQ(ProblemOfRegExp("a\\\\1"), "");
  EXPECT_EQ(ProblemOfRegExp("(a)[\\1]"), "");
}

TEST(RegExpLimitsTest, WhatStandsInBracketsIsOneLetter) {
  EXPECT_EQ(ProblemOfRegExp("[" + Times(300, "(") + "{9999}]"), "");
  EXPECT_EQ(ProblemOfRegExp("[]" + Times(300, "(") + "]"), "");
  EXPECT_EQ(ProblemOfRegExp("[^]" + Times(300, "(") + "]"), "");
  EXPECT_EQ(ProblemOfRegExp("[[:alpha:]" + Times(300, "(") + "]"), "");
  EXPECT_EQ(ProblemOfRegExp("[[.].]" + Times(300, "(") + "]"), "");
  EXPECT_EQ(ProblemOfRegExp("[a]" + Times(300, "(")), tooLarge);
}

// These have no end of their own.
TEST(RegExpLimitsTest, MalformedExpressionsAreLeftToTheLibrary) {
  for (const char* malformed :
       {"[", "[^", "[]", "[[:", "[[:alpha:", "\\", "(", ")", "a{", "a{1,", "{", "*"}) {
    EXPECT_EQ(ProblemOfRegExp(malformed), "") << malformed;
  }
}

TEST(RegExpLimitsTest, AnExpressionBeyondThemMatchesNothing) {
  const regExp expression("(a*)*\\1");
  EXPECT_FALSE(expression.IsValid());
  EXPECT_EQ(expression.GetError(), "back-references are no part of them");
  EXPECT_FALSE(expression.Matches("a"));
}

}  // namespace
}  // namespace fabscope
