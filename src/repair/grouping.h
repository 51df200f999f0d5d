#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "repair/rank_pair.h"

namespace fabscope::internal {

// The two sides of a pair of ranks.
enum Side : std::size_t { SpineSide = 0, LineSide = 1 };
inline Side OtherSide(Side side) { return side == SpineSide ? LineSide : SpineSide; }

// How the switches of a pair of ranks fall into groups. In a proper tree every spine of a group has
// the same number of cables to each of its lines, and no cable leaves the group.
struct Grouping {
  static constexpr int none = -1;  // a switch without a cable to the other side

  std::array<std::vector<int>, 2> groupOf;         // by side, then by place in the pair
  std::array<std::vector<std::uint32_t>, 2> size;  // by side, then by group
  std::vector<std::uint32_t> multiplicity;         // by group: cables of a spine and a line
  std::uint64_t cost = 0;                          // cables that must go plus cables that lack

  std::size_t Count() const { return multiplicity.size(); }
};

// The cheapest grouping that is found.
Grouping FindGroups(const RankPair& pair);

// Sets size and cost by groupOf and multiplicity.
void Recount(const RankPair& pair, Grouping& grouping);

// Moves a switch, by its place in the pair, from its group to another; size and cost follow.
void Regroup(const RankPair& pair, Grouping& grouping, Side side, std::uint32_t i, int group);

}  // namespace fabscope::internal
