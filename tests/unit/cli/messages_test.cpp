#include "cli/messages.h"

#include <gtest/gtest.h>

#include "platform/logging.h"

namespace fabscope::internal {
namespace {

using ::testing::internal::CaptureStderr;
using ::testing::internal::GetCapturedStderr;

TEST(MessagesTest, GoToStandardErrorAndToTheLog) {
  CaptureStderr();
  Messages messages;
  messages.Tell("one");
  messages.Tell("two");
  EXPECT_EQ(GetCapturedStderr(), "fabscope: one\nfabscope: two\n");
  EXPECT_EQ(messages.GetLog(), "fabscope: one\nfabscope: two\n");
}

TEST(MessagesTest, OfTheStageGoToTheChannelThatItChooses) {
  CaptureStderr();
  Messages messages;
  dump_to_screen("-E- for the %s\n", "screen");
  dump_to_log_file("-E- for the %s\n", "log");
  EXPECT_EQ(GetCapturedStderr(), "-E- for the screen\n");
  EXPECT_EQ(messages.GetLog(), "-E- for the log\n");
}

TEST(MessagesTest, HoldNothingThatATerminalWouldObey) {
  CaptureStderr();
  Messages messages;
  messages.Tell("a\x1b[2J\nb\x7f.topo: No such file or directory");
  EXPECT_EQ(GetCapturedStderr(), "fabscope: a?[2J?b?.topo: No such file or directory\n");
}

TEST(MessagesTest, LeaveNoChannelOpenBehindThem) {
  { const Messages messages; }
  CaptureStderr();
  dump_to_screen("lost");
  dump_to_log_file("lost");
  EXPECT_EQ(GetCapturedStderr(), "");
}

}  // namespace
}  // namespace fabscope::internal
