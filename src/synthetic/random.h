#pragma once

#include <cstddef>
#include <cstdint>
#include <random>
#include <utility>
#include <vector>

namespace fabscope::internal {

// Chance that a seed decides: the same numbers on every machine and with every library, which the
// distributions of the standard library do not promise.
class Random {
 public:
  explicit Random(std::uint64_t seed) : engine_(seed) {}

  // Below `limit`, all equally likely. `limit` is not 0.
  std::uint64_t Below(std::uint64_t limit) {
    const std::uint64_t unfair = (std::mt19937_64::max() % limit + 1) % limit;
    std::uint64_t number = engine_();
    while (number > std::mt19937_64::max() - unfair) number = engine_();
    return number % limit;
  }

  template <typename T>
  const T& Pick(const std::vector<T>& items) {
    return items[static_cast<std::size_t>(Below(items.size()))];
  }

  template <typename T>
  void Shuffle(std::vector<T>& items) {
    for (std::size_t i = items.size(); i > 1; --i) {
      std::swap(items[i - 1], items[static_cast<std::size_t>(Below(i))]);
    }
  }

 private:
  std::mt19937_64 engine_;
};

}  // namespace fabscope::internal
