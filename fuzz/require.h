#pragma once

#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace fabscope::internal::fuzz {

// What always holds. If it does not, says so and ends as libFuzzer expects it of a finding.
inline void Require(bool holds, const char* promise) {
  if (holds) return;
  std::fprintf(stderr, "broken promise: %s\n", promise);
  std::abort();
}

inline void RequireSame(std::string_view left, std::string_view right, const char* promise) {
  if (left == right) return;
  std::fprintf(stderr, "--- one\n%.*s\n--- the other\n%.*s\n", static_cast<int>(left.size()),
               left.data(), static_cast<int>(right.size()), right.data());
  Require(false, promise);
}

}  // namespace fabscope::internal::fuzz
