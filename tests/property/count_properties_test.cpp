// What reports say of link counts, against a recount from the model.

#include <gtest/gtest.h>
#include <map>
#include <sstream>

#include "property/recount.h"
#include "property/stage_run.h"

namespace fabscope::internal {
namespace {

using reference::PlainCase;
using reference::RandomCase;

constexpr std::uint64_t firstSeed = 20'000;
constexpr std::uint64_t seeds = 1'000;
constexpr int leastValidated = 400;

template <typename Check>
void ForEachValidated(Check check) {
  int validated = 0;
  for (std::uint64_t seed = firstSeed; seed < firstSeed + seeds; ++seed) {
    SCOPED_TRACE(seed);
    PlainCase what = RandomCase(seed);
    what.options.showGuid = 2;
    StageRun run(what);
    if (!run.RunAll()) continue;
    ++validated;
    check(run);
    if (testing::Test::HasFailure()) return;
  }
  EXPECT_GE(validated, leastValidated);
}

struct Totals {
  std::uint64_t up = 0;
  std::uint64_t down = 0;
};

// Of the spines, whose links of both kinds are all counted: those down to a switch of another group
// are among them.
Totals TotalsOf(const FTNeighborhood& group, const Recount& recount) {
  Totals totals;
  if (group.GetRank() == 0) return totals;
  for (const IBNode* spine : group.GetSpines()) {
    const Links links = recount.LinksOf(*spine);
    totals.up += static_cast<std::uint64_t>(links.up);
    totals.down += static_cast<std::uint64_t>(links.down);
  }
  return totals;
}

std::string Title(const StageRun& run, const FTNeighborhood& group) {
  const bool isLast = group.GetRank() + 1 == run.topology->GetNeighborhoods().size();
  return (isLast ? "Neighborhood " : "Connectivity group ") + std::to_string(group.GetId());
}

std::vector<std::string> LinesThatBegin(const std::string& text, const std::string& start) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) {
    if (line.starts_with(start)) lines.push_back(line);
  }
  return lines;
}

// The number of asymmetric aggregated ports that a line tells; 0 for any other line.
std::uint64_t FoundAPorts(const std::string& line) {
  const std::string label = ": found ";
  const std::size_t at = line.find(label);
  if (at == std::string::npos || line.find(" asymmetric APort", at) == std::string::npos) return 0;
  return std::stoull(line.substr(at + label.size()));
}

std::string WithoutAPortLines(const std::string& text) {
  std::string left;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) {
    if (FoundAPorts(line) == 0) left += line + "\n";
  }
  return left;
}

// The verdict on one set of switches, with the listing of those that deviate: eight names a line.
std::string Verdict(const std::string& title, const NodeSet& nodes, const char* setName, bool isUp,
                    bool isWarning, const Recount& recount) {
  std::map<int, std::vector<std::string>, std::greater<>> namesByCount;
  for (const IBNode* node : nodes) {
    const Links links = recount.LinksOf(*node);
    namesByCount[isUp ? links.up : links.down].push_back(NameWithGuid(*node));
  }
  if (namesByCount.empty()) return {};
  const std::string what = isUp ? "uplinks" : "downlinks";
  const std::string most = std::to_string(namesByCount.begin()->first);
  if (namesByCount.size() == 1) {
    return "-I- " + title + ": all " + setName + " have the same number of " + what + ": " + most +
           "\n";
  }
  std::string text = (isWarning ? "-W- " : "-E- ") + title + ": " + setName +
                     " with different number of " + what + " (expected  " + most + " " + what + ")";
  for (auto entry = std::next(namesByCount.begin()); entry != namesByCount.end(); ++entry) {
    text += "\n\t " + std::to_string(entry->first) + " " + what + ": ";
    for (std::size_t i = 0; i < entry->second.size(); ++i) {
      text += entry->second[i] + " ";
      if (i % 8 == 7) text += "\n\t\t";
    }
  }
  return text + "\n";
}

TEST(CountProperties, TotalsOfTheDumpAreTheSumsOverTheSpines) {
  ForEachValidated([](const StageRun& run) {
    const Recount recount(*run.topology);
    std::vector<std::string> expected;
    for (const FTNeighborhood* group : run.Groups()) {
      const Totals totals = TotalsOf(*group, recount);
      EXPECT_EQ(group->GetTotalSpineUplinks(), totals.up);
      EXPECT_EQ(group->GetTotalInternalLinks(), totals.down);
      if (group->GetRank() == 0) continue;
      expected.push_back("\t\ttotal spine uplinks: " + std::to_string(totals.up));
      expected.push_back("\t\ttotal internal links: " + std::to_string(totals.down));
    }
    EXPECT_EQ(LinesThatBegin(run.dumpText, "\t\ttotal "), expected);
  });
}

// Each cable between neighbouring ranks counts once from either end, so without marks on its ports
// the down-links of a rank are the up-links of the next. Ports that are marked at one end only are
// left out by that end.
TEST(CountProperties, CablesBetweenTwoRanksCountFromBothEnds) {
  ForEachValidated([](const StageRun& run) {
    for (const IBPort& port : run.model->GetPorts()) {
      if (port.fnm || port.fnm1 || !port.symmetric) return;
    }
    const auto& ranks = run.topology->GetRanks();
    for (std::size_t rank = 0; rank + 1 < ranks.size(); ++rank) {
      int down = 0;
      int up = 0;
      for (const IBNode* node : ranks[rank]) {
        down += run.topology->CalculateSwitchUpDownLinks(rank, *node).down;
      }
      for (const IBNode* node : ranks[rank + 1]) {
        up += run.topology->CalculateSwitchUpDownLinks(rank + 1, *node).up;
      }
      EXPECT_EQ(down, up);
    }
  });
}

// The whole text of all link checks, group by group; lines about aggregated ports and FLIDs, which
// stand between and behind, are left out.
TEST(CountProperties, ReportedCountsAgreeWithARecount) {
  ForEachValidated([](const StageRun& run) {
    const Recount recount(*run.topology);
    std::string expected;
    for (const FTNeighborhood* group : run.Groups()) {
      const bool isLast = group->GetRank() + 1 == run.topology->GetNeighborhoods().size();
      const std::string title = Title(run, *group);
      const Totals totals = TotalsOf(*group, recount);
      expected += "\n";
      if (totals.up < totals.down) {
        expected += "-W- " + title + ": suspected blocking configuration  --  total number of " +
                    "spine's uplinks " + std::to_string(totals.up) +
                    " is less then total number of internal links " + std::to_string(totals.down) +
                    "\n";
      }
      const NodeSet& spines = group->GetSpines();
      const NodeSet& lines = group->GetLines();
      if (group->GetRank() != 0) {
        expected += Verdict(title, spines, "spines", true, false, recount);
      }
      expected += Verdict(title, spines, "spines", false, false, recount);
      expected += Verdict(title, lines, "lines", true, false, recount);
      expected += Verdict(title, lines, "lines", false, isLast, recount);
    }
    expected += "\n\n";  // FLIDs follow
    std::string written = WithoutAPortLines(run.validateText);
    written.resize(std::min(written.size(), expected.size()));
    EXPECT_EQ(written, expected);
  });
}

// Every finding that is counted is written, and the other way round.
TEST(CountProperties, IssuesAreTheFindingsOfTheText) {
  ForEachValidated([](const StageRun& run) {
    std::uint64_t issues = 0;
    std::istringstream stream(run.validateText);
    for (std::string line; std::getline(stream, line);) {
      const bool isDifference = line.find(" with different number of ") != std::string::npos;
      const bool isDeviation = line.starts_with("\t ");
      const bool isBlocking = line.find("suspected blocking") != std::string::npos;
      const bool isFlid = line.starts_with("-W- FLID=");
      // A difference counts each of its counts: the expected one and those listed.
      if (isDifference || isDeviation || isBlocking || isFlid) ++issues;
      issues += FoundAPorts(line);
    }
    EXPECT_EQ(run.topology->GetIssuesCount(), issues);
  });
}

}  // namespace
}  // namespace fabscope::internal
