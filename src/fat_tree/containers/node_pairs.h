#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "fat_tree/containers/node_table.h"

namespace fabscope::internal {

// A set of unordered pairs of nodes, like PairsContainer, for two kinds of nodes with many pairs
// between them: a bit for each.
class NodePairs {
 private:
  using Word = std::uint64_t;
  static constexpr std::size_t wordBits = 64;
  static constexpr std::uint32_t none = ~std::uint32_t{0};

 public:
  NodePairs() = default;
  // For at most that many different first nodes.
  explicit NodePairs(std::size_t firsts) : rowWords_((firsts + wordBits - 1) / wordBits) {}

  void Add(const IBNode& first, const IBNode& second);
  bool Contains(const IBNode& a, const IBNode& b) const { return Test(a, b) || Test(b, a); }
  std::size_t Size() const { return size_; }

  // The pairs of one second node, to ask for many first ones.
  class Row {
   public:
    bool Has(std::uint32_t column) const {
      return words_ != nullptr && column != none &&
             (words_[column / wordBits] >> column % wordBits & 1U) != 0;
    }

   private:
    friend class NodePairs;
    explicit Row(const Word* words) : words_(words) {}

    const Word* words_;  // null: it has none
  };
  Row RowOf(const IBNode& second) const {
    const std::uint32_t row = rows_.Get(second);
    return Row(row != none ? words_.data() + row * rowWords_ : nullptr);
  }
  std::uint32_t ColumnOf(const IBNode& first) const { return columns_.Get(first); }

 private:
  bool Test(const IBNode& first, const IBNode& second) const {
    return RowOf(second).Has(ColumnOf(first));
  }

  std::uint32_t RowFor(const IBNode& second);

  std::size_t rowWords_ = 0;
  std::size_t size_ = 0;
  std::uint32_t lastSecond_ = none;  // IBNode::index of the one that was added to last
  std::uint32_t lastRow_ = none;
  std::uint32_t columnCount_ = 0;
  RankTable<std::uint32_t> columns_{none};  // of first nodes, in the order of their coming
  RankTable<std::uint32_t> rows_{none};     // of second nodes, likewise
  std::vector<Word> words_;                 // row by row
};

}  // namespace fabscope::internal
