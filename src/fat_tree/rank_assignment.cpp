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
// never trusted by itself (automatic_roots.cpp).

#include <algorithm>

#include "fabric/fabric_walk.h"
#include "fat_tree/classification.h"
#include "fat_tree/status.h"

namespace fabscope {
namespace {

// Whether some neighbouring switch satisfies the predicate.
template <typename Predicate>
bool AnyNeighbour(const IBNode& node, Predicate predicate) {
  const auto ports = GetTreePorts(node);
  return std::any_of(ports.begin(), ports.end(), [&](const IBPort* port) {
    const IBNode* remote = GetRemoteSwitch(port);
    return remote != nullptr && predicate(remote);
  });
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
  rank.insert(nodes.begin(), nodes.end());
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
  for (const IBNode* node : distanceToNodes[2]) {
    const bool isRoot = AnyNeighbour(*node, [this](const IBNode* neighbour) {
      const auto found = nodeToDistance.find(neighbour);
      return found != nodeToDistance.end() && found->second != 1;
    });
    ranks[isRoot ? 0 : 2].insert(node);
  }
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
  for (const IBNode* node : distanceToNodes[3]) {
    const bool reachesLower = AnyNeighbour(
        *node, [this](const IBNode* neighbour) { return !ranks[1].contains(neighbour); });
    ranks[reachesLower ? 2 : 0].insert(node);
  }
  return StatusSuccess;
}

int FTClassification::Set4L_DistanceToRanks(int distance, int neighbourDistance) {
  for (const IBNode* node : distanceToNodes[distance]) {
    const bool isUpper = AnyNeighbour(*node, [&](const IBNode* neighbour) {
      const auto found = nodeToDistance.find(neighbour);
      return found != nodeToDistance.end() && found->second != neighbourDistance;
    });
    ranks[isUpper ? 1 : 3].insert(node);
  }
  return StatusSuccess;
}

}  // namespace fabscope
