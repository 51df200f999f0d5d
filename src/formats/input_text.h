#pragma once

#include <string>
#include <string_view>

#include "formats/diagnostics.h"

namespace fabscope {

// The whole content of an input, unpacked if it was gzip. The bytes are followed by room that the
// JSON parser may read beyond their end.
struct InputText {
  std::string file;  // as messages name it
  std::string bytes;

  // Without a UTF-8 byte order mark.
  std::size_t Start() const { return bytes.starts_with("\xef\xbb\xbf") ? 3 : 0; }
  InputError ErrorAt(std::size_t offset, std::string message) const {
    return fabscope::ErrorAt(file, bytes, offset, std::move(message));
  }
};

// Reads a file, or standard input for "-".
MaybeError ReadInput(const std::string& path, InputText& input);

}  // namespace fabscope
