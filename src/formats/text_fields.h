#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace fabscope {

// A text of the fabric with every ASCII control character turned into "?". Any host may set its own
// description, so names must not carry line ends or terminal escapes into a report.
std::string CleanText(std::string_view text);

bool IsBlank(char c);  // blank, tab or carriage return
bool IsDigit(char c);
// The value of a hexadecimal digit, or -1.
int HexDigit(char c);
std::string_view Trimmed(std::string_view text);

// "0x" and 1 to 16 hexadecimal digits, the whole text.
std::optional<std::uint64_t> ParseGuid(std::string_view text);
// 1 to 16 hexadecimal digits, the whole text.
std::optional<std::uint64_t> ParseHex(std::string_view digits);
// Decimal digits, the whole text, at most `limit`.
std::optional<std::uint64_t> ParseNumber(std::string_view digits, std::uint64_t limit);

// Walks along one line. Positions are offsets into the whole text that the line is part of.
class LineCursor {
 public:
  LineCursor(std::string_view line, std::size_t lineOffset) : line_(line), offset_(lineOffset) {}

  bool AtEnd() const { return at_ == line_.size(); }
  char Peek() const { return AtEnd() ? '\0' : line_[at_]; }
  std::size_t Offset() const { return offset_ + at_; }
  std::string_view Rest() const { return line_.substr(at_); }

  void SkipBlanks();
  bool Take(char c);
  bool Take(std::string_view text);
  // All from here up to a blank or the line's end.
  std::string_view TakeWord();
  template <typename Predicate>
  std::string_view TakeWhile(Predicate predicate) {
    const std::size_t start = at_;
    while (at_ < line_.size() && predicate(line_[at_])) ++at_;
    return line_.substr(start, at_ - start);
  }

 private:
  std::string_view line_;
  std::size_t offset_;
  std::size_t at_ = 0;
};

}  // namespace fabscope
