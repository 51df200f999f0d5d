#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "fat_tree/up_hop_bits.h"

namespace fabscope {

// Finds, among many sets of upper switches, those that lack few switches of another set. The merge
// rule asks for the first such set; with thousands of sets, nearly all too different, asking one
// after another takes seconds. Here 64 sets are asked at a time: for each upper switch a word tells
// which of them hold it, and what they lack is counted for all of them at once.
//
// Sets are known by number, counted from 0.
class MergeIndex {
 public:
  // For sets of which the indices below `size` are looked at.
  MergeIndex(std::size_t setCount, std::size_t size)
      : size_(size), blocks_((setCount + wordBits - 1) / wordBits) {
    for (Block& block : blocks_) block.holders.resize(size);
  }

  // Adds switches to a set. From now on it is asked for sets of which it lacks at most `most`;
  // never less than before.
  void Add(std::size_t number, const UpHopBits& upSet, std::size_t most);
  void Remove(std::size_t number) {
    blocks_[number / wordBits].members &= ~(Word{1} << number % wordBits);
  }

  // Calls visit(number) in ascending order for each set that lacks at most as many switches of
  // `upSet` as it was added with, and perhaps for others; ends when visit answers true.
  template <typename Visit>
  void FindTargets(const UpHopBits& upSet, Visit visit) const {
    std::vector<std::uint16_t> indices;
    upSet.ForEach(size_, [&](std::size_t i) { indices.push_back(static_cast<std::uint16_t>(i)); });
    for (std::size_t b = 0; b < blocks_.size(); ++b) {
      for (Word near = blocks_[b].MembersNear(indices); near != 0; near &= near - 1) {
        if (visit(b * wordBits + static_cast<std::size_t>(std::countr_zero(near)))) return;
      }
    }
  }

 private:
  using Word = std::uint64_t;
  static constexpr std::size_t wordBits = 64;

  struct Block {
    Word members = 0;
    std::size_t most = 0;       // the greatest of the members'
    std::vector<Word> holders;  // by index of the upper switch

    // The members that lack at most `most` of these upper switches.
    Word MembersNear(const std::vector<std::uint16_t>& indices) const;
  };

  std::size_t size_;
  std::vector<Block> blocks_;
};

}  // namespace fabscope
