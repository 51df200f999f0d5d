#include "repair/misfits.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

#include "repair/evidence.h"
#include "repair/grouping.h"
#include "repair/inferred_ranks.h"
#include "repair/tree_groups.h"

namespace fabscope::internal {
namespace {

// What must go and what lacks between two ranks, at each of their switches.
void AddPair(const RankPair& pair, const Grouping& groups, std::vector<std::uint32_t>& ofSwitch) {
  for (const Side side : {SpineSide, LineSide}) {
    const auto& switches = side == SpineSide ? pair.Spines() : pair.Lines();
    for (std::uint32_t i = 0; i < switches.size(); ++i) {
      const int group = groups.groupOf[side][i];
      std::uint64_t lacking = 0;
      std::uint32_t multiplicity = 0;
      if (group != Grouping::none) {
        const auto place = static_cast<std::size_t>(group);
        multiplicity = groups.multiplicity[place];
        lacking = std::uint64_t{multiplicity} * groups.size[OtherSide(side)][place];
      }
      std::uint64_t extra = 0;
      for (const RankPair::Link& link : side == SpineSide ? pair.OfSpine(i) : pair.OfLine(i)) {
        const bool isInside =
            group != Grouping::none && groups.groupOf[OtherSide(side)][link.far] == group;
        const std::uint32_t kept = isInside ? std::min(link.count, multiplicity) : 0;
        lacking -= kept;
        extra += link.count - kept;
      }
      ofSwitch[switches[i]] += static_cast<std::uint32_t>(extra + lacking);
    }
  }
}

}  // namespace

Misfits FindMisfits(const SwitchGraph& graph, const std::vector<int>& ranks) {
  return FindMisfits(TreeGroups(graph, ranks));
}

Misfits FindMisfits(const TreeGroups& tree) {
  const SwitchGraph& graph = tree.graph;
  const std::vector<int>& ranks = tree.ranks;
  Misfits misfits;
  misfits.ofSwitch.assign(graph.Count(), 0);
  for (const SwitchGraph::Cable& cable : graph.Cables()) {
    const int a = ranks[cable.a];
    const int b = ranks[cable.b];
    if (a == TreeRanks::none || b == TreeRanks::none || std::abs(a - b) == 1) continue;
    ++misfits.ofSwitch[cable.a];
    ++misfits.ofSwitch[cable.b];
  }
  for (std::size_t upper = 0; upper < tree.pairs.size(); ++upper) {
    AddPair(tree.pairs[upper], tree.groupings[upper], misfits.ofSwitch);
  }
  // Each cable was counted at both of its ends.
  for (const std::uint32_t count : misfits.ofSwitch) misfits.cables += count;
  misfits.cables /= 2;
  return misfits;
}

std::uint64_t CountMisfits(const IBFabric& fabric, const TreeRanks& ranks) {
  TreeReading reading(fabric);
  return CountMisfits(ranks, reading);
}

std::uint64_t CountMisfits(const TreeRanks& ranks, TreeReading& reading) {
  const SwitchGraph& graph = reading.graph;
  std::vector<int> ofSwitch(graph.Count());
  for (std::uint32_t i = 0; i < graph.Count(); ++i) {
    ofSwitch[i] = ranks.ofNode[graph.NodeOf(i).index];
  }
  TreeGroups groups(graph, std::move(ofSwitch));
  if (!groups.AreProper()) {
    reading.ranks = groups.ranks;
    reading.misfits = FindMisfits(groups);
  }
  // What decides ties sometimes finds a cheaper grouping.
  DecideTies(groups);
  std::uint64_t misfits = 0;
  for (const Grouping& grouping : groups.groupings) misfits += grouping.cost;
  for (const SwitchGraph::Cable& cable : graph.Cables()) {
    const int a = groups.ranks[cable.a];
    const int b = groups.ranks[cable.b];
    if (a == TreeRanks::none || b == TreeRanks::none) continue;
    if (!groups.JoinsNeighbors(cable)) ++misfits;
  }
  return misfits;
}

}  // namespace fabscope::internal
