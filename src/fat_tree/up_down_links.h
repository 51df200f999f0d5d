#pragma once

#include <cstdint>

namespace fabscope::internal {

// How many cables a switch has towards the roots and away from them.
struct UpDownLinks {
  std::int32_t up = 0;
  std::int32_t down = 0;

  friend bool operator==(const UpDownLinks&, const UpDownLinks&) = default;
};

}  // namespace fabscope::internal
