#include "fat_tree/tree_links.h"

#include "fabric/fabric_walk.h"
#include "fat_tree/containers/node_set.h"

namespace fabscope::internal {
namespace {

// Whether a port of a switch that leads to a host reaches one that no port before it has reached.
bool ReachesAnother(const IBNode& node, const IBPort& port, NodeSet& countedHosts) {
  if (!node.isVortaSwitch()) return true;
  const auto& group = port.remotePort->GetGroup();
  if (!group || group->number < 1) return true;
  return countedHosts.insert(port.remotePort->node).second;
}

}  // namespace

TreeLinks::TreeLinks(const IBFabric& fabric) : cables_(fabric.GetNodes().size()) {
  links_.reserve(fabric.GetPorts().size());
  for (const IBNode* node : fabric.switches) {
    if (node != nullptr) cables_[node->index] = Read(*node);
  }
}

TreeLinks::Cables TreeLinks::Read(const IBNode& node) {
  Cables cables;
  NodeSet countedHosts;
  cables.firstLink = static_cast<std::uint32_t>(links_.size());
  for (const IBPort& port : node.ports) {
    if (port.GetPlaneMultiplicity() > 1) cables.hasPlanePorts = true;
    const IBNode* remote = GetLinkedNode(port);
    if (remote == nullptr) continue;
    if (remote->nodeType == NodeTypeSwitch) {
      links_.push_back({remote->index, port.num, port.remotePort->num});
      ++cables.linkCount;
      hasOneSided_ = hasOneSided_ || GetLinkedNode(*port.remotePort) == nullptr;
    } else if (remote->nodeType == NodeTypeCA && !remote->isSpecialNode()) {
      ++cables.hostCables;
      if (ReachesAnother(node, port, countedHosts)) ++cables.hosts;
    }
  }
  return cables;
}

}  // namespace fabscope::internal
