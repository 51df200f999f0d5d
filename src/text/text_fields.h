#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>

namespace fabscope::internal {

// A text of the fabric with every control character turned into "?": of ASCII, and of C1 (U+0080 to
// U+009F, or the bare bytes, which some terminals obey as well). Any host may set its own
// description, so names must not carry line ends or terminal escapes into a report.
std::string CleanText(std::string_view text);
// As people are to see it: with "?" for each bidirectional control, which could make one name look
// like another.
std::string TextForPeople(std::string_view text);
void WriteForPeople(std::string_view text, std::ostream& stream);
// The same of all that `write` writes.
void WriteForPeople(std::ostream& stream, const std::function<void(std::ostream&)>& write);

// Cuts a text of the fabric that is longer than this, at a whole character, and tells whether it
// was. Descriptions have 64 bytes in this field; of a longer one every report would have copies.
inline constexpr std::size_t MostTextBytes = 256;
bool CutText(std::string& text);

// Blank, tab or carriage return.
inline bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\r'; }
inline bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// By character: the value of a hexadecimal digit, or -1.
inline constexpr std::array<std::int8_t, 256> HexDigits = [] {
  std::array<std::int8_t, 256> values{};
  values.fill(-1);
  for (std::size_t i = 0; i < 10; ++i) values['0' + i] = static_cast<std::int8_t>(i);
  for (std::size_t i = 0; i < 6; ++i) {
    values['a' + i] = values['A' + i] = static_cast<std::int8_t>(10 + i);
  }
  return values;
}();
inline int HexDigit(char c) { return HexDigits[static_cast<unsigned char>(c)]; }

inline std::string_view Trimmed(std::string_view text) {
  while (!text.empty() && IsBlank(text.front())) text.remove_prefix(1);
  while (!text.empty() && IsBlank(text.back())) text.remove_suffix(1);
  return text;
}

// "0x" and 1 to 16 hexadecimal digits, the whole text.
std::optional<std::uint64_t> ParseGuid(std::string_view text);
// 1 to 16 hexadecimal digits, the whole text.
inline std::optional<std::uint64_t> ParseHex(std::string_view digits) {
  if (digits.empty() || digits.size() > 16) return std::nullopt;
  std::uint64_t value = 0;
  int all = 0;
  for (const char c : digits) {
    const int digit = HexDigit(c);
    all |= digit;
    value = value << 4U | (static_cast<std::uint64_t>(digit) & 0xfU);
  }
  return all < 0 ? std::optional<std::uint64_t>() : value;
}
// Decimal digits, the whole text, at most `limit`.
inline std::optional<std::uint64_t> ParseNumber(std::string_view digits, std::uint64_t limit) {
  if (digits.empty()) return std::nullopt;
  std::uint64_t value = 0;
  for (const char c : digits) {
    const auto digit = static_cast<std::uint64_t>(c - '0');
    if (!IsDigit(c) || value > limit / 10 || digit > limit - value * 10) return std::nullopt;
    value = value * 10 + digit;
  }
  return value;
}

// Walks along one line. Positions are offsets into the whole text that the line is part of.
class LineCursor {
 public:
  LineCursor(std::string_view line, std::size_t lineOffset) : line_(line), offset_(lineOffset) {}

  bool AtEnd() const { return at_ == line_.size(); }
  char Peek() const { return AtEnd() ? '\0' : line_[at_]; }
  std::size_t Offset() const { return offset_ + at_; }
  std::string_view Rest() const { return {line_.data() + at_, line_.size() - at_}; }

  void SkipBlanks() {
    TakeWhile([](char c) { return IsBlank(c); });
  }
  bool Take(char c) {
    if (AtEnd() || line_[at_] != c) return false;
    ++at_;
    return true;
  }
  bool Take(std::string_view text) {
    if (Peek() != text.front() || !Rest().starts_with(text)) return false;
    at_ += text.size();
    return true;
  }
  // All from here up to a blank or the line's end.
  std::string_view TakeWord() {
    return TakeWhile([](char c) { return !IsBlank(c); });
  }
  template <typename Predicate>
  std::string_view TakeWhile(Predicate predicate) {
    // Kept apart from at_, which the compiler would store at every step.
    const std::string_view rest = Rest();
    std::size_t size = 0;
    while (size < rest.size() && predicate(rest[size])) ++size;
    at_ += size;
    return rest.substr(0, size);
  }

 private:
  std::string_view line_;
  std::size_t offset_;
  std::size_t at_ = 0;
};

}  // namespace fabscope::internal
