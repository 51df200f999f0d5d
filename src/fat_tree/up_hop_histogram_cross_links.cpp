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
//
// What becomes of one upper switch has no bearing on another, so the sets that hold it are looked
// at switch by switch. That takes as long as the rank has cables, however many sets share them.

#include <algorithm>
#include <iterator>
#include <optional>
#include <tuple>

#include "fabric/guid.h"
#include "fat_tree/containers/first_greater.h"
#include "fat_tree/status.h"
#include "fat_tree/topology.h"
#include "fat_tree/up_hop_histogram.h"
#include "platform/progress.h"

namespace fabscope::internal {
namespace {

// Of those that hold one upper switch: a set by its number in key order, and how many of its lower
// switches reach it.
struct Holder {
  std::uint32_t set = 0;
  std::int32_t count = 0;
};

// In the order in which cross links are told: that of the sets that lose upper switches, then that
// of the sets that take them.
struct Loss {
  std::uint32_t set = 0;
  std::uint32_t taker = 0;
  std::uint32_t index = 0;  // of the upper switch

  friend bool operator<(const Loss& a, const Loss& b) {
    return std::tie(a.set, a.taker, a.index) < std::tie(b.set, b.taker, b.index);
  }
};

// Which sets lose one upper switch, and each to whom: the first that has it still and reaches it
// more than twice as often. Sets have their turn in order; one that has lost it takes it from none.
void FindLosses(std::uint32_t index, const std::vector<Holder>& holders,
                std::vector<Loss>& losses) {
  FirstGreater counts(holders.size());
  for (std::size_t place = 0; place < holders.size(); ++place) {
    counts.Set(place, holders[place].count);
  }
  for (std::size_t place = 0; place < holders.size(); ++place) {
    const std::size_t taker = counts.Find(2 * std::int64_t{holders[place].count});
    if (taker == FirstGreater::None) continue;
    losses.push_back({holders[place].set, holders[taker].set, index});
    counts.Set(place, 0);
  }
}

}  // namespace

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

DownLinks::DownLinks(const TreeLinks& links, const std::list<const IBNode*>& downNodes) {
  std::size_t count = 0;
  for (const IBNode* node : downNodes) count += links.Of(*node).size();
  links_.reserve(count);
  for (const IBNode* node : downNodes) {
    for (const TreeLink& link : links.Of(*node)) links_.push_back({node, link});
  }
  std::stable_sort(links_.begin(), links_.end(),
                   [](const Link& a, const Link& b) { return a.link.remote < b.link.remote; });
}

std::span<const DownLinks::Link> DownLinks::To(const IBNode& upper) const {
  const auto first = std::partition_point(
      links_.begin(), links_.end(), [&](const Link& it) { return it.link.remote < upper.index; });
  const auto last = std::partition_point(
      first, links_.end(), [&](const Link& it) { return it.link.remote == upper.index; });
  return {first, last};
}

int FTUpHopHistogram::AddIllegalLinkIssues(std::uint64_t index,
                                           const std::list<const IBNode*>& downNodes) {
  return AddIllegalLinkIssues(index, DownLinks(topology.GetTreeLinks(), downNodes));
}

int FTUpHopHistogram::AddIllegalLinkIssues(std::uint64_t index, const DownLinks& links) {
  const IBNode* upper = IndexToNode(index);
  if (upper == nullptr) return StatusLookupFailed;

  const std::span<const DownLinks::Link> found = links.To(*upper);
  for (const auto& [node, link] : found) {
    // Every cable counts here, so the registry of pairs is left alone.
    linkIssues.push_back({upper, link.remotePort, rank, node, link.port, rank + 1});
  }
  if (!found.empty()) return StatusSuccess;
  errStream << "The switch GUID: " << GuidText(upper->guid)
            << "is not connected to any switch from the down nodes"
            << " provided for Invalid Link Issue";
  return StatusBadData;
}

int FTUpHopHistogram::CheckCrossLinks(FTUpHopSet& set) {
  const DownLinks links(topology.GetTreeLinks(), set.downNodes);
  for (const auto& [key, other] : upHopSets) {
    if (&other == &set) continue;
    int status = StatusSuccess;
    set.upSet.ForEachCommon(other.upSet, [&, &reaching = other](std::size_t index) {
      if (index >= bitSetSize || status != StatusSuccess) return;
      status = CheckCrossLink(set, links, reaching, index);
    });
    if (status != StatusSuccess) return status;
  }
  return StatusSuccess;
}

int FTUpHopHistogram::CheckAllCrossLinks() {
  std::vector<FTUpHopSet*> sets;
  std::vector<std::vector<Holder>> holders(bitSetSize);
  for (auto& [key, set] : upHopSets) {
    const auto number = static_cast<std::uint32_t>(sets.size());
    for (const auto& [index, count] : set.encounteredMap) holders[index].push_back({number, count});
    sets.push_back(&set);
  }
  std::vector<Loss> losses;
  for (std::uint32_t index = 0; index < holders.size(); ++index) {
    ReportProgress("looking for cross links", index, holders.size());
    FindLosses(index, holders[index], losses);
  }
  std::sort(losses.begin(), losses.end());
  std::optional<DownLinks> links;  // of the set that loses now
  for (auto loss = losses.begin(); loss != losses.end(); ++loss) {
    FTUpHopSet& set = *sets[loss->set];
    if (loss == losses.begin() || std::prev(loss)->set != loss->set) {
      links.emplace(topology.GetTreeLinks(), set.downNodes);
    }
    const int status = CheckCrossLink(set, *links, *sets[loss->taker], loss->index);
    if (status != StatusSuccess) return status;
  }
  return StatusSuccess;
}

int FTUpHopHistogram::CheckCrossLink(FTUpHopSet& set, const DownLinks& links,
                                     const FTUpHopSet& other, std::uint64_t index) {
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

  if (const int status = set.TakeOutUpNode(index); status != StatusSuccess) {
    errStream << "Failed to take out a node with index: " << index
              << ". Up-Hop set ptr: " << static_cast<const void*>(&set);
    return status;
  }
  return AddIllegalLinkIssues(index, links);
}

}  // namespace fabscope::internal
