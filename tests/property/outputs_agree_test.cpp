// However a check is told, it counts the same.

#include <array>
#include <cstddef>
#include <cstdint>
#include <gtest/gtest.h>
#include <sstream>
#include <string>

#include "check/check.h"
#include "check/load_input.h"
#include "reference/plain_model.h"
#include "reference/random_fabric.h"
#include "reports/csv_report.h"
#include "reports/html_report.h"
#include "reports/json_report.h"
#include "reports/prometheus_report.h"
#include "reports/summary_report.h"
#include "reports/svg_report.h"
#include "reports/text_report.h"

namespace fabscope::internal {
namespace {

CheckResult CheckOf(std::uint64_t seed) {
  LoadedInput input;
  input.name = "fabric";
  input.fabric = reference::ModelOf(reference::RandomCase(seed).fabric);
  CheckOptions options;
  options.wantRepairs = true;
  return RunCheck(input, options);
}

template <typename Write>
std::string Written(Write write) {
  std::ostringstream stream;
  write(stream);
  return stream.str();
}

std::uint64_t Occurrences(const std::string& text, const std::string& part) {
  std::uint64_t count = 0;
  for (std::size_t at = 0; (at = text.find(part, at)) != std::string::npos; at += part.size()) {
    ++count;
  }
  return count;
}

// What stands behind a text, as a number.
std::uint64_t NumberBehind(const std::string& text, const std::string& part) {
  const std::size_t at = text.find(part);
  if (at == std::string::npos) return 0;
  return std::stoull(text.substr(at + part.size()));
}

std::string Between(const std::string& text, const std::string& begin, const std::string& end) {
  const std::size_t at = text.find(begin);
  if (at == std::string::npos) return {};
  const std::size_t from = at + begin.size();
  return text.substr(from, text.find(end, from) - from);
}

// The number of a kind in "3 missing links, 1 uneven count".
std::uint64_t NumberOf(const KindWords& words, const std::string& counts) {
  std::istringstream parts(counts);
  for (std::string part; std::getline(parts, part, ',');) {
    const std::size_t digit = part.find_first_of("0123456789");
    const std::size_t word = part.find(' ', digit) + 1;
    const std::string name = part.substr(word);
    const std::uint64_t number = std::stoull(part.substr(digit));
    if (name == (number == 1 ? words.one : words.more)) return number;
  }
  return 0;
}

std::uint64_t Total(const std::array<std::uint64_t, AllFindings::names.size()>& counts) {
  std::uint64_t total = 0;
  for (const std::uint64_t count : counts) total += count;
  return total;
}

TEST(Outputs, AgreeOnAllCountsOfRandomFabrics) {
  std::uint64_t done = 0;
  std::array<std::uint64_t, AllFindings::names.size()> seen{};
  for (std::uint64_t seed = 90'000; done < 200; ++seed) {
    SCOPED_TRACE(seed);
    const CheckResult result = CheckOf(seed);
    if (result.status != CheckStatus::Done) continue;
    ++done;
    const TextStyle style;
    const auto report = Written([&](auto& out) { WriteTextReport(result, style, out); });
    const auto summary = Written([&](auto& out) { WriteSummary(result, out); });
    const auto csv = Written([&](auto& out) { WriteCsvReport(result, out); });
    const auto json = Written([&](auto& out) { WriteJsonReport(result, style, out); });
    const auto page = Written([&](auto& out) { WriteHtmlReport(result, out); });
    const auto picture = Written([&](auto& out) { WriteSvgReport(result, out); });
    const auto metrics = Written([&](auto& out) { WritePrometheusReport(result, {}, out); });
    const std::string found = Between(summary, "\nfound: ", "\n");

    std::array<std::uint64_t, AllFindings::names.size()> counts{};
    for (const Finding& finding : result.findings) ++counts.at(finding.index());
    for (std::size_t kind = 0; kind < counts.size(); ++kind) {
      const std::string name = AllFindings::names.at(kind);
      SCOPED_TRACE(name);
      seen.at(kind) += counts.at(kind);
      ASSERT_EQ(Occurrences(json, "{\"kind\":\"" + name + "\""), counts.at(kind));
      ASSERT_EQ(Occurrences(page, "{\"kind\":\"" + name + "\""), counts.at(kind));
      ASSERT_EQ(
          NumberBehind(metrics, "fabscope_findings{fabric=\"fabric\",kind=\"" + name + "\"} "),
          counts.at(kind));
      ASSERT_EQ(NumberOf(AllFindings::words.at(kind), found), counts.at(kind));
    }
    ASSERT_EQ(Between(picture, "<title>", "</title>"), found.empty() ? "No faults found" : found);

    const std::uint64_t records = result.findings.RecordsCount();
    ASSERT_EQ(Occurrences(csv, "\nCLUSTER,"), records);
    ASSERT_EQ(Occurrences(csv, ",MISSING_LINK,"), counts[0]);
    ASSERT_EQ(Occurrences(csv, ",INVALID_LINK,"), counts[1]);
    ASSERT_EQ(NumberBehind(metrics, "fabscope_error_records{fabric=\"fabric\"} "), records);
    ASSERT_EQ(NumberBehind(report, "-I- Fat-tree check: "), records);
    ASSERT_EQ(NumberBehind(report, " error records, "), result.issuesCount);
    ASSERT_EQ(NumberBehind(json, "\"issues\":"), result.issuesCount);
    ASSERT_EQ(NumberBehind(page, "\"issues\":"), result.issuesCount);
    ASSERT_EQ(NumberBehind(metrics, "fabscope_issues{fabric=\"fabric\"} "), result.issuesCount);
    ASSERT_EQ(summary.find("no faults found") != std::string::npos, Total(counts) == 0);
  }
  // Or nothing would be compared.
  for (std::size_t kind = 0; kind < seen.size(); ++kind) {
    EXPECT_GE(seen.at(kind), 5U) << AllFindings::names.at(kind);
  }
}

}  // namespace
}  // namespace fabscope::internal
