#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "formats/diagnostics.h"
#include "formats/input.h"

namespace fabscope::internal {

struct Line {
  std::string_view text;   // without its end, "\n" or "\r\n"; valid until the next one is read
  std::size_t number = 0;  // from 1
  std::size_t offset = 0;  // of its first byte: not 0 only behind a byte order mark
  bool hasEnd = false;     // the last one may lack it
};

// Reads an input line by line, and knows the place of everything in it.
class LineReader {
 public:
  explicit LineReader(Input& input) : input_(input) {}

  // False behind the last line, and where reading failed. A line that is too long ends it.
  bool Next(Line& line);

  // What was read behind the last line, for those who know lines that need no Next(): Skip takes
  // whole ones of it. Their offset is 0, so none is there behind a byte order mark.
  std::string_view Ahead() const {
    return isBegun_ && behind_ == 0 ? input_.Unread() : std::string_view();
  }
  void Skip(std::size_t lines, std::size_t bytes) {
    input_.Consume(bytes);
    complete_ += lines;
  }
  std::size_t LinesRead() const { return complete_; }

  // An error at a byte of a line; offsets count from 0.
  InputError ErrorAt(std::size_t line, std::size_t offset, std::string message) const {
    return {input_.GetFile(), line, offset + 1, std::move(message)};
  }
  // An error of the file as a whole, and one at the end of what was read of it.
  InputError ErrorOfFile(std::string message) const {
    return {input_.GetFile(), 0, 0, std::move(message)};
  }
  InputError ErrorAtEnd(std::string message) const;

  // What comes of reading the input: `error` (may be none) is what its lines gave. That the rest of
  // the input cannot be read is worse than anything that stands in it.
  MaybeError Finish(MaybeError error);

  const Input& GetInput() const { return input_; }

 private:
  void SkipByteOrderMark();

  Input& input_;
  std::size_t complete_ = 0;  // lines that were read
  std::size_t behind_ = 0;    // bytes that were read behind the last of these
  bool isBegun_ = false;
  MaybeError tooLong_;  // reading ended at a line that no memory is for
};

}  // namespace fabscope::internal
