#include "os/progress_line.h"

#include <gtest/gtest.h>
#include <thread>

#include "platform/progress.h"

namespace fabscope::internal {
namespace {

using ::testing::internal::CaptureStderr;
using ::testing::internal::GetCapturedStderr;

// What is on the screen in the end, of work whose steps come after the given pauses.
std::string ShownOf(bool isWanted, const std::vector<std::chrono::milliseconds>& pauses) {
  CaptureStderr();
  {
    const ProgressLine line(isWanted);
    std::size_t done = 0;
    for (const std::chrono::milliseconds pause : pauses) {
      std::this_thread::sleep_for(pause);
      ReportProgress("working", done++, pauses.size());
    }
  }
  return GetCapturedStderr();
}

using std::chrono::milliseconds;
constexpr milliseconds once{0};

TEST(ProgressLineTest, WorkThatIsDoneAtOnceShowsNothing) {
  EXPECT_EQ(ShownOf(true, {once, once, once}), "");
}

TEST(ProgressLineTest, LongWorkShowsPhaseAndShareOnALineThatIsGoneInTheEnd) {
  EXPECT_EQ(ShownOf(true, {once, ProgressLine::FirstAfter, once, once}),
            "\r\033[Kfabscope: working 25 %\r\033[K");
}

TEST(ProgressLineTest, IsRenewedNowAndThen) {
  EXPECT_EQ(ShownOf(true, {ProgressLine::FirstAfter, once, once, ProgressLine::ThenEvery}),
            "\r\033[Kfabscope: working 0 %\r\033[Kfabscope: working 75 %\r\033[K");
}

TEST(ProgressLineTest, NobodyWhoLooksSeesNothing) {
  EXPECT_EQ(ShownOf(false, {once, ProgressLine::FirstAfter, once}), "");
}

TEST(ProgressLineTest, WorkOfUnknownLengthHasNoShare) {
  CaptureStderr();
  {
    const ProgressLine line(true);
    std::this_thread::sleep_for(ProgressLine::FirstAfter);
    ReportProgress("reading", 7, 0);
  }
  EXPECT_EQ(GetCapturedStderr(), "\r\033[Kfabscope: reading\r\033[K");
}

}  // namespace
}  // namespace fabscope::internal
