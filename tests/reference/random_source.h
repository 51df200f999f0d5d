#pragma once

#include <cstdint>
#include <random>
#include <utility>
#include <vector>

namespace fabscope::internal::reference {

// Random numbers that are the same on every machine: the engine's output is fixed by the language's
// standard, and so is the reduction below, which the library's distributions are not.
//
// Draw at most one number in an expression whose parts have no order (arguments of a call, operands
// of +): compilers differ there.
class RandomSource {
 public:
  explicit RandomSource(std::uint64_t seed) : engine_(seed) {}

  // 0 to count - 1; count is above 0. The small preference for low numbers does not matter here.
  int Below(int count) { return static_cast<int>(engine_() % static_cast<std::uint64_t>(count)); }
  int Between(int least, int greatest) { return least + Below(greatest - least + 1); }
  bool Chance(int percent) { return Below(100) < percent; }

  template <typename T>
  T Pick(const std::vector<T>& items) {
    return items[static_cast<std::size_t>(Below(static_cast<int>(items.size())))];
  }

  template <typename T>
  void Shuffle(std::vector<T>& items) {
    for (std::size_t left = items.size(); left > 1; --left) {
      std::swap(items[left - 1], items[static_cast<std::size_t>(Below(static_cast<int>(left)))]);
    }
  }

 private:
  std::mt19937_64 engine_;
};

}  // namespace fabscope::internal::reference
