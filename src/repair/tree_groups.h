#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

#include "repair/grouping.h"
#include "repair/rank_pair.h"
#include "repair/repair_plan.h"
#include "repair/switch_graph.h"

namespace fabscope::internal {

// The groups of a whole tree, a grouping for each pair of ranks.
struct TreeGroups {
  TreeGroups(const SwitchGraph& switchGraph, std::vector<int> ranksOfSwitches);

  const SwitchGraph& graph;
  std::vector<int> ranks;            // by switch
  std::vector<std::uint32_t> place;  // by switch: among those of its rank
  std::vector<RankPair> pairs;       // by the rank of the spines
  std::vector<Grouping> groupings;   // likewise

  // Whether no cable between neighboring ranks must go or lacks.
  bool AreProper() const {
    return std::all_of(groupings.begin(), groupings.end(),
                       [](const Grouping& grouping) { return grouping.cost == 0; });
  }
  int LastRank() const { return static_cast<int>(pairs.size()); }
  // The group of a switch with the rank below, or with the rank above; Grouping::none where it has
  // none.
  int GroupBelow(std::uint32_t number) const {
    const int rank = ranks[number];
    if (rank < 0 || rank >= LastRank()) return Grouping::none;
    return groupings[static_cast<std::size_t>(rank)].groupOf[SpineSide][place[number]];
  }
  int GroupAbove(std::uint32_t number) const {
    const int rank = ranks[number];
    if (rank < 1 || rank > LastRank()) return Grouping::none;
    return groupings[static_cast<std::size_t>(rank) - 1].groupOf[LineSide][place[number]];
  }
  // Whether a cable joins two neighboring ranks.
  bool JoinsNeighbors(const SwitchGraph::Cable& cable) const {
    const int a = ranks[cable.a];
    const int b = ranks[cable.b];
    return a != TreeRanks::none && b != TreeRanks::none && (a - b == 1 || b - a == 1);
  }
  std::uint32_t UpperOf(const SwitchGraph::Cable& cable) const {
    return ranks[cable.a] <= ranks[cable.b] ? cable.a : cable.b;
  }
  std::uint32_t LowerOf(const SwitchGraph::Cable& cable) const {
    return cable.Other(UpperOf(cable));
  }
  // Whether its two switches are in one group.
  bool IsInsideGroup(const SwitchGraph::Cable& cable) const {
    if (!JoinsNeighbors(cable)) return false;
    const int group = GroupBelow(UpperOf(cable));
    return group != Grouping::none && group == GroupAbove(LowerOf(cable));
  }
};

}  // namespace fabscope::internal
