#include "fabric/fabric_builder.h"

#include <algorithm>
#include <utility>

#include "fabric/guid.h"

namespace fabscope {
namespace {

std::uint64_t PortKey(std::uint32_t node, std::uint8_t num) {
  return std::uint64_t{node} * 256 + num;
}

std::string PortText(const PortRef& port) {
  return "port " + std::to_string(port.num) + " of node " + GuidText(port.guid);
}

template <typename T>
void Assign(T& target, const std::optional<T>& value) {
  if (value) target = *value;
}

}  // namespace

void FabricBuilder::ReserveNodes(std::size_t count) {
  nodes_.reserve(count);
  indexByGuid_.reserve(count);
  linked_.reserve(count);
  needed_.reserve(count);
}

void FabricBuilder::ReserveLinks(std::size_t count) { links_.reserve(count); }

FabricBuilder::Problem FabricBuilder::AddNode(NodeSpec spec) {
  if (spec.guid == 0) return "a node's GUID must not be 0";
  const auto index = static_cast<std::uint32_t>(nodes_.size());
  if (!indexByGuid_.emplace(spec.guid, index).second) {
    return "node GUID " + GuidText(spec.guid) + " is given twice";
  }
  IBNode& node = nodes_.emplace_back();
  node.guid = spec.guid;
  node.index = index;
  node.systemGuid = spec.systemGuid.value_or(spec.guid);
  node.nodeType = spec.type;
  node.smdbRank = spec.smdbRank;
  node.numPorts = spec.numPorts;
  node.special = spec.special;
  node.multiAsic = spec.multiAsic;
  node.planesNumber = spec.planesNumber;
  node.suitablePlane = spec.suitablePlane;
  node.planes = spec.planes ? std::move(*spec.planes) : std::vector{spec.suitablePlane};
  node.flids = std::move(spec.flids);
  std::sort(node.flids.begin(), node.flids.end());
  node.flids.erase(std::unique(node.flids.begin(), node.flids.end()), node.flids.end());
  node.displayName = spec.displayName ? std::move(*spec.displayName) : spec.name;
  node.name = std::move(spec.name);
  node.asic = std::move(spec.asic);
  linked_.emplace_back();
  needed_.emplace_back();
  return std::nullopt;
}

FabricBuilder::Problem FabricBuilder::Locate(const PortRef& port, std::uint32_t& node) const {
  const auto found = indexByGuid_.find(port.guid);
  if (found == indexByGuid_.end()) return "unknown node " + GuidText(port.guid);
  node = found->second;
  const unsigned count = nodes_[node].numPorts;
  if (port.num == 0 || port.num > count) {
    return PortText(port) + " does not exist: it has " + std::to_string(count) +
           (count == 1 ? " port" : " ports");
  }
  return std::nullopt;
}

FabricBuilder::Problem FabricBuilder::CheckPort(const PortRef& port) const {
  std::uint32_t node = 0;
  return Locate(port, node);
}

bool FabricBuilder::HasLink(const PortRef& port) const {
  const auto found = indexByGuid_.find(port.guid);
  return found != indexByGuid_.end() && linked_[found->second].test(port.num);
}

bool FabricBuilder::IsSwitch(std::uint64_t guid) const {
  const auto found = indexByGuid_.find(guid);
  return found != indexByGuid_.end() && nodes_[found->second].nodeType == NodeTypeSwitch;
}

FabricBuilder::Problem FabricBuilder::AddLink(const LinkSpec& spec) {
  std::uint32_t a = 0;
  std::uint32_t b = 0;
  if (Problem problem = Locate(spec.a, a)) return problem;
  if (Problem problem = Locate(spec.b, b)) return problem;
  if (a == b && spec.a.num == spec.b.num) return PortText(spec.a) + " is linked to itself";
  if (linked_[a].test(spec.a.num)) return PortText(spec.a) + " has a link already";
  if (linked_[b].test(spec.b.num)) return PortText(spec.b) + " has a link already";
  linked_[a].set(spec.a.num);
  linked_[b].set(spec.b.num);
  links_.push_back({a, b, spec.speed, spec.a.num, spec.b.num, spec.symmetric});
  return std::nullopt;
}

FabricBuilder::Problem FabricBuilder::SetPort(std::uint64_t guid, const PortSpec& spec) {
  std::uint32_t node = 0;
  const PortRef port{guid, spec.num};
  if (Problem problem = Locate(port, node)) return problem;
  if (!withAttributes_.insert(PortKey(node, spec.num)).second) {
    return PortText(port) + " is given twice";
  }
  needed_[node].set(spec.num);
  attributes_.push_back({node, spec});
  return std::nullopt;
}

FabricBuilder::Problem FabricBuilder::AddAPort(std::span<const PortRef> ports,
                                               std::uint64_t asymmetry) {
  AggregatedPort aport{{}, asymmetry};
  for (const PortRef& port : ports) {
    std::uint32_t node = 0;
    if (Problem problem = Locate(port, node)) return problem;
    const std::pair member{node, port.num};
    if (inAPort_.contains(PortKey(node, port.num)) ||
        std::find(aport.members.begin(), aport.members.end(), member) != aport.members.end()) {
      return PortText(port) + " is in an aggregated port already";
    }
    aport.members.push_back(member);
  }
  for (const auto& [node, num] : aport.members) {
    inAPort_.insert(PortKey(node, num));
    needed_[node].set(num);
  }
  aports_.push_back(std::move(aport));
  return std::nullopt;
}

void FabricBuilder::ClearRanks() {
  for (IBNode& node : nodes_) node.smdbRank = 255;
}

void FabricBuilder::SetRank(std::uint64_t guid, std::uint8_t rank) {
  nodes_[indexByGuid_.at(guid)].smdbRank = rank;
}

void FabricBuilder::AddFlid(std::uint64_t guid, std::uint16_t flid) {
  std::vector<std::uint16_t>& flids = nodes_[indexByGuid_.at(guid)].flids;
  const auto place = std::lower_bound(flids.begin(), flids.end(), flid);
  if (place == flids.end() || *place != flid) flids.insert(place, flid);
}

void FabricBuilder::LayOutPorts(IBFabric& fabric) const {
  std::size_t portCount = 0;
  std::size_t slotCount = 0;
  std::vector<std::size_t> slots(fabric.nodes_.size());
  for (std::size_t i = 0; i < slots.size(); ++i) {
    const IBNode& node = fabric.nodes_[i];
    const PortSet used = linked_[i] | needed_[i];
    portCount += used.count();
    std::size_t highest = node.numPorts;
    while (highest > 0 && !used.test(highest)) --highest;
    slots[i] = used.any() || node.nodeType == NodeTypeSwitch ? highest + 1 : 0;
    slotCount += slots[i];
  }
  // Exact sizes: the addresses taken below must stay.
  fabric.ports_.resize(portCount);
  fabric.portSlots_.assign(slotCount, nullptr);

  std::size_t port = 0;
  std::size_t slot = 0;
  for (std::size_t i = 0; i < fabric.nodes_.size(); ++i) {
    IBNode& node = fabric.nodes_[i];
    const PortSet used = linked_[i] | needed_[i];
    node.ports = std::span(fabric.portSlots_).subspan(slot, slots[i]);
    slot += slots[i];
    for (std::size_t num = 1; num < slots[i]; ++num) {
      if (!used.test(num)) continue;
      fabric.ports_[port].node = &node;
      fabric.ports_[port].num = static_cast<std::uint8_t>(num);
      node.ports[num] = &fabric.ports_[port++];
    }
  }
}

void FabricBuilder::ConnectLinks(IBFabric& fabric) const {
  constexpr std::uint32_t stateActive = 4;
  for (const Link& link : links_) {
    IBPort& a = *fabric.nodes_[link.nodeA].ports[link.portA];
    IBPort& b = *fabric.nodes_[link.nodeB].ports[link.portB];
    a.remotePort = &b;
    b.remotePort = &a;
    for (IBPort* end : {&a, &b}) {
      end->state = stateActive;
      end->speed = link.speed;
      end->symmetric = link.symmetric;
    }
  }
}

void FabricBuilder::ApplyPortAttributes(IBFabric& fabric) const {
  for (const auto& [node, spec] : attributes_) {
    IBPort& port = *fabric.nodes_[node].ports[spec.num];
    Assign(port.state, spec.state);
    Assign(port.speed, spec.speed);
    Assign(port.symmetric, spec.symmetric);
    Assign(port.fnm, spec.fnm);
    Assign(port.fnm1, spec.fnm1);
    Assign(port.inSubFabric, spec.inSubFabric);
    Assign(port.planeMultiplicity, spec.planeMultiplicity);
    if (spec.group) port.group = IBPort::GroupRecord{*spec.group};
  }
}

void FabricBuilder::AttachAPorts(IBFabric& fabric) const {
  for (const AggregatedPort& aport : aports_) {
    APort& made = fabric.aports_.emplace_back(APort{aport.asymmetry});
    for (const auto& [node, num] : aport.members) fabric.nodes_[node].ports[num]->aport = &made;
  }
}

std::unique_ptr<IBFabric> FabricBuilder::Build() {
  auto fabric = std::make_unique<IBFabric>();
  // From here on nodes have their final addresses.
  fabric->nodes_ = std::move(nodes_);
  fabric->indexByGuid_ = std::move(indexByGuid_);
  LayOutPorts(*fabric);
  ConnectLinks(*fabric);
  ApplyPortAttributes(*fabric);
  AttachAPorts(*fabric);
  for (IBNode& node : fabric->nodes_) {
    if (node.nodeType == NodeTypeSwitch) fabric->switches.insert(fabric->switches.end(), &node);
  }
  *this = FabricBuilder();
  return fabric;
}

}  // namespace fabscope
