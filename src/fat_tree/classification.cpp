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

#include <deque>

#include "fabric/fabric_walk.h"
#include "fabric/guid.h"
#include "fat_tree/status.h"

namespace fabscope {

int FTClassification::Classify(const IBNode& leaf) {
  ClassifyByDistance(leaf);
  return SetNodesRanks();
}

void FTClassification::ClassifyByDistance(const IBNode& leaf) {
  const int plane = leaf.getSuitablePlane();
  std::deque<SearchData> queue{{&leaf, 0}};
  while (!queue.empty()) {
    const auto [node, distance] = queue.front();
    queue.pop_front();
    // A switch may be queued by several neighbours; the first visit is the nearest.
    if (!nodeToDistance.emplace(node, distance).second) continue;
    distanceToNodes[distance].push_back(node);
    for (const IBPort* port : GetTreePorts(*node)) {
      const IBNode* remote = GetRemoteSwitch(port);
      if (remote == nullptr) continue;
      // Only chips of the multi-ASIC family reach into other planes.
      if (node->isVortaSwitch() && !remote->isOnSamePlane(plane)) continue;
      if (nodeToDistance.contains(remote)) continue;
      queue.push_back({remote, distance + 1});
    }
  }
  maxDistance = distanceToNodes.rbegin()->first;
  maxThresholdDistance = GetMaxThresholdDistance();
}

int FTClassification::CalculateThreshold() const {
  const std::size_t count = nodeToDistance.size();
  // On large fabrics a level is at least half a switch wide; any switch's port count serves.
  if (count > 1000) return nodeToDistance.begin()->first->numPorts >> 1;
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
  const auto found = nodeToDistance.find(&node);
  if (found == nodeToDistance.end()) return StatusBadData;
  const int distance = found->second;
  // In a tree of four levels leaves of the same upper group are only 4 hops away.
  isFar = distance >= maxThresholdDistance || (distance == 4 && maxThresholdDistance == 6);
  return StatusSuccess;
}

bool FTClassification::EqualsTo(const FTClassification& other) const {
  if (ranks.empty() || other.ranks.empty()) return false;
  return ranks.size() == other.ranks.size() && ranks.front() == other.ranks.front() &&
         ranks.back() == other.ranks.back();
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

}  // namespace fabscope
