#pragma once

#include <algorithm>
#include <cstddef>
#include <functional>
#include <set>
#include <utility>

namespace fabscope::internal {

// A set of unordered pairs: {a, b} and {b, a} are one entry. It exists because a link is met from
// both of its ends, and must be known again from either.
template <typename T>
class PairsContainer {
 public:
  void Add(T a, T b) { pairs_.insert(Normalised(a, b)); }
  bool Contains(T a, T b) const { return pairs_.count(Normalised(a, b)) != 0; }
  std::size_t Size() const { return pairs_.size(); }

 private:
  static std::pair<T, T> Normalised(T a, T b) { return std::minmax(a, b, std::greater<T>()); }

  std::set<std::pair<T, T>> pairs_;  // (larger, smaller)
};

}  // namespace fabscope::internal
