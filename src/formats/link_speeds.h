#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "fabric/ib_port.h"

namespace fabscope::internal {

// The one-bit code of a link speed by its name ("HDR" is 0x400), or nothing.
std::optional<std::uint32_t> SpeedCode(std::string_view name);
// Whether a text is the beginning of some speed's name; an empty one is.
bool IsPrefixOfSpeed(std::string_view text);
// The name of a code, or an empty text.
std::string_view SpeedName(std::uint32_t code);

// The speed of a port for people: its name, the number of a code that has none, or an empty text
// where it is not known.
std::string SpeedText(std::uint32_t code);
// That of a cable: "HDR", or "HDR/EDR" where its ends differ.
std::string SpeedText(const IBPort& source, const IBPort& target);

}  // namespace fabscope::internal
