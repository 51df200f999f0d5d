// fabscope against a second, plain reading of what it promises: random fabrics through both, byte
// for byte.

#include <algorithm>
#include <gtest/gtest.h>
#include <vector>

#include "reference/comparison.h"
#include "reference/small_fabrics.h"

namespace fabscope::internal::reference {
namespace {

constexpr std::uint64_t seeds = 5'000;
constexpr std::uint64_t chunks = 10;

// The numbering goes on through all tests that one process runs.
Comparison& TheComparison() {
  static Comparison comparison;
  return comparison;
}

// Chunks, so that they can run side by side.
class RandomFabrics : public testing::TestWithParam<std::uint64_t> {};

TEST_P(RandomFabrics, GiveTheReportsOfTheReference) {
  const std::uint64_t first = GetParam() * (seeds / chunks);
  for (std::uint64_t seed = first; seed < first + seeds / chunks; ++seed) {
    ASSERT_EQ(TheComparison().Compare(seed), "");
  }
}

INSTANTIATE_TEST_SUITE_P(Chunks, RandomFabrics, testing::Range(std::uint64_t{0}, chunks));

void CompareCases(const SmallFabrics& fabrics, std::uint64_t first, std::uint64_t end) {
  for (std::uint64_t number = first; number < end; ++number) {
    ASSERT_EQ(TheComparison().Compare(fabrics.Case(number), number), "");
  }
}

TEST(AllFabricsOfUpToFourSwitches, GiveTheReportsOfTheReferenceForAllRoots) {
  for (int switches = 1; switches <= 4; ++switches) {
    const SmallFabrics fabrics(switches);
    CompareCases(fabrics, 0, fabrics.Count());
  }
}

class AllFabricsOfFiveSwitches : public testing::TestWithParam<std::uint64_t> {};

TEST_P(AllFabricsOfFiveSwitches, GiveTheReportsOfTheReference) {
  const SmallFabrics fabrics(5);
  const std::uint64_t share = fabrics.CountAutomatic() / chunks + 1;
  const std::uint64_t first = GetParam() * share;
  CompareCases(fabrics, first, std::min(first + share, fabrics.CountAutomatic()));
}

INSTANTIATE_TEST_SUITE_P(Chunks, AllFabricsOfFiveSwitches,
                         testing::Range(std::uint64_t{0}, chunks));

// Otherwise fabrics agree about rules that no fabric has met.
TEST(RandomFabricRules, AreAllReached) {
  std::set<std::string> reached;
  for (std::uint64_t seed = 0; seed < seeds; ++seed) {
    const PlainCase what = RandomCase(seed);
    const ReferenceResult result = ReferenceCheck(what.fabric, what.options);
    reached.insert(result.reached.begin(), result.reached.end());
  }
  EXPECT_EQ(reached, AllRules());
}

}  // namespace
}  // namespace fabscope::internal::reference
