#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

namespace fabscope::internal {

// Keeps texts, one behind the other in a few large blocks. They stay where they are, and behind
// each one stands a zero.
class TextArena {
 public:
  std::string_view Keep(std::string_view text);

 private:
  std::vector<std::vector<char>> blocks_;
  char* free_ = nullptr;
  std::size_t left_ = 0;
  std::size_t next_ = std::size_t{1} << 10U;  // how large the next block is
};

}  // namespace fabscope::internal
