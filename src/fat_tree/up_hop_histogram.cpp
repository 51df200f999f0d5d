// Which switches belong together.
//
// In a proper fat tree the lower switches of one pod are all cabled to the same upper switches, so
// the pods can be read off the lower switches' up-links: equal sets of upper switches, equal pod.
// Upper switches are numbered along their rank, a set of them is 2048 bits, and the sets are kept
// in a map under their bits written as a number; that order numbers the groups.
//
// Faulty cables split a pod into several sets that nearly coincide, so sets are merged. A set S
// goes into the first set T (in key order) for which
//     100 * |S without T| / |T|  <  100 - upHopMergePercent.
// With 70 percent, {0,1,2} merges into {0,1,2,3} (nothing extra: 0 < 30), {0,1,2,4} into {0,1,2,3}
// too (25 < 30), {4} into {0} not (100). The rule is one-sided on purpose: upper switches that S
// lacks do not count, since a missing cable must not found a pod of its own.
//
// The pass visits each set once, in key order; a set that took in others is visited in its turn and
// may carry them on. An index finds the set that takes each in, so that the pass grows with the
// cables of the rank and not with the square of its sets.

#include "fat_tree/up_hop_histogram.h"

#include <algorithm>
#include <utility>

#include "fabric/guid.h"
#include "fat_tree/merge_index.h"
#include "fat_tree/status.h"
#include "fat_tree/topology.h"
#include "platform/progress.h"

namespace fabscope::internal {

void FTUpHopSet::InitEncounteredMap(std::size_t size) {
  encounteredMap.Reserve(upSet.count());
  upSet.ForEach(size, [this](std::size_t i) { encounteredMap[i] = encountered; });
}

void FTUpHopSet::Merge(const FTUpHopSet& other, std::size_t size) {
  UpHopCounts counts;
  counts.Reserve(upSet.count() + other.upSet.count());
  auto own = encounteredMap.begin();
  auto taken = other.encounteredMap.begin();
  other.upSet.ForEach(size, [&](std::size_t i) {
    for (; own != encounteredMap.end() && own->first < i; ++own) {
      counts.Append(own->first, own->second);
    }
    while (taken != other.encounteredMap.end() && taken->first < i) ++taken;
    const bool isTaken = taken != other.encounteredMap.end() && taken->first == i;
    std::int32_t count = isTaken ? taken->second : 0;
    if (own != encounteredMap.end() && own->first == i) {
      if (upSet.test(i)) count += own->second;
      ++own;
    }
    counts.Append(static_cast<std::uint32_t>(i), count);
  });
  for (; own != encounteredMap.end(); ++own) counts.Append(own->first, own->second);
  encounteredMap = std::move(counts);
  upSet = upSet.United(other.upSet);
  AddDownNodes(other);
}

UpHopBits FTUpHopSet::Delta(const FTUpHopSet& other, std::size_t size) const {
  return other.upSet.Outside(upSet, size);
}

void FTUpHopSet::AddDownNodes(const FTUpHopSet& other) {
  downNodes.insert(downNodes.end(), other.downNodes.begin(), other.downNodes.end());
}

int FTUpHopSet::TakeOutUpNode(std::uint64_t index) {
  upSet.reset(index);
  return encounteredMap.Erase(index) ? StatusSuccess : StatusLookupFailed;
}

int FTUpHopSet::GetNodeEncountered(std::uint64_t index, std::int32_t& count) const {
  const std::int32_t* found = encounteredMap.Find(index);
  if (found == nullptr) return StatusLookupFailed;
  count = *found;
  return StatusSuccess;
}

int FTUpHopHistogram::Init() {
  const NodeSet* upper = topology.GetNodesOnRank(rank);
  if (upper == nullptr) return StatusBadData;
  const NodeSet* lower = topology.GetNodesOnRank(rank + 1);
  if (lower == nullptr) return StatusBadData;

  bitSetSize = upper->size();
  if (bitSetSize > MaxUpperSwitches) {
    // The wording, "story" included, is what log readers look for.
    errStream << "Bit-set is too short to story " << bitSetSize << "bits";
    return StatusBadData;
  }
  InitNodeToIndexConverters(*upper);
  connectedPairs = NodePairs(bitSetSize);

  std::vector<bool> checkedRoots(bitSetSize);
  FTUpHopSet* lastSet = nullptr;
  for (const IBNode* node : *lower) {
    if (node == nullptr) {
      errStream << "One of IBNodes is NULL."
                << "Cannot initialize the \"up-hop\" histogram";
      return StatusLookupFailed;
    }
    if (const int status = AddLowerSwitch(*node, checkedRoots, lastSet); status != StatusSuccess) {
      return status;
    }
  }
  return StatusSuccess;
}

int FTUpHopHistogram::AddLowerSwitch(const IBNode& node, std::vector<bool>& checkedRoots,
                                     FTUpHopSet*& lastSet) {
  const auto upperRank = static_cast<int>(rank);
  UpHopBits bits;
  for (const TreeLink& link : topology.GetTreeLinks().Of(node)) {
    const int remoteRank = topology.GetRankedSwitches().RankOf(link.remote);
    if (remoteRank == upperRank + 1) {
      const IBNode* remote = &topology.GetFabric().GetNodes()[link.remote];
      AddIllegalLinkIssue({&node, link.port, rank + 1, remote, link.remotePort, rank + 1});
    } else if (remoteRank == upperRank) {
      const IBNode& remote = topology.GetFabric().GetNodes()[link.remote];
      std::uint64_t index = 0;
      if (const int status = NodeToIndex(index, &remote); status != StatusSuccess) return status;
      // A root is met once for every cable to it; its own cables need only one look.
      if (rank == 0 && !checkedRoots[index]) {
        checkedRoots[index] = true;
        CheckRootSwitchConnections(remote);
      }
      bits.set(index);
      connectedPairs.Add(remote, node);
    }
  }
  // Neighbors in the model are mostly neighbors in the tree.
  if (lastSet == nullptr || lastSet->upSet != bits) lastSet = &upHopSets[GetHashCode(bits)];
  FTUpHopSet& set = *lastSet;
  if (set.downNodes.empty()) set.upSet = bits;
  ++set.encountered;
  set.downNodes.push_back(&node);
  return StatusSuccess;
}

void FTUpHopHistogram::InitNodeToIndexConverters(const NodeSet& nodes) {
  std::uint32_t index = 0;
  if (indexToNode.size() < nodes.size()) indexToNode.resize(nodes.size());
  std::copy(nodes.begin(), nodes.end(), indexToNode.begin());
  for (const IBNode* node : nodes) {
    if (node != nullptr) nodeToIndex.Set(*node, index);
    ++index;
  }
}

int FTUpHopHistogram::NodeToIndex(std::uint64_t& index, const IBNode* node) {
  const std::uint32_t found = nodeToIndex.Get(*node);
  if (found == noIndex) {
    errStream << "Failed to find index for the switch ( GUID: " << GuidText(node->guid) << " )";
    return StatusLookupFailed;
  }
  index = found;
  return StatusSuccess;
}

const IBNode* FTUpHopHistogram::IndexToNode(std::uint64_t index) {
  if (index >= indexToNode.size()) {
    errStream << "Failed to find IBNode associated with the index: " << index;
    return nullptr;
  }
  return indexToNode[index];
}

int FTUpHopHistogram::BitSetToNodes(const UpHopBits& bits, std::list<const IBNode*>& nodes) {
  int status = StatusSuccess;
  bits.ForEach(bitSetSize, [&](std::size_t index) {
    const IBNode* node = status == StatusSuccess ? IndexToNode(index) : nullptr;
    if (node == nullptr) {
      status = StatusLookupFailed;
    } else {
      nodes.push_back(node);
    }
  });
  return status;
}

std::string FTUpHopHistogram::GetHashCode(const UpHopBits& bits) const {
  // One character more than there are upper switches, unless the set is full: the leading '0' is
  // part of the keys' form.
  const std::size_t length = bitSetSize < MaxUpperSwitches ? bitSetSize + 1 : MaxUpperSwitches;
  return bits.ToText(length);
}

int FTUpHopHistogram::TryMergeTwoSets(FTUpHopSet& set, FTUpHopSet& target, bool& merged) {
  if (topology.GetUpHopMergePercent() >= 100) return StatusSuccess;
  if (!set.upSet.HasMoreOutside(target.upSet, bitSetSize, MostOutside(target))) {
    target.Merge(set, bitSetSize);
    merged = true;
  }
  return StatusSuccess;
}

std::size_t FTUpHopHistogram::MostOutside(const FTUpHopSet& target) const {
  // An empty target takes whatever comes.
  const std::size_t size = target.upSet.count();
  if (size == 0) return MaxUpperSwitches;
  // 100 * extra / size < limit, without dividing: extra <= (limit * size - 1) / 100.
  const auto limit = static_cast<std::size_t>(100 - topology.GetUpHopMergePercent());
  return std::min((limit * size - 1) / 100, MaxUpperSwitches);
}

int FTUpHopHistogram::TryMergeSet_2(FTUpHopSet& set, bool& merged) {
  for (auto& [key, target] : upHopSets) {
    if (&target == &set) continue;
    if (const int status = TryMergeTwoSets(set, target, merged); status != StatusSuccess) {
      return status;
    }
    if (merged) break;
  }
  return StatusSuccess;
}

int FTUpHopHistogram::MergeSets() {
  for (auto& [key, set] : upHopSets) set.InitEncounteredMap(bitSetSize);
  const bool mayMerge = topology.GetUpHopMergePercent() < 100;
  // By number in key order; the index knows those that are still there.
  std::vector<FTUpHopSet*> sets;
  MergeIndex index(upHopSets.size(), bitSetSize);
  for (auto& [key, set] : upHopSets) {
    if (mayMerge) index.Add(sets.size(), set.upSet, MostOutside(set));
    sets.push_back(&set);
  }
  auto visited = upHopSets.begin();
  for (std::size_t number = 0; number < sets.size(); ++number) {
    ReportProgress("grouping switches", number, sets.size());
    FTUpHopSet& set = *sets[number];
    const std::size_t found = index.FindTarget(number, set.upSet);
    bool merged = false;
    if (found != MergeIndex::None) {
      FTUpHopSet& target = *sets[found];
      const UpHopBits added = target.Delta(set, bitSetSize);
      index.Remove(number);
      if (const int status = TryMergeTwoSets(set, target, merged); status != StatusSuccess) {
        return status;
      }
      index.Grow(found, added, MostOutside(target));
    }
    visited = merged ? upHopSets.erase(visited) : std::next(visited);
  }
  return StatusSuccess;
}

int FTUpHopHistogram::CreateNeighborhoods(std::vector<FabricErrGeneral*>& errors) {
  if (const int status = MergeSets(); status != StatusSuccess) return status;
  if (const int status = CheckAllCrossLinks(); status != StatusSuccess) return status;
  return SetsToNeighborhoods(errors);
}

std::string FTUpHopHistogram::UpHopSetToString(const FTUpHopSet& set) {
  std::ostringstream text;
  text << "\nFTUpHopSet (ptr) " << static_cast<const void*>(&set)
       << "\ninitiated from: " << GuidText(set.downNodes.front()->guid)
       << "\nencountered: " << set.encountered << "\nup_set: ";
  set.upSet.ForEach(bitSetSize, [&](std::size_t i) {
    if (const IBNode* node = IndexToNode(i)) text << GuidText(node->guid) << ' ';
  });
  return text.str();
}

}  // namespace fabscope::internal
