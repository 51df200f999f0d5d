// The quick question whether a tree is proper has the answer of the slow one.

#include "repair/proper_tree.h"

#include <gtest/gtest.h>

#include "check/checked_tree.h"
#include "property/stage_run.h"
#include "reference/small_fabrics.h"
#include "repair/inferred_ranks.h"
#include "repair/misfit_bound.h"

namespace fabscope::internal {
namespace {

struct Tally {
  int proper = 0;
  int others = 0;
};

void Compare(const reference::PlainCase& what, Tally& tally) {
  StageRun run(what);
  run.Build();
  if (run.buildStatus != 0) return;
  const std::uint64_t misfits = CountMisfits(*run.model, RanksOf(*run.topology));
  const bool isProper = IsProperTree(*run.topology);
  if (run.topology->GetTreeLinks().HasOneSided()) {
    ASSERT_FALSE(isProper);
    return;
  }
  ASSERT_EQ(isProper, misfits == 0);
  ++(isProper ? tally.proper : tally.others);
  const SwitchGraph graph(*run.model);
  std::vector<int> ranks(graph.Count());
  for (std::uint32_t i = 0; i < graph.Count(); ++i) {
    ranks[i] = RanksOf(*run.topology).ofNode[graph.NodeOf(i).index];
  }
  ASSERT_FALSE(HasAtLeastMisfits(NeighborLists(graph), ranks, misfits + 1));
}

TEST(ProperTrees, AreThoseWithoutMisfitsAmongRandomFabrics) {
  Tally tally;
  for (std::uint64_t seed = 60'000; seed < 64'000; ++seed) {
    SCOPED_TRACE(seed);
    Compare(reference::RandomCase(seed), tally);
    if (HasFatalFailure()) return;
  }
  EXPECT_GE(tally.proper, 300);
  EXPECT_GE(tally.others, 300);
}

TEST(ProperTrees, AreThoseWithoutMisfitsAmongAllFabricsOfUpToFourSwitches) {
  Tally tally;
  for (int switches = 1; switches <= 4; ++switches) {
    const reference::SmallFabrics fabrics(switches);
    for (std::uint64_t number = 0; number < fabrics.CountAutomatic(); ++number) {
      SCOPED_TRACE(number);
      Compare(fabrics.Case(number), tally);
      if (HasFatalFailure()) return;
    }
  }
  EXPECT_GE(tally.proper, 10);
  EXPECT_GE(tally.others, 5);
}

}  // namespace
}  // namespace fabscope::internal
