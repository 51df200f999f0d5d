#include "reports/finding_counts.h"

#include <array>

namespace fabscope::internal {

std::string Counted(std::uint64_t count, const char* one, const char* more) {
  return std::to_string(count) + ' ' + (count == 1 ? one : more);
}

std::string CountsByKind(const FindingList& findings) {
  std::array<std::uint64_t, AllFindings::names.size()> counts{};
  for (const Finding& finding : findings) ++counts.at(finding.index());
  std::string text;
  for (std::size_t kind = 0; kind < counts.size(); ++kind) {
    if (counts.at(kind) == 0) continue;
    const KindWords& words = AllFindings::words.at(kind);
    if (!text.empty()) text += ", ";
    text += Counted(counts.at(kind), words.one, words.more);
  }
  return text;
}

}  // namespace fabscope::internal
