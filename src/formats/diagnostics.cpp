#include "formats/diagnostics.h"

#include <algorithm>
#include <utility>

namespace fabscope::internal {
namespace {

const char* KindText(WarningKind kind) {
  switch (kind) {
    case WarningKind::UnknownLine:
      return "line of no known kind";
    case WarningKind::UnknownNodeType:
      return "node of unknown type";
    case WarningKind::LineOutsideRecord:
      return "port line outside of a node's record";
    case WarningKind::RepeatedPort:
      return "port given twice";
    case WarningKind::LongText:
      return "text longer than 256 bytes";
    case WarningKind::UnknownSpeed:
      return "unknown link speed";
    case WarningKind::PeerWithoutRecord:
      return "peer without a record of its own";
    case WarningKind::EndsDisagree:
      return "two ends of a link that disagree";
    case WarningKind::PortCabledToItself:
      return "port cabled to itself";
    case WarningKind::NotASwitch:
      return "GUID that is not a switch of the fabric";
    case WarningKind::Count_:
      break;
  }
  return "";
}

}  // namespace

std::string InputError::Text() const {
  std::string text = file + ": ";
  if (line != 0) {
    text.insert(text.size() - 1, std::to_string(line) + ":" + std::to_string(column) + ":");
  }
  return text + message;
}

InputError ErrorAt(const std::string& file, std::string_view text, std::size_t offset,
                   std::string message) {
  offset = std::min(offset, text.size());
  const std::size_t newline = offset == 0 ? std::string_view::npos : text.rfind('\n', offset - 1);
  const std::size_t lineStart = newline == std::string_view::npos ? 0 : newline + 1;
  const std::string_view before = text.substr(0, lineStart);
  const auto lines = static_cast<std::size_t>(std::count(before.begin(), before.end(), '\n'));
  return {file, lines + 1, offset - lineStart + 1, std::move(message)};
}

bool Warnings::Count(WarningKind kind) {
  return ++counts_[static_cast<std::size_t>(kind)] <= MaxOfAKind;
}

void Warnings::Add(std::size_t line, std::string message) {
  entries_.push_back({line, std::move(message)});
}

std::vector<std::string> Warnings::Lines(const std::string& file) const {
  // A loader meets some oddities only when it has seen the whole file.
  std::vector<Entry> sorted = entries_;
  std::stable_sort(sorted.begin(), sorted.end(),
                   [](const Entry& a, const Entry& b) { return a.line < b.line; });

  std::vector<std::string> lines;
  lines.reserve(sorted.size());
  for (const Entry& entry : sorted) {
    lines.push_back(file + ":" + std::to_string(entry.line) + ": warning: " + entry.message);
  }
  for (std::size_t kind = 0; kind < counts_.size(); ++kind) {
    if (counts_[kind] <= MaxOfAKind) continue;
    lines.push_back(file + ": warning: " + std::to_string(counts_[kind] - MaxOfAKind) +
                    " more: " + KindText(static_cast<WarningKind>(kind)));
  }
  return lines;
}

}  // namespace fabscope::internal
