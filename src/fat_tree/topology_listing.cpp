// The tree in plain text: the ranks with their switches, then, for every pair of ranks, the groups
// with their link totals, spines and lines.

#include "fat_tree/group_label.h"
#include "fat_tree/neighborhood.h"
#include "fat_tree/node_record.h"
#include "fat_tree/status.h"
#include "fat_tree/topology.h"
#include "platform/logging.h"

namespace fabscope::internal {
namespace {

void ReportFatal(const char* message) {
  dump_to_log_file("%s", message);
  dump_to_screen("%s", message);
}

}  // namespace

int FTTopology::Dump() {
  *outStream << std::endl << std::endl;
  if (const int status = DumpNodesToStream(); status != StatusSuccess) return status;
  return DumpNeighborhoodsToStream();
}

int FTTopology::DumpNodesToStream() {
  const std::vector<NodeSet>& sets = GetRanks();
  for (std::size_t rank = 0; rank < sets.size(); ++rank) {
    const char* suffix = " ";
    if (rank == 0) {
      suffix = " (Roots)";
    } else if (rank + 1 == sets.size()) {
      suffix = " (Leaves)";
    }
    *outStream << std::endl
               << "rank: " << rank << suffix << "size: " << sets[rank].size() << std::endl;
    for (const IBNode* node : sets[rank]) {
      if (node == nullptr) {
        ReportFatal("-E- One of IBNodes is NULL. Cannot dump it\n");
        return StatusLookupFailed;
      }
      *outStream << '\t' << GetNodeRecord(node, Show_GUID) << std::endl;
    }
  }
  return StatusSuccess;
}

int FTTopology::DumpNeighborhoodsToStream() {
  *outStream << "\n\n\n";
  for (std::size_t rank = 0; rank < neighborhoods.size(); ++rank) {
    *outStream << "on ranks (" << rank << ", " << rank + 1 << ") -- "
               << GroupName(IsLastRankNeighborhood(rank)) << "s: " << neighborhoods[rank].size()
               << std::endl;
    for (const FTNeighborhood* group : neighborhoods[rank]) {
      if (group == nullptr) {
        ReportFatal("-E- One of FTNeighborhoods is NULL. Cannot dump it\n");
        return StatusLookupFailed;
      }
      if (const int status = group->DumpToStream(*outStream); status != StatusSuccess) {
        return status;
      }
    }
    *outStream << std::endl;
  }
  return StatusSuccess;
}

int FTNeighborhood::DumpToStream(std::ostream& stream) const {
  stream << '\t' << GroupLabel(IsNeighborhood(), id) << std::endl;
  if (rank != 0) {
    stream << "\t\ttotal spine uplinks: " << totalSpineUplinks << std::endl;
    stream << "\t\ttotal internal links: " << totalInternalLinks << std::endl;
  }
  if (const int status = DumpNodesToStream(stream, spines, "spines"); status != StatusSuccess) {
    return status;
  }
  return DumpNodesToStream(stream, lines, "lines");
}

int FTNeighborhood::DumpNodesToStream(std::ostream& stream, const NodeSet& nodes,
                                      const std::string& name) const {
  stream << "\t\t" << name << ": " << nodes.size() << " switches" << std::endl;
  for (const IBNode* node : nodes) {
    if (node == nullptr) return StatusLookupFailed;
    stream << "\t\t\t" << GetNodeRecord(node, topology->Show_GUID) << std::endl;
  }
  return StatusSuccess;
}

}  // namespace fabscope::internal
