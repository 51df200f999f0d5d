// Groups are numbered for the whole process: what is built later goes on where the last one ended,
// and differs from it in nothing else.

#include <algorithm>
#include <array>
#include <gtest/gtest.h>
#include <string_view>

#include "property/stage_run.h"

namespace fabscope {
namespace {

using reference::PlainCase;
using reference::RandomCase;

constexpr std::uint64_t firstSeed = 40'000;
constexpr std::uint64_t seeds = 1'000;
constexpr int leastValidated = 400;

// A case whose texts name groups by nothing but their numbers.
PlainCase CaseWithPlainNames(std::uint64_t seed) {
  PlainCase what = RandomCase(seed);
  for (std::size_t i = 0; i < what.fabric.nodes.size(); ++i) {
    what.fabric.nodes[i].displayName = "n" + std::to_string(i);
  }
  return what;
}

struct GroupCount {
  std::uint64_t neighborhoods = 0;
  std::uint64_t groups = 0;
};

GroupCount CountGroups(const FTTopology& topology) {
  GroupCount count;
  const auto& ranks = topology.GetNeighborhoods();
  for (std::size_t rank = 0; rank < ranks.size(); ++rank) {
    (rank + 1 == ranks.size() ? count.neighborhoods : count.groups) += ranks[rank].size();
  }
  return count;
}

// What stands in front of the number of a group, or of a list of numbers.
struct Label {
  std::string_view text;
  bool isNeighborhood;
};

constexpr std::array<Label, 8> labels{{{"Neighborhood ", true},
                                       {"neighborhood ", true},
                                       {"neighborhood: ", true},
                                       {"following neighborhoods: ", true},
                                       {"Connectivity group ", false},
                                       {"connectivity group ", false},
                                       {"connectivity group: ", false},
                                       {"and group ", false}}};

// A text with all numbers of groups raised.
std::string Raised(std::string_view text, const GroupCount& by) {
  constexpr std::string_view digits = "0123456789";
  std::string raised;
  while (!text.empty()) {
    const auto* const label = std::find_if(labels.begin(), labels.end(), [&](const Label& known) {
      return std::string_view(raised).ends_with(known.text);
    });
    const std::size_t length = std::min(text.find_first_not_of(digits), text.size());
    if (label == labels.end() || length == 0) {
      raised += text.front();
      text.remove_prefix(1);
      continue;
    }
    const std::uint64_t offset = label->isNeighborhood ? by.neighborhoods : by.groups;
    for (std::size_t end = length;; end = text.find_first_not_of(digits)) {
      raised += std::to_string(std::stoull(std::string(text.substr(0, end))) + offset);
      text.remove_prefix(std::min(end, text.size()));
      if (!text.starts_with(", ")) break;
      raised += ", ";
      text.remove_prefix(2);
    }
  }
  return raised;
}

std::string AllTexts(const StageRun& run) {
  std::string text = run.buildText + run.topology->LevelsReport() + run.validateText;
  for (FabricErrGeneral* error : run.errors) {
    text += error->GetErrorLine() + "\n" + error->GetCSVErrorLine() + "\n";
  }
  return text + run.dumpText;
}

// The numbers of neighborhoods, or of connectivity groups, in report order.
std::vector<std::uint64_t> Ids(const StageRun& run, bool ofNeighborhoods) {
  std::vector<std::uint64_t> ids;
  for (const FTNeighborhood* group : run.Groups()) {
    if (run.topology->IsLastRankNeighborhood(group->GetRank()) == ofNeighborhoods) {
      ids.push_back(group->GetId());
    }
  }
  return ids;
}

TEST(Numbering, GoesOnFromOneTopologyToTheNext) {
  int compared = 0;
  for (std::uint64_t seed = firstSeed; seed < firstSeed + seeds; ++seed) {
    SCOPED_TRACE(seed);
    StageRun first(CaseWithPlainNames(seed));
    StageRun second(CaseWithPlainNames(seed + seeds));
    if (!first.RunAll() || !second.RunAll()) continue;
    ++compared;
    for (const bool ofNeighborhoods : {true, false}) {
      std::vector<std::uint64_t> ids = Ids(first, ofNeighborhoods);
      const std::vector<std::uint64_t> later = Ids(second, ofNeighborhoods);
      ids.insert(ids.end(), later.begin(), later.end());
      for (std::size_t i = 1; i < ids.size(); ++i) ASSERT_EQ(ids[i], ids[i - 1] + 1);
    }
  }
  EXPECT_GE(compared, leastValidated / 2);
}

TEST(Numbering, IsAllThatDiffersBetweenTwoRunsOfOneFabric) {
  int validated = 0;
  for (std::uint64_t seed = firstSeed; seed < firstSeed + seeds; ++seed) {
    SCOPED_TRACE(seed);
    const PlainCase what = CaseWithPlainNames(seed);
    StageRun first(what);
    StageRun second(what);
    const bool isValidated = first.RunAll();
    ASSERT_EQ(second.RunAll(), isValidated);
    EXPECT_EQ(second.message, first.message);
    EXPECT_EQ(second.topology->GetIssuesCount(), first.topology->GetIssuesCount());
    if (!isValidated) continue;
    ++validated;
    ASSERT_EQ(AllTexts(second), Raised(AllTexts(first), CountGroups(*first.topology)));
  }
  EXPECT_GE(validated, leastValidated);
}

}  // namespace
}  // namespace fabscope
