// What holds of groups and of the records about their cables, whatever the fabric.
//
// The histogram looks at a cable from its lower end only, so "a counted cable" below is one that
// the lower switch's port counts; the marks of the upper end do not matter.

#include <algorithm>
#include <gtest/gtest.h>
#include <map>
#include <set>

#include "property/recount.h"
#include "property/stage_run.h"

namespace fabscope::internal {
namespace {

using reference::PlainCase;
using reference::RandomCase;

constexpr std::uint64_t firstSeed = 10'000;
constexpr std::uint64_t seeds = 1'000;
// So many of the cases at least must come through validation, or nothing was tested.
constexpr int leastValidated = 400;

// GUIDs are shown, so that a record tells which switches it names.
PlainCase CaseWithGuids(std::uint64_t seed) {
  PlainCase what = RandomCase(seed);
  what.options.showGuid = 2;
  return what;
}

template <typename Check>
void ForEachValidated(Check check) {
  int validated = 0;
  for (std::uint64_t seed = firstSeed; seed < firstSeed + seeds; ++seed) {
    SCOPED_TRACE(seed);
    StageRun run(CaseWithGuids(seed));
    if (!run.RunAll()) continue;
    ++validated;
    check(run);
    if (testing::Test::HasFailure()) return;
  }
  EXPECT_GE(validated, leastValidated);
}

const FTNeighborhood* GroupOfLine(const std::vector<FTNeighborhood*>& groups, const IBNode* line) {
  for (const FTNeighborhood* group : groups) {
    if (group->GetLines().contains(line)) return group;
  }
  return nullptr;
}

const FTNeighborhood* FirstGroupWith(const std::vector<FTNeighborhood*>& groups,
                                     const IBNode* node) {
  for (const FTNeighborhood* group : groups) {
    if (group->GetSpines().contains(node) || group->GetLines().contains(node)) return group;
  }
  return nullptr;
}

std::string EndText(const IBPort& port) {
  return NameWithGuid(*port.node) + " port: " + std::to_string(port.num);
}

// The text of the record about a cable: `first` is the end named first.
std::string InvalidLinkText(const StageRun& run, std::size_t rank, const IBPort& first,
                            const IBPort& second) {
  const auto& groups = run.topology->GetNeighborhoods()[rank];
  const bool isLast = rank + 1 == run.topology->GetNeighborhoods().size();
  const FTNeighborhood* group1 = FirstGroupWith(groups, first.node);
  const FTNeighborhood* group2 = FirstGroupWith(groups, second.node);
  if (group1 == nullptr || group2 == nullptr) return "a switch in no group";
  const std::uint64_t id1 = group1->GetId();
  const std::uint64_t id2 = group2->GetId();
  if (id1 == id2) {
    return (isLast ? "Neighborhood " : "Connectivity group ") + std::to_string(id1) +
           " : invalid link between switches (" + EndText(first) + ") and (" + EndText(second) +
           ")";
  }
  return std::string("Invalid link between ") + (isLast ? "neighborhood " : "connectivity group ") +
         std::to_string(id1) + " (" + EndText(first) + ") and " +
         (isLast ? "neighborhood " : "group ") + std::to_string(id2) + " (" + EndText(second) + ")";
}

// Cables of lower switches to upper ones that are not spines of the lower switch's group. Only the
// cross-link check takes a switch from a group that reaches it, and it records every such cable.
std::vector<std::string> CrossCableTexts(const StageRun& run, const Recount& recount,
                                         std::size_t rank) {
  std::vector<std::string> texts;
  const auto& groups = run.topology->GetNeighborhoods()[rank];
  for (const IBNode* line : run.topology->GetRanks()[rank + 1]) {
    const FTNeighborhood* group = GroupOfLine(groups, line);
    for (const IBPort* port : PortsOf(*line)) {
      const IBNode* far = CountedSwitch(*port);
      if (far == nullptr || recount.RankOf(far) != static_cast<int>(rank)) continue;
      if (group != nullptr && group->GetSpines().contains(far)) continue;
      texts.push_back(InvalidLinkText(run, rank, *port->remotePort, *port));
    }
  }
  return texts;
}

// The first counted cable, in model order, between each two switches of the lower rank. A pair is
// named once, from the switch that saw it first.
std::vector<std::string> TextsInsideRank(const StageRun& run, const Recount& recount,
                                         std::size_t rank) {
  std::vector<std::string> texts;
  std::set<std::set<const IBNode*>> named;
  for (const IBNode* line : run.topology->GetRanks()[rank + 1]) {
    for (const IBPort* port : PortsOf(*line)) {
      const IBNode* far = CountedSwitch(*port);
      if (far == nullptr || recount.RankOf(far) != static_cast<int>(rank) + 1) continue;
      if (!named.insert({line, far}).second) continue;
      texts.push_back(InvalidLinkText(run, rank, *port, *port->remotePort));
    }
  }
  return texts;
}

// The same between roots, which are looked at only when a lower switch reaches them, in the order
// in which the lower switches do.
std::vector<std::string> TextsBetweenRoots(const StageRun& run, const Recount& recount) {
  std::vector<std::string> texts;
  std::set<std::set<const IBNode*>> named;
  for (const IBNode* line : run.topology->GetRanks()[1]) {
    for (const IBPort* up : PortsOf(*line)) {
      const IBNode* root = CountedSwitch(*up);
      if (root == nullptr || recount.RankOf(root) != 0) continue;
      for (const IBPort* port : PortsOf(*root)) {
        const IBNode* far = CountedSwitch(*port);
        if (far == nullptr || recount.RankOf(far) != 0) continue;
        if (!named.insert({root, far}).second) continue;
        texts.push_back(InvalidLinkText(run, 0, *port, *port->remotePort));
      }
    }
  }
  return texts;
}

bool AreConnected(const IBNode* spine, const IBNode* line) {
  const std::vector<const IBPort*> ports = PortsOf(*line);
  return std::any_of(ports.begin(), ports.end(),
                     [&](const IBPort* port) { return CountedSwitch(*port) == spine; });
}

std::set<const IBNode*> UpperSwitchesOf(const IBNode* line, const Recount& recount) {
  std::set<const IBNode*> uppers;
  for (const IBPort* port : PortsOf(*line)) {
    const IBNode* far = CountedSwitch(*port);
    if (far != nullptr && recount.RankOf(far) >= 0 &&
        recount.RankOf(far) == recount.RankOf(line) - 1) {
      uppers.insert(far);
    }
  }
  return uppers;
}

TEST(GroupProperties, EveryLowerSwitchIsALineOfExactlyOneGroup) {
  ForEachValidated([](const StageRun& run) {
    const auto& ranks = run.topology->GetRanks();
    ASSERT_EQ(run.topology->GetNeighborhoods().size(), ranks.size() - 1);
    for (std::size_t rank = 0; rank + 1 < ranks.size(); ++rank) {
      std::multiset<const IBNode*> lines;
      for (const FTNeighborhood* group : run.topology->GetNeighborhoods()[rank]) {
        lines.insert(group->GetLines().begin(), group->GetLines().end());
      }
      EXPECT_EQ(lines,
                std::multiset<const IBNode*>(ranks[rank + 1].begin(), ranks[rank + 1].end()));
    }
  });
}

// Merging only ever joins sets of switches that lower switches reach, so no group has a spine that
// none of its lines is cabled to.
TEST(GroupProperties, EverySpineIsCabledToALineOfItsGroup) {
  ForEachValidated([](const StageRun& run) {
    for (const FTNeighborhood* group : run.Groups()) {
      for (const IBNode* spine : group->GetSpines()) {
        EXPECT_TRUE(std::any_of(group->GetLines().begin(), group->GetLines().end(),
                                [&](const IBNode* line) { return AreConnected(spine, line); }));
      }
    }
  });
}

// A cable between neighbouring ranks either leads to a spine of the lower switch's own group or is
// recorded as invalid, one record a cable, and never both; beyond those, exactly the pairs of
// switches cabled inside a rank are. Records of a rank come in any order between the kinds here:
// the order is that of the sets, which nothing but the stage knows.
TEST(GroupProperties, InvalidLinkRecordsAreTheCrossCablesAndThePairsInsideARank) {
  ForEachValidated([](const StageRun& run) {
    const Recount recount(*run.topology);
    std::multiset<std::string> expected;
    for (std::size_t rank = 0; rank + 1 < recount.RankCount(); ++rank) {
      const std::vector<std::string> crossing = CrossCableTexts(run, recount, rank);
      const std::vector<std::string> inside = TextsInsideRank(run, recount, rank);
      expected.insert(crossing.begin(), crossing.end());
      expected.insert(inside.begin(), inside.end());
    }
    const std::vector<std::string> betweenRoots = TextsBetweenRoots(run, recount);
    expected.insert(betweenRoots.begin(), betweenRoots.end());
    const std::vector<std::string> records = run.Records("INVALID_LINK");
    EXPECT_EQ(std::multiset<std::string>(records.begin(), records.end()), expected);
  });
}

// In the order of groups, spines and lines.
TEST(GroupProperties, MissingLinkRecordsAreTheSpinesAndLinesWithoutACountedCable) {
  ForEachValidated([](const StageRun& run) {
    std::vector<std::string> expected;
    for (const FTNeighborhood* group : run.Groups()) {
      const bool isLast = group->GetRank() + 1 == run.topology->GetNeighborhoods().size();
      const std::string label =
          (isLast ? "Neighborhood " : "Connectivity group ") + std::to_string(group->GetId());
      for (const IBNode* spine : group->GetSpines()) {
        for (const IBNode* line : group->GetLines()) {
          if (AreConnected(spine, line)) continue;
          expected.push_back(label + ": missing link between switches (" + NameWithGuid(*spine) +
                             ") and (" + NameWithGuid(*line) + ")");
        }
      }
    }
    EXPECT_EQ(run.Records("MISSING_LINK"), expected);
  });
}

// With a merge percent of 100 no difference is small enough to merge, so groups are told by what
// their lines reach and by nothing else.
TEST(GroupProperties, WithoutMergingLinesShareAGroupExactlyWhenTheyReachTheSameSwitches) {
  int validated = 0;
  for (std::uint64_t seed = firstSeed; seed < firstSeed + seeds; ++seed) {
    SCOPED_TRACE(seed);
    PlainCase what = CaseWithGuids(seed);
    what.options.mergePercent = 100;
    StageRun run(what);
    if (!run.RunAll()) continue;
    ++validated;
    const Recount recount(*run.topology);
    for (const auto& groups : run.topology->GetNeighborhoods()) {
      std::set<std::set<const IBNode*>> reachedByGroups;
      for (const FTNeighborhood* group : groups) {
        std::set<std::set<const IBNode*>> reached;
        for (const IBNode* line : group->GetLines()) {
          reached.insert(UpperSwitchesOf(line, recount));
        }
        ASSERT_EQ(reached.size(), 1U);
        EXPECT_TRUE(reachedByGroups.insert(*reached.begin()).second);
      }
    }
  }
  EXPECT_GE(validated, leastValidated);
}

}  // namespace
}  // namespace fabscope::internal
