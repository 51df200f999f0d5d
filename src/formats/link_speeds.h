#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace fabscope {

// The one-bit code of a link speed by its name ("HDR" is 0x400), or nothing.
std::optional<std::uint32_t> SpeedCode(std::string_view name);
// Whether a text is the beginning of some speed's name; an empty one is.
bool IsPrefixOfSpeed(std::string_view text);
// The name of a code, or an empty text.
std::string_view SpeedName(std::uint32_t code);

}  // namespace fabscope
