#pragma once

#include <cstddef>
#include <cstdint>
#include <list>
#include <map>
#include <span>
#include <sstream>
#include <string>
#include <vector>

#include "fabric/fabric_err_general.h"
#include "fat_tree/containers/node_pairs.h"
#include "fat_tree/containers/node_set.h"
#include "fat_tree/containers/node_table.h"
#include "fat_tree/containers/up_hop_bits.h"
#include "fat_tree/containers/up_hop_counts.h"
#include "fat_tree/link_errors.h"
#include "fat_tree/tree_links.h"

namespace fabscope::internal {

class FTNeighborhood;
class FTTopology;

// The lower switches that are cabled to one and the same set of upper switches.
struct FTUpHopSet {
  std::int32_t encountered = 0;  // lower switches that joined while filling; merges leave it alone
  UpHopBits upSet;
  std::list<const IBNode*> downNodes;  // in the order of joining, merged ones behind
  // For each upper switch of the set, how many lower switches of the set reach it.
  UpHopCounts encounteredMap;

  // `size` is the number of upper switches of the rank; bits from there on are not looked at.
  void InitEncounteredMap(std::size_t size);
  void Merge(const FTUpHopSet& other, std::size_t size);
  // What the other set has and this one lacks.
  UpHopBits Delta(const FTUpHopSet& other, std::size_t size) const;
  void AddDownNodes(const FTUpHopSet& other);
  // Both answer 4 when the index is not counted; taking out clears the bit even then.
  int TakeOutUpNode(std::uint64_t index);
  int GetNodeEncountered(std::uint64_t index, std::int32_t& count) const;
};

// The cables of some lower switches by the switch at their other end: an upper switch that a set
// loses is looked up, and a set may lose many.
class DownLinks {
 public:
  struct Link {
    const IBNode* node = nullptr;  // the lower switch
    TreeLink link;
  };

  DownLinks(const TreeLinks& links, const std::list<const IBNode*>& downNodes);

  // In the order of the lower switches, then of their ports.
  std::span<const Link> To(const IBNode& upper) const;

 private:
  std::vector<Link> links_;  // by ascending place of the switch at the other end
};

// Groups the switches of one pair of ranks: `rank` (upper) and rank + 1 (lower). Lives for one call
// of FTTopology::CreateNeighborhoodsOnRank. Statuses as in fat_tree/status.h, with the reason in
// GetErrorText().
class FTUpHopHistogram {
 public:
  FTUpHopHistogram(FTTopology& owner, std::uint64_t upperRank) : topology(owner), rank(upperRank) {}
  FTUpHopHistogram(const FTUpHopHistogram&) = delete;
  FTUpHopHistogram& operator=(const FTUpHopHistogram&) = delete;

  // Fills the sets, and records links inside the lower rank and, for rank 0, between roots. Once.
  int Init();
  // Merges the sets, takes out cross links, and hands a group for each remaining set to the
  // topology; appends the records of invalid and missing links to `errors`.
  int CreateNeighborhoods(std::vector<FabricErrGeneral*>& errors);

  void InitNodeToIndexConverters(const NodeSet& nodes);
  int NodeToIndex(std::uint64_t& index, const IBNode* node);
  const IBNode* IndexToNode(std::uint64_t index);
  int BitSetToNodes(const UpHopBits& bits, std::list<const IBNode*>& nodes);
  // The bits as a string of '0' and '1', highest index first: the sets' order.
  std::string GetHashCode(const UpHopBits& bits) const;

  int TryMergeTwoSets(FTUpHopSet& set, FTUpHopSet& target, bool& merged);
  // Into the first set that takes it; the pass over all sets finds that one through an index.
  int TryMergeSet_2(FTUpHopSet& set, bool& merged);

  // Faulty links (up_hop_histogram_cross_links.cpp).
  void AddIllegalLinkIssue(const FTLinkIssue& issue);
  void CheckRootSwitchConnections(const IBNode& root);
  int AddIllegalLinkIssues(std::uint64_t index, const std::list<const IBNode*>& downNodes);
  int AddIllegalLinkIssues(std::uint64_t index, const DownLinks& links);
  // Of one set; the pass over all sets finds what it loses through an index.
  int CheckCrossLinks(FTUpHopSet& set);

  // Groups (neighborhood.cpp).
  int SetsToNeighborhoods(std::vector<FabricErrGeneral*>& errors);
  int InvalidLinksReport(std::vector<FabricErrGeneral*>& errors,
                         const std::vector<FTNeighborhood*>& neighborhoods);
  FTNeighborhood* FindNeighborhood(const std::vector<FTNeighborhood*>& neighborhoods,
                                   const IBNode* node);

  // A set in words, for those who debug a fabric.
  std::string UpHopSetToString(const FTUpHopSet& set);
  std::string GetErrorText() const { return errStream.str(); }

 private:
  friend struct TestPeer;

  // `lastSet`: the set that the switch before was added to, or null.
  int AddLowerSwitch(const IBNode& node, std::vector<bool>& checkedRoots, FTUpHopSet*& lastSet);
  // Takes an upper switch that both sets hold out of `set`, whose links are given, where it is the
  // other's.
  int CheckCrossLink(FTUpHopSet& set, const DownLinks& links, const FTUpHopSet& other,
                     std::uint64_t index);
  // As CheckCrossLinks for each set in key order. Every upper switch of a set is counted.
  int CheckAllCrossLinks();
  int MergeSets();
  // How many upper switches a set may have that the target has not, to merge into it.
  std::size_t MostOutside(const FTUpHopSet& target) const;

  static constexpr std::uint32_t noIndex = ~std::uint32_t{0};

  std::vector<const IBNode*> indexToNode;
  RankTable<std::uint32_t> nodeToIndex{noIndex};
  NodePairs connectedPairs;  // (upper, lower) with at least one cable
  std::ostringstream errStream;
  std::map<std::string, FTUpHopSet> upHopSets;  // by hash code: numbers the groups
  FTTopology& topology;
  std::uint64_t rank;
  std::uint64_t bitSetSize = 0;  // upper switches; 0 until Init
  std::vector<FTLinkIssue> linkIssues;
};

}  // namespace fabscope::internal
