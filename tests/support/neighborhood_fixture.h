#pragma once

#include <cstddef>
#include <string>

#include "fat_tree/neighborhood.h"
#include "support/up_hop_fixture.h"

namespace fabscope::internal {

// Trees that are ranked and then grouped.
class NeighborhoodTest : public UpHopTest {
 protected:
  // Ranks a fabric of two or three levels and groups all of it.
  int GroupFromRoots(std::size_t count) {
    RankFromRoots(count);
    return Topology().CreateNeighborhoods(errors);
  }

  const FTNeighborhood& Group(std::size_t rank, std::size_t index) {
    return *Topology().GetNeighborhoods().at(rank).at(index);
  }

  std::string Id(std::size_t rank, std::size_t index) {
    return std::to_string(Group(rank, index).GetId());
  }
};

}  // namespace fabscope::internal
