#include "platform/progress.h"

#include <gmock/gmock.h>
#include <string>
#include <vector>

#include "support/stage_fixture.h"

namespace fabscope::internal {
namespace {

using ::testing::ElementsAre;

class ProgressTest : public StageTest {
 protected:
  ProgressTest() {
    SetProgressSink([this](std::string_view phase, std::size_t done, std::size_t total) {
      told.push_back(std::string(phase) + ' ' + std::to_string(done) + '/' + std::to_string(total));
    });
  }
  ~ProgressTest() override { SetProgressSink({}); }

  std::vector<std::string> told;
};

TEST_F(ProgressTest, SearchForRootsTellsEachTryOfThoseAllowed) {
  AddThreeLevelTree(fabric, 3, 2, 2, 2, 2);
  ASSERT_EQ(Topology().Build(errors, message, 5, 3), 0) << message;
  EXPECT_THAT(told, ElementsAre("finding roots 0/5", "finding roots 1/5"));
}

TEST_F(ProgressTest, ValidationTellsSetsAsTheyAreMergedThenUpperSwitchesAndThenTheGroups) {
  AddThreeLevelTree(fabric, 2, 2, 3, 2, 2);
  RankFrom({"root0", "root1", "root2", "root3", "root4", "root5"});
  ASSERT_EQ(Topology().Validate(errors, message), 0) << message;
  EXPECT_THAT(
      told,
      ElementsAre("grouping switches 0/3", "grouping switches 1/3", "grouping switches 2/3",
                  "looking for cross links 0/6", "looking for cross links 1/6",
                  "looking for cross links 2/6", "looking for cross links 3/6",
                  "looking for cross links 4/6", "looking for cross links 5/6",
                  "grouping switches 0/2", "grouping switches 1/2", "looking for cross links 0/6",
                  "looking for cross links 1/6", "looking for cross links 2/6",
                  "looking for cross links 3/6", "looking for cross links 4/6",
                  "looking for cross links 5/6", "checking groups 0/3", "checking groups 1/3",
                  "checking groups 2/3", "checking groups 0/2", "checking groups 1/2"));
}

}  // namespace
}  // namespace fabscope::internal
