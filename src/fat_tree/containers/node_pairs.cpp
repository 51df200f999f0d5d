#include "fat_tree/containers/node_pairs.h"

namespace fabscope::internal {

void NodePairs::Add(const IBNode& first, const IBNode& second) {
  std::uint32_t column = columns_.Get(first);
  if (column == none) columns_.Set(first, column = columnCount_++);
  Word& word = words_[RowFor(second) * rowWords_ + column / wordBits];
  const Word bit = Word{1} << column % wordBits;
  size_ += (word & bit) == 0 ? 1 : 0;
  word |= bit;
}

// All pairs of a second node mostly come one behind the other.
std::uint32_t NodePairs::RowFor(const IBNode& second) {
  if (second.index == lastSecond_) return lastRow_;
  lastSecond_ = second.index;
  lastRow_ = rows_.Get(second);
  if (lastRow_ == none) {
    lastRow_ = static_cast<std::uint32_t>(words_.size() / rowWords_);
    rows_.Set(second, lastRow_);
    words_.resize(words_.size() + rowWords_);
  }
  return lastRow_;
}

}  // namespace fabscope::internal
