#include "synthetic/fabric_plan.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <utility>

#include "formats/node_order.h"

namespace fabscope::internal {
namespace {

// Chips of one system have GUIDs that differ in these four bits.
constexpr unsigned planeShift = 28;

// FLIDs are taken from the unicast LIDs.
constexpr std::size_t lastFlid = 0xbfff;

// A plan holds nothing that a builder refuses.
void Must(const FabricBuilder::Problem& problem) {
  assert(!problem);
  static_cast<void>(problem);
}

}  // namespace

std::uint32_t SlowerSpeed(std::uint32_t speed) {
  constexpr std::array<std::pair<std::uint32_t, std::uint32_t>, 9> slower{{{0x2, 0x1},
                                                                           {0x4, 0x2},
                                                                           {0x100, 0x4},
                                                                           {0x10000, 0x4},
                                                                           {0x200, 0x100},
                                                                           {0x20000, 0x100},
                                                                           {0x400, 0x200},
                                                                           {0x800, 0x400},
                                                                           {0x1000000, 0x800}}};
  for (const auto& [from, to] : slower) {
    if (from == speed) return to;
  }
  return 0;
}

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

void FabricPlan::GiveRanks() {
  for (PlannedNode& node : nodes) {
    if (node.rank >= 0) node.spec.smdbRank = static_cast<std::uint8_t>(node.rank);
  }
}

std::optional<std::string> FabricPlan::GiveFlids() {
  constexpr std::size_t perGroup = 2;
  for (PlannedNode& node : nodes) {
    if (node.rank != levels - 1) continue;
    const std::size_t first = node.leafGroup * perGroup + 1;
    if (first + perGroup - 1 > lastFlid) {
      return "there are more groups of leaves than FLIDs for them: a fabric has " +
             std::to_string(lastFlid);
    }
    for (std::size_t i = 0; i < perGroup; ++i) {
      node.spec.flids.push_back(static_cast<std::uint16_t>(first + i));
    }
  }
  return std::nullopt;
}

// --- Planes.

NodeSpec FabricPlan::NodeOnPlane(std::size_t node, unsigned plane) const {
  NodeSpec spec = nodes[node].spec;
  if (planes == 1) return spec;
  spec.planesNumber = static_cast<std::int32_t>(planes);
  if (!IsSwitch(node)) {
    spec.numPorts = static_cast<std::uint8_t>(spec.numPorts * planes);
    return spec;
  }
  spec.systemGuid = spec.guid;
  spec.guid += std::uint64_t{plane - 1} << planeShift;
  spec.name += "/U" + std::to_string(plane);
  spec.multiAsic = true;
  spec.asic = std::to_string(plane);
  spec.suitablePlane = static_cast<std::int32_t>(plane);
  return spec;
}

PortRef FabricPlan::PortOnPlane(const PlannedEnd& end, unsigned plane) const {
  const std::uint64_t guid = nodes[end.node].spec.guid;
  if (IsSwitch(end.node)) return {guid + (std::uint64_t{plane - 1} << planeShift), end.port};
  return {guid, static_cast<std::uint8_t>((end.port - 1U) * planes + plane)};
}

PlannedLink FabricPlan::LinkOnPlane(const PlannedCable& cable, unsigned plane) const {
  const bool isSlow = plane == cable.slowPlane;
  return {PortOnPlane(cable.upper, plane), PortOnPlane(cable.lower, plane),
          isSlow ? SlowerSpeed(cable.speed) : cable.speed};
}

// --- Filling a fabric.

std::vector<NodeSpec> FabricPlan::AllNodes() const {
  std::vector<NodeSpec> all;
  all.reserve(nodes.size());
  for (std::size_t i = 0; i < nodes.size(); ++i) {
    if (nodes[i].removed) continue;
    const unsigned chips = IsSwitch(i) ? planes : 1;
    for (unsigned plane = 1; plane <= chips; ++plane) all.push_back(NodeOnPlane(i, plane));
  }
  std::sort(all.begin(), all.end(), [](const NodeSpec& a, const NodeSpec& b) {
    return CompareNodeOrder(a.name.c_str(), a.guid, b.name.c_str(), b.guid) < 0;
  });
  return all;
}

void FabricPlan::AggregatePorts(FabricBuilder& builder, const PlannedCable& cable) const {
  const std::uint64_t mark = cable.slowPlane != 0 ? AsymmetryMark : 0;
  for (const PlannedEnd& end : {cable.upper, cable.lower}) {
    std::vector<PortRef> ports;
    for (unsigned plane = 1; plane <= planes; ++plane) {
      const PortRef& port = ports.emplace_back(PortOnPlane(end, plane));
      PortSpec spec;
      spec.num = port.num;
      spec.planeMultiplicity = static_cast<std::int32_t>(planes);
      // Which of a host's ports belong together.
      if (!IsSwitch(end.node)) spec.group = end.port;
      Must(builder.SetPort(port.guid, spec));
    }
    Must(builder.AddAPort(ports, mark));
  }
}

void FabricPlan::Fill(FabricBuilder& builder) const {
  const std::vector<NodeSpec> all = AllNodes();
  builder.ReserveNodes(all.size());
  for (const NodeSpec& spec : all) Must(builder.AddNode(spec));

  builder.ReserveLinks(cables.size() * planes);
  for (const PlannedCable& cable : cables) {
    if (cable.removed) continue;
    for (unsigned plane = 1; plane <= planes; ++plane) {
      const PlannedLink link = LinkOnPlane(cable, plane);
      Must(builder.AddLink({link.upper, link.lower, link.speed, true}));
    }
    if (planes > 1) AggregatePorts(builder, cable);
  }
}

}  // namespace fabscope::internal
