#include "fabric/text_arena.h"

#include <cstddef>
#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace fabscope::internal {
namespace {

// Longer than any block that is made for many texts.
constexpr std::size_t longerThanABlock = (std::size_t{1} << 20U) + 1;

TEST(TextArenaTest, TextsStayWhereTheyAreWhenMoreCome) {
  TextArena arena;
  std::vector<std::string> texts;
  std::vector<std::string_view> kept;
  for (std::size_t i = 0; i < 100000; ++i) {
    texts.push_back("text " + std::to_string(i) + std::string(i % 40, 'x'));
    kept.push_back(arena.Keep(texts.back()));
  }
  for (std::size_t i = 0; i < texts.size(); ++i) ASSERT_EQ(kept[i], texts[i]);
}

TEST(TextArenaTest, AZeroFollowsEachText) {
  TextArena arena;
  std::vector<std::string_view> kept;
  for (std::size_t size = 0; size < 3000; ++size)
    kept.push_back(arena.Keep(std::string(size, 'x')));
  for (const std::string_view text : kept)
    ASSERT_EQ(*(text.data() + text.size()), '\0') << text.size();
}

TEST(TextArenaTest, TextsThatFillABlockToItsEndAreKept) {
  for (std::size_t size = 1020; size < 1028; ++size) {
    TextArena arena;
    const std::string text(size, 'x');
    const std::string_view first = arena.Keep(text);
    const std::string_view next = arena.Keep("next");
    EXPECT_EQ(first, text);
    EXPECT_STREQ(first.data(), text.c_str());
    EXPECT_EQ(next, "next");
  }
}

TEST(TextArenaTest, TextsLongerThanABlockAreKept) {
  TextArena arena;
  const std::string_view before = arena.Keep("before");
  const std::string text(longerThanABlock, 'x');
  const std::string_view kept = arena.Keep(text);
  const std::string_view behind = arena.Keep("behind");
  EXPECT_EQ(kept, text);
  EXPECT_EQ(*(kept.data() + kept.size()), '\0');
  EXPECT_EQ(before, "before");
  EXPECT_EQ(behind, "behind");
}

TEST(TextArenaTest, EmptyTextsAreKept) {
  TextArena arena;
  const std::string_view first = arena.Keep("");
  const std::string_view between = arena.Keep("between");
  const std::string_view last = arena.Keep("");
  EXPECT_EQ(between, "between");
  for (const std::string_view empty : {first, last}) {
    EXPECT_TRUE(empty.empty());
    ASSERT_NE(empty.data(), nullptr);
    EXPECT_STREQ(empty.data(), "");
  }
}

TEST(TextArenaTest, TextsStayWhenTheArenaMoves) {
  TextArena arena;
  const std::string_view kept = arena.Keep("kept");
  const TextArena moved = std::move(arena);
  EXPECT_EQ(kept, "kept");
}

}  // namespace
}  // namespace fabscope::internal
