// From sets of up-links to groups of switches, with the links that are wrong in them.
//
// Each set that survived the merge pass becomes a group: its upper switches are the spines, its
// lower switches the lines. A set without upper switches (lower switches without an up-link) is a
// group too, without spines. An upper switch that no set holds is in no group, and a faulty link
// that names such a switch cannot be told: the rank then fails.
//
// Neighborhoods and connectivity groups are numbered apart, each through all ranks of a tree, so
// that a number names one group in everything that is told of the tree.

#include "fat_tree/neighborhood.h"

#include <functional>
#include <map>

#include "fabric/guid.h"
#include "fat_tree/group_label.h"
#include "fat_tree/status.h"
#include "fat_tree/topology.h"
#include "fat_tree/up_hop_histogram.h"

namespace fabscope::internal {
namespace {

// The first group that holds a node.
std::map<const IBNode*, const FTNeighborhood*> GroupsByNode(
    const std::vector<FTNeighborhood*>& groups) {
  std::map<const IBNode*, const FTNeighborhood*> table;
  for (const FTNeighborhood* group : groups) {
    for (const NodeSet* nodes : {&group->GetSpines(), &group->GetLines()}) {
      for (const IBNode* node : *nodes) {
        if (node != nullptr) table.emplace(node, group);
      }
    }
  }
  return table;
}

// Groups that nobody has taken over yet.
struct OwnedGroups {
  OwnedGroups() = default;
  OwnedGroups(const OwnedGroups&) = delete;
  OwnedGroups& operator=(const OwnedGroups&) = delete;
  ~OwnedGroups() {
    for (const FTNeighborhood* group : groups) delete group;
  }

  std::vector<FTNeighborhood*> groups;
};

}  // namespace

int FTTopology::CreateNeighborhoodsOnRank(std::vector<FabricErrGeneral*>& errors,
                                          std::uint64_t rank) {
  FTUpHopHistogram histogram(*this, rank);
  int status = histogram.Init();
  if (status == StatusSuccess) status = histogram.CreateNeighborhoods(errors);
  if (status != StatusSuccess) errStream << histogram.GetErrorText();
  return status;
}

int FTUpHopHistogram::SetsToNeighborhoods(std::vector<FabricErrGeneral*>& errors) {
  const bool isNeighborhood = topology.IsLastRankNeighborhood(rank);
  OwnedGroups owned;
  std::vector<FTNeighborhood*>& groups = owned.groups;
  for (const auto& [key, set] : upHopSets) {
    std::list<const IBNode*> upperNodes;
    if (const int status = BitSetToNodes(set.upSet, upperNodes); status != StatusSuccess) {
      return status;
    }
    groups.push_back(new FTNeighborhood(&topology, topology.NextGroupId(isNeighborhood), rank));
    groups.back()->AddNodes(upperNodes, true);
    groups.back()->AddNodes(set.downNodes, false);
  }

  if (const int status = InvalidLinksReport(errors, groups); status != StatusSuccess) {
    return status;
  }
  for (const FTNeighborhood* group : groups) {
    const int status = group->MissingLinksReport(errors, connectedPairs);
    if (status != StatusSuccess) {
      errStream << "Failed to report on missing link for"
                << GroupLabel(isNeighborhood, group->GetId());
      return status;
    }
  }
  // On success the topology owns the groups, and what it held before is deleted here.
  return topology.SetNeighborhoodsOnRank(groups, rank);
}

int FTUpHopHistogram::InvalidLinksReport(std::vector<FabricErrGeneral*>& errors,
                                         const std::vector<FTNeighborhood*>& neighborhoods) {
  if (linkIssues.empty()) return StatusSuccess;
  const bool isNeighborhood = topology.IsLastRankNeighborhood(rank);
  const auto groups = GroupsByNode(neighborhoods);
  // A switch of no group is told by the search for it.
  const auto groupOf = [&](const IBNode* node) {
    const auto found = groups.find(node);
    return found != groups.end() ? found->second : FindNeighborhood(neighborhoods, node);
  };
  for (const FTLinkIssue& issue : linkIssues) {
    const FTNeighborhood* group1 = groupOf(issue.node1);
    if (group1 == nullptr) return StatusLookupFailed;
    const FTNeighborhood* group2 = groupOf(issue.node2);
    if (group2 == nullptr) return StatusLookupFailed;
    topology.Record(InvalidLink{group1->GetId(), group2->GetId(), issue, isNeighborhood}, errors);
  }
  return StatusSuccess;
}

FTNeighborhood* FTUpHopHistogram::FindNeighborhood(
    const std::vector<FTNeighborhood*>& neighborhoods, const IBNode* node) {
  for (FTNeighborhood* group : neighborhoods) {
    if (group->Holds(node)) return group;
  }
  errStream << "The provided switch ( GUID: " << GuidText(node->guid)
            << " ) is not associated with any neighborhood on the rank: " << rank;
  return nullptr;
}

bool FTNeighborhood::IsNeighborhood() const { return topology->IsLastRankNeighborhood(rank); }

void FTNeighborhood::AddNodes(const std::list<const IBNode*>& nodes, bool toSpines) {
  fabscope::internal::AddNodes({nodes.begin(), nodes.end()}, toSpines ? spines : lines);
}

int FTNeighborhood::MissingLinksReport(std::vector<FabricErrGeneral*>& errors,
                                       const NodePairs& connectedPairs) const {
  const bool isNeighborhood = IsNeighborhood();
  struct Line {
    const IBNode* node;
    NodePairs::Row connected;
  };
  // A null switch would be the first of all, and ends the report.
  if (spines.contains(nullptr) || lines.contains(nullptr)) return StatusSuccess;
  std::vector<Line> all;
  for (const IBNode* line : lines) all.push_back({line, connectedPairs.RowOf(*line)});
  for (const IBNode* spine : spines) {
    const std::uint32_t column = connectedPairs.ColumnOf(*spine);
    const bool isAlsoLine = lines.contains(spine);
    for (const auto& [line, connected] : all) {
      if (line == spine || connected.Has(column)) continue;
      // Only where spines and lines share switches is a pair met a second time, turned round.
      const bool wasVisited = isAlsoLine && std::less<>()(line, spine) && spines.contains(line);
      if (wasVisited || connectedPairs.Contains(*spine, *line)) continue;
      topology->Record(MissingLink{id, spine, line, isNeighborhood}, errors);
    }
  }
  return StatusSuccess;
}

}  // namespace fabscope::internal
