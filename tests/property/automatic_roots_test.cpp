// Automatic roots give the search's answer to the byte, or a line and that of inferred roots.

#include "reference/automatic_roots.h"

#include <gtest/gtest.h>

namespace fabscope::internal {
namespace {

constexpr std::uint64_t firstSeed = 80'000;
constexpr std::uint64_t seeds = 600;
constexpr std::uint64_t leastTrees = 100;
constexpr std::uint64_t leastRefusals = 100;

TEST(AutomaticRootsPropertyTest, AreThoseOfTheSearchOrInferredOnes) {
  reference::AutomaticRoots roots;
  for (std::uint64_t seed = firstSeed; seed < firstSeed + seeds; ++seed) {
    ASSERT_EQ(roots.Compare(seed), "");
  }
  EXPECT_GE(roots.Kept() + roots.Replaced(), leastTrees);
  EXPECT_GE(roots.Refused() + roots.Helped(), leastRefusals);
}

}  // namespace
}  // namespace fabscope::internal
