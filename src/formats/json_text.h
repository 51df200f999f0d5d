#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace fabscope {

// The offset of the first byte that is not part of valid UTF-8; the size if all is.
std::size_t FirstInvalidUtf8(std::string_view text);

// Appends a text as a JSON string, with its quotes. Bytes that are not valid UTF-8 become U+FFFD,
// so that the result is always valid JSON.
void AppendJsonString(std::string& json, std::string_view text);

}  // namespace fabscope
