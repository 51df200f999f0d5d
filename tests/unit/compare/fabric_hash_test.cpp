#include "compare/fabric_hash.h"

#include <gtest/gtest.h>

#include "support/test_fabric.h"

namespace fabscope::internal {
namespace {

// The ends and the port of a cable can be given.
std::string HashOf(const std::string& from, std::uint8_t port, const std::string& to) {
  TestFabric fabric;
  fabric.SwitchOfGuid(1, "a").SwitchOfGuid(2, "b").SwitchOfGuid(3, "c");
  fabric.Link(from, port, to, 5);
  return FabricHash(fabric.Build());
}

TEST(FabricHashTest, IsSha256OfSortedLines) {
  TestFabric fabric;
  fabric.SwitchOfGuid(0xb, "b").SwitchOfGuid(0xa, "a").Link("b", 2, "a", 10);
  // printf 'cable 0x000000000000000a 010 0x000000000000000b 002\nnode 0x000000000000000a 2\nnode
  // 0x000000000000000b 2\n' | sha256sum
  EXPECT_EQ(FabricHash(fabric.Build()),
            "sha256:ca2d5dfc12f434a8d86a01a16c0db89106a0acf1a431106b3e797bf2f34a7254");
}

TEST(FabricHashTest, OrderNamesAndSpeedsDoNotMatter) {
  TestFabric one;
  one.SwitchOfGuid(1, "a").SwitchOfGuid(2, "b").Link("a", 1, "b", 2);
  TestFabric other;
  other.SwitchOfGuid(2, "x").SwitchOfGuid(1, "y").Link("x", 2, "y", 1, true, 0x200);
  EXPECT_EQ(FabricHash(one.Build()), FabricHash(other.Build()));
}

TEST(FabricHashTest, EveryEndOfACableMatters) {
  EXPECT_EQ(HashOf("a", 1, "b"), HashOf("a", 1, "b"));
  EXPECT_NE(HashOf("a", 1, "b"), HashOf("a", 2, "b"));
  EXPECT_NE(HashOf("a", 1, "b"), HashOf("a", 1, "c"));
  EXPECT_NE(HashOf("a", 1, "b"), HashOf("c", 1, "b"));
}

TEST(FabricHashTest, TypesMatter) {
  TestFabric one;
  one.Switch("a");
  TestFabric other;
  other.Host("a");
  EXPECT_NE(FabricHash(one.Build()), FabricHash(other.Build()));
}

}  // namespace
}  // namespace fabscope::internal
