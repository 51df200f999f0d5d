#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <string>

namespace fabscope::internal {

// Upper switches by their index on the rank.
inline constexpr std::size_t MaxUpperSwitches = 2048;

// A set of upper switches: a fixed bit set that knows its count. A std::bitset would do, but the
// merge rule compares many sets, and nearly all of these comparisons can end after a few words
// (HasMoreOutside).
class UpHopBits {
 public:
  static constexpr std::size_t size() { return MaxUpperSwitches; }

  bool test(std::size_t index) const {
    return (words_[index / wordBits] >> Shift(index) & 1U) != 0;
  }
  UpHopBits& set(std::size_t index) {
    count_ += test(index) ? 0 : 1;
    words_[index / wordBits] |= Bit(index);
    return *this;
  }
  UpHopBits& reset(std::size_t index) {
    count_ -= test(index) ? 1 : 0;
    words_[index / wordBits] &= ~Bit(index);
    return *this;
  }

  std::size_t count() const { return count_; }
  bool none() const { return count_ == 0; }

  // Calls visit(index) for every index below `size` that is in the set, in ascending order.
  template <typename Visit>
  void ForEach(std::size_t size, Visit visit) const {
    for (std::size_t w = 0; w < wordCount; ++w) {
      for (Word rest = Masked(w, size); rest != 0; rest &= rest - 1) {
        visit(w * wordBits + static_cast<std::size_t>(std::countr_zero(rest)));
      }
    }
  }

  // The same for every index that is in both sets. The visit may take its index out of this one.
  template <typename Visit>
  void ForEachCommon(const UpHopBits& other, Visit visit) const {
    for (std::size_t w = 0; w < wordCount; ++w) {
      for (Word rest = words_[w] & other.words_[w]; rest != 0; rest &= rest - 1) {
        visit(w * wordBits + static_cast<std::size_t>(std::countr_zero(rest)));
      }
    }
  }

  // Whether more than `limit` indices below `size` are in this set and not in `other`.
  bool HasMoreOutside(const UpHopBits& other, std::size_t size, std::size_t limit) const {
    std::size_t outside = 0;
    for (std::size_t w = 0; w < wordCount; ++w) {
      if (words_[w] == 0) continue;
      outside += static_cast<std::size_t>(std::popcount(Masked(w, size) & ~other.words_[w]));
      if (outside > limit) return true;
    }
    return false;
  }

  // What this set has below `size` and `other` has not; the union.
  UpHopBits Outside(const UpHopBits& other, std::size_t size) const {
    return Combined(other, size, [](Word a, Word b) { return a & ~b; });
  }
  UpHopBits United(const UpHopBits& other) const {
    return Combined(other, MaxUpperSwitches, [](Word a, Word b) { return a | b; });
  }

  // The indices below `length` as '0' and '1', the highest first.
  std::string ToText(std::size_t length) const;

  friend bool operator==(const UpHopBits&, const UpHopBits&) = default;

 private:
  using Word = std::uint64_t;
  static constexpr std::size_t wordBits = 64;
  static constexpr std::size_t wordCount = MaxUpperSwitches / wordBits;

  static std::size_t Shift(std::size_t index) { return index % wordBits; }
  static Word Bit(std::size_t index) { return Word{1} << Shift(index); }

  // A word without the indices from `size` on.
  Word Masked(std::size_t w, std::size_t size) const {
    if (size >= (w + 1) * wordBits) return words_[w];
    if (size <= w * wordBits) return 0;
    return words_[w] & (Bit(size) - 1);
  }

  template <typename Combine>
  UpHopBits Combined(const UpHopBits& other, std::size_t size, Combine combine) const {
    UpHopBits result;
    for (std::size_t w = 0; w < wordCount; ++w) {
      result.words_[w] = combine(Masked(w, size), other.words_[w]);
      result.count_ += static_cast<std::size_t>(std::popcount(result.words_[w]));
    }
    return result;
  }

  std::size_t count_ = 0;
  std::array<Word, wordCount> words_{};
};

}  // namespace fabscope::internal
