// fabscope against a second, plain reading of what it promises: random fabrics through both, byte
// for byte.

#include <algorithm>
#include <gtest/gtest.h>
#include <vector>

#include "reference/comparison.h"

namespace fabscope::reference {
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

// Otherwise fabrics agree about rules that no fabric has met.
TEST(RandomFabricRules, AreAllReached) {
  Counters counters;
  std::set<std::string> reached;
  for (std::uint64_t seed = 0; seed < seeds; ++seed) {
    const PlainCase what = RandomCase(seed);
    const ReferenceResult result = ReferenceCheck(what.fabric, what.options, counters);
    reached.insert(result.reached.begin(), result.reached.end());
  }
  EXPECT_EQ(reached, AllRules());
}

}  // namespace
}  // namespace fabscope::reference
