#include "platform/reg_exp_size.h"

#include <csignal>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/reg_exp.h"

namespace fabscope::internal {
namespace {

TEST(RegExpSizeTest, CountsCharactersGroupsAndOperators) {
  EXPECT_EQ(SizeOf("").parts, 0);
  EXPECT_EQ(SizeOf("core").parts, 4);
  EXPECT_EQ(SizeOf("[]a-z[:digit:]]x").parts, 2);
  EXPECT_EQ(SizeOf("[^]x]").parts, 1);
  EXPECT_EQ(SizeOf(R"(\(\*\.)").parts, 3);
  EXPECT_EQ(SizeOf("(a|b)").parts, 5);
  EXPECT_EQ(SizeOf(")").parts, 1);
}

TEST(RegExpSizeTest, WritesRepetitionsOut) {
  EXPECT_EQ(SizeOf("a*").parts, 2);
  EXPECT_EQ(SizeOf("a+").parts, 3);
  EXPECT_EQ(SizeOf("(a){3}").parts, 9);
  EXPECT_EQ(SizeOf("a{2,5}").parts, 2 + 3 * 2);
  EXPECT_EQ(SizeOf("a{,5}").parts, 5 * 2);
  EXPECT_EQ(SizeOf("a{4,}").parts, 4 + 2);
  EXPECT_EQ(SizeOf("a{10}{10}").parts, 100);
  EXPECT_EQ(SizeOf("((a{32767}){32767}){32767}").parts, mostCounted);
}

TEST(RegExpSizeTest, CountsWhatMayBeEmptyUpToTheNextCharacter) {
  EXPECT_EQ(SizeOf("core").empty, 0);
  EXPECT_EQ(SizeOf("^core$").empty, 20);
  EXPECT_EQ(SizeOf("(a)").empty, 1);
  EXPECT_EQ(SizeOf("()").empty, 2);
  EXPECT_EQ(SizeOf("a?b?c?").empty, 3);
  EXPECT_EQ(SizeOf("(a)(b)(c)").empty, 2);
  EXPECT_EQ(SizeOf("(a?b){3}").empty, SizeOf("(a?b){300}").empty);
  EXPECT_LT(SizeOf("(a?b?){3}").empty, SizeOf("(a?b?){4}").empty);
  EXPECT_EQ(SizeOf("x|^^^|y").empty, 60);
  EXPECT_EQ(SizeOf(R"(\b\<\1)").empty, 60);
}

TEST(RegExpSizeTest, CountsGroupsInsideEachOther) {
  EXPECT_EQ(SizeOf("core").depth, 0);
  EXPECT_EQ(SizeOf("(a)(b)").depth, 1);
  EXPECT_EQ(SizeOf("((a)|(b))").depth, 2);
  EXPECT_EQ(SizeOf(R"(\([(]a)").depth, 0);
  EXPECT_EQ(SizeOf("(((").depth, 3);
}

// How a process with a stack of 1 MB ends that matches.
int StatusOfMatching(const std::string& expression) {
  const pid_t child = fork();
  if (child == 0) {
    rlimit limit{};
    getrlimit(RLIMIT_STACK, &limit);
    limit.rlim_cur = rlim_t{1} << 20U;
    setrlimit(RLIMIT_STACK, &limit);
    (void)regExp(expression).Matches("xxxcore-12(ab");
    _exit(0);
  }
  int status = 0;
  waitpid(child, &status, 0);
  return status;
}

std::string Random(std::mt19937& random, int depth) {
  const auto upTo = [&](unsigned most) { return static_cast<unsigned>(random() % (most + 1)); };
  std::string text;
  for (unsigned i = upTo(3) + 1; i > 0; --i) {
    switch (upTo(depth > 0 ? 7 : 3)) {
      case 0:
        text += "x";
        break;
      case 1:
        text += "[a-e]?";
        break;
      case 2:
        text += upTo(1) != 0U ? "^" : "";
        break;
      case 3:
        text += "()";
        break;
      case 4:
        text += "(" + Random(random, depth - 1) + ")";
        break;
      case 5:
        text += "(" + Random(random, depth - 1) + ")*";
        break;
      case 6:
        text += "(" + Random(random, depth - 1) + "|" + Random(random, depth - 1) + ")";
        break;
      default:
        text += "(" + Random(random, depth - 1) + "){" + std::to_string(upTo(40)) + "," +
                std::to_string(40 + upTo(3) * upTo(300)) + "}";
    }
  }
  return text;
}

TEST(RegExpSizeTest, WhatIsTakenEndsNoProcess) {
  std::mt19937 random(1);
  int taken = 0;
  for (int i = 0; i < 300; ++i) {
    const std::string expression = Random(random, 2);
    const RegExpSize size = SizeOf(expression);
    // A long time is allowed, but not here.
    if (size.parts > 300) continue;
    ++taken;
    EXPECT_EQ(StatusOfMatching(expression), 0) << expression;
  }
  EXPECT_GT(taken, 100);
}

TEST(RegExpSizeTest, TheLargestThatIsTakenEndsNoProcess) {
  const auto repeated = [](int count, const std::string& text) {
    std::string all;
    for (int i = 0; i < count; ++i) all += text;
    return all;
  };
  for (const std::string& expression :
       {repeated(1000, "(") + "x" + repeated(1000, ")"),
        repeated(300, "(") + "x" + repeated(300, ")*"), std::string("(){1000}"),
        std::string("(x?){490}"), repeated(990, "x?"), repeated(99, "^"), std::string("x{0,990}"),
        std::string("x{10000}"), std::string("(ab|c){1400}"), repeated(5000, "(a)"),
        std::string("(a|){480}")}) {
    EXPECT_EQ(regExp(expression).GetError(), "") << expression.substr(0, 20);
    EXPECT_EQ(StatusOfMatching(expression), 0) << expression.substr(0, 20);
  }
}

}  // namespace
}  // namespace fabscope::internal
