#pragma once

#include <optional>
#include <string_view>

namespace fabscope::internal::fuzz {

// UTF-8 read plainly, by the values of its characters; it shares nothing with src/formats.

// Takes the character at the beginning of a text that is not empty. Nothing where none is: then it
// takes one byte.
std::optional<char32_t> TakeCharacter(std::string_view& text);

bool IsUtf8(std::string_view text);

// Whether a control character is in it: of ASCII, or of C1, be it a character or a bare byte.
bool HasControls(std::string_view text);

// Whether a character is in it that turns the order of those around it.
bool HasBidirectionalControls(std::string_view text);

}  // namespace fabscope::internal::fuzz
