#include "platform/logging.h"

#include <gtest/gtest.h>
#include <string>
#include <string_view>

namespace fabscope::internal {
namespace {

class LoggingTest : public ::testing::Test {
 protected:
  LoggingTest() {
    SetScreenSink([this](std::string_view text) { screen += text; });
    SetLogFileSink([this](std::string_view text) { logFile += text; });
  }
  ~LoggingTest() override {
    SetScreenSink({});
    SetLogFileSink({});
  }

  std::string screen;
  std::string logFile;
};

TEST_F(LoggingTest, EachChannelHasItsOwnSink) {
  dump_to_screen("for the person\n");
  dump_to_log_file("for the file\n");
  EXPECT_EQ(screen, "for the person\n");
  EXPECT_EQ(logFile, "for the file\n");
}

TEST_F(LoggingTest, FormatsItsArgumentsAndAddsNoLineEnd) {
  dump_to_screen("%s has %d ports, 0x%04x, 100%%", "sw1", 64, 0x2c9);
  dump_to_log_file("%d of %d", 3, 4);
  EXPECT_EQ(screen, "sw1 has 64 ports, 0x02c9, 100%");
  EXPECT_EQ(logFile, "3 of 4");
}

TEST_F(LoggingTest, PassesTextOfAnyLength) {
  const std::string text(100000, 'x');
  dump_to_screen("<%s>", text.c_str());
  dump_to_log_file("<%s>", text.c_str());
  EXPECT_EQ(screen, "<" + text + ">");
  EXPECT_EQ(logFile, "<" + text + ">");
}

TEST_F(LoggingTest, ANewSinkTakesOver) {
  std::string later;
  SetScreenSink([&later](std::string_view text) { later += text; });
  dump_to_screen("one");
  EXPECT_EQ(screen, "");
  EXPECT_EQ(later, "one");
}

TEST_F(LoggingTest, AChannelWithoutSinkDropsItsTextAndLeavesTheOtherAlone) {
  SetScreenSink({});
  dump_to_screen("%s", "lost");
  dump_to_log_file("%s", "kept");
  EXPECT_EQ(screen, "");
  EXPECT_EQ(logFile, "kept");

  SetLogFileSink({});
  dump_to_log_file("%s", "lost too");
  EXPECT_EQ(logFile, "kept");
}

}  // namespace
}  // namespace fabscope::internal
