#include "fuzz/reports.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <simdjson.h>
#include <sstream>
#include <string_view>
#include <vector>

#include "fuzz/loading.h"
#include "fuzz/require.h"
#include "reports/csv_report.h"
#include "reports/json_report.h"
#include "reports/text_report.h"

namespace fabscope::internal::fuzz {
namespace {

namespace dom = simdjson::dom;

std::string TextReport(const CheckResult& result, const TextStyle& style) {
  std::ostringstream stream;
  WriteTextReport(result, style, stream);
  return stream.str();
}

std::string JsonReport(const CheckResult& result, const TextStyle& style) {
  std::ostringstream stream;
  WriteJsonReport(result, style, stream);
  return stream.str();
}

std::string CsvReport(const CheckResult& result) {
  std::ostringstream stream;
  WriteCsvReport(result, stream);
  return stream.str();
}

TextStyle WithDump() {
  TextStyle style;
  style.withDump = true;
  return style;
}

// --- Numbers of groups.

struct Label {
  std::string_view text;  // stands in front of a number, or of a list of numbers
  bool isNeighborhood;
};

constexpr std::array<Label, 12> labels{{{"Neighborhood ", true},
                                        {"neighborhood ", true},
                                        {"neighborhood: ", true},
                                        {"following neighborhoods: ", true},
                                        {R"("neighborhood","id":)", true},
                                        {R"("neighborhood","groups":[)", true},
                                        {"Connectivity group ", false},
                                        {"connectivity group ", false},
                                        {"connectivity group: ", false},
                                        {"and group ", false},
                                        {R"("connectivity group","id":)", false},
                                        {R"("connectivity group","groups":[)", false}}};

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// Takes the number at the beginning of a text.
std::optional<std::uint64_t> TakeNumber(std::string_view& text) {
  if (text.empty() || !IsDigit(text.front())) return std::nullopt;
  std::uint64_t number = 0;
  for (; !text.empty() && IsDigit(text.front()); text.remove_prefix(1)) {
    number = number * 10 + static_cast<std::uint64_t>(text.front() - '0');
  }
  return number;
}

// A text with all numbers of groups replaced.
template <typename Replace>
std::string WithIdsReplaced(std::string_view text, Replace replace) {
  std::string replaced;
  while (!text.empty()) {
    replaced += text.front();
    text.remove_prefix(1);
    if (text.empty() || !IsDigit(text.front())) continue;
    const auto* label = std::find_if(labels.begin(), labels.end(), [&](const Label& known) {
      return std::string_view(replaced).ends_with(known.text);
    });
    if (label == labels.end()) continue;
    while (const auto number = TakeNumber(text)) {
      replaced += std::to_string(replace(*number, label->isNeighborhood));
      const std::string_view separator = text.starts_with(", ") ? ", " : ",";
      if (!text.starts_with(separator)) break;
      replaced += separator;
      text.remove_prefix(separator.size());
    }
  }
  return replaced;
}

// Each kind counted from its lowest number in the text.
std::string Renumbered(std::string_view text) {
  std::array<std::uint64_t, 2> lowest{};
  lowest.fill(~std::uint64_t{0});
  WithIdsReplaced(text, [&](std::uint64_t number, bool isNeighborhood) {
    std::uint64_t& least = lowest[isNeighborhood ? 1 : 0];
    return least = std::min(least, number);
  });
  return WithIdsReplaced(text, [&](std::uint64_t number, bool isNeighborhood) {
    return number - lowest[isNeighborhood ? 1 : 0];
  });
}

// --- What one report says of another.

std::vector<std::string_view> Lines(std::string_view text) {
  std::vector<std::string_view> lines;
  while (!text.empty()) {
    const std::size_t end = text.find('\n');
    Require(end != std::string_view::npos, "every line of a report has its end");
    lines.push_back(text.substr(0, end));
    text.remove_prefix(end + 1);
  }
  return lines;
}

std::vector<std::uint64_t> NumbersBehind(const std::vector<std::string_view>& lines,
                                         std::string_view start, std::string_view label) {
  std::vector<std::uint64_t> numbers;
  for (const std::string_view line : lines) {
    const std::size_t at = line.find(label);
    if (!line.starts_with(start) || at == std::string_view::npos) continue;
    std::string_view rest = line.substr(at + label.size());
    if (const auto number = TakeNumber(rest)) numbers.push_back(*number);
  }
  return numbers;
}

template <typename T, typename Element>
T Value(Element element) {
  T value{};
  Require(element.get(value) == simdjson::SUCCESS, "the JSON result has all its members");
  return value;
}

std::vector<std::uint64_t> SizesOf(dom::array lists) {
  std::vector<std::uint64_t> sizes;
  for (const dom::element list : lists) sizes.push_back(Value<dom::array>(list).size());
  return sizes;
}

std::vector<std::uint64_t> SizesOf(dom::array objects, std::string_view key) {
  std::vector<std::uint64_t> sizes;
  for (const dom::element object : objects) {
    sizes.push_back(Value<dom::array>(object[key]).size());
  }
  return sizes;
}

std::size_t CsvFields(std::string_view line) {
  std::size_t fields = 1;
  bool inQuotes = false;
  for (const char c : line) {
    if (c == '"') inQuotes = !inQuotes;
    if (c == ',' && !inQuotes) ++fields;
  }
  Require(!inQuotes, "quotes of a CSV line are closed");
  return fields;
}

void RequireSoundCsv(const CheckResult& result) {
  const std::string csv = CsvReport(result);
  const std::vector<std::string_view> lines = Lines(csv);
  Require(lines.size() == result.findings.RecordsCount() + 1,
          "the CSV file has a line for each record");
  for (const std::string_view line : lines) {
    Require(CsvFields(line) == 6, "a CSV line has six fields");
  }
}

void RequireSoundStyles(const CheckResult& result, const std::string& plain) {
  TextStyle style = WithDump();
  style.color = true;
  std::string colored = TextReport(result, style);
  for (const std::string_view code : {"\033[31m", "\033[33m", "\033[36m", "\033[0m"}) {
    colored = Replaced(std::move(colored), code, "");
  }
  RequireSame(colored, plain, "colour changes no text");

  style = WithDump();
  style.quiet = true;
  std::string expected;
  for (const std::string_view line : Lines(plain)) {
    if (!line.starts_with("-I- ")) expected.append(line).append("\n");
  }
  RequireSame(TextReport(result, style), expected, "a quiet report lacks the -I- lines only");
}

std::string ClosingLine(std::size_t records, std::uint64_t issues) {
  return "-I- Fat-tree check: " + std::to_string(records) + " error records, " +
         std::to_string(issues) + " issues";
}

void RequireSameCounts(const CheckResult& result, const dom::element& json) {
  const std::vector<std::string_view> levels = Lines(result.levelsReport);
  const std::vector<std::string_view> dump = Lines(result.dump);
  const std::vector<std::uint64_t> ranks = SizesOf(Value<dom::array>(json["ranks"]));
  if (result.status != CheckStatus::NotBuilt) {
    Require(NumbersBehind(levels, "\t rank: ", "#switches: ") == ranks,
            "the levels report has the ranks of the JSON");
  }
  const auto records = Value<dom::array>(json["records"]);
  Require(records.size() == result.findings.RecordsCount(), "the JSON has every record");
  const auto issues = Value<std::uint64_t>(json["issues"]);
  const bool isClean = records.size() == 0 && issues == 0;
  const std::string_view status = Value<std::string_view>(json["status"]);
  if (result.status != CheckStatus::Done) {
    Require(status == "failed", "a check that failed says so");
    return;
  }
  Require(status == (isClean ? "clean" : "findings"), "the status goes by the findings");
  const std::string text = TextReport(result, TextStyle());
  RequireSame(Lines(text).back(), ClosingLine(records.size(), issues),
              "the closing line counts as the JSON does");
  if (result.dump.empty()) return;
  const auto groups = Value<dom::array>(json["groups"]);
  Require(NumbersBehind(dump, "rank: ", "size: ") == ranks, "the dump has the ranks of the JSON");
  Require(NumbersBehind(dump, "\t\tspines: ", "spines: ") == SizesOf(groups, "spines") &&
              NumbersBehind(dump, "\t\tlines: ", "lines: ") == SizesOf(groups, "lines"),
          "the dump has the groups of the JSON");
}

}  // namespace

std::string ReportsOf(const CheckResult& result) {
  std::string all;
  for (const std::string& warning : result.warnings) all += warning + "\n";
  if (result.inputError) return all + result.inputError->Text();
  all += TextReport(result, WithDump()) + CsvReport(result) + JsonReport(result, WithDump());
  all += result.message + "\n" + result.advice + "\n" + result.roots.doubt + "\n" +
         std::to_string(result.switchesOfSharedName) + "\n";
  return Renumbered(all);
}

void RequireSoundReports(const CheckResult& result) {
  if (result.inputError)
    RequireSame(result.inputError->Text(), "", "a fabric that was written can be read");
  const std::string text = TextReport(result, WithDump());
  RequireSoundStyles(result, text);
  RequireSoundCsv(result);

  dom::parser parser;
  dom::element json;
  const simdjson::padded_string bytes(JsonReport(result, WithDump()));
  Require(parser.parse(bytes).get(json) == simdjson::SUCCESS, "the JSON result is JSON");
  std::string lines;
  for (const dom::element line : Value<dom::array>(json["report"])) {
    lines.append(Value<std::string_view>(line)).append("\n");
  }
  RequireSame(lines, text, "the JSON has the lines of the text");
  RequireSameCounts(result, json);
}

}  // namespace fabscope::internal::fuzz
