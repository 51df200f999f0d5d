#include "text/text_fields.h"

#include <algorithm>
#include <sstream>

#include "text/utf8.h"

namespace fabscope::internal {
namespace {

bool IsC1(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return byte >= 0x80 && byte < 0xa0;
}

// A text without controls of ASCII.
std::string WithoutC1(std::string_view text) {
  std::string clean;
  clean.reserve(text.size());
  while (!text.empty()) {
    const std::size_t valid = SequenceLength(text);
    const std::size_t length = std::max<std::size_t>(valid, 1);
    const bool isControl = valid == 0 ? IsC1(text[0]) : text[0] == '\xc2' && IsC1(text[1]);
    clean += isControl ? std::string_view("?") : text.substr(0, length);
    text.remove_prefix(length);
  }
  return clean;
}

}  // namespace

std::string CleanText(std::string_view text) {
  std::string clean(text);
  unsigned all = 0;
  for (char& c : clean) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x20 || byte == 0x7f) c = '?';
    all |= byte;
  }
  return all < 0x80 ? clean : WithoutC1(clean);
}

std::string TextForPeople(std::string_view text) {
  std::string shown;
  for (std::size_t at = 0; (at = FindBidirectionalControl(text)) != std::string_view::npos;) {
    shown += text.substr(0, at);
    shown += '?';
    text.remove_prefix(at + BidirectionalControlBytes);
  }
  return shown += text;
}

void WriteForPeople(std::string_view text, std::ostream& stream) {
  if (FindBidirectionalControl(text) == std::string_view::npos) {
    stream << text;
  } else {
    stream << TextForPeople(text);
  }
}

void WriteForPeople(std::ostream& stream, const std::function<void(std::ostream&)>& write) {
  std::ostringstream text;
  text.exceptions(std::ios::badbit);  // or a lack of memory would leave half of it
  write(text);
  WriteForPeople(text.view(), stream);
}

bool CutText(std::string& text) {
  if (text.size() <= MostTextBytes) return false;
  std::size_t end = MostTextBytes;
  for (std::size_t back = 1; back <= 3; ++back) {
    if (SequenceLength(std::string_view(text).substr(MostTextBytes - back)) > back) {
      end = MostTextBytes - back;
    }
  }
  text.resize(end);
  return true;
}

std::optional<std::uint64_t> ParseGuid(std::string_view text) {
  if (!text.starts_with("0x")) return std::nullopt;
  return ParseHex(text.substr(2));
}

}  // namespace fabscope::internal
