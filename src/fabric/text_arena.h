#pragma once

#include <cstddef>
#include <string_view>
#include <utility>
#include <vector>

namespace fabscope::internal {

// Keeps texts one behind the other in a few large blocks. They never move, and each ends in a zero
// for functions of C.
class TextArena {
 public:
  TextArena() = default;
  TextArena(TextArena&& other) noexcept { *this = std::move(other); }
  TextArena& operator=(TextArena&& other) noexcept {
    blocks_ = std::exchange(other.blocks_, {});
    free_ = std::exchange(other.free_, nullptr);
    left_ = std::exchange(other.left_, 0);
    next_ = other.next_;
    return *this;
  }
  TextArena(const TextArena&) = delete;
  TextArena& operator=(const TextArena&) = delete;
  ~TextArena() = default;

  std::string_view Keep(std::string_view text);

 private:
  std::vector<std::vector<char>> blocks_;
  char* free_ = nullptr;
  std::size_t left_ = 0;
  std::size_t next_ = std::size_t{1} << 10U;  // how large the next block is
};

}  // namespace fabscope::internal
