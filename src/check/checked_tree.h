#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <sstream>
#include <string>

#include "fabric/ib_fabric.h"
#include "fat_tree/finding_list.h"
#include "fat_tree/topology.h"
#include "repair/repair_plan.h"

namespace fabscope::internal {

// A fabric checked with roots that are known. The topology reads the fabric, which must outlive it.
struct CheckedTree {
  std::string problem;  // why it could not be built or validated; empty if it could
  std::unique_ptr<std::ostringstream> stream;  // what `topology` writes to
  std::unique_ptr<FTTopology> topology;
  FindingList findings;
  std::uint64_t issues = 0;
};

// Switches of rank 0 are the roots. As in every check the other ranks follow from the distance to
// them.
CheckedTree CheckTree(const IBFabric& fabric, const TreeRanks& ranks, int mergePercent);

// The ranks of a tree that was built.
TreeRanks RanksOf(const FTTopology& topology);

}  // namespace fabscope::internal
