#include "fat_tree/containers/up_hop_bits.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "support/up_hop_fixture.h"

namespace fabscope::internal {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

std::vector<std::size_t> IndicesOf(const UpHopBits& bits, std::size_t size = MaxUpperSwitches) {
  std::vector<std::size_t> indices;
  bits.ForEach(size, [&](std::size_t index) { indices.push_back(index); });
  return indices;
}

TEST(UpHopBitsTest, CountsWhatIsSetAndReset) {
  UpHopBits bits;
  EXPECT_TRUE(bits.none());
  bits.set(0).set(64).set(2047).set(64);
  EXPECT_EQ(bits.count(), 3U);
  EXPECT_TRUE(bits.test(64));
  bits.reset(64).reset(64).reset(5);
  EXPECT_EQ(bits.count(), 2U);
  EXPECT_FALSE(bits.test(64));
  EXPECT_FALSE(bits.none());
  EXPECT_EQ(bits, Bits({0, 2047}));
}

TEST(UpHopBitsTest, VisitsIndicesBelowASizeInAscendingOrder) {
  const UpHopBits bits = Bits({2047, 63, 64, 0, 130});
  EXPECT_THAT(IndicesOf(bits), ElementsAre(0, 63, 64, 130, 2047));
  EXPECT_THAT(IndicesOf(bits, 130), ElementsAre(0, 63, 64));
  EXPECT_THAT(IndicesOf(bits, 64), ElementsAre(0, 63));
  EXPECT_THAT(IndicesOf(bits, 63), ElementsAre(0));
  EXPECT_THAT(IndicesOf(bits, 0), IsEmpty());
}

TEST(UpHopBitsTest, VisitsIndicesOfBothSetsThatTheVisitMayTakeOut) {
  UpHopBits bits = Bits({1, 5, 63, 64, 100, 2047});
  std::vector<std::size_t> visited;
  bits.ForEachCommon(Bits({0, 5, 63, 100, 101, 2047}), [&](std::size_t index) {
    visited.push_back(index);
    bits.reset(index);
  });
  EXPECT_THAT(visited, ElementsAre(5, 63, 100, 2047));
  EXPECT_EQ(bits, Bits({1, 64}));
}

TEST(UpHopBitsTest, CombinationsKnowTheirCounts) {
  const UpHopBits a = Bits({1, 64, 100});
  const UpHopBits b = Bits({64, 2000});
  EXPECT_EQ(a.United(b), Bits({1, 64, 100, 2000}));
  EXPECT_EQ(a.Outside(b, MaxUpperSwitches), Bits({1, 100}));
  EXPECT_EQ(a.Outside(b, 100), Bits({1}));
  EXPECT_EQ(b.Outside(a, 2000), Bits({}));
}

TEST(UpHopBitsTest, AsTextHoldsEachIndexBelowTheLengthHighestFirst) {
  const std::vector<std::size_t> indices{0, 1, 7, 8, 63, 64, 127, 130, 1999, 2000, 2047};
  UpHopBits bits;
  for (const std::size_t index : indices) bits.set(index);
  const std::vector<std::size_t> lengths{1,  2,   7,   8,    9,    63,   64,
                                         65, 128, 131, 2000, 2001, 2047, 2048};
  for (const std::size_t length : lengths) {
    std::string expected;
    for (std::size_t index = length; index-- > 0;) expected += bits.test(index) ? '1' : '0';
    EXPECT_EQ(bits.ToText(length), expected) << length;
  }
}

TEST(UpHopBitsTest, HasMoreOutsideThanALimitOnlyBelowTheSize) {
  const UpHopBits a = Bits({1, 64, 100, 2000});
  const UpHopBits b = Bits({64});
  EXPECT_TRUE(a.HasMoreOutside(b, MaxUpperSwitches, 2));
  EXPECT_FALSE(a.HasMoreOutside(b, MaxUpperSwitches, 3));
  EXPECT_TRUE(a.HasMoreOutside(b, 2000, 1));
  EXPECT_FALSE(a.HasMoreOutside(b, 2000, 2));
  EXPECT_FALSE(b.HasMoreOutside(a, MaxUpperSwitches, 0));
}

}  // namespace
}  // namespace fabscope::internal
