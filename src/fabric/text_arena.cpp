#include "fabric/text_arena.h"

#include <algorithm>

namespace fabscope::internal {

std::string_view TextArena::Keep(std::string_view text) {
  const std::size_t size = text.size() + 1;
  if (size > left_) {
    constexpr std::size_t largest = std::size_t{1} << 20U;
    const std::size_t room = std::max(next_, size);
    free_ = blocks_.emplace_back(room).data();
    left_ = room;
    next_ = std::min(next_ * 2, largest);
  }
  char* const kept = free_;
  *std::copy(text.begin(), text.end(), kept) = 0;
  free_ += size;
  left_ -= size;
  return {kept, text.size()};
}

}  // namespace fabscope::internal
