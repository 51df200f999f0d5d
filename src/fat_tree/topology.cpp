// Ranks from given roots.
//
// A fat tree is told by its roots alone: the rank of a switch is its distance, in switch hops, from
// the nearest root. Roots come from the subnet manager's ranks, from a regular expression over
// switch names, or from the caller, and a breadth-first walk ranks the rest.
//
// On a fabric of several planes each plane is a tree of its own. The first root fixes the plane,
// and the walk stays on it, except that switches of the multi-ASIC family are taken on any plane:
// their chips serve all of them.
//
// Links are believed from one end only (a port may count while its far end is an FNM port), so a
// neighbour may already stand two ranks above. A switch that has a rank is never ranked again;
// otherwise such a link would send the walk round for ever.

#include "fat_tree/topology.h"

#include <cstdlib>

#include "fat_tree/neighborhood.h"
#include "fat_tree/status.h"

namespace fabscope::internal {
namespace {

constexpr const char* cannotBuild = "Cannot build Fat-Tree topology. ";

}  // namespace

FTTopology::FTTopology(const IBFabric* builtFabric, std::ostream* reportStream, int mergePercent)
    : fabric(builtFabric), outStream(reportStream), upHopMergePercent(mergePercent) {}

FTTopology::~FTTopology() { release_container_data(neighborhoods); }

int FTTopology::Build(std::vector<FabricErrGeneral*>& /*errors*/, std::string& message) {
  *outStream << "-I- Taking roots from the SMDB file" << std::endl;

  NodeSet roots;
  if (const int status = GetRootsBySMDB(roots); status != StatusSuccess) {
    message = std::string(cannotBuild) + "Failed to find roots by SMDB: " + errStream.str();
    return status;
  }
  if (FillRanksFromRoots(roots) != StatusSuccess) {
    message = std::string(cannotBuild) + "Failed to fill tree's ranks by SMDB: " + errStream.str();
    return StatusBadData;
  }
  return StatusSuccess;
}

int FTTopology::Build(std::vector<FabricErrGeneral*>& /*errors*/, std::string& message,
                      regExp& rootsRegExp) {
  *outStream << "-I- Detecting roots by the regular exp: " << rootsRegExp.GetExpression()
             << std::endl;

  NodeSet roots;
  if (const int status = GetNodes(roots, rootsRegExp); status != StatusSuccess) {
    message = std::string(cannotBuild) + "Failed to find roots: " + errStream.str();
    return status;
  }
  if (FillRanksFromRoots(roots) != StatusSuccess) {
    message = std::string(cannotBuild) +
              "Failed to fill tree's ranks by the regular expression: " + errStream.str();
    return StatusBadData;
  }
  return StatusSuccess;
}

int FTTopology::Build(std::vector<FabricErrGeneral*>& /*errors*/, std::string& message,
                      const NodeSet& givenRoots) {
  NodeSet roots;
  const auto isGiven = [&](const IBNode& node) { return givenRoots.contains(&node); };
  if (const int status = CollectRoots(roots, isGiven); status != StatusSuccess) {
    message = std::string(cannotBuild) + "Failed to find the given roots: " + errStream.str();
    return status;
  }
  if (FillRanksFromRoots(roots) != StatusSuccess) {
    message = std::string(cannotBuild) +
              "Failed to fill tree's ranks by the given roots: " + errStream.str();
    return StatusBadData;
  }
  return StatusSuccess;
}

int FTTopology::CollectRoots(NodeSet& roots, const std::function<bool(const IBNode&)>& isRoot) {
  std::optional<int> plane;
  for (const IBNode* node : fabric->switches) {
    if (node == nullptr) {
      errStream << "NULL pointer was found in fabric's switches";
      return StatusLookupFailed;
    }
    if (!isRoot(*node)) continue;
    if (!plane) {
      plane = node->getSuitablePlane();
    } else if (!node->isOnSamePlane(*plane)) {
      continue;
    }
    roots.insert(node);
  }
  return StatusSuccess;
}

int FTTopology::GetRootsBySMDB(NodeSet& roots) {
  return CollectRoots(roots, [](const IBNode& node) { return node.smdbRank == 0; });
}

int FTTopology::GetNodes(NodeSet& nodes, regExp& rootsRegExp) {
  return CollectRoots(nodes, [&](const IBNode& node) { return rootsRegExp.Matches(node.name); });
}

int FTTopology::FillRanksFromRoots(NodeSet& roots) {
  if (roots.empty()) {
    errStream << "No root was provided for creating topology";
    return StatusBadData;
  }
  const int plane = (*roots.begin())->getSuitablePlane();
  const TreeLinks& links = GetTreeLinks();
  const std::vector<IBNode>& nodes = fabric->GetNodes();
  std::vector<bool> isRanked(nodes.size());
  for (const IBNode* root : roots) isRanked[root->index] = true;
  std::vector<NodeSet> sets;
  sets.emplace_back().swap(roots);

  std::vector<const IBNode*> last(sets[0].begin(), sets[0].end());
  while (!last.empty()) {
    std::vector<const IBNode*> next;
    for (const IBNode* node : last) {
      for (const TreeLink& link : links.Of(*node)) {
        if (isRanked[link.remote]) continue;
        const IBNode& remote = nodes[link.remote];
        if (!remote.isVortaSwitch() && !remote.isOnSamePlane(plane)) continue;
        isRanked[link.remote] = true;
        next.push_back(&remote);
      }
    }
    if (!next.empty()) AddNodes(next, sets.emplace_back());
    last = std::move(next);
  }
  ranks = RankedSwitches(std::move(sets));
  return StatusSuccess;
}

const NodeSet* FTTopology::GetNodesOnRank(std::size_t rank) {
  if (rank < GetRanks().size()) return &GetRanks()[rank];
  errStream << "Cannot get nodes on rank: " << rank
            << " Total ranks in the Fat-tree: " << GetRanks().size();
  return nullptr;
}

bool FTTopology::IsLastRankNeighborhood(std::size_t rank) const {
  return neighborhoods.size() == rank + 1;
}

int FTTopology::GetPlanesNumber() const {
  if (GetRanks().empty()) std::abort();
  const NodeSet& roots = GetRanks().front();
  if (roots.empty() || *roots.begin() == nullptr) return 0;
  return (*roots.begin())->getPlanesNumber();
}

const TreeLinks& FTTopology::GetTreeLinks() const {
  if (!treeLinks) treeLinks = std::make_shared<TreeLinks>(*fabric);
  return *treeLinks;
}

void FTTopology::ShareTreeLinks(const FTTopology& other) {
  other.GetTreeLinks();
  treeLinks = other.treeLinks;
}

const FTClassification::NodeData* FTTopology::GetClassificationNodeData(const IBNode* node) const {
  return classificationNodeData.Has(*node) ? &classificationNodeData.Get(*node) : nullptr;
}

bool FTTopology::IsReportedLinkIssue(const IBNode* a, const IBNode* b) const {
  return linkIssues.Contains(a, b);
}

void FTTopology::AddNewLinkIssue(const IBNode* a, const IBNode* b) { linkIssues.Add(a, b); }

std::string FTTopology::LevelsReport() const {
  const std::vector<NodeSet>& sets = GetRanks();
  std::ostringstream report;
  report.exceptions(std::ios::badbit);  // a report without some of its lines would be a wrong one
  report << sets.size() << " level Fat-Tree was discovered: \n";
  for (std::size_t rank = 0; rank < sets.size(); ++rank) {
    report << "\t rank: " << rank << (rank == 0 ? "(Roots)" : "")
           << " #switches: " << sets[rank].size() << '\n';
  }
  return report.str();
}

}  // namespace fabscope::internal
