#include "os/terminal.h"

#include <array>
#include <cstdlib>
#include <gtest/gtest.h>
#include <pty.h>
#include <unistd.h>

namespace fabscope::internal {
namespace {

// Standard output leads to a terminal, and the environment says nothing about colours.
class TerminalTest : public ::testing::Test {
 protected:
  TerminalTest() : savedOutput_(dup(STDOUT_FILENO)) {
    unsetenv("NO_COLOR");
    setenv("TERM", "xterm", 1);
    EXPECT_EQ(openpty(&master_, &terminal_, nullptr, nullptr, nullptr), 0);
    dup2(terminal_, STDOUT_FILENO);
  }
  ~TerminalTest() override {
    dup2(savedOutput_, STDOUT_FILENO);
    for (const int fd : {savedOutput_, master_, terminal_}) close(fd);
  }

 private:
  int savedOutput_;
  int master_ = -1;
  int terminal_ = -1;
};

TEST_F(TerminalTest, HasColoursWhenNothingSpeaksAgainstThem) {
  EXPECT_TRUE(WantsColor(ColorWhen::Auto));
}

TEST_F(TerminalTest, HasNoColoursWhenNoColorIsSet) {
  setenv("NO_COLOR", "1", 1);
  EXPECT_FALSE(WantsColor(ColorWhen::Auto));
}

TEST_F(TerminalTest, AnEmptyNoColorSaysNothing) {
  setenv("NO_COLOR", "", 1);
  EXPECT_TRUE(WantsColor(ColorWhen::Auto));
}

TEST_F(TerminalTest, WithoutAbilitiesHasNoColours) {
  setenv("TERM", "dumb", 1);
  EXPECT_FALSE(WantsColor(ColorWhen::Auto));
}

TEST_F(TerminalTest, TheOptionOverridesTheEnvironment) {
  EXPECT_FALSE(WantsColor(ColorWhen::Never));
  setenv("NO_COLOR", "1", 1);
  setenv("TERM", "dumb", 1);
  EXPECT_TRUE(WantsColor(ColorWhen::Always));
}

TEST(NoTerminalTest, HasColoursOnlyWhenTold) {
  unsetenv("NO_COLOR");
  setenv("TERM", "xterm", 1);
  const int saved = dup(STDOUT_FILENO);
  std::array<int, 2> ends{};
  ASSERT_EQ(pipe(ends.data()), 0);
  dup2(ends[1], STDOUT_FILENO);
  const bool automatic = WantsColor(ColorWhen::Auto);
  const bool always = WantsColor(ColorWhen::Always);
  dup2(saved, STDOUT_FILENO);
  for (const int fd : {saved, ends[0], ends[1]}) close(fd);
  EXPECT_FALSE(automatic);
  EXPECT_TRUE(always);
}

}  // namespace
}  // namespace fabscope::internal
