#include "fabric/text_arena.h"

#include <algorithm>

namespace fabscope::internal {

std::string_view TextArena::Keep(std::string_view text) {
  const std::size_t size = text.size() + 1;
  if (size > left_) {
    constexpr std::size_t largest = std::size_t{1} << 20U;
    left_ = std::max(next_, size);
    next_ = std::min(next_ * 2, largest);
    free_ = blocks_.emplace_back(left_).data();
  }
  char* const kept = free_;
  *std::copy(text.begin(), text.end(), kept) = 0;
  free_ += size;
  left_ -= size;
  return {kept, text.size()};
}

}  // namespace fabscope::internal
