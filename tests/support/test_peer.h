#pragma once

#include <cstddef>
#include <utility>
#include <vector>

#include "fat_tree/classification.h"
#include "fat_tree/neighborhood.h"
#include "fat_tree/topology.h"
#include "fat_tree/up_hop_histogram.h"

namespace fabscope::internal {

// The inside of the stage's objects, for states that no loaded fabric can bring about (null
// entries) or that no operation shows.
struct TestPeer {
  static void SetRanks(FTTopology& t, std::vector<NodeSet> ranks) {
    t.ranks = RankedSwitches(std::move(ranks));
  }
  static void AddNullToRank(FTTopology& t, std::size_t rank) {
    std::vector<NodeSet> ranks = t.GetRanks();
    ranks.at(rank).insert(nullptr);
    SetRanks(t, std::move(ranks));
  }
  static auto& Neighborhoods(FTTopology& t) { return t.neighborhoods; }
  static auto& SwitchUpDownLinks(FTTopology& t) { return t.switchUpDownLinks; }
  static auto& ClassificationNodeData(FTTopology& t) { return t.classificationNodeData; }
  static auto& MinUpDownRatio(FTTopology& t) { return t.minUpDownRatio; }
  static bool HasFindingSink(const FTTopology& t) { return t.findingSink != nullptr; }
  static auto& ErrStream(FTTopology& t) { return t.errStream; }

  static auto& Ranks(FTClassification& c) { return c.ranks; }
  static auto& MaxDistance(FTClassification& c) { return c.maxDistance; }
  static auto& MaxThresholdDistance(FTClassification& c) { return c.maxThresholdDistance; }
  static auto& DistanceToNodes(FTClassification& c) { return c.distanceToNodes; }
  static auto& NodeToDistance(FTClassification& c) { return c.nodeToDistance; }

  static auto& UpHopSets(FTUpHopHistogram& h) { return h.upHopSets; }
  static auto& BitSetSize(FTUpHopHistogram& h) { return h.bitSetSize; }
  static auto& LinkIssues(FTUpHopHistogram& h) { return h.linkIssues; }
  static auto& ConnectedPairs(FTUpHopHistogram& h) { return h.connectedPairs; }
  static auto& IndexToNode(FTUpHopHistogram& h) { return h.indexToNode; }
  static int MergeSets(FTUpHopHistogram& h) { return h.MergeSets(); }
  static int CheckAllCrossLinks(FTUpHopHistogram& h) { return h.CheckAllCrossLinks(); }

  static auto& Spines(FTNeighborhood& n) { return n.spines; }
  static auto& Lines(FTNeighborhood& n) { return n.lines; }
  static auto& TotalSpineUplinks(FTNeighborhood& n) { return n.totalSpineUplinks; }
  static auto& TotalInternalLinks(FTNeighborhood& n) { return n.totalInternalLinks; }
};

}  // namespace fabscope::internal
