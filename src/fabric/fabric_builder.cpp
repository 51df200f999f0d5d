#include "fabric/fabric_builder.h"

#include <algorithm>
#include <utility>

#include "fabric/guid.h"

namespace fabscope::internal {
namespace {

std::string PortText(const PortRef& port) {
  return "port " + std::to_string(port.num) + " of node " + GuidText(port.guid);
}

}  // namespace

void FabricBuilder::ReserveNodes(std::size_t count) {
  nodes_.reserve(count);
  indexByGuid_.Reserve(count);
  portsBefore_.reserve(count + 1);
}

void FabricBuilder::ReserveLinks(std::size_t count) { links_.reserve(count); }

FabricBuilder::Problem FabricBuilder::AddNode(const NodeSpec& spec) {
  if (spec.guid == 0) return "a node's GUID must not be 0";
  const auto index = static_cast<std::uint32_t>(nodes_.size());
  if (!indexByGuid_.Insert(spec.guid, index)) {
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
  node.name = spec.keptName ? *spec.keptName : names_.Keep(spec.name);
  if (spec.displayName && *spec.displayName != node.name) {
    ExtrasOf(node).displayName = spec.displayName;
  }
  if (!spec.asic.empty()) ExtrasOf(node).asic = spec.asic;
  if (spec.planesNumber != 1) ExtrasOf(node).planesNumber = spec.planesNumber;
  if (spec.suitablePlane != 1) ExtrasOf(node).suitablePlane = spec.suitablePlane;
  if (spec.planes && *spec.planes != std::vector{spec.suitablePlane}) {
    ExtrasOf(node).planes = spec.planes;
  }
  if (!spec.flids.empty()) ExtrasOf(node).flids = spec.flids;
  portsBefore_.push_back(portsBefore_.back() + spec.numPorts);
  linked_.Grow(portsBefore_.back());
  return std::nullopt;
}

NodeExtras& FabricBuilder::ExtrasOf(IBNode& node) {
  if (node.extras_ == nullptr) node.extras_ = &extras_.emplace_back();
  return *node.extras_;
}

FabricBuilder::Problem FabricBuilder::Locate(const PortRef& port, PortPlace& place) const {
  const std::uint32_t node = FindNode(port.guid);
  if (node == GuidIndex::None) return "unknown node " + GuidText(port.guid);
  place = {node, port.num};
  if (!HasPort(place)) return NoPortText(place);
  return std::nullopt;
}

std::string FabricBuilder::NoPortText(const PortPlace& port) const {
  const unsigned count = nodes_[port.node].numPorts;
  return PortText(Name(port)) + " does not exist: it has " + std::to_string(count) +
         (count == 1 ? " port" : " ports");
}

bool FabricBuilder::IsSwitch(std::uint64_t guid) const {
  const std::uint32_t index = FindNode(guid);
  return index != GuidIndex::None && nodes_[index].nodeType == NodeTypeSwitch;
}

FabricBuilder::Problem FabricBuilder::AddLink(const LinkSpec& spec) {
  PortPlace a;
  PortPlace b;
  if (Problem problem = Locate(spec.a, a)) return problem;
  if (Problem problem = Locate(spec.b, b)) return problem;
  return AddLink(a, b, spec.speed, spec.symmetric);
}

FabricBuilder::Problem FabricBuilder::WhyNoLink(const PortPlace& a, const PortPlace& b) const {
  for (const PortPlace& end : {a, b}) {
    if (!HasPort(end)) return NoPortText(end);
  }
  if (a.node == b.node && a.num == b.num) return PortText(Name(a)) + " is linked to itself";
  return PortText(Name(HasLink(a) ? a : b)) + " has a link already";
}

FabricBuilder::Problem FabricBuilder::SetPort(std::uint64_t guid, const PortSpec& spec) {
  PortPlace place;
  if (Problem problem = Locate({guid, spec.num}, place)) return problem;
  if (!Mark(place, withAttributes_)) return PortText({guid, spec.num}) + " is given twice";
  Mark(place, needed_);
  attributes_.push_back({place.node, spec});
  return std::nullopt;
}

FabricBuilder::Problem FabricBuilder::AddAPort(std::span<const PortRef> ports,
                                               std::uint64_t asymmetry) {
  AggregatedPort aport{{}, asymmetry};
  const auto refuse = [&](Problem problem) {
    for (const PortPlace& member : aport.members) inAPort_.Erase(PlaceOf(member));
    return problem;
  };
  for (const PortRef& port : ports) {
    PortPlace member;
    if (Problem problem = Locate(port, member)) return refuse(std::move(problem));
    if (!Mark(member, inAPort_)) {
      return refuse(PortText(port) + " is in an aggregated port already");
    }
    aport.members.push_back(member);
  }
  for (const PortPlace& member : aport.members) Mark(member, needed_);
  aports_.push_back(std::move(aport));
  return std::nullopt;
}

bool FabricBuilder::Mark(const PortPlace& port, PortSet& ports) const {
  if (ports.size() < linked_.size()) ports.Grow(linked_.size());
  const std::size_t place = PlaceOf(port);
  if (ports.Has(place)) return false;
  ports.Insert(place);
  return true;
}

void FabricBuilder::ClearRanks() {
  for (IBNode& node : nodes_) node.smdbRank = 255;
}

void FabricBuilder::SetRank(std::uint64_t guid, std::uint8_t rank) {
  nodes_[FindNode(guid)].smdbRank = rank;
}

void FabricBuilder::AddFlid(std::uint64_t guid, std::uint16_t flid) {
  ExtrasOf(nodes_[FindNode(guid)]).flids.push_back(flid);
}

std::vector<std::size_t> FabricBuilder::LayOutPorts(IBFabric& fabric) const {
  std::size_t portCount = 2 * links_.size();
  for (std::size_t i = 0; i < needed_.size(); ++i) {
    if (needed_.Has(i) && !linked_.Has(i)) ++portCount;
  }
  // The exact size: the addresses taken below must stay.
  fabric.ports_.resize(portCount);

  IBPort* next = fabric.ports_.data();
  std::vector<std::size_t> firstPorts;
  firstPorts.reserve(fabric.nodes_.size());
  std::size_t place = 0;
  for (IBNode& node : fabric.nodes_) {
    IBPort* const first = next;
    firstPorts.push_back(static_cast<std::size_t>(next - fabric.ports_.data()));
    for (std::size_t num = 1; num <= node.numPorts; ++num, ++place) {
      if (!linked_.Has(place) && (place >= needed_.size() || !needed_.Has(place))) continue;
      next->node = &node;
      next->num = static_cast<std::uint8_t>(num);
      ++next;
    }
    node.ports = {first, next};
  }
  return firstPorts;
}

void FabricBuilder::ConnectLinks(IBFabric& fabric,
                                 const std::vector<std::size_t>& firstPorts) const {
  // Mostly every number has its port. Then the node need not be asked, which stands elsewhere in
  // memory.
  const auto find = [&](std::uint32_t place, std::uint8_t num) -> IBPort& {
    const std::size_t guess = firstPorts[place] + num - std::size_t{1};
    IBNode* node = &fabric.nodes_[place];
    IBPort* port = guess < fabric.ports_.size() ? &fabric.ports_[guess] : nullptr;
    const bool isRight = port != nullptr && port->num == num && port->node == node;
    return isRight ? *port : *node->getPort(num);
  };
  for (const Link& link : links_) {
    IBPort& a = find(link.nodeA, link.portA);
    IBPort& b = find(link.nodeB, link.portB);
    a.remotePort = &b;
    b.remotePort = &a;
    for (IBPort* end : {&a, &b}) {
      end->speed = link.speed;
      end->symmetric = link.symmetric;
    }
  }
}

void FabricBuilder::ApplyPortAttributes(IBFabric& fabric) {
  for (const auto& [node, spec] : attributes_) {
    IBPort& port = *fabric.nodes_[node].getPort(spec.num);
    port.speed = spec.speed.value_or(port.speed);
    if (spec.symmetric) port.symmetric = *spec.symmetric;
    if (spec.fnm) port.fnm = *spec.fnm;
    if (spec.fnm1) port.fnm1 = *spec.fnm1;
    if (spec.inSubFabric) port.inSubFabric = *spec.inSubFabric;
    if (spec.state && *spec.state != port.GetState()) ExtrasOf(port).state = spec.state;
    if (spec.planeMultiplicity) ExtrasOf(port).planeMultiplicity = *spec.planeMultiplicity;
    if (spec.group) ExtrasOf(port).group = GroupRecord{*spec.group};
  }
}

void FabricBuilder::AttachAPorts(IBFabric& fabric) {
  for (const AggregatedPort& aport : aports_) {
    APort& made = fabric.aports_.emplace_back(APort{aport.asymmetry});
    for (const PortPlace& member : aport.members) {
      ExtrasOf(*fabric.nodes_[member.node].getPort(member.num)).aport = &made;
    }
  }
}

PortExtras& FabricBuilder::ExtrasOf(IBPort& port) {
  port.hasExtras_ = true;
  return ExtrasOf(*port.node).ports[port.num];
}

std::unique_ptr<IBFabric> FabricBuilder::Build() {
  auto fabric = std::make_unique<IBFabric>();
  // From here on nodes have their final addresses.
  fabric->nodes_ = std::move(nodes_);
  fabric->indexByGuid_ = std::move(indexByGuid_);
  ConnectLinks(*fabric, LayOutPorts(*fabric));
  ApplyPortAttributes(*fabric);
  AttachAPorts(*fabric);
  for (NodeExtras& extras : extras_) {
    std::vector<std::uint16_t>& flids = extras.flids;
    std::sort(flids.begin(), flids.end());
    flids.erase(std::unique(flids.begin(), flids.end()), flids.end());
  }
  fabric->names_ = std::move(names_);
  fabric->date_ = std::move(date_);
  fabric->extras_ = std::move(extras_);
  for (IBNode& node : fabric->nodes_) {
    if (node.nodeType == NodeTypeSwitch) fabric->switches.insert(fabric->switches.end(), &node);
  }
  *this = FabricBuilder();
  return fabric;
}

}  // namespace fabscope::internal
