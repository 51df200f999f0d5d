#pragma once

#include <cstddef>
#include <string_view>

#include "formats/input_text.h"

namespace fabscope {

// Calls visit(line, offset of its first byte) for every line, without its line end ("\n" or
// "\r\n"), until visit answers false.
template <typename Visit>
void ForEachLine(const InputText& input, Visit visit) {
  const std::string_view text = input.bytes;
  std::size_t start = input.Start();
  while (start < text.size()) {
    const std::size_t newline = text.find('\n', start);
    const std::size_t end = newline == std::string_view::npos ? text.size() : newline;
    std::string_view line = text.substr(start, end - start);
    if (line.ends_with('\r')) line.remove_suffix(1);
    if (!visit(line, start)) return;
    start = end + 1;
  }
}

}  // namespace fabscope
