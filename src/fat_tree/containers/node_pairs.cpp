#include "fat_tree/containers/node_pairs.h"

namespace fabscope::internal {

void NodePairs::Add(const IBNode& first, const IBNode& second) {
  std::uint32_t column = columns_.Get(first);
  if (column == none) columns_.Set(first, column = columnCount_++);
  std::uint32_t row = rows_.Get(second);
  if (row == none) {
    row = static_cast<std::uint32_t>(words_.size() / rowWords_);
    rows_.Set(second, row);
    words_.resize(words_.size() + rowWords_);
  }
  Word& word = words_[row * rowWords_ + column / wordBits];
  const Word bit = Word{1} << column % wordBits;
  size_ += (word & bit) == 0 ? 1 : 0;
  word |= bit;
}

}  // namespace fabscope::internal
