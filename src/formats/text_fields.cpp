#include "formats/text_fields.h"

namespace fabscope {

std::string CleanText(std::string_view text) {
  std::string clean(text);
  for (char& c : clean) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x20 || byte == 0x7f) c = '?';
  }
  return clean;
}

std::optional<std::uint64_t> ParseGuid(std::string_view text) {
  if (!text.starts_with("0x")) return std::nullopt;
  return ParseHex(text.substr(2));
}

}  // namespace fabscope
