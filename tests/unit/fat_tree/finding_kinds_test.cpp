#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "fat_tree/findings.h"

namespace fabscope::internal {
namespace {

using ::testing::ElementsAre;

TEST(FindingKindsTest, GroupsStandOnceInTheOrderOfTheFinding) {
  MissingLink missing{};
  missing.group = 3;
  EXPECT_THAT(GroupsOf(missing), ElementsAre(3));
  InvalidLink invalid{};
  invalid.group1 = 5;
  invalid.group2 = 4;
  EXPECT_THAT(GroupsOf(invalid), ElementsAre(5, 4));
  invalid.group2 = 5;
  EXPECT_THAT(GroupsOf(invalid), ElementsAre(5));
  SharedFlid shared{};
  shared.groups = {1, 2, 9};
  EXPECT_THAT(GroupsOf(shared), ElementsAre(1, 2, 9));
}

TEST(FindingKindsTest, AFindingTellsWhatItsGroupsAre) {
  MissingLink missing{};
  EXPECT_FALSE(IsOfNeighborhoods(missing));
  missing.isNeighborhood = true;
  EXPECT_TRUE(IsOfNeighborhoods(missing));
  EXPECT_TRUE(IsOfNeighborhoods(SharedFlid{}));
}

}  // namespace
}  // namespace fabscope::internal
