#pragma once

#include <string>
#include <string_view>

namespace fabscope::internal {

// Appends a text as a JSON string, with its quotes. Bytes that are not valid UTF-8 become U+FFFD,
// so that the result is always valid JSON; bidirectional controls become escapes, so that it shows
// as it is.
void AppendJsonString(std::string& json, std::string_view text);

}  // namespace fabscope::internal
