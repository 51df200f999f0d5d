#include "fat_tree/containers/node_pairs.h"

#include <gtest/gtest.h>
#include <vector>

namespace fabscope::internal {
namespace {

std::vector<IBNode> NodesOfOneFabric(std::uint32_t count) {
  std::vector<IBNode> nodes(count);
  for (std::uint32_t i = 0; i < count; ++i) nodes[i].index = i;
  return nodes;
}

TEST(NodePairsTest, HoldsNothingWhenMade) {
  const std::vector<IBNode> nodes = NodesOfOneFabric(2);
  const NodePairs pairs;
  EXPECT_EQ(pairs.Size(), 0U);
  EXPECT_FALSE(pairs.Contains(nodes[0], nodes[1]));
}

TEST(NodePairsTest, PairIsKnownFromBothEndsAndCountsOnce) {
  const std::vector<IBNode> nodes = NodesOfOneFabric(3);
  NodePairs pairs(2);
  pairs.Add(nodes[2], nodes[0]);
  pairs.Add(nodes[2], nodes[0]);
  EXPECT_EQ(pairs.Size(), 1U);
  EXPECT_TRUE(pairs.Contains(nodes[2], nodes[0]));
  EXPECT_TRUE(pairs.Contains(nodes[0], nodes[2]));
  EXPECT_FALSE(pairs.Contains(nodes[1], nodes[0]));
  EXPECT_FALSE(pairs.Contains(nodes[2], nodes[2]));
}

// Around the ends of the words that hold the bits.
TEST(NodePairsTest, EachOfManyPairsStandsForItself) {
  for (const std::uint32_t firsts : {1U, 63U, 64U, 65U, 130U}) {
    const std::uint32_t seconds = 5;
    const std::vector<IBNode> nodes = NodesOfOneFabric(firsts + seconds);
    const auto isPair = [](std::uint32_t first, std::uint32_t second) {
      return (first * 7 + second * 3) % 4 == 0;
    };
    NodePairs pairs(firsts);
    std::size_t count = 0;
    for (std::uint32_t first = 0; first < firsts; ++first) {
      for (std::uint32_t second = firsts; second < firsts + seconds; ++second) {
        if (!isPair(first, second)) continue;
        pairs.Add(nodes[first], nodes[second]);
        ++count;
      }
    }
    EXPECT_EQ(pairs.Size(), count);
    for (std::uint32_t first = 0; first < firsts; ++first) {
      for (std::uint32_t second = firsts; second < firsts + seconds; ++second) {
        EXPECT_EQ(pairs.Contains(nodes[first], nodes[second]), isPair(first, second))
            << firsts << " first nodes, pair " << first << ' ' << second;
      }
    }
  }
}

}  // namespace
}  // namespace fabscope::internal
