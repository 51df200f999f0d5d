#include "text/utf8.h"

namespace fabscope::internal {
namespace {

bool IsContinuation(std::string_view text, std::size_t at) {
  return at < text.size() && (static_cast<unsigned char>(text[at]) & 0xc0U) == 0x80U;
}

}  // namespace

std::size_t SequenceLength(std::string_view text) {
  const auto lead = static_cast<unsigned char>(text[0]);
  if (lead < 0x80) return 1;
  if (!IsContinuation(text, 1)) return 0;
  const auto second = static_cast<unsigned char>(text[1]);
  if (lead >= 0xc2 && lead <= 0xdf) return 2;
  if (!IsContinuation(text, 2)) return 0;
  if (lead == 0xe0 && second < 0xa0) return 0;
  if (lead == 0xed && second > 0x9f) return 0;
  if (lead >= 0xe0 && lead <= 0xef) return 3;
  if (!IsContinuation(text, 3)) return 0;
  if (lead == 0xf0 && second < 0x90) return 0;
  if (lead == 0xf4 && second > 0x8f) return 0;
  return lead >= 0xf0 && lead <= 0xf4 ? 4 : 0;
}

std::size_t FirstInvalidUtf8(std::string_view text) {
  std::size_t at = 0;
  while (at < text.size()) {
    const std::size_t length = SequenceLength(text.substr(at));
    if (length == 0) break;
    at += length;
  }
  return at;
}

std::size_t FindBidirectionalControl(std::string_view text, std::size_t from) {
  constexpr char lead = '\xe2';
  for (std::size_t at = text.find(lead, from); at != std::string_view::npos;
       at = text.find(lead, at + 1)) {
    const std::string_view rest = text.substr(at + 1, BidirectionalControlBytes - 1);
    if (rest.size() < 2) break;
    const auto last = static_cast<unsigned char>(rest[1]);
    if (rest[0] == '\x80' && last >= 0xaa && last <= 0xae) return at;
    if (rest[0] == '\x81' && last >= 0xa6 && last <= 0xa9) return at;
  }
  return std::string_view::npos;
}

}  // namespace fabscope::internal
