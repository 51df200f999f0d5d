// Groups are numbered for the whole process: what is built later goes on where the last one ended,
// and differs from it in nothing else.

#include <gtest/gtest.h>
#include <regex>
#include <sstream>

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

// A text with all numbers of groups raised.
std::string Raised(const std::string& text, const GroupCount& by) {
  static const std::regex numbers(
      "((?:[Nn]eighborhood|Connectivity group|connectivity group|and group|neighborhoods)"
      ":? )([0-9]+(?:, [0-9]+)*)");
  std::string raised;
  std::size_t end = 0;
  for (std::sregex_iterator match(text.begin(), text.end(), numbers), none; match != none;
       ++match) {
    const auto start = static_cast<std::size_t>(match->position());
    raised += text.substr(end, start - end);
    end = start + static_cast<std::size_t>(match->length());
    const std::string label = (*match)[1];
    // The dump says how many groups there are in nearly the same words.
    if (label == "neighborhoods: " && text.compare(start - 3, 3, "-- ") == 0) {
      raised += match->str();
      continue;
    }
    const bool isGroup = label.find("group") != std::string::npos;
    raised += label;
    std::istringstream list((*match)[2].str());
    const char* separator = "";
    for (std::uint64_t number = 0; list >> number; list.ignore(2)) {
      raised += separator + std::to_string(number + (isGroup ? by.groups : by.neighborhoods));
      separator = ", ";
    }
  }
  return raised + text.substr(end);
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
