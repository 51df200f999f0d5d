#include "formats/plain_dump_lines.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "text/text_fields.h"

namespace fabscope::internal {
namespace {

// What stands between the description and the lid.
constexpr std::string_view beforeLid = "\" lid ";
constexpr int mostLidDigits = 5;

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

// What eight hexadecimal digits stand for, each of them in a byte of its own. The first one stands
// in the lowest byte and counts most: neighbors are put together, then pairs of them, then pairs of
// those.
std::uint64_t JoinDigits(std::uint64_t digits) {
  digits = (digits << 4U | digits >> 8U) & 0x00ff00ff00ff00ffU;
  digits = (digits << 8U | digits >> 16U) & 0x0000ffff0000ffffU;
  return (digits << 16U | digits >> 32U) & 0xffffffffU;
}

// The bytes of a word as hexadecimal digits; each step works on all bytes at once. A byte is a
// digit if its value, printed again, gives the same byte. Values above 15 are none.
struct HexWord {
  explicit HexWord(std::uint64_t word)
      : digits((word & InEveryByte(0x0f)) + 9 * (word >> 6U & InEveryByte(1))) {
    const std::uint64_t isLetter = (digits + InEveryByte(6)) >> 4U & InEveryByte(1);
    odd = (word ^ (digits + InEveryByte('0') + isLetter * ('a' - '9' - 1))) |
          (digits & InEveryByte(0xf0));
  }

  std::uint64_t digits;
  std::uint64_t odd;  // not 0 in the bytes that are no digit as they are printed
};

// What follows is read up to where it ends; null if it is not there.

// A decimal number of up to three digits and 255.
const char* ReadNumber(const char* at, std::uint8_t& number) {
  if (!IsDigit(at[0])) return nullptr;
  auto value = static_cast<unsigned>(*at++ - '0');
  if (IsDigit(*at)) value = value * 10 + static_cast<unsigned>(*at++ - '0');
  if (IsDigit(*at)) value = value * 10 + static_cast<unsigned>(*at++ - '0');
  number = static_cast<std::uint8_t>(value);
  return value <= 255 ? at : nullptr;
}

// 1 to 16 hexadecimal digits.
const char* ReadHex(const char* at, std::uint64_t& number) {
  number = 0;
  for (int words = 0; words < 2; ++words) {
    const HexWord word(WordAt(at));
    if (word.odd == 0) {
      number = number << 32U | JoinDigits(word.digits);
      at += wordSize;
      continue;
    }
    const int bits = std::countr_zero(word.odd) / 8 * 8;
    if (bits == 0) return words != 0 ? at : nullptr;
    number = number << (bits / 2) | JoinDigits(word.digits << (64 - bits));
    return at + bits / 8;
  }
  return at;
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

constexpr std::ptrdiff_t nodeIdSize = 20;

// How many decimal digits stand before it; 8 also where there are more.
int DigitsBefore(const char* at) {
  constexpr std::uint64_t highBits = InEveryByte(0x80);
  const std::uint64_t value = WordAt(at - wordSize) ^ InEveryByte('0');
  // The high bit of a byte that is 10 or more.
  const std::uint64_t noDigit = (((value & ~highBits) + InEveryByte(0x80 - 10)) | value) & highBits;
  return std::countl_zero(noDigit) / 8;
}

const char* SkipTabs(const char* at) {
  for (int tabs = 0; tabs < 3 && (*at == '\t' || *at == ' '); ++tabs) ++at;
  return at;
}

}  // namespace

// "S-0002c9020040f160"
bool PlainDumpLines::ReadNodeId(const char* at, std::uint64_t& guid) {
  const bool isId = at[0] == '"' && at[1] != '"' && at[1] != '\n' && at[2] == '-' && at[19] == '"';
  const std::uint64_t high = WordAt(at + 3);
  if (high != high_.text) {
    const HexWord digits(high);
    if (digits.odd != 0) return false;
    high_ = {high, JoinDigits(digits.digits) << 32U};
  }
  const HexWord low(WordAt(at + 3 + wordSize));
  guid = high_.guid | JoinDigits(low.digits);
  return isId && low.odd == 0;
}

bool PlainDumpLines::ReadFieldNumber(const char* at, Line& line) {
  at = ReadHex(at, line.guid);
  if (at != nullptr) at = ReadPortGuid(at);
  if (at == nullptr) return false;
  if (*at == '\r') ++at;
  line.next = at + 1;
  return *at == '\n';
}

bool PlainDumpLines::ReadNode(const char* at, const char* end, std::string_view keyword,
                              std::uint8_t type, Line& line) {
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
// line's comment; reading back from there stays in the line, which has at least 26 bytes before it.
const PlainDumpLines::Tail* PlainDumpLines::FindTail(const char* begin, const char* end) {
  const std::uint64_t word = WordAt(end - wordSize);
  const auto isTail = [&](const Tail& tail) {
    return (word & tail.mask) == tail.end && end - begin >= tail.size &&
           (tail.size <= std::ptrdiff_t{wordSize} ||
            std::equal(tail.text.data(), tail.text.data() + tail.size, end - tail.size));
  };
  const Tail* tail = &tails_[likely_];
  if (!isTail(*tail)) {
    tail = std::find_if(tails_.begin(), tails_.end(), isTail);
    if (tail == tails_.end()) return nullptr;
    likely_ = static_cast<std::size_t>(tail - tails_.begin());
  }
  const char* const lidEnd = end - tail->size;
  const char* const limit = begin + beforeLid.size();
  const int digits = DigitsBefore(lidEnd);
  const char* const at = lidEnd - digits;
  if (digits == 0 || digits > mostLidDigits || at < limit) return nullptr;
  if ((WordAt(at - wordSize) & endBeforeLid.mask) != endBeforeLid.bytes) return nullptr;
  return tail;
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
  learned.size = static_cast<std::ptrdiff_t>(behind.size());
  const WordEnd word = EndOfWord(behind.substr(behind.size() - std::min(behind.size(), wordSize)));
  learned.end = word.bytes;
  learned.mask = word.mask;
  learned.speedBit = speedBit;
  likely_ = next_;
  next_ = (next_ + 1) % tails_.size();
}

}  // namespace fabscope::internal
