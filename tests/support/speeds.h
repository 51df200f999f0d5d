#pragma once

#include <cstdint>

namespace fabscope::internal {

inline constexpr std::uint32_t hdr = 0x400;  // what generated cables have by default

}  // namespace fabscope::internal
