#pragma once

#include <cstdint>

namespace fabscope::internal {

// An aggregated port: the ports of several planes that work as one. Its member ports point to it.
struct APort {
  // Not 0 when the fabric found the member ports to differ from each other.
  std::uint64_t asymmetry = 0;
};

}  // namespace fabscope::internal
