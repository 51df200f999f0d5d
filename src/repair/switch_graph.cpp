#include "repair/switch_graph.h"

#include <algorithm>
#include <utility>

#include "fabric/fabric_walk.h"

namespace fabscope::internal {

namespace {

bool CountsAtBothEnds(const IBNode& node, const TreeLink& link) {
  return GetLinkedNode(*node.getPort(link.port)->remotePort) != nullptr;
}

}  // namespace

SwitchGraph::SwitchGraph(const IBFabric& fabric, const TreeLinks& links)
    : numberOf_(fabric.GetNodes().size(), none) {
  nodes_.reserve(fabric.switches.size());
  for (const IBNode* node : fabric.switches) {
    nodes_.push_back(node);
  }
  std::sort(nodes_.begin(), nodes_.end(),
            [](const IBNode* a, const IBNode* b) { return a->guid < b->guid; });
  for (std::uint32_t i = 0; i < Count(); ++i) numberOf_[nodes_[i]->index] = i;
  hosts_.resize(Count());
  cables_.reserve(fabric.GetPorts().size() / 2);
  std::vector<std::uint32_t> degree(Count());
  for (const IBNode* node : nodes_) {
    const std::uint32_t number = NumberOf(node->index);
    hosts_[number] = links.HostCables(*node);
    for (const TreeLink& link : links.Of(*node)) {
      const std::uint32_t far = NumberOf(link.remote);
      if (std::pair(number, link.port) > std::pair(far, link.remotePort)) continue;
      if (links.HasOneSided() && !CountsAtBothEnds(*node, link)) continue;
      const Cable cable{number, far, link.port, link.remotePort};
      if (cable.a == cable.b) {
        loops_.push_back(cable);
        continue;
      }
      cables_.push_back(cable);
      ++degree[cable.a];
      ++degree[cable.b];
    }
  }
  first_.assign(Count() + std::size_t{1}, 0);
  for (std::uint32_t i = 0; i < Count(); ++i) first_[i + 1] = first_[i] + degree[i];
  incident_.resize(first_[Count()]);
  std::vector<std::uint32_t> next(first_.begin(), first_.end() - 1);
  farEnds_.resize(first_[Count()]);
  const auto add = [&](std::uint32_t end, std::uint32_t cable) {
    farEnds_[next[end]] = cables_[cable].Other(end);
    incident_[next[end]++] = cable;
  };
  for (std::uint32_t i = 0; i < cables_.size(); ++i) add(cables_[i].a, i), add(cables_[i].b, i);
}

}  // namespace fabscope::internal
