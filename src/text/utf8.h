#pragma once

#include <cstddef>
#include <string_view>

namespace fabscope::internal {

// The length of the valid UTF-8 sequence at the start of a text that is not empty, or 0. Overlong
// forms, surrogates and values above U+10FFFF are not valid.
std::size_t SequenceLength(std::string_view text);

// The offset of the first byte that is not part of valid UTF-8; the size if all is.
std::size_t FirstInvalidUtf8(std::string_view text);

// Where the first character stands that makes a terminal or browser show the text around it in
// another order (U+202A to U+202E, U+2066 to U+2069); npos if none does. Each has three bytes.
std::size_t FindBidirectionalControl(std::string_view text, std::size_t from = 0);
inline constexpr std::size_t BidirectionalControlBytes = 3;

}  // namespace fabscope::internal
