#include "synthetic/random.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <numeric>

namespace fabscope::internal {
namespace {

TEST(RandomTest, GivesTheSameNumbersForOneSeedOnEveryMachine) {
  Random random(7);
  std::vector<std::uint64_t> numbers;
  for (int i = 0; i < 6; ++i) numbers.push_back(random.Below(1000));
  EXPECT_EQ(numbers, (std::vector<std::uint64_t>{15, 250, 878, 46, 421, 428}));
}

TEST(RandomTest, StaysBelowItsLimitAndReachesAllOfIt) {
  Random random(1);
  std::vector<int> counts(5);
  for (int i = 0; i < 5000; ++i) ++counts.at(static_cast<std::size_t>(random.Below(5)));
  for (const int count : counts) {
    EXPECT_GT(count, 850);
    EXPECT_LT(count, 1150);
  }
  EXPECT_EQ(random.Below(1), 0U);
}

TEST(RandomTest, ShufflesEveryItemToEveryPlace) {
  std::vector<std::vector<int>> seen(4, std::vector<int>(4));
  Random random(3);
  for (int round = 0; round < 400; ++round) {
    std::vector<int> items(4);
    std::iota(items.begin(), items.end(), 0);
    random.Shuffle(items);
    for (std::size_t place = 0; place < 4; ++place) {
      ++seen[static_cast<std::size_t>(items[place])][place];
    }
  }
  for (const std::vector<int>& places : seen) {
    for (const int count : places) EXPECT_GT(count, 60);
  }
}

}  // namespace
}  // namespace fabscope::internal
