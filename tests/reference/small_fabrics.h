#pragma once

#include <cstdint>

#include "reference/random_fabric.h"

namespace fabscope::internal::reference {

// Every fabric of so many switches that has at most one cable between two of them and a host at any
// of them, each with automatic roots and with every choice of given roots, also none. The cases are
// numbered from 0: fabrics with automatic roots first, then those with given ones.
class SmallFabrics {
 public:
  explicit SmallFabrics(int switches);

  std::uint64_t CountAutomatic() const { return graphs_ * choices_; }
  std::uint64_t Count() const { return CountAutomatic() * (1 + choices_); }
  PlainCase Case(std::uint64_t number) const;

 private:
  int switches_;
  std::uint64_t graphs_;   // sets of cables
  std::uint64_t choices_;  // sets of switches
};

}  // namespace fabscope::internal::reference
