// Cables towards the roots and away from them, counted against the ranks.
//
// A root has no up-links and counts cables to rank 1 as down-links; a leaf counts cables to the
// rank above as up-links and cables to hosts as down-links; every other switch counts its two
// neighbouring ranks. Cables inside a rank or over two ranks count as neither: they are reported
// elsewhere.

#include <cstdlib>

#include "fat_tree/status.h"
#include "fat_tree/topology.h"

namespace fabscope::internal {
namespace {

// Gb/s of one lane; 0 for a code that is not known.
double LaneSpeed(std::uint32_t speedCode) {
  switch (speedCode) {
    case 0x1:
      return 2.5;
    case 0x2:
      return 5.0;
    case 0x4:
      return 10.0;
    case 0x100:
    case 0x10000:
      return 14.0;
    case 0x200:
    case 0x20000:
      return 25.0;
    case 0x400:
      return 50.0;
    case 0x800:
      return 100.0;
    case 0x1000000:
      return 200.0;
    default:
      return 0.0;
  }
}

double FirstConnectedPortSpeed(const IBNode& node) {
  for (const IBPort& port : node.ports) {
    if (port.remotePort != nullptr) return LaneSpeed(port.speed);
  }
  return 0.0;
}

}  // namespace

UpDownLinks FTTopology::CalculateSwitchUpDownLinks(std::uint64_t rank, const IBNode& node) const {
  UpDownLinks links;
  const std::size_t rankCount = GetRanks().size();
  const bool isRoot = rank == 0;
  // A rank that the tree does not have is the caller's mistake, never the fabric's.
  if (rank >= rankCount || (isRoot && rankCount < 2)) std::abort();
  const auto own = static_cast<int>(rank);
  for (const TreeLink& link : GetTreeLinks().Of(node)) {
    const int remoteRank = ranks.RankOf(link.remote);
    if (remoteRank == own + 1) ++links.down;
    if (remoteRank == own - 1 && !isRoot) ++links.up;
  }
  const bool isLeaf = !isRoot && rank + 1 == rankCount;
  if (isLeaf) links.down = static_cast<std::int32_t>(GetTreeLinks().Hosts(node));
  return links;
}

UpDownLinks FTTopology::GetSwitchLinksData(std::uint64_t rank, const IBNode& node) {
  if (!switchUpDownLinks.Has(node)) {
    switchUpDownLinks.Reserve(fabric->GetNodes().size());
    switchUpDownLinks.Set(node, CalculateSwitchUpDownLinks(rank, node));
  }
  return switchUpDownLinks.Get(node);
}

int FTTopology::CalculateUpDownLinksMinRatio() {
  const std::vector<NodeSet>& sets = GetRanks();
  if (sets.size() < 2) {
    errStream << "Cannot calculate Up/Down links. It is not a Fat-Tree topology";
    return StatusBadData;
  }
  for (std::size_t rank = 0; rank < sets.size(); ++rank) {
    for (const IBNode* node : sets[rank]) {
      if (node == nullptr) {
        errStream << "Cannot calculate Up/Down links. One of IB-Nodes is NULL";
        return StatusLookupFailed;
      }
      const UpDownLinks links = GetSwitchLinksData(rank, *node);
      if (links.up == 0 || links.down == 0) continue;
      // Only the up-links are weighted, so ratios compare switches of one speed.
      const double ratio = links.up * FirstConnectedPortSpeed(*node) / links.down;
      if (minUpDownRatio == 0.0 || minUpDownRatio > ratio) minUpDownRatio = ratio;
    }
  }
  return StatusSuccess;
}

}  // namespace fabscope::internal
