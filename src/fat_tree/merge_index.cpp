#include "fat_tree/merge_index.h"

#include <algorithm>
#include <array>

namespace fabscope {

void MergeIndex::Add(std::size_t number, const UpHopBits& upSet, std::size_t most) {
  Block& block = blocks_[number / wordBits];
  const Word bit = Word{1} << number % wordBits;
  block.members |= bit;
  block.most = std::max(block.most, most);
  upSet.ForEach(size_, [&](std::size_t index) { block.holders[index] |= bit; });
}

// The counts of 64 members stand upright: `digits[d]` holds the d-th binary digit of each. They
// start at the complement of `most`, so that what exceeds it is carried out of the last digit.
MergeIndex::Word MergeIndex::Block::MembersNear(const std::vector<std::uint16_t>& indices) const {
  if (indices.size() <= most) return members;
  const auto digitCount = static_cast<std::size_t>(std::bit_width(most));
  std::array<Word, std::bit_width(MaxUpperSwitches)> digits{};
  for (std::size_t d = 0; d < digitCount; ++d) {
    digits[d] = (most >> d & 1U) == 0 ? ~Word{0} : Word{0};
  }
  Word near = members;
  for (const std::uint16_t index : indices) {
    Word carry = ~holders[index] & near;
    for (std::size_t d = 0; d < digitCount && carry != 0; ++d) {
      const Word next = digits[d] & carry;
      digits[d] ^= carry;
      carry = next;
    }
    near &= ~carry;
    if (near == 0) break;
  }
  return near;
}

}  // namespace fabscope
