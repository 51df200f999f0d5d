#include "formats/plain_dump_lines.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "text/text_fields.h"

namespace fabscope::internal {
namespace {

// What stands between the description and the lid.
constexpr std::string_view beforeLid = "\" lid ";
constexpr std::ptrdiff_t mostLidDigits = 5;

constexpr std::uint64_t InEveryByte(std::uint64_t byte) { return byte * 0x0101010101010101U; }

constexpr std::size_t wordSize = 8;

// The first byte becomes the lowest one.
std::uint64_t WordAt(const char* at) {
  std::uint64_t word = 0;
  std::memcpy(&word, at, wordSize);
  return std::endian::native == std::endian::little ? word : __builtin_bswap64(word);
}

// The bytes of a text of up to eight that a word ends in, and which of the word they are.
struct WordEnd {
  std::uint64_t bytes = 0;
  std::uint64_t mask = 0;
};
constexpr WordEnd EndOfWord(std::string_view text) {
  WordEnd end;
  for (const char c : text) {
    end.bytes = end.bytes >> 8U | std::uint64_t{static_cast<unsigned char>(c)} << 56U;
    end.mask = end.mask >> 8U | std::uint64_t{0xff} << 56U;
  }
  return end;
}
constexpr WordEnd endBeforeLid = EndOfWord(beforeLid);

// Eight hexadecimal digits. Each step works on all bytes of a word at once; `isOdd` becomes true if
// one is no digit.
std::uint64_t HexWord(const char* at, bool& isOdd) {
  constexpr std::uint64_t highBits = InEveryByte(0x80);
  const std::uint64_t word = WordAt(at);
  // The high bit of a byte of `word + x` says that the byte is at least 0x80 - x.
  const std::uint64_t digits = (word + InEveryByte(0x80 - '0')) & ~(word + InEveryByte(0x7f - '9'));
  const std::uint64_t small = word | InEveryByte(0x20);
  const std::uint64_t letters =
      (small + InEveryByte(0x80 - 'a')) & ~(small + InEveryByte(0x7f - 'f'));
  isOdd |= (word & highBits) != 0 || ((digits | letters) & highBits) != highBits;
  std::uint64_t value = (word & InEveryByte(0x0f)) + 9 * ((letters & highBits) >> 7U);
  // The first digit stands in the lowest byte and counts most: neighbors are put together, then
  // pairs of them, then pairs of those.
  value = (value << 4U | value >> 8U) & 0x00ff00ff00ff00ffU;
  value = (value << 8U | value >> 16U) & 0x0000ffff0000ffffU;
  return (value << 16U | value >> 32U) & 0xffffffffU;
}

// What follows is read up to where it ends; null if it is not there.

// A decimal number of up to three digits and 255.
const char* ReadNumber(const char* at, std::uint8_t& number) {
  const char* const first = at;
  unsigned value = 0;
  for (; at - first < 3 && IsDigit(*at); ++at) {
    value = value * 10 + static_cast<unsigned>(*at - '0');
  }
  number = static_cast<std::uint8_t>(value);
  return at != first && value <= 255 ? at : nullptr;
}

// 1 to 16 hexadecimal digits.
const char* ReadHex(const char* at, std::uint64_t& number) {
  const char* const first = at;
  number = 0;
  for (; HexDigit(*at) >= 0 && at - first < 16; ++at) {
    number = number << 4U | static_cast<std::uint64_t>(HexDigit(*at));
  }
  return at != first ? at : nullptr;
}

// (2c903), which may be left out and does not count.
const char* ReadPortGuid(const char* at) {
  if (*at != '(') return at;
  std::uint64_t guid = 0;
  at = ReadHex(at + 1, guid);
  return at != nullptr && *at == ')' ? at + 1 : nullptr;
}

// 5] or 5](2c903)
const char* ReadPortNumber(const char* at, std::uint8_t& port) {
  at = ReadNumber(at, port);
  return at != nullptr && port != 0 && *at == ']' ? ReadPortGuid(at + 1) : nullptr;
}

// "S-0002c9020040f160"
constexpr std::ptrdiff_t nodeIdSize = 20;
bool ReadNodeId(const char* at, std::uint64_t& guid) {
  bool isOdd = at[0] != '"' || at[1] == '"' || at[1] == '\n' || at[2] != '-' || at[19] != '"';
  guid = HexWord(at + 3, isOdd) << 32U;
  guid |= HexWord(at + 11, isOdd);
  return !isOdd;
}

const char* SkipTabs(const char* at) {
  for (int tabs = 0; tabs < 3 && (*at == '\t' || *at == ' '); ++tabs) ++at;
  return at;
}

}  // namespace

bool PlainDumpLines::ReadField(const char* at, std::string_view keyword, Line& line) {
  if (std::memcmp(at, keyword.data(), keyword.size()) != 0) return false;
  at = ReadHex(at + keyword.size(), line.guid);
  if (at != nullptr) at = ReadPortGuid(at);
  if (at == nullptr) return false;
  if (*at == '\r') ++at;
  line.next = at + 1;
  return *at == '\n';
}

bool PlainDumpLines::ReadNode(const char* at, const char* end, std::string_view keyword,
                              std::uint32_t type, Line& line) {
  if (std::memcmp(at, keyword.data(), keyword.size()) != 0) return false;
  const char* const begin = at;
  at = ReadNumber(at + keyword.size(), line.numPorts);
  if (at == nullptr || *at++ != ' ') return false;
  if (!ReadNodeId(at, line.guid)) return false;
  line.type = type;
  line.guidOffset = static_cast<std::uint32_t>(at + 3 - begin);
  at = SkipTabs(at + nodeIdSize);
  if (at[0] != '#' || at[1] != ' ' || at[2] != '"') return false;
  const char* const name = at + 3;
  const void* newline = std::memchr(name, '\n', static_cast<std::size_t>(end - name));
  if (newline == nullptr) return false;
  const auto* const lineEnd = static_cast<const char*>(newline);
  const void* quote = memrchr(name, '"', static_cast<std::size_t>(lineEnd - name));
  if (quote == nullptr) return false;
  line.name = {name, static_cast<const char*>(quote)};
  line.next = lineEnd + 1;
  return true;
}

bool PlainDumpLines::ReadPort(const char* at, const char* end, Line& line) {
  const char* const begin = at;
  at = ReadPortNumber(at + 1, line.port);
  if (at == nullptr) return false;
  at = SkipTabs(at);
  if (!ReadNodeId(at, line.guid)) return false;
  at += nodeIdSize;
  if (*at++ != '[') return false;
  line.peerPortOffset = static_cast<std::uint32_t>(at - begin);
  at = ReadPortNumber(at, line.peerPort);
  if (at == nullptr) return false;
  at = SkipTabs(at);
  if (*at != '#') return false;
  const void* newline = std::memchr(at, '\n', static_cast<std::size_t>(end - at));
  if (newline == nullptr) return false;
  const char* lineEnd = static_cast<const char*>(newline);
  line.next = lineEnd + 1;
  if (lineEnd[-1] == '\r') --lineEnd;
  const Tail* tail = FindTail(at, lineEnd);
  if (tail == nullptr) return false;
  line.speedBit = tail->speedBit;
  return true;
}

// The tail that a line has behind its lid, null if it has none that was learned. `begin` is the
// line's comment.
const PlainDumpLines::Tail* PlainDumpLines::FindTail(const char* begin, const char* end) {
  for (std::size_t i = 0; i < count_; ++i) {
    const std::size_t place = (likely_ + i) % count_;
    const Tail& tail = tails_[place];
    if ((WordAt(end - wordSize) & tail.mask) != tail.end) continue;
    if (end - begin < static_cast<std::ptrdiff_t>(tail.size)) continue;
    const char* at = end - tail.size;
    if (tail.size > wordSize && std::memcmp(at, tail.text.data(), tail.size) != 0) continue;
    const char* const lidEnd = at;
    const char* const limit = begin + beforeLid.size();
    while (at > limit && lidEnd - at < mostLidDigits && IsDigit(at[-1])) --at;
    if (at == lidEnd || at < limit) return nullptr;
    if ((WordAt(at - wordSize) & endBeforeLid.mask) != endBeforeLid.bytes) return nullptr;
    likely_ = place;
    return &tail;
  }
  return nullptr;
}

void PlainDumpLines::Learn(std::string_view text, std::uint8_t speedBit) {
  const std::size_t quote = text.rfind('"');
  if (quote == std::string_view::npos || !text.substr(quote).starts_with(beforeLid)) return;
  const std::size_t lid = quote + beforeLid.size();
  const std::size_t tail = std::min(text.find_first_not_of("0123456789", lid), text.size());
  if (tail == lid || tail == text.size() || text[tail] != ' ') return;
  const std::string_view behind = text.substr(tail);
  Tail& learned = tails_[next_];
  if (behind.size() > learned.text.size()) return;
  std::copy(behind.begin(), behind.end(), learned.text.begin());
  learned.size = behind.size();
  const WordEnd word = EndOfWord(behind.substr(behind.size() - std::min(behind.size(), wordSize)));
  learned.end = word.bytes;
  learned.mask = word.mask;
  learned.speedBit = speedBit;
  likely_ = next_;
  count_ = std::max(count_, next_ + 1);
  next_ = (next_ + 1) % tails_.size();
}

}  // namespace fabscope::internal
