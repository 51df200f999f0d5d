// Distances from one leaf, turned into the ranks of a tree.
//
// In a 3-level tree a leaf L sees
//   distance 1  the middle switches of its pod
//   distance 2  the roots, and the other leaves of its pod
//   distance 3  the middle switches of the other pods
//   distance 4  the leaves of the other pods
// so only distance 2 is mixed, and a switch there is told by its neighbours: a root also reaches
// distance 3, a leaf of the pod only distance 1. Two levels have no mixed distance. Four levels
// have two of that kind (2 and 4: leaves against rank 1), and distance 3, where the roots meet the
// rank-2 switches of other pods of the same upper group: a root's links all go to rank 1.
//
// A cable in a wrong place puts some switches at wrong distances; one classification is therefore
// never trusted by itself (topology_roots.cpp).

#include <algorithm>
#include <utility>
#include <vector>

#include "fat_tree/classification.h"
#include "fat_tree/status.h"
#include "fat_tree/topology.h"

namespace fabscope::internal {
namespace {

using Nodes = std::vector<const IBNode*>;

// The nodes for which `isUpper` holds become part of the one rank, the others of the other.
template <typename IsUpper>
void Divide(const std::list<const IBNode*>& nodes, NodeSet& upper, NodeSet& lower,
            IsUpper isUpper) {
  Nodes above;
  Nodes below;
  for (const IBNode* node : nodes) (isUpper(*node) ? above : below).push_back(node);
  AddNodes(std::move(above), upper);
  AddNodes(std::move(below), lower);
}

}  // namespace

int FTClassification::SetNodesRanks() {
  switch (maxDistance) {
    case 2:
      return Set2L_FTRanks();
    case 4:
      return Set3L_FTRanks();
    case 6:
      return Set4L_FTRanks();
    default:
      ranks.clear();
      return StatusSuccess;
  }
}

void FTClassification::SetRankToNodes(const std::list<const IBNode*>& nodes, NodeSet& rank) const {
  AddNodes(Nodes(nodes.begin(), nodes.end()), rank);
}

int FTClassification::Set2L_FTRanks() {
  ranks.resize(2);
  SetRankToNodes(distanceToNodes[0], ranks[1]);
  SetRankToNodes(distanceToNodes[2], ranks[1]);
  SetRankToNodes(distanceToNodes[1], ranks[0]);
  return StatusSuccess;
}

int FTClassification::Set3L_FTRanks() {
  ranks.resize(3);
  SetRankToNodes(distanceToNodes[0], ranks[2]);
  SetRankToNodes(distanceToNodes[4], ranks[2]);
  SetRankToNodes(distanceToNodes[1], ranks[1]);
  SetRankToNodes(distanceToNodes[3], ranks[1]);
  Divide(distanceToNodes[2], ranks[0], ranks[2],
         [this](const IBNode& node) { return HasNeighbourNotAt(node, 1); });
  return StatusSuccess;
}

int FTClassification::Set4L_FTRanks() {
  ranks.resize(4);
  SetRankToNodes(distanceToNodes[0], ranks[3]);
  SetRankToNodes(distanceToNodes[6], ranks[3]);
  SetRankToNodes(distanceToNodes[1], ranks[2]);
  SetRankToNodes(distanceToNodes[5], ranks[2]);
  if (const int status = Set4L_DistanceToRanks(2, 1); status != StatusSuccess) return status;
  if (const int status = Set4L_DistanceToRanks(4, 3); status != StatusSuccess) return status;
  // ranks[1] is complete from here on.
  std::vector<bool> isUpper(topology.GetFabric().GetNodes().size());
  for (const IBNode* node : ranks[1]) isUpper[node->index] = true;
  Divide(distanceToNodes[3], ranks[2], ranks[0], [&](const IBNode& node) {
    const auto links = topology.GetTreeLinks().Of(node);
    return std::any_of(links.begin(), links.end(),
                       [&](const TreeLink& link) { return !isUpper[link.remote]; });
  });
  return StatusSuccess;
}

int FTClassification::Set4L_DistanceToRanks(int distance, int neighbourDistance) {
  Divide(distanceToNodes[distance], ranks[1], ranks[3],
         [=, this](const IBNode& node) { return HasNeighbourNotAt(node, neighbourDistance); });
  return StatusSuccess;
}

bool FTClassification::HasNeighbourNotAt(const IBNode& node, std::int32_t distance) const {
  const auto links = topology.GetTreeLinks().Of(node);
  return std::any_of(links.begin(), links.end(), [&](const TreeLink& link) {
    return nodeToDistance.Has(link.remote) && nodeToDistance.Get(link.remote) != distance;
  });
}

}  // namespace fabscope::internal
