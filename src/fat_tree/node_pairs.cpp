#include "fat_tree/node_pairs.h"

namespace fabscope {

void NodePairs::Add(const IBNode& first, const IBNode& second) {
  if (!columns_.Has(first)) columns_.Set(first, columnCount_++);
  if (!rows_.Has(second)) {
    rows_.Set(second, static_cast<std::uint32_t>(words_.size() / rowWords_));
    words_.resize(words_.size() + rowWords_);
  }
  const std::uint32_t column = columns_.Get(first);
  Word& word = words_[rows_.Get(second) * rowWords_ + column / wordBits];
  const Word bit = Word{1} << column % wordBits;
  size_ += (word & bit) == 0 ? 1 : 0;
  word |= bit;
}

}  // namespace fabscope
