// Repairs keep what they promise on any fabric: trees with faults, and what is no tree at all. What
// verifies them shares nothing with what finds them.

#include <gtest/gtest.h>
#include <set>
#include <utility>

#include "reference/plain_model.h"
#include "reference/small_fabrics.h"
#include "repair/find_repairs.h"
#include "repairs/repair_cases.h"
#include "repairs/verify_repairs.h"

namespace fabscope::internal {
namespace {

constexpr std::uint64_t seeds = 5'000;
constexpr std::uint64_t chunks = 10;

// Chunks, so that they can run side by side.
class RepairsOfRandomFabrics : public testing::TestWithParam<std::uint64_t> {};

TEST_P(RepairsOfRandomFabrics, KeepWhatTheyPromise) {
  const std::uint64_t first = GetParam() * (seeds / chunks);
  for (std::uint64_t seed = first; seed < first + seeds / chunks; ++seed) {
    const RepairCase what = MakeRepairCase(seed);
    ASSERT_EQ(VerifyRepairs(*what.fabric, what.known).complaints, "")
        << "seed " << seed << ", " << what.kind;
  }
}

INSTANTIATE_TEST_SUITE_P(Chunks, RepairsOfRandomFabrics, testing::Range(std::uint64_t{0}, chunks));

TEST(RepairsOfEveryFabricOfUpToFourSwitches, KeepWhatTheyPromise) {
  for (int switches = 1; switches <= 4; ++switches) {
    const reference::SmallFabrics fabrics(switches);
    for (std::uint64_t number = 0; number < fabrics.CountAutomatic(); ++number) {
      const reference::PlainCase what = fabrics.Case(number);
      ASSERT_EQ(VerifyRepairs(*reference::ModelOf(what.fabric), {}).complaints, "") << what.kind;
    }
  }
}

// One of its cables is unplugged while the others move, and plugged in again at last.
TEST(RepairsOfACircleOfCables, KeepWhatTheyPromise) {
  const RepairCase what = MakeRepairCase(11'802);
  const RepairsVerdict verdict = VerifyRepairs(*what.fabric, what.known);
  EXPECT_EQ(verdict.complaints, "");
  std::set<std::pair<std::uint32_t, std::uint8_t>> unplugged;
  bool isPluggedAgain = false;
  for (const RepairStep& step : verdict.plan.steps) {
    for (const CableChange& change : step.cables) {
      if (!change.after) {
        unplugged.emplace(change.before->lower.node, change.before->lower.port);
      } else if (!change.before) {
        isPluggedAgain |= unplugged.contains({change.after->lower.node, change.after->lower.port});
      }
    }
  }
  EXPECT_TRUE(isPluggedAgain);
}

// Otherwise promises are kept that no plan has made.
TEST(RepairsOfRandomFabricsTogether, AreOfEveryKind) {
  std::set<RepairStatus> statuses;
  std::set<RepairAction> actions;
  std::set<RepairClass> classes;
  std::set<RepairReason> reasons;
  std::set<RepairNote::Kind> notes;
  for (std::uint64_t seed = 0; seed < seeds / 2; ++seed) {
    const RepairCase what = MakeRepairCase(seed);
    const RepairPlan plan =
        what.known ? FindRepairs(*what.fabric, *what.known) : FindRepairs(*what.fabric);
    statuses.insert(plan.status);
    for (const RepairStep& step : plan.steps) {
      actions.insert(step.action);
      classes.insert(step.trust);
      reasons.insert(step.reason);
    }
    for (const RepairNote& note : plan.notes) notes.insert(note.kind);
  }
  EXPECT_EQ(statuses.size(), 3U);
  EXPECT_EQ(actions.size(), 4U);
  EXPECT_EQ(classes.size(), 3U);
  EXPECT_EQ(reasons.size(), 8U);
  EXPECT_EQ(notes.size(), 6U);
}

}  // namespace
}  // namespace fabscope::internal
