// Cables that break the tree.
//
// Two kinds never belong in a fat tree: a cable inside a rank, and an up-link into another group's
// upper switches (a cross link). The first kind is seen while the histogram is filled, from both of
// its ends, and the topology's registry of pairs keeps it from being recorded twice.
//
// A cross link shows after the merge pass as an upper switch that stands in two sets. Whose is it?
// The set's whose lower switches reach it more than twice as often; for the other set its cables to
// that switch are the cross links. With 3 against 1 the switch is taken from the second set; with 2
// against 1, or among equals, nobody can tell, and it stays in both.

#include <algorithm>
#include <limits>

#include "fabric/guid.h"
#include "fat_tree/status.h"
#include "fat_tree/topology.h"
#include "fat_tree/up_hop_histogram.h"

namespace fabscope {

void FTUpHopHistogram::AddIllegalLinkIssue(const FTLinkIssue& issue) {
  if (topology.IsReportedLinkIssue(issue.node1, issue.node2)) return;
  linkIssues.push_back(issue);
  topology.AddNewLinkIssue(issue.node1, issue.node2);
}

void FTUpHopHistogram::CheckRootSwitchConnections(const IBNode& root) {
  for (const TreeLink& link : topology.GetTreeLinks().Of(root)) {
    if (topology.GetRankedSwitches().RankOf(link.remote) != 0) continue;
    const IBNode* remote = &topology.GetFabric().GetNodes()[link.remote];
    AddIllegalLinkIssue({&root, link.port, 0, remote, link.remotePort, 0});
  }
}

int FTUpHopHistogram::AddIllegalLinkIssues(std::uint64_t index,
                                           const std::list<const IBNode*>& downNodes) {
  const IBNode* upper = IndexToNode(index);
  if (upper == nullptr) return StatusLookupFailed;

  bool found = false;
  for (const IBNode* node : downNodes) {
    for (const TreeLink& link : topology.GetTreeLinks().Of(*node)) {
      if (link.remote != upper->index) continue;
      // Every cable counts here, so the registry of pairs is left alone.
      linkIssues.push_back({upper, link.remotePort, rank, node, link.port, rank + 1});
      found = true;
    }
  }
  if (found) return StatusSuccess;
  errStream << "The switch GUID: " << GuidText(upper->guid)
            << "is not connected to any switch from the down nodes"
            << " provided for Invalid Link Issue";
  return StatusBadData;
}

std::vector<std::int32_t> FTUpHopHistogram::GreatestCounts() const {
  constexpr std::int32_t uncounted = std::numeric_limits<std::int32_t>::max();
  std::vector<std::int32_t> greatest(MaxUpperSwitches);
  for (const auto& [key, set] : upHopSets) {
    set.upSet.ForEach(MaxUpperSwitches, [&, &counts = set.encounteredMap](std::size_t index) {
      const std::int32_t* count = counts.Find(index);
      greatest[index] = std::max(greatest[index], count == nullptr ? uncounted : *count);
    });
  }
  return greatest;
}

int FTUpHopHistogram::CheckCrossLinks(FTUpHopSet& set) {
  return CheckCrossLinks(set, GreatestCounts());
}

int FTUpHopHistogram::CheckCrossLinks(FTUpHopSet& set,
                                      const std::vector<std::int32_t>& greatestCounts) {
  // Of most sets no upper switch is reached much more often by another set, and of the others few.
  UpHopBits suspects;
  set.upSet.ForEach(bitSetSize, [&](std::size_t index) {
    std::int32_t own = 0;
    const bool isCounted = set.GetNodeEncountered(index, own) == StatusSuccess;
    if (!isCounted || greatestCounts[index] > 2 * own) suspects.set(index);
  });

  for (const auto& [key, other] : upHopSets) {
    if (suspects.none()) return StatusSuccess;
    if (&other == &set) continue;
    int status = StatusSuccess;
    suspects.ForEachCommon(other.upSet, [&, &reaching = other](std::size_t index) {
      if (status == StatusSuccess) status = CheckCrossLink(set, reaching, index, suspects);
    });
    if (status != StatusSuccess) return status;
  }
  return StatusSuccess;
}

int FTUpHopHistogram::CheckCrossLink(FTUpHopSet& set, const FTUpHopSet& other, std::uint64_t index,
                                     UpHopBits& suspects) {
  const auto countFailed = [&](const void* token) {
    errStream << "Failed to get how many times a node with index: " << index
              << " was encountered. Up-Hop set ptr: " << token;
  };
  std::int32_t own = 0;
  if (const int status = set.GetNodeEncountered(index, own); status != StatusSuccess) {
    countFailed(&own);
    return status;
  }
  std::int32_t others = 0;
  if (const int status = other.GetNodeEncountered(index, others); status != StatusSuccess) {
    countFailed(&other);
    return status;
  }
  if (others <= 2 * own) return StatusSuccess;

  suspects.reset(index);
  if (const int status = set.TakeOutUpNode(index); status != StatusSuccess) {
    errStream << "Failed to take out a node with index: " << index
              << ". Up-Hop set ptr: " << static_cast<const void*>(&set);
    return status;
  }
  return AddIllegalLinkIssues(index, set.downNodes);
}

}  // namespace fabscope
