#include "repair/misfit_bound.h"

#include <gtest/gtest.h>

#include "repair/inferred_ranks.h"
#include "support/repair_fixture.h"

namespace fabscope::internal {
namespace {

class MisfitBoundTest : public RepairTest {
 protected:
  // Whether the bound is sure of so many misfits with the ranks that the names say.
  bool IsSureOf(std::uint64_t count, const IBFabric& fabric) {
    const SwitchGraph graph(fabric);
    const TreeRanks ranks = Ranks({"root", "mid", "leaf"});
    std::vector<int> ofSwitch(graph.Count());
    for (std::uint32_t i = 0; i < graph.Count(); ++i) {
      ofSwitch[i] = ranks.ofNode[graph.NodeOf(i).index];
    }
    return HasAtLeastMisfits(NeighborLists(graph), ofSwitch, count);
  }
};

TEST_F(MisfitBoundTest, ACleanTreeHasNone) {
  AddThreeLevelTree(tree, 3, 4, 3, 2, 2);
  EXPECT_TRUE(IsSureOf(0, tree.Build()));
  EXPECT_FALSE(IsSureOf(1, tree.Build()));
}

TEST_F(MisfitBoundTest, ParallelCablesAreNoMisfits) {
  tree.Switch("root0").Switch("root1").Switch("leaf0").Switch("leaf1");
  for (const char* leaf : {"leaf0", "leaf1"}) {
    for (const char* root : {"root0", "root1"}) tree.Cable(root, leaf).Cable(root, leaf);
  }
  EXPECT_FALSE(IsSureOf(1, tree.Build()));
}

TEST_F(MisfitBoundTest, AMissingCableIsSeen) {
  AddThreeLevelTree(tree, 3, 4, 3, 2, 2);
  const auto missing = Changed({{{CableBetween("mid0.0", "leaf0.1"), std::nullopt}}});
  EXPECT_TRUE(IsSureOf(1, *missing));
  EXPECT_FALSE(IsSureOf(2, *missing));
}

TEST_F(MisfitBoundTest, NeverExceedsWhatIsCounted) {
  AddThreeLevelTree(tree, 4, 4, 3, 2, 2);
  const auto fabric = Changed({SwapUpperEnds("mid0.0", "leaf0.1", "mid1.1", "leaf1.2"),
                               SwapUpperEnds("mid2.0", "leaf2.1", "mid3.1", "leaf3.2")});
  const std::uint64_t counted = CountMisfits(*fabric, Ranks({"root", "mid", "leaf"}));
  EXPECT_TRUE(IsSureOf(2, *fabric));
  EXPECT_FALSE(IsSureOf(counted + 1, *fabric));
}

}  // namespace
}  // namespace fabscope::internal
