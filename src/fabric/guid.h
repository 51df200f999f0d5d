#pragma once

#include <cstdint>
#include <string>

namespace fabscope::internal {

// A GUID as every message shows it: "0x" and 16 lower-case hexadecimal digits.
inline void AppendGuidText(std::string& text, std::uint64_t guid) {
  constexpr const char* digits = "0123456789abcdef";
  text += "0x0000000000000000";
  for (auto digit = text.rbegin(); guid != 0; ++digit, guid >>= 4) *digit = digits[guid & 0xf];
}
inline std::string GuidText(std::uint64_t guid) {
  std::string text;
  AppendGuidText(text, guid);
  return text;
}

}  // namespace fabscope::internal
