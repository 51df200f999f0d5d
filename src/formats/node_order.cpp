// Names are compared as the C library's strverscmp does. Where two names part in a number:
//
// - numbers without leading zeros compare by value: the one of more digits is greater, of equally
//   long ones that of the greater digits. A key puts the number of digits in front of them;
// - numbers with leading zeros compare like decimal fractions: 000 < 00 < 01 < 010 < 09 < 0. A key
//   has them as they are, and behind a number of zeros only a mark greater than all digits.
//
// Both forms begin with a digit, so numbers stand among other characters where they always do.

#include "formats/node_order.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>

#include "text/text_fields.h"

namespace fabscope::internal {
namespace {

constexpr std::size_t keySize = 2 * sizeof(std::uint64_t);

class KeyBytes {
 public:
  bool IsFull() const { return size_ == keySize; }
  void Add(char c) {
    if (!IsFull()) bytes_[size_++] = static_cast<unsigned char>(c);
  }
  void Add(std::string_view text) {
    for (const char c : text.substr(0, keySize)) Add(c);
  }
  void AddNumber(std::string_view digits) {
    digits.front() == '0' ? AddFraction(digits) : AddInteger(digits);
  }
  // What follows cannot be told in order any more.
  void End() { size_ = keySize; }

  std::uint64_t Word(std::size_t index) const {
    std::uint64_t word = 0;
    for (std::size_t i = 0; i < sizeof word; ++i)
      word = word << 8U | bytes_[index * sizeof word + i];
    return word;
  }

 private:
  void AddFraction(std::string_view digits) {
    Add(digits);
    if (digits.find_first_not_of('0') == std::string_view::npos) Add('9' + 1);
  }

  void AddInteger(std::string_view digits) {
    constexpr std::size_t longest = 9 + 255;
    if (digits.size() < 9) {
      Add(static_cast<char>('0' + digits.size()));
    } else {
      Add('9');
      Add(static_cast<char>(std::min(digits.size(), longest) - 9));
    }
    digits.size() < longest ? Add(digits) : End();
  }

  std::array<unsigned char, keySize> bytes_{};
  std::size_t size_ = 0;
};

}  // namespace

int CompareNodeOrder(const char* nameA, std::uint64_t guidA, const char* nameB,
                     std::uint64_t guidB) {
  const int order = strverscmp(nameA, nameB);
  if (order != 0) return order;
  return guidA < guidB ? -1 : static_cast<int>(guidA > guidB);
}

NodeOrderKey::NodeOrderKey(std::string_view name) {
  KeyBytes key;
  for (std::size_t at = 0; at < name.size() && !key.IsFull();) {
    if (!IsDigit(name[at])) {
      key.Add(name[at++]);
      continue;
    }
    std::size_t end = at;
    while (end < name.size() && IsDigit(name[end])) ++end;
    key.AddNumber(name.substr(at, end - at));
    at = end;
  }
  first_ = key.Word(0);
  second_ = key.Word(1);
}

}  // namespace fabscope::internal
