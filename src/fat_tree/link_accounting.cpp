// Cables towards the roots and away from them, counted against the ranks.
//
// A root has no up-links and counts cables to rank 1 as down-links; a leaf counts cables to the
// rank above as up-links and cables to hosts as down-links; every other switch counts its two
// neighbouring ranks. Cables inside a rank or over two ranks count as neither: they are reported
// elsewhere.
//
// A leaf of the multi-ASIC family reaches one host through a port on each plane, so it counts the
// host and not the cables, where the fabric's group records tell that the far ports belong
// together.

#include <cstdlib>

#include "fabric/fabric_walk.h"
#include "fat_tree/status.h"
#include "fat_tree/topology.h"

namespace fabscope {
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
  for (const IBPort* port : GetTreePorts(node)) {
    if (port != nullptr && port->remotePort != nullptr) return LaneSpeed(port->speed);
  }
  return 0.0;
}

bool CountsAsHost(const IBNode& leaf, const IBPort& port, NodeSet& countedHosts) {
  const IBNode* host = port.get_remote_node();
  if (host->isSpecialNode()) return false;
  if (!leaf.isVortaSwitch()) return true;
  const auto& group = port.remotePort->group;
  if (!group || group->number < 1) return true;
  return countedHosts.insert(host).second;
}

}  // namespace

UpDownLinks FTTopology::CalculateSwitchUpDownLinks(std::uint64_t rank, const IBNode& node) const {
  UpDownLinks links;
  NodeSet countedHosts;
  const bool isRoot = rank == 0;
  const bool isLeaf = !isRoot && rank + 1 == ranks.size();
  // A rank that the tree does not have is the caller's mistake, never the fabric's.
  if (rank >= ranks.size() || (isRoot && ranks.size() < 2)) std::abort();
  for (const IBPort* port : GetTreePorts(node)) {
    const IBNode* remote = GetLinkedNode(port);
    if (remote == nullptr) continue;

    if (remote->nodeType == NodeTypeSwitch) {
      if (!isRoot && ranks[rank - 1].contains(remote)) ++links.up;
      if (!isLeaf && ranks[rank + 1].contains(remote)) ++links.down;
    } else if (isLeaf && remote->nodeType == NodeTypeCA) {
      if (CountsAsHost(node, *port, countedHosts)) ++links.down;
    }
  }
  return links;
}

UpDownLinks FTTopology::GetSwitchLinksData(std::uint64_t rank, const IBNode& node) {
  const auto known = switchUpDownLinks.find(&node);
  if (known != switchUpDownLinks.end()) return known->second;
  return switchUpDownLinks[&node] = CalculateSwitchUpDownLinks(rank, node);
}

int FTTopology::CalculateUpDownLinksMinRatio() {
  if (ranks.size() < 2) {
    errStream << "Cannot calculate Up/Down links. It is not a Fat-Tree topology";
    return StatusBadData;
  }
  for (std::size_t rank = 0; rank < ranks.size(); ++rank) {
    for (const IBNode* node : ranks[rank]) {
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

}  // namespace fabscope
