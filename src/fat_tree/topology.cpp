// Ranks from given roots.
//
// A fat tree is told by its roots alone: the rank of a switch is its distance, in switch hops, from
// the nearest root. Roots come from the subnet manager's ranks or from a regular expression over
// switch names, and a breadth-first walk ranks the rest.
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

#include "fabric/fabric_walk.h"
#include "fat_tree/neighborhood.h"
#include "fat_tree/status.h"

namespace fabscope {
namespace {

constexpr const char* cannotBuild = "Cannot build Fat-Tree topology. ";

}  // namespace

int FTTopology::Show_GUID = 0;

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
  NodeSet ranked = roots;
  ranks.clear();
  ranks.emplace_back().swap(roots);

  for (;;) {
    NodeSet next;
    for (const IBNode* node : ranks.back()) {
      for (const IBPort* port : GetTreePorts(*node)) {
        const IBNode* remote = GetRemoteSwitch(port);
        if (remote == nullptr) continue;
        if (!remote->isVortaSwitch() && !remote->isOnSamePlane(plane)) continue;
        if (ranked.insert(remote).second) next.insert(remote);
      }
    }
    if (next.empty()) return StatusSuccess;
    ranks.push_back(std::move(next));
  }
}

const NodeSet* FTTopology::GetNodesOnRank(std::size_t rank) {
  if (rank < ranks.size()) return &ranks[rank];
  errStream << "Cannot get nodes on rank: " << rank
            << " Total ranks in the Fat-tree: " << ranks.size();
  return nullptr;
}

int FTTopology::GetNodeRank(const IBNode* node) const {
  for (std::size_t rank = 0; rank < ranks.size(); ++rank) {
    if (ranks[rank].contains(node)) return static_cast<int>(rank);
  }
  return -1;
}

bool FTTopology::IsLastRankNeighborhood(std::size_t rank) const {
  return neighborhoods.size() == rank + 1;
}

int FTTopology::GetPlanesNumber() const {
  if (ranks.empty()) std::abort();
  if (ranks[0].empty() || *ranks[0].begin() == nullptr) return 0;
  return (*ranks[0].begin())->getPlanesNumber();
}

const FTClassification::NodeData* FTTopology::GetClassificationNodeData(const IBNode* node) const {
  const auto found = classificationNodeData.find(node);
  return found == classificationNodeData.end() ? nullptr : &found->second;
}

bool FTTopology::IsReportedLinkIssue(const IBNode* a, const IBNode* b) const {
  return linkIssues.Contains(a, b);
}

void FTTopology::AddNewLinkIssue(const IBNode* a, const IBNode* b) { linkIssues.Add(a, b); }

std::string FTTopology::LevelsReport() const {
  std::ostringstream report;
  report << ranks.size() << " level Fat-Tree was discovered: \n";
  for (std::size_t rank = 0; rank < ranks.size(); ++rank) {
    report << "\t rank: " << rank << (rank == 0 ? "(Roots)" : "")
           << " #switches: " << ranks[rank].size() << '\n';
  }
  return report.str();
}

}  // namespace fabscope
