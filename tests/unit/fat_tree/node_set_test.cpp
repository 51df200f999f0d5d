#include "fat_tree/containers/node_set.h"

#include <gtest/gtest.h>
#include <utility>
#include <vector>

namespace fabscope::internal {
namespace {

TEST(NodeSetTest, NodesAddedInOneGoStandWhereEachByItselfWould) {
  const std::vector<IBNode> nodes(6);
  // Which of the nodes are there before, and which are added, in every way.
  for (unsigned before = 0; before < 64; ++before) {
    for (unsigned added = 0; added < 64; ++added) {
      NodeSet set;
      std::vector<const IBNode*> more;
      for (unsigned i = 0; i < 6; ++i) {
        if ((before >> i & 1U) != 0) set.insert(&nodes[i]);
        // From the last to the first.
        if ((added >> (5 - i) & 1U) != 0) more.push_back(&nodes[5 - i]);
      }
      NodeSet expected = set;
      expected.insert(more.begin(), more.end());
      AddNodes(more, set);
      ASSERT_EQ(set, expected) << before << ' ' << added;
    }
  }
}

TEST(NodeSetTest, ANodeGivenTwiceIsAddedOnceAndNullIsANodeLikeOthers) {
  const std::vector<IBNode> nodes(2);
  NodeSet set;
  AddNodes({&nodes[1], nullptr, nodes.data(), &nodes[1], nullptr}, set);
  EXPECT_EQ(set, (NodeSet{nullptr, nodes.data(), &nodes[1]}));
}

}  // namespace
}  // namespace fabscope::internal
