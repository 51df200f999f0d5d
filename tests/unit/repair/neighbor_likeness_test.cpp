#include "repair/neighbor_likeness.h"

#include <gtest/gtest.h>
#include <random>

#include "support/test_fabric.h"

namespace fabscope::internal {
namespace {

// The same with none of it left out: every switch is asked for each neighbor.
double PlainLikeness(const SwitchGraph& graph, const NeighborLists& lists, const Heights& heights,
                     std::uint32_t i, int height) {
  double best = 0;
  const auto neighbors = lists.Of(i);
  for (std::uint32_t twin = 0; twin < graph.Count(); ++twin) {
    if (twin == i || heights[twin] != height) continue;
    std::size_t common = 0;
    for (const std::uint32_t neighbor : neighbors) {
      std::uint32_t last = i;
      for (const std::uint32_t far : graph.FarEndsOf(neighbor)) {
        if (far == i || heights[far] != height || far == last) continue;
        last = far;
        common += far == twin ? 1 : 0;
      }
    }
    if (common == 0) continue;
    const double shared = static_cast<double>(std::min(common, neighbors.size()));
    const double all = static_cast<double>(neighbors.size() + lists.Of(twin).size()) - shared;
    if (all > 0) best = std::max(best, shared / all);
  }
  return best;
}

// Uppers cabled at random to lowers, often more than once and in any order.
TEST(NeighborLikenessTest, IsThatOfTheMostSimilarSwitchOrKnownToBeTooLittle) {
  std::mt19937 random(7);
  const auto below = [&](unsigned count) { return static_cast<unsigned>(random() % count); };
  int enoughAlike = 0;
  int tooLittle = 0;
  for (int round = 0; round < 2000; ++round) {
    TestFabric fabric;
    const unsigned uppers = 1 + below(5);
    const unsigned lowers = 2 + below(4);
    for (unsigned i = 0; i < uppers; ++i) fabric.Switch("u" + std::to_string(i), 64);
    for (unsigned i = 0; i < lowers; ++i) fabric.Switch("l" + std::to_string(i), 64);
    for (unsigned cables = below(5 * uppers); cables != 0; --cables) {
      const std::string upper = "u" + std::to_string(below(uppers));
      fabric.Cable(upper, "l" + std::to_string(below(lowers)));
    }
    const SwitchGraph graph(fabric.Build());
    const NeighborLists lists(graph);
    Heights heights(graph.Count());
    for (std::uint32_t i = 0; i < graph.Count(); ++i) {
      const bool isUpper = graph.NodeOf(i).name.starts_with('u');
      heights[i] = isUpper ? 1 : static_cast<int>(2 * below(2));
    }
    NeighborLikeness likeness(graph, lists, heights);
    for (std::uint32_t i = 0; i < graph.Count(); ++i) {
      const double plain = PlainLikeness(graph, lists, heights, i, 0);
      ASSERT_EQ(likeness.To(i, 0, 0), plain);
      const double found = likeness.To(i, 0, 0.6);
      if (plain >= 0.6) {
        ASSERT_EQ(found, plain) << "round " << round << ", switch " << i;
      } else {
        ASSERT_LT(found, 0.6) << "round " << round << ", switch " << i;
      }
      ++(plain >= 0.6 ? enoughAlike : tooLittle);
    }
  }
  EXPECT_GT(enoughAlike, 500);
  EXPECT_GT(tooLittle, 500);
}

// A switch with ten neighbors, of which another one has only the first and the last: the cables of
// the first stand between those of a third switch, so that each of them counts.
TEST(NeighborLikenessTest, ParallelCablesThatStandApartCountEach) {
  TestFabric fabric;
  fabric.Switch("a0", 32);
  for (const char* name : {"a1", "a2", "a3", "a4", "a5", "a6", "a7", "a8", "a9"}) {
    fabric.Switch(name);
  }
  fabric.Switch("self").Switch("twin").Switch("third");
  for (const char* next : {"twin", "third", "twin", "third", "twin", "third", "twin"}) {
    fabric.Cable("a0", next);
  }
  fabric.Cable("a9", "twin");
  for (int i = 0; i < 10; ++i) fabric.Cable("a" + std::to_string(i), "self");
  const SwitchGraph graph(fabric.Build());
  const NeighborLists lists(graph);
  Heights heights(graph.Count(), 1);
  const auto number = [&](const char* name) { return graph.NumberOf(fabric[name]->index); };
  heights[number("self")] = 2;
  heights[number("twin")] = heights[number("third")] = 0;
  NeighborLikeness likeness(graph, lists, heights);
  EXPECT_DOUBLE_EQ(likeness.ToThoseBelow(number("self"), 0.6), 5.0 / 7);
}

}  // namespace
}  // namespace fabscope::internal
