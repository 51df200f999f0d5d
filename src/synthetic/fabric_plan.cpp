#include "synthetic/fabric_plan.h"

#include <algorithm>
#include <cassert>
#include <utility>

#include "formats/node_order.h"

namespace fabscope {

std::size_t& FabricPlan::Slot(const PlannedEnd& end) {
  cableAt_.resize(nodes.size());
  std::vector<std::size_t>& ports = cableAt_[end.node];
  ports.resize(std::size_t{nodes[end.node].spec.numPorts} + 1, NoCable);
  return ports[end.port];
}

std::vector<std::size_t> FabricPlan::CablesOf(std::size_t node) {
  std::vector<std::size_t> found;
  for (unsigned port = 1; port <= nodes[node].spec.numPorts; ++port) {
    const std::size_t cable = CableAt({node, static_cast<std::uint8_t>(port)});
    if (cable != NoCable) found.push_back(cable);
  }
  return found;
}

std::uint8_t FabricPlan::FreePort(std::size_t node) {
  for (unsigned port = 1; port <= nodes[node].spec.numPorts; ++port) {
    const auto num = static_cast<std::uint8_t>(port);
    if (CableAt({node, num}) == NoCable) return num;
  }
  return 0;
}

std::size_t FabricPlan::AddCable(const PlannedCable& cable) {
  assert(CableAt(cable.upper) == NoCable && CableAt(cable.lower) == NoCable);
  Slot(cable.upper) = Slot(cable.lower) = cables.size();
  cables.push_back(cable);
  return cables.size() - 1;
}

void FabricPlan::RemoveCable(std::size_t index) {
  PlannedCable& cable = cables[index];
  Slot(cable.upper) = Slot(cable.lower) = NoCable;
  cable.removed = true;
}

void FabricPlan::RemoveNode(std::size_t node) {
  for (const std::size_t cable : CablesOf(node)) RemoveCable(cable);
  nodes[node].removed = true;
}

std::vector<std::size_t> FabricPlan::SwitchesOnRank(int rank) const {
  std::vector<std::size_t> switches;
  for (std::size_t i = 0; i < nodes.size(); ++i) {
    if (nodes[i].rank == rank && !nodes[i].removed) switches.push_back(i);
  }
  return switches;
}

void FabricPlan::Fill(FabricBuilder& builder) const {
  // A plan holds nothing that a builder refuses.
  const auto must = [](const FabricBuilder::Problem& problem) {
    assert(!problem);
    static_cast<void>(problem);
  };
  std::vector<const NodeSpec*> sorted;
  for (const PlannedNode& node : nodes) {
    if (!node.removed) sorted.push_back(&node.spec);
  }
  std::sort(sorted.begin(), sorted.end(), [](const NodeSpec* a, const NodeSpec* b) {
    return CompareNodeOrder(a->name, a->guid, b->name, b->guid) < 0;
  });
  builder.ReserveNodes(sorted.size());
  for (const NodeSpec* spec : sorted) must(builder.AddNode(*spec));

  const auto refer = [this](const PlannedEnd& end) {
    return PortRef{nodes[end.node].spec.guid, end.port};
  };
  builder.ReserveLinks(cables.size());
  for (const PlannedCable& cable : cables) {
    if (cable.removed) continue;
    must(builder.AddLink({refer(cable.upper), refer(cable.lower), cable.speed, true}));
  }
}

}  // namespace fabscope
