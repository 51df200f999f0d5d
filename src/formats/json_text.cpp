#include "formats/json_text.h"

#include <algorithm>
#include <fmt/format.h>
#include <iterator>

namespace fabscope {
namespace {

bool IsContinuation(std::string_view text, std::size_t at) {
  return at < text.size() && (static_cast<unsigned char>(text[at]) & 0xc0U) == 0x80U;
}

// The length of the valid UTF-8 sequence at the start of a text, or 0. Overlong forms, surrogates
// and values above U+10FFFF are not valid.
std::size_t SequenceLength(std::string_view text) {
  const auto lead = static_cast<unsigned char>(text[0]);
  if (lead < 0x80) return 1;
  if (!IsContinuation(text, 1)) return 0;
  const auto second = static_cast<unsigned char>(text[1]);
  if (lead >= 0xc2 && lead <= 0xdf) return 2;
  if (!IsContinuation(text, 2)) return 0;
  if (lead == 0xe0 && second < 0xa0) return 0;
  if (lead == 0xed && second > 0x9f) return 0;
  if (lead >= 0xe0 && lead <= 0xef) return 3;
  if (!IsContinuation(text, 3)) return 0;
  if (lead == 0xf0 && second < 0x90) return 0;
  if (lead == 0xf4 && second > 0x8f) return 0;
  return lead >= 0xf0 && lead <= 0xf4 ? 4 : 0;
}

// Stands in a JSON string as it is, whatever is next to it.
bool IsPlain(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return byte >= 0x20 && byte < 0x80 && c != '"' && c != '\\';
}

}  // namespace

std::size_t FirstInvalidUtf8(std::string_view text) {
  std::size_t at = 0;
  while (at < text.size()) {
    const std::size_t length = SequenceLength(text.substr(at));
    if (length == 0) break;
    at += length;
  }
  return at;
}

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

}  // namespace fabscope
