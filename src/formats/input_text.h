#pragma once

#include <string>

#include "formats/diagnostics.h"
#include "formats/input.h"

namespace fabscope::internal {

// The whole content of an input, for formats that cannot be read line by line. The bytes are
// followed by room that the JSON parser may read beyond their end.
struct InputText {
  std::string file;  // as messages name it
  std::string bytes;

  // Without a UTF-8 byte order mark.
  std::size_t Start() const { return bytes.starts_with(ByteOrderMark) ? ByteOrderMark.size() : 0; }
  InputError ErrorAt(std::size_t offset, std::string message) const {
    return fabscope::internal::ErrorAt(file, bytes, offset, std::move(message));
  }
};

// Reads all of an input that has not been consumed.
MaybeError ReadAll(Input& input, InputText& text);

}  // namespace fabscope::internal
