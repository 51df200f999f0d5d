#pragma once

#include <cstdint>
#include <string_view>

namespace fabscope::internal {

// How much the C library makes of a POSIX extended regular expression. It writes a repetition out,
// calls itself for every group inside a group, and once for every part that takes no character when
// it looks for what may come next; all three can end the process. An expression that does not
// compile has some size, too. Numbers stop at mostCounted.
struct RegExpSize {
  std::int64_t depth = 0;  // groups inside each other
  std::int64_t parts = 0;  // characters, groups and operators with all repetitions written out
  std::int64_t empty = 0;  // parts in a row that take no character; "^" and the like count 20 times
};

inline constexpr std::int64_t mostCounted = 1'000'000'000;

RegExpSize SizeOf(std::string_view expression);

}  // namespace fabscope::internal
