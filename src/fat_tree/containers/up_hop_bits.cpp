#include "fat_tree/containers/up_hop_bits.h"

namespace fabscope::internal {
namespace {

constexpr std::size_t byteBits = 8;
using ByteText = std::array<char, byteBits>;

constexpr std::array<ByteText, 256> MakeByteTexts() {
  std::array<ByteText, 256> texts{};
  for (std::size_t byte = 0; byte < texts.size(); ++byte) {
    for (std::size_t bit = 0; bit < byteBits; ++bit) {
      texts[byte][byteBits - 1 - bit] = (byte >> bit & 1U) != 0 ? '1' : '0';
    }
  }
  return texts;
}

constexpr std::array<ByteText, 256> byteTexts = MakeByteTexts();

}  // namespace

std::string UpHopBits::ToText(std::size_t length) const {
  const std::size_t byteCount = (length + byteBits - 1) / byteBits;
  std::string text;
  text.reserve(byteCount * byteBits);
  for (std::size_t byte = byteCount; byte-- > 0;) {
    const Word word = words_[byte * byteBits / wordBits];
    const ByteText& bits = byteTexts[word >> Shift(byte * byteBits) & 0xff];
    text.append(bits.data(), bits.size());
  }
  return text.erase(0, text.size() - length);
}

}  // namespace fabscope::internal
