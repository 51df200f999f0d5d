#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace fabscope::internal {

// A set of ports, of which each has a number among all that the nodes of a fabric can have. One bit
// for each of these.
class PortSet {
 public:
  // From now on all ports below `count` can be in it. None is taken out.
  void Grow(std::size_t count) {
    words_.resize((count + bitsOfWord - 1) / bitsOfWord);
    size_ = count;
  }
  std::size_t size() const { return size_; }

  // Only of ports below the size.
  bool Has(std::size_t port) const {
    return (words_[port / bitsOfWord] >> port % bitsOfWord & 1U) != 0;
  }
  void Insert(std::size_t port) { words_[port / bitsOfWord] |= BitOf(port); }
  void Erase(std::size_t port) { words_[port / bitsOfWord] &= ~BitOf(port); }

 private:
  static constexpr std::size_t bitsOfWord = 64;
  static std::uint64_t BitOf(std::size_t port) { return std::uint64_t{1} << port % bitsOfWord; }

  std::vector<std::uint64_t> words_;
  std::size_t size_ = 0;
};

}  // namespace fabscope::internal
