#include "formats/node_order.h"

#include <cstring>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

namespace fabscope::internal {
namespace {

int Compared(const NodeOrderKey& a, const NodeOrderKey& b) {
  return a < b ? -1 : static_cast<int>(b < a);
}
int Sign(int order) { return order < 0 ? -1 : static_cast<int>(order > 0); }

TEST(NodeOrderTest, NumbersInNamesCompareByValueThenGuidsDecide) {
  EXPECT_LT(CompareNodeOrder("leaf-9", 2, "leaf-10", 1), 0);
  EXPECT_GT(CompareNodeOrder("leaf-10", 1, "leaf-9", 2), 0);
  EXPECT_LT(CompareNodeOrder("leaf", 1, "leaf", 2), 0);
  EXPECT_GT(CompareNodeOrder("leaf", 2, "leaf", 1), 0);
  EXPECT_EQ(CompareNodeOrder("leaf", 1, "leaf", 1), 0);
}

TEST(NodeOrderTest, KeysTellShortNamesApart) {
  EXPECT_LT(NodeOrderKey("leaf-9"), NodeOrderKey("leaf-10"));
  EXPECT_LT(NodeOrderKey("host-p9m3h20"), NodeOrderKey("host-p10m0h1"));
  EXPECT_LT(NodeOrderKey("a"), NodeOrderKey("a0"));
  EXPECT_EQ(NodeOrderKey("leaf"), NodeOrderKey("leaf"));
}

TEST(NodeOrderTest, NumbersAsDecimalFractionsStandInTheirOrder) {
  const std::vector<std::string> ordered{"000", "00", "01", "010", "09", "0", "0a", "1", "9", "10"};
  for (std::size_t i = 1; i < ordered.size(); ++i) {
    EXPECT_LT(NodeOrderKey(ordered[i - 1]), NodeOrderKey(ordered[i])) << ordered[i];
    EXPECT_LT(strverscmp(ordered[i - 1].c_str(), ordered[i].c_str()), 0) << ordered[i];
  }
}

// Names of the characters that matter: digits, and what stands before, between and behind them.
std::string RandomName(std::minstd_rand& random) {
  constexpr std::string_view characters = "0001239aa/:-\x7f\xe9";
  std::string name;
  for (auto size = random() % 24; size != 0; --size)
    name += characters[random() % characters.size()];
  return name;
}

TEST(NodeOrderTest, DifferentKeysCompareAsTheirNames) {
  std::minstd_rand random(1);
  int different = 0;
  for (int i = 0; i < 200000; ++i) {
    std::string a = RandomName(random);
    std::string b = a.substr(0, random() % (a.size() + 1)) + RandomName(random);
    const int order = Compared(NodeOrderKey(a), NodeOrderKey(b));
    if (order == 0) continue;
    ++different;
    ASSERT_EQ(order, Sign(strverscmp(a.c_str(), b.c_str()))) << a << ' ' << b;
  }
  EXPECT_GT(different, 150000);
}

TEST(NodeOrderTest, KeysTellNamesApartThatPartInTheirFirstSixteenBytes) {
  const std::string same(15, 'x');
  EXPECT_LT(NodeOrderKey(same + "a"), NodeOrderKey(same + "b"));
  EXPECT_EQ(NodeOrderKey(same + "xa"), NodeOrderKey(same + "xb"));
}

TEST(NodeOrderTest, BytesThatAreNotAsciiStandBehindAllOthers) {
  EXPECT_LT(NodeOrderKey("leaf"), NodeOrderKey(std::string(20, '\xff')));
  EXPECT_GT(CompareNodeOrder(std::string(20, '\xff').c_str(), 1, "leaf", 1), 0);
}

TEST(NodeOrderTest, KeysOfLongNumbersCompareByTheirLength) {
  const auto number = [](std::size_t digits) { return std::string(digits, '7'); };
  for (std::size_t digits = 1; digits < 264; ++digits) {
    EXPECT_LT(NodeOrderKey(number(digits)), NodeOrderKey(number(digits + 1))) << digits;
  }
  EXPECT_EQ(NodeOrderKey(number(300)), NodeOrderKey(number(301)));
}

// There a key has no room for the length any more.
TEST(NodeOrderTest, KeysOfNumbersOfHundredsOfDigitsSayNothing) {
  const auto number = [](std::size_t digits) { return std::string(digits, '7'); };
  for (std::size_t digits = 264; digits < 600; ++digits) {
    EXPECT_EQ(NodeOrderKey(number(digits) + "b"), NodeOrderKey(number(digits + 1) + "a"));
  }
}

}  // namespace
}  // namespace fabscope::internal
