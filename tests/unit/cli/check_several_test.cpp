#include "cli/check_several.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>

#include "platform/progress.h"

namespace fabscope::internal {
namespace {

using ::testing::ElementsAre;

TEST(CheckSeveralTest, ProgressTellsHowManyFabricsAreDone) {
  CheckArguments arguments;
  arguments.operands = {"none", "no-dump", "no-file"};
  std::vector<std::string> told;
  SetProgressSink([&](std::string_view phase, std::size_t done, std::size_t total) {
    EXPECT_EQ(phase, "checking fabrics");
    told.push_back(std::to_string(done) + " of " + std::to_string(total));
  });
  ::testing::internal::CaptureStdout();
  ::testing::internal::CaptureStderr();
  Messages messages;
  EXPECT_EQ(CheckSeveral(arguments, messages), 2);
  SetProgressSink({});
  EXPECT_EQ(::testing::internal::GetCapturedStdout(),
            "-E- none: not checked\n-E- no-dump: not checked\n-E- no-file: not checked\n"
            "-I- 3 fabrics: 0 clean, 0 with findings, 3 not checked\n");
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), messages.GetLog());
  EXPECT_THAT(told, ElementsAre("1 of 3", "2 of 3", "3 of 3"));
}

}  // namespace
}  // namespace fabscope::internal
