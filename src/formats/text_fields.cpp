#include "formats/text_fields.h"

#include <charconv>

namespace fabscope {

std::string CleanText(std::string_view text) {
  std::string clean(text);
  for (char& c : clean) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x20 || byte == 0x7f) c = '?';
  }
  return clean;
}

bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\r'; }
bool IsDigit(char c) { return c >= '0' && c <= '9'; }

int HexDigit(char c) {
  if (IsDigit(c)) return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

std::string_view Trimmed(std::string_view text) {
  while (!text.empty() && IsBlank(text.front())) text.remove_prefix(1);
  while (!text.empty() && IsBlank(text.back())) text.remove_suffix(1);
  return text;
}

std::optional<std::uint64_t> ParseHex(std::string_view digits) {
  if (digits.empty() || digits.size() > 16) return std::nullopt;
  std::uint64_t value = 0;
  for (const char c : digits) {
    const int digit = HexDigit(c);
    if (digit < 0) return std::nullopt;
    value = value << 4 | static_cast<std::uint64_t>(digit);
  }
  return value;
}

std::optional<std::uint64_t> ParseGuid(std::string_view text) {
  if (!text.starts_with("0x")) return std::nullopt;
  return ParseHex(text.substr(2));
}

std::optional<std::uint64_t> ParseNumber(std::string_view digits, std::uint64_t limit) {
  std::uint64_t value = 0;
  const char* end = digits.data() + digits.size();
  const auto [stop, status] = std::from_chars(digits.data(), end, value);
  if (status != std::errc() || stop != end || value > limit) return std::nullopt;
  return value;
}

void LineCursor::SkipBlanks() {
  while (at_ < line_.size() && IsBlank(line_[at_])) ++at_;
}

bool LineCursor::Take(char c) {
  if (Peek() != c || AtEnd()) return false;
  ++at_;
  return true;
}

bool LineCursor::Take(std::string_view text) {
  if (!Rest().starts_with(text)) return false;
  at_ += text.size();
  return true;
}

std::string_view LineCursor::TakeWord() {
  return TakeWhile([](char c) { return !IsBlank(c); });
}

}  // namespace fabscope
