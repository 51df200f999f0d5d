#include "platform/progress.h"

#include <gtest/gtest.h>
#include <string>

namespace fabscope::internal {
namespace {

TEST(ProgressTest, GoesToTheSinkWhileThereIsOne) {
  std::string told;
  ReportProgress("early", 0, 1);
  SetProgressSink([&](std::string_view phase, std::size_t done, std::size_t total) {
    told += std::string(phase) + " " + std::to_string(done) + "/" + std::to_string(total) + "\n";
  });
  ReportProgress("reading", 3, 10);
  ReportProgress("reading", 4, 10);
  SetProgressSink({});
  ReportProgress("late", 1, 1);
  EXPECT_EQ(told, "reading 3/10\nreading 4/10\n");
}

}  // namespace
}  // namespace fabscope::internal
