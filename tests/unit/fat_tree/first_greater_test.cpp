#include "fat_tree/containers/first_greater.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <random>
#include <vector>

namespace fabscope::internal {
namespace {

TEST(FirstGreaterTest, PlacesBeginWithNothing) {
  EXPECT_EQ(FirstGreater(0).Find(0), FirstGreater::None);
  EXPECT_EQ(FirstGreater(5).Find(0), FirstGreater::None);
}

TEST(FirstGreaterTest, FindsWhatALookAtEachPlaceFinds) {
  std::mt19937 random(20240614);
  for (std::size_t places = 1; places < 40; ++places) {
    FirstGreater tree(places);
    std::vector<std::int64_t> numbers(places);
    for (int round = 0; round < 200; ++round) {
      const std::size_t place = random() % places;
      numbers[place] = static_cast<std::int64_t>(random() % 8);
      tree.Set(place, numbers[place]);
      EXPECT_EQ(tree.Get(place), numbers[place]);
      for (std::int64_t limit = 0; limit < 8; ++limit) {
        const auto first = std::find_if(numbers.begin(), numbers.end(),
                                        [&](std::int64_t number) { return number > limit; });
        const auto expected = static_cast<std::size_t>(first - numbers.begin());
        ASSERT_EQ(tree.Find(limit), first == numbers.end() ? FirstGreater::None : expected);
      }
    }
  }
}

}  // namespace
}  // namespace fabscope::internal
