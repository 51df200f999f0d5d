// The fabric by distance from one leaf.
//
// In a fat tree of L levels the farthest switches from a leaf are other leaves, 2 (L - 1) hops
// away: up to the roots and down again. So a breadth-first walk over all switch links, up or down,
// tells the height, and where each switch may stand.
//
// Real fabrics have strays: a switch hung below a leaf is farther away than any leaf. Distances
// held by no more switches than a threshold are therefore ignored when the next leaf is chosen. The
// height still counts them: a stray makes a classification disagree with the others rather than be
// silently wrong.

#include "fat_tree/classification.h"

#include "fabric/guid.h"
#include "fat_tree/status.h"
#include "fat_tree/topology.h"

namespace fabscope::internal {

int FTClassification::Classify(const IBNode& leaf) {
  ClassifyByDistance(leaf);
  return SetNodesRanks();
}

void FTClassification::ClassifyByDistance(const IBNode& leaf) {
  const int plane = leaf.getSuitablePlane();
  const TreeLinks& links = topology.GetTreeLinks();
  const std::vector<IBNode>& nodes = topology.GetFabric().GetNodes();
  nodeToDistance.Reserve(nodes.size());
  nodeToDistance.Set(leaf, 0);
  // A switch is met by several neighbours; the first is the nearest.
  std::vector<const IBNode*> met{&leaf};
  for (std::size_t next = 0; next < met.size(); ++next) {
    const IBNode& node = *met[next];
    const std::int32_t distance = nodeToDistance.Get(node);
    distanceToNodes[distance].push_back(&node);
    // Only chips of the multi-ASIC family reach into other planes.
    const bool keepsToPlane = node.isVortaSwitch();
    for (const TreeLink& link : links.Of(node)) {
      if (nodeToDistance.Has(link.remote)) continue;
      const IBNode& remote = nodes[link.remote];
      if (keepsToPlane && !remote.isOnSamePlane(plane)) continue;
      nodeToDistance.Set(remote, distance + 1);
      met.push_back(&remote);
    }
  }
  maxDistance = distanceToNodes.rbegin()->first;
  maxThresholdDistance = GetMaxThresholdDistance();
}

int FTClassification::CalculateThreshold() const {
  const std::size_t count = nodeToDistance.Count();
  // On large fabrics a level is at least half a switch wide; any switch's port count serves, and
  // the first in model order is as good as any.
  if (count > 1000) {
    std::uint32_t first = 0;
    while (!nodeToDistance.Has(first)) ++first;
    return topology.GetFabric().GetNodes()[first].numPorts >> 1;
  }
  if (count > 100) return 10;
  if (count > 50) return 4;
  if (count > 25) return 2;
  if (count > 5) return 1;
  return 0;
}

int FTClassification::GetMaxThresholdDistance() const {
  const int threshold = CalculateThreshold();
  int greatest = 0;
  for (const auto& [distance, nodes] : distanceToNodes) {
    if (static_cast<int>(nodes.size()) > threshold) greatest = distance;
  }
  return greatest;
}

int FTClassification::CheckDistanceTo(const IBNode& node, bool& isFar) const {
  isFar = false;
  if (!nodeToDistance.Has(node)) return StatusBadData;
  const int distance = nodeToDistance.Get(node);
  // In a tree of four levels leaves of the same upper group are only 4 hops away.
  isFar = distance >= maxThresholdDistance || (distance == 4 && maxThresholdDistance == 6);
  return StatusSuccess;
}

bool FTClassification::EqualsTo(const FTClassification& other) const {
  return !ranks.empty() && ranks.size() == other.ranks.size() &&
         ranks.front() == other.ranks.front() && ranks.back() == other.ranks.back();
}

int FTClassification::CountEquals(const std::vector<FTClassification*>& all) const {
  int count = 1;
  for (const FTClassification* other : all) {
    if (other != this && EqualsTo(*other)) ++count;
  }
  return count;
}

std::string FTClassification::ToString() const {
  std::ostringstream text;
  text << "Classification (ptr) " << static_cast<const void*>(this) << '\n';
  for (const auto& [distance, nodes] : distanceToNodes) {
    text << "distance: " << distance << " has " << nodes.size() << " [";
    for (const IBNode* node : nodes) {
      text << ' ' << (node != nullptr ? GuidText(node->guid) : "NULL_ptr");
    }
    text << " ]\n";
  }
  return text.str();
}

}  // namespace fabscope::internal
