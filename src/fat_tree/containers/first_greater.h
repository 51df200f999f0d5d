#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace fabscope::internal {

// A value for each of some places, 0 at first. Finds the first place whose value exceeds a limit in
// as many steps as the count of places has binary digits: a tree, every node of which knows the
// greatest value below it.
class FirstGreater {
 public:
  static constexpr std::size_t None = ~std::size_t{0};

  explicit FirstGreater(std::size_t places)
      : leaves_(std::bit_ceil(places)), greatest_(2 * leaves_) {}

  std::int64_t Get(std::size_t place) const { return greatest_[leaves_ + place]; }

  // Values are not negative.
  void Set(std::size_t place, std::int64_t value) {
    std::size_t node = leaves_ + place;
    greatest_[node] = value;
    while (node > 1) {
      node /= 2;
      greatest_[node] = std::max(greatest_[2 * node], greatest_[2 * node + 1]);
    }
  }

  std::int64_t Greatest() const { return greatest_[1]; }

  // None where no value exceeds the limit, which is not negative.
  std::size_t Find(std::int64_t limit) const {
    if (greatest_[1] <= limit) return None;
    std::size_t node = 1;
    while (node < leaves_) {
      node *= 2;
      if (greatest_[node] <= limit) ++node;
    }
    return node - leaves_;
  }

 private:
  std::size_t leaves_;                  // a power of two
  std::vector<std::int64_t> greatest_;  // node n has the children 2n and 2n + 1, the root is 1
};

}  // namespace fabscope::internal
