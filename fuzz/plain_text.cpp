#include "fuzz/plain_text.h"

#include <array>
#include <cstddef>

namespace fabscope::internal::fuzz {
namespace {

// How characters of so many bytes begin, and the lowest value that needs as many.
struct Form {
  unsigned char mask;
  unsigned char lead;
  std::size_t size;
  char32_t lowest;
};
constexpr std::array<Form, 4> forms{
    {{0x80, 0x00, 1, 0}, {0xe0, 0xc0, 2, 0x80}, {0xf0, 0xe0, 3, 0x800}, {0xf8, 0xf0, 4, 0x10000}}};

std::optional<char32_t> Decoded(std::string_view text, const Form& form) {
  if (text.size() < form.size) return std::nullopt;
  char32_t value = static_cast<unsigned char>(text[0]) & static_cast<unsigned char>(~form.mask);
  for (const char c : text.substr(1, form.size - 1)) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x80 || byte > 0xbf) return std::nullopt;
    value = value * 64 + (byte - 0x80);
  }
  const bool isSurrogate = value >= 0xd800 && value <= 0xdfff;
  if (value < form.lowest || value > 0x10ffff || isSurrogate) return std::nullopt;
  return value;
}

}  // namespace

std::optional<char32_t> TakeCharacter(std::string_view& text) {
  for (const Form& form : forms) {
    if ((static_cast<unsigned char>(text[0]) & form.mask) != form.lead) continue;
    const auto value = Decoded(text, form);
    text.remove_prefix(value ? form.size : 1);
    return value;
  }
  text.remove_prefix(1);
  return std::nullopt;
}

bool IsUtf8(std::string_view text) {
  while (!text.empty()) {
    if (!TakeCharacter(text)) return false;
  }
  return true;
}

bool HasControls(std::string_view text) {
  while (!text.empty()) {
    const auto first = static_cast<unsigned char>(text[0]);
    const char32_t value = TakeCharacter(text).value_or(first);
    if (value < 0x20 || (value >= 0x7f && value < 0xa0)) return true;
  }
  return false;
}

bool HasBidirectionalControls(std::string_view text) {
  while (!text.empty()) {
    const char32_t value = TakeCharacter(text).value_or(0);
    if ((value >= 0x202a && value <= 0x202e) || (value >= 0x2066 && value <= 0x2069)) return true;
  }
  return false;
}

}  // namespace fabscope::internal::fuzz
