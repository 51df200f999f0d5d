#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace fabscope::internal {

// Why an input could not be read, and where. Lines and columns (in bytes) count from 1; line 0
// means the file as a whole.
struct InputError {
  std::string file;
  std::size_t line = 0;
  std::size_t column = 0;
  std::string message;

  // "FILE:LINE:COLUMN: message", or "FILE: message".
  std::string Text() const;
};

// A loader's answer: nothing when all went well.
using MaybeError = std::optional<InputError>;

// What some editors put in front of a UTF-8 text.
inline constexpr std::string_view ByteOrderMark = "\xef\xbb\xbf";

// An error at a byte of a text.
InputError ErrorAt(const std::string& file, std::string_view text, std::size_t offset,
                   std::string message);

enum class WarningKind {
  UnknownLine,
  UnknownNodeType,
  LineOutsideRecord,
  RepeatedPort,
  LongText,
  UnknownSpeed,
  PeerWithoutRecord,
  EndsDisagree,
  PortCabledToItself,
  NotASwitch,
  Count_,
};

// Oddities of one input file that do not keep it from being read. Of each kind the first ten are
// kept, the others only counted: a large fabric can have thousands.
class Warnings {
 public:
  static constexpr std::size_t MaxOfAKind = 10;

  // Counts one; true when its text is wanted, and Add must follow.
  bool Count(WarningKind kind);
  void Add(std::size_t line, std::string message);

  // "FILE:LINE: warning: message" in the order of the lines, then "FILE: warning: N more: ..." for
  // each kind with more than ten.
  std::vector<std::string> Lines(const std::string& file) const;

 private:
  struct Entry {
    std::size_t line;
    std::string message;
  };

  std::vector<Entry> entries_;
  std::array<std::size_t, static_cast<std::size_t>(WarningKind::Count_)> counts_{};
};

}  // namespace fabscope::internal
