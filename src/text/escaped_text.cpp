#include "text/escaped_text.h"

#include <array>
#include <tuple>
#include <utility>

#include "text/text_fields.h"
#include "text/utf8.h"

namespace fabscope::internal {
namespace {

// What stands for a byte that is not part of valid UTF-8.
constexpr std::string_view replacement = "\xef\xbf\xbd";
// U+FFFE and U+FFFF: valid UTF-8, but no characters of XML, which Graphviz makes of its labels,
// too.
constexpr std::array<std::string_view, 2> notInXml{"\xef\xbf\xbe", "\xef\xbf\xbf"};

// A text from the fabric as people see it, without invalid bytes.
std::string PlainText(std::string_view text) {
  const std::string clean = TextForPeople(CleanText(text));
  std::string plain;
  std::string_view rest = clean;
  for (;;) {
    const std::size_t valid = FirstInvalidUtf8(rest);
    plain += rest.substr(0, valid);
    if (valid == rest.size()) return plain;
    plain += replacement;
    rest.remove_prefix(valid + 1);
  }
}

using Escape = std::pair<std::string_view, std::string_view>;  // a text and what stands for it

template <std::size_t Count>
std::string Escaped(const std::string& plain, const std::array<Escape, Count>& escapes) {
  std::string escaped;
  for (std::string_view rest = plain; !rest.empty();) {
    std::string_view from = rest.substr(0, 1);
    std::string_view to = from;
    for (const Escape& escape : escapes) {
      if (rest.starts_with(escape.first)) std::tie(from, to) = escape;
    }
    escaped += to;
    rest.remove_prefix(from.size());
  }
  return escaped;
}

}  // namespace

std::string DotLabel(std::string_view text) {
  constexpr std::array<Escape, 5> escapes{{{"\"", "\\\""},
                                           {"\\", "\\\\"},
                                           {"&", "&amp;"},
                                           {notInXml[0], replacement},
                                           {notInXml[1], replacement}}};
  return Escaped(PlainText(text), escapes);
}

std::string PrometheusLabel(std::string_view text) {
  constexpr std::array<Escape, 2> escapes{{{"\"", "\\\""}, {"\\", "\\\\"}}};
  return Escaped(PlainText(text), escapes);
}

std::string XmlText(std::string_view text) {
  constexpr std::array<Escape, 6> escapes{{{"&", "&amp;"},
                                           {"<", "&lt;"},
                                           {">", "&gt;"},
                                           {"\"", "&quot;"},
                                           {notInXml[0], replacement},
                                           {notInXml[1], replacement}}};
  return Escaped(PlainText(text), escapes);
}

}  // namespace fabscope::internal
