// Whether the switches of a group have equal link counts, and whether the group can block.
//
// The expected count is always the greatest one present: cables get lost, they do not appear. A
// group of which fewer cables leave upwards than come in from below cannot carry all traffic of its
// lines at once; that is a suspicion only, since fabrics are built so on purpose.

#include "fat_tree/group_label.h"
#include "fat_tree/neighborhood.h"
#include "fat_tree/status.h"
#include "fat_tree/topology.h"

namespace fabscope::internal {
namespace {

std::string NullNodeText(bool isNeighborhood, std::uint64_t id) {
  return "Cannot calculate Up/Down links for the " + GroupLabel(isNeighborhood, id) +
         ". One of its IB-Nodes is NULL";
}

}  // namespace

int FTNeighborhood::CheckUpDownLinks(std::vector<FabricErrGeneral*>& errors, std::ostream& stream) {
  stream << std::endl;
  if (rank != 0) {
    if (const int status = CheckBlockingConfiguration(errors, stream); status != StatusSuccess) {
      return status;
    }
    if (const int status = CheckSetLinks(spines, rank, true, errors, stream);
        status != StatusSuccess) {
      return status;
    }
  }
  if (const int status = CheckSetLinks(spines, rank, false, errors, stream);
      status != StatusSuccess) {
    return status;
  }
  if (const int status = CheckSetLinks(lines, rank + 1, true, errors, stream);
      status != StatusSuccess) {
    return status;
  }
  return CheckSetLinks(lines, rank + 1, false, errors, stream);
}

int FTNeighborhood::CheckBlockingConfiguration(std::vector<FabricErrGeneral*>& /*errors*/,
                                               std::ostream& stream) {
  for (const IBNode* spine : spines) {
    if (spine == nullptr) {
      errStream << NullNodeText(IsNeighborhood(), id);
      return StatusLookupFailed;
    }
    const UpDownLinks links = topology->GetSwitchLinksData(rank, *spine);
    totalSpineUplinks += static_cast<std::uint64_t>(std::int64_t{links.up});
    totalInternalLinks += static_cast<std::uint64_t>(std::int64_t{links.down});
  }
  if (totalSpineUplinks < totalInternalLinks) {
    topology->Report(SuspectedBlocking{id, totalSpineUplinks, totalInternalLinks, IsNeighborhood()},
                     stream);
  }
  return StatusSuccess;
}

int FTNeighborhood::CheckSetLinks(const NodeSet& nodes, std::uint64_t nodesRank, bool isUp,
                                  std::vector<FabricErrGeneral*>& /*errors*/,
                                  std::ostream& stream) {
  CountMap counts;
  for (const IBNode* node : nodes) {
    if (node == nullptr) {
      errStream << NullNodeText(IsNeighborhood(), id);
      return StatusLookupFailed;
    }
    const UpDownLinks links = topology->GetSwitchLinksData(nodesRank, *node);
    counts[isUp ? links.up : links.down].push_back(node->guid);
  }
  SetLinksReport(stream, counts, nodesRank, isUp);
  return StatusSuccess;
}

void FTNeighborhood::SetLinksReport(std::ostream& stream, const CountMap& counts,
                                    std::uint64_t nodesRank, bool isUp) {
  if (counts.empty()) return;
  const bool ofSpines = nodesRank == rank;
  if (counts.size() == 1) {
    stream << "-I- " << GroupTitle(IsNeighborhood()) << id << ": all "
           << (ofSpines ? "spines" : "lines") << " have the same number of "
           << (isUp ? "uplinks" : "downlinks") << ": " << counts.begin()->first << std::endl;
    return;
  }
  const EnFabricErrLevel_t level =
      IsWarning(nodesRank, isUp) ? EN_FABRIC_ERR_WARNING : EN_FABRIC_ERR_ERROR;
  topology->Report(UnevenLinks{id, counts.rbegin()->first, OthersOf(counts), ofSpines, isUp,
                               IsNeighborhood(), level},
                   stream);
}

void FTNeighborhood::ReportToStream(std::ostream& stream, const CountMap& counts, unsigned perLine,
                                    const std::string& linkName) const {
  ListSwitches(OthersOf(counts), perLine, linkName, topology->Show_GUID, stream);
}

std::vector<LinkCount> FTNeighborhood::OthersOf(const CountMap& counts) const {
  std::vector<LinkCount> others;
  if (counts.empty()) return others;
  for (auto entry = std::next(counts.rbegin()); entry != counts.rend(); ++entry) {
    LinkCount& count = others.emplace_back();
    count.links = entry->first;
    for (const std::uint64_t guid : entry->second) {
      const IBNode* node = topology->GetFabric().getNodeByGuid(guid);
      if (node != nullptr) count.nodes.push_back(node);
    }
  }
  return others;
}

bool FTNeighborhood::IsWarning(std::uint64_t nodesRank, bool isUp) const {
  return !isUp && IsNeighborhood() && nodesRank == rank + 1;
}

}  // namespace fabscope::internal
