#include "reports/text_report.h"

#include <cstdint>
#include <string>

#include "text/text_fields.h"

namespace fabscope::internal {
namespace {

void SplitLines(std::string_view text, const TakeLine& take) {
  while (!text.empty()) {
    const std::size_t end = text.find('\n');
    take(text.substr(0, end));
    if (end == std::string_view::npos) return;
    text.remove_prefix(end + 1);
  }
}

constexpr std::string_view informationTag = "-I- ";
constexpr std::size_t tagLength = 3;

// The escape sequence that gives a line's tag its colour; empty when the line has no tag.
std::string_view TagColor(std::string_view line) {
  if (line.starts_with("-E- ")) return "\033[31m";
  if (line.starts_with("-W- ")) return "\033[33m";
  if (line.starts_with(informationTag)) return "\033[36m";
  return {};
}

bool IsShown(std::string_view line, const TextStyle& style) {
  return !style.quiet || !line.starts_with(informationTag);
}

void TakeAllLines(const CheckResult& result, bool withDump, const TakeLine& take) {
  if (!result.roots.notice.empty()) take(result.roots.notice);
  SplitLines(result.buildOutput, take);
  SplitLines(result.levelsReport, take);
  SplitLines(result.validateOutput, take);
  if (result.findings.RecordsCount() != 0) take({});
  std::string line;
  for (const Finding& record : result.findings.Records()) {
    line = TagOf(LevelOf(record));
    AppendDescriptionOf(record, result.showGuid, line);
    take(line);
  }
  const std::string rest = RecordsNotListedText(result);
  if (!rest.empty()) take("-W- " + rest);
  if (result.status != CheckStatus::Done) return;
  if (withDump) SplitLines(result.dump, take);
  take({});
  take("-I- Fat-tree check: " + std::to_string(result.findings.RecordsCount()) +
       " error records, " + std::to_string(result.issuesCount) + " issues");
}

}  // namespace

void ForEachReportLine(const CheckResult& result, const TextStyle& style, const TakeLine& take) {
  TakeAllLines(result, style.withDump, [&](std::string_view line) {
    if (IsShown(line, style)) take(line);
  });
}

std::string RecordsNotListedText(const CheckResult& result) {
  const std::uint64_t count = result.findings.RecordsNotListed();
  if (count == 0) return {};
  return std::to_string(count) +
         (count == 1 ? " more error record is" : " more error records are") +
         " not listed (--max-records)";
}

void WriteTextReport(const CheckResult& result, const TextStyle& style, std::ostream& stream) {
  ForEachReportLine(result, style,
                    [&](std::string_view line) { WriteReportLine(line, style, stream); });
}

void WriteReportLine(std::string_view line, const TextStyle& style, std::ostream& stream,
                     std::string_view start) {
  if (!IsShown(line, style)) return;
  stream << start;
  const std::string_view color = style.color ? TagColor(line) : std::string_view();
  if (!color.empty()) {
    stream << color << line.substr(0, tagLength) << "\033[0m";
    line.remove_prefix(tagLength);
  }
  WriteForPeople(line, stream);
  stream << '\n';
}

}  // namespace fabscope::internal
