#include "text/json_text.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
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

constexpr std::uint64_t InEveryByte(char byte) {
  return static_cast<unsigned char>(byte) * 0x0101010101010101U;
}

// The same of eight bytes at once: the highest bit of a byte is set where it is not ASCII, or where
// a subtraction borrows from it. A borrow can only come from a byte that is not plain itself.
bool ArePlain(std::uint64_t word) {
  const std::uint64_t quotes = (word ^ InEveryByte('"')) - InEveryByte(1);
  const std::uint64_t backslashes = (word ^ InEveryByte('\\')) - InEveryByte(1);
  const std::uint64_t controls = word - InEveryByte(' ');
  return ((word | quotes | backslashes | controls) & InEveryByte('\x80')) == 0;
}

// How many bytes at the start are plain. Nearly all are, and a report can have a gigabyte of them.
std::size_t PlainLength(std::string_view text) {
  std::size_t length = 0;
  for (std::uint64_t word = 0; length + sizeof word <= text.size(); length += sizeof word) {
    std::memcpy(&word, &text[length], sizeof word);
    if (!ArePlain(word)) break;
  }
  while (length < text.size() && IsPlain(text[length])) ++length;
  return length;
}

}  // namespace

void AppendJsonString(std::string& json, std::string_view text) {
  json += '"';
  while (!text.empty()) {
    const std::size_t plain = PlainLength(text);
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
