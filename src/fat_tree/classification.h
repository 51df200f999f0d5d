#pragma once

#include <cstdint>
#include <list>
#include <map>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

#include "fat_tree/containers/node_set.h"
#include "fat_tree/containers/node_table.h"

namespace fabscope::internal {

class FTTopology;

// The fabric as one leaf switch sees it: every switch by its distance in hops, and the ranks of the
// 2-, 3- or 4-level tree that these distances speak for. Made and owned by an
// FTClassificationHandler, classified once, then only compared with others.
class FTClassification {
 public:
  // Link counts of a switch that has hosts. Ordered by hosts first: the more, the better a leaf.
  struct NodeData {
    std::uint32_t caLinks = 0;      // ports cabled to channel adapters that are not special nodes
    std::uint32_t switchLinks = 0;  // ports cabled to switches

    friend bool operator==(const NodeData&, const NodeData&) = default;
    friend bool operator<(const NodeData& a, const NodeData& b) {
      return std::tie(a.caLinks, a.switchLinks) < std::tie(b.caLinks, b.switchLinks);
    }
    friend bool operator>(const NodeData& a, const NodeData& b) { return b < a; }
  };

  explicit FTClassification(const FTTopology& owner) : topology(owner) {}
  FTClassification(const FTClassification&) = delete;
  FTClassification& operator=(const FTClassification&) = delete;

  // Distances from the leaf, then the ranks. Always answers 0: a height of neither 2, 3 nor 4
  // levels leaves the ranks empty.
  int Classify(const IBNode& leaf);
  void ClassifyByDistance(const IBNode& leaf);

  // How many switches a distance must exceed to count as a level and not as strays.
  int CalculateThreshold() const;
  // The greatest distance with more switches than the threshold; 0 if there is none.
  int GetMaxThresholdDistance() const;

  // The farthest switch that was reached (the first of them), and how far away it is. Null and 0
  // before classifying.
  const IBNode* GetFarthestNode() const {
    return distanceToNodes.empty() ? nullptr : distanceToNodes.at(maxDistance).front();
  }
  int GetMaxDistance() const { return maxDistance; }

  // Whether the switch lies where the other leaves lie, as far away as the tree allows. Status 9
  // when this classification never reached it.
  int CheckDistanceTo(const IBNode& node, bool& isFar) const;

  // Same height, same roots, same leaves. Without ranks it equals nothing, not even itself.
  bool EqualsTo(const FTClassification& other) const;
  // This one and how many others of `all` equal it.
  int CountEquals(const std::vector<FTClassification*>& all) const;

  // The next leaf to classify from: among the farthest switches the one with most hosts that all
  // classifications find far away. Null, with the reason in the error stream, if there is none.
  const IBNode* GetLeafToClassify(const std::vector<FTClassification*>& all);
  const IBNode* GetLeafToClassify(const std::vector<FTClassification*>& all,
                                  const std::list<const IBNode*>& candidates);

  // Turning distances into ranks (classification_ranks.cpp). All answer 0.
  int SetNodesRanks();
  int Set2L_FTRanks();
  int Set3L_FTRanks();
  int Set4L_FTRanks();
  int Set4L_DistanceToRanks(int distance, int neighbourDistance);
  void SetRankToNodes(const std::list<const IBNode*>& nodes, NodeSet& rank) const;
  // Exchanges the ranks with the topology's.
  void SwapRanks(std::vector<NodeSet>& other) { ranks.swap(other); }

  std::string GetErrorText() const { return errStream.str(); }
  // The distance classes in words, for those who debug a fabric.
  std::string ToString() const;

 private:
  friend struct TestPeer;

  // Whether a neighbouring switch was reached at another distance.
  bool HasNeighbourNotAt(const IBNode& node, std::int32_t distance) const;

  std::int32_t maxDistance = 0;           // decides the height of the tree
  std::int32_t maxThresholdDistance = 0;  // the same without strays; 0: no level was found
  // In the order in which the search reached them. Holds an empty list for a distance that rank
  // assignment asked for in vain.
  std::map<std::int32_t, std::list<const IBNode*>> distanceToNodes;
  NodeTable<std::int32_t> nodeToDistance{-1};
  std::vector<NodeSet> ranks;  // [0] roots; empty when the height is none of 2, 3, 4 levels
  std::ostringstream errStream;
  const FTTopology& topology;
};

// Owns the classifications of one search for roots, in the order of their making.
class FTClassificationHandler {
 public:
  FTClassificationHandler() = default;
  FTClassificationHandler(const FTClassificationHandler&) = delete;
  FTClassificationHandler& operator=(const FTClassificationHandler&) = delete;
  ~FTClassificationHandler();

  FTClassification* GetNewClassification(const FTTopology& topology);
  const std::vector<FTClassification*>& GetClassifications() const { return classifications; }

 private:
  std::vector<FTClassification*> classifications;
};

}  // namespace fabscope::internal
