#pragma once

#include <cstdint>
#include <vector>

#include "repair/switch_graph.h"
#include "repair/tree_groups.h"

namespace fabscope::internal {

// How far a fabric is from a proper fat tree of given ranks, and at which switches.
struct Misfits {
  std::uint64_t cables = 0;  // that must go, plus those that lack
  // By switch: how many of its own cables must go or lack.
  std::vector<std::uint32_t> ofSwitch;
};

// `ranks` by number in the graph; TreeRanks::none for switches outside the tree.
Misfits FindMisfits(const SwitchGraph& graph, const std::vector<int>& ranks);
// The same, of groups that are found already.
Misfits FindMisfits(const TreeGroups& tree);

}  // namespace fabscope::internal
