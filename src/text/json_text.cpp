#include "text/json_text.h"

#include <algorithm>
#include <fmt/format.h>
#include <iterator>

#include "text/utf8.h"

namespace fabscope::internal {
namespace {

// Stands in a JSON string as it is, whatever is next to it.
bool IsPlain(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return byte >= 0x20 && byte < 0x80 && c != '"' && c != '\\';
}

}  // namespace

void AppendJsonString(std::string& json, std::string_view text) {
  json += '"';
  while (!text.empty()) {
    // Nearly all text is plain, and a report can have a gigabyte of it.
    const auto plain = static_cast<std::size_t>(
        std::find_if_not(text.begin(), text.end(), IsPlain) - text.begin());
    json += text.substr(0, plain);
    text.remove_prefix(plain);
    if (text.empty()) break;

    const char c = text[0];
    const std::size_t length = SequenceLength(text);
    if (length == 0) {
      json += "\xef\xbf\xbd";
    } else if (FindBidirectionalControl(text.substr(0, length)) == 0) {
      // All of them are U+20xx.
      const auto low =
          (static_cast<unsigned>(text[1]) & 0x3U) << 6U | (static_cast<unsigned>(text[2]) & 0x3fU);
      fmt::format_to(std::back_inserter(json), "\\u20{:02x}", low);
    } else if (length > 1) {
      json += text.substr(0, length);
    } else if (c == '"' || c == '\\') {
      json += '\\';
      json += c;
    } else {
      fmt::format_to(std::back_inserter(json), "\\u{:04x}", static_cast<unsigned>(c));
    }
    text.remove_prefix(std::max<std::size_t>(length, 1));
  }
  json += '"';
}

}  // namespace fabscope::internal
