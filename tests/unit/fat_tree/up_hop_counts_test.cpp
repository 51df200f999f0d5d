#include "fat_tree/containers/up_hop_counts.h"

#include <algorithm>
#include <gmock/gmock.h>
#include <map>
#include <random>

namespace fabscope::internal {
namespace {

using ::testing::ElementsAre;
using ::testing::Pair;

TEST(UpHopCountsTest, NothingIsCountedAtFirst) {
  UpHopCounts counts;
  EXPECT_THAT(counts, ElementsAre());
  EXPECT_EQ(counts.Find(0), nullptr);
  EXPECT_FALSE(counts.Erase(0));
}

TEST(UpHopCountsTest, IndexAskedForIsCountedFromZeroOn) {
  UpHopCounts counts;
  counts[7] += 2;
  counts[3];
  counts[7] += 3;
  EXPECT_THAT(counts, ElementsAre(Pair(3, 0), Pair(7, 5)));
}

TEST(UpHopCountsTest, AppendedIndexIsCountedLikeOthers) {
  UpHopCounts counts;
  counts[1] = 4;
  counts.Append(2, 9);
  ASSERT_NE(counts.Find(2), nullptr);
  EXPECT_EQ(*counts.Find(2), 9);
  EXPECT_THAT(counts, ElementsAre(Pair(1, 4), Pair(2, 9)));
}

TEST(UpHopCountsTest, BehavesLikeAnOrderedMap) {
  std::mt19937 random(20240611);
  UpHopCounts counts;
  std::map<std::uint32_t, std::int32_t> expected;
  for (int step = 0; step < 2000; ++step) {
    const auto index = static_cast<std::uint32_t>(random() % 40);
    if (random() % 3 == 0) {
      EXPECT_EQ(counts.Erase(index), expected.erase(index) != 0);
    } else {
      ++counts[index];
      ++expected[index];
    }
    const auto asked = static_cast<std::uint32_t>(random() % 40);
    const auto found = expected.find(asked);
    const std::int32_t* count = counts.Find(asked);
    ASSERT_EQ(count != nullptr, found != expected.end());
    if (count != nullptr) {
      EXPECT_EQ(*count, found->second);
    }
    ASSERT_TRUE(std::equal(
        counts.begin(), counts.end(), expected.begin(), expected.end(),
        [](const auto& a, const auto& b) { return a.first == b.first && a.second == b.second; }));
  }
}

}  // namespace
}  // namespace fabscope::internal
