#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>

#include "fat_tree/findings.h"

namespace fabscope::internal {
namespace {

using ::testing::ElementsAre;

TEST(FindingKindsTest, EveryKindHasItsName) {
  EXPECT_EQ(KindOf(MissingLink{}), std::string("missing-link"));
  EXPECT_EQ(KindOf(InvalidLink{}), std::string("invalid-link"));
  EXPECT_EQ(KindOf(UnevenLinks{}), std::string("uneven-links"));
  EXPECT_EQ(KindOf(SuspectedBlocking{}), std::string("suspected-blocking"));
  EXPECT_EQ(KindOf(AsymmetricAPorts{}), std::string("asymmetric-aports"));
  EXPECT_EQ(KindOf(SharedFlid{}), std::string("shared-flid"));
}

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
