// With a sink the findings go there, and records and report lines say the same as without.

#include "fat_tree/findings.h"

#include <array>
#include <cstdint>
#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <type_traits>
#include <variant>

#include "property/stage_run.h"

namespace fabscope::internal {
namespace {

std::string WithoutInformation(const std::string& text) {
  std::string left;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) {
    if (!line.empty() && !line.starts_with("-I- ")) left += line + "\n";
  }
  return left;
}

// What one run tells, each in words.
struct Told {
  std::string records;
  std::string validateText;
  std::string lines;  // of the findings that are no records
  std::uint64_t issues = 0;
  std::uint64_t issuesCount = 0;
  std::array<int, AllFindings::names.size()> found{};
};

Told RunWithSink(std::uint64_t seed) {
  StageRun run(reference::RandomCase(seed));
  Told told;
  std::ostringstream lines;
  run.topology->SetFindingSink([&](Finding&& finding) {
    ++told.found[finding.index()];
    told.issues += IssuesOf(finding);
    if (IsRecord(finding)) {
      told.records +=
          TagOf(LevelOf(finding)) + DescriptionOf(finding, run.topology->Show_GUID) + "\n";
      return;
    }
    std::visit(
        [&](const auto& issue) {
          if constexpr (IssueKind<std::decay_t<decltype(issue)>>)
            issue.WriteLines(lines, run.topology->Show_GUID);
        },
        finding);
  });
  run.RunAll();
  EXPECT_TRUE(run.errors.empty());
  told.lines = lines.str();
  told.validateText = run.validateText;
  told.issuesCount = run.topology->GetIssuesCount();
  return told;
}

Told RunWithoutSink(std::uint64_t seed) {
  StageRun run(reference::RandomCase(seed));
  run.RunAll();
  Told told;
  for (FabricErrGeneral* error : run.errors) {
    told.records += TagOf(error->GetLevel()) + error->GetErrorLine() + "\n";
  }
  told.validateText = run.validateText;
  told.issuesCount = run.topology->GetIssuesCount();
  return told;
}

TEST(FindingsTest, TellInOrderWhatRecordsAndReportLinesTell) {
  std::array<int, AllFindings::names.size()> found{};
  for (std::uint64_t seed = 30'000; seed < 31'000; ++seed) {
    SCOPED_TRACE(seed);
    const Told told = RunWithSink(seed);
    const Told plain = RunWithoutSink(seed);
    ASSERT_EQ(told.records, plain.records);
    ASSERT_EQ(told.validateText, plain.validateText);
    ASSERT_EQ(told.lines, WithoutInformation(told.validateText));
    ASSERT_EQ(told.issues, told.issuesCount);
    ASSERT_EQ(told.issuesCount, plain.issuesCount);
    for (std::size_t kind = 0; kind < found.size(); ++kind) found[kind] += told.found[kind];
  }
  for (const int count : found) EXPECT_GE(count, 20);
}

}  // namespace
}  // namespace fabscope::internal
