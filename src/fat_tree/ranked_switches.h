#pragma once

#include <cstdint>
#include <vector>

#include "fat_tree/containers/node_set.h"
#include "fat_tree/containers/node_table.h"

namespace fabscope::internal {

// The switches of a tree by rank, and the rank of each switch. Ranks change as a whole only, so the
// two always agree.
class RankedSwitches {
 public:
  RankedSwitches() = default;
  explicit RankedSwitches(std::vector<NodeSet> switchesByRank);

  // By distance from the roots: the first entry the roots, the last one the leaves. Empty before a
  // tree is built.
  const std::vector<NodeSet>& Sets() const { return sets_; }

  // The first rank that holds the switch, or -1.
  int RankOf(const IBNode* node) const { return node != nullptr ? RankOf(node->index) : nullRank_; }
  // The same by IBNode::index.
  int RankOf(std::uint32_t index) const { return ranks_.Get(index); }

 private:
  static constexpr std::int32_t noRank = -1;

  std::vector<NodeSet> sets_;
  NodeTable<std::int32_t> ranks_{noRank};
  std::int32_t nullRank_ = noRank;  // of a null entry, which no node stands for
};

}  // namespace fabscope::internal
