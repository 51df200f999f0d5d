#include "fabric/fabric_copy.h"

#include <cassert>
#include <map>

#include "fabric/fabric_walk.h"

namespace fabscope::internal {
namespace {

constexpr std::uint32_t stateDown = 1;
constexpr std::uint32_t stateActive = 4;

// A fabric holds nothing that a builder refuses.
void Must(const FabricBuilder::Problem& problem) {
  assert(!problem);
  static_cast<void>(problem);
}

NodeSpec SpecOf(const IBNode& node) {
  NodeSpec spec;
  spec.guid = node.guid;
  spec.type = node.nodeType;
  spec.name = node.name;
  spec.numPorts = node.numPorts;
  spec.systemGuid = node.systemGuid;
  spec.displayName = node.getAlternativeName();
  spec.smdbRank = node.smdbRank;
  spec.special = node.special;
  spec.multiAsic = node.multiAsic;
  spec.asic = node.getVortaSwitchASIC();
  spec.planesNumber = node.getPlanesNumber();
  spec.suitablePlane = node.getSuitablePlane();
  if (node.HasPlanes()) spec.planes = node.GetPlanes();
  spec.flids = node.GetFlids();
  return spec;
}

// What the port has beyond what its link gives. Speed and symmetry of a link that is not kept go
// with it.
PortSpec SpecOf(const IBPort& port, bool isLinkKept) {
  PortSpec spec;
  spec.num = port.num;
  if (port.fnm) spec.fnm = true;
  if (port.fnm1) spec.fnm1 = true;
  if (!port.inSubFabric) spec.inSubFabric = false;
  if (port.GetPlaneMultiplicity() != 1) spec.planeMultiplicity = port.GetPlaneMultiplicity();
  if (port.GetGroup()) spec.group = port.GetGroup()->number;
  const IBPort* far = port.remotePort;
  if (far != nullptr && !isLinkKept) return spec;
  const IBPort& first = far == nullptr || IsFirstEnd(port) ? port : *far;
  if (port.GetState() != (far != nullptr ? stateActive : stateDown)) spec.state = port.GetState();
  if (far == nullptr ? port.speed != 0 : port.speed != first.speed) spec.speed = port.speed;
  if (far == nullptr ? !port.symmetric : port.symmetric != first.symmetric) {
    spec.symmetric = port.symmetric;
  }
  return spec;
}

bool SaysSomething(const PortSpec& spec) {
  return spec.state || spec.speed || spec.symmetric || spec.fnm || spec.fnm1 || spec.inSubFabric ||
         spec.planeMultiplicity || spec.group;
}

}  // namespace

void CopyFabric(const IBFabric& fabric, const std::function<bool(const IBPort&)>& keeps,
                FabricBuilder& builder) {
  builder.ReserveNodes(fabric.GetNodes().size());
  for (const IBNode& node : fabric.GetNodes()) Must(builder.AddNode(SpecOf(node)));
  std::map<const APort*, std::vector<PortRef>> members;
  for (const IBPort& port : fabric.GetPorts()) {
    const IBPort* far = port.remotePort;
    const bool isFirst = far != nullptr && IsFirstEnd(port);
    const bool isKept = far != nullptr && keeps(isFirst ? port : *far);
    if (isFirst && isKept) {
      Must(builder.AddLink({port.node->index, port.num}, {far->node->index, far->num}, port.speed,
                           port.symmetric));
    }
    const PortSpec spec = SpecOf(port, isKept);
    if (SaysSomething(spec)) Must(builder.SetPort(port.node->guid, spec));
    if (port.GetAPort() != nullptr) members[port.GetAPort()].push_back({port.node->guid, port.num});
  }
  for (const APort& aport : fabric.GetAPorts()) {
    if (const auto found = members.find(&aport); found != members.end()) {
      Must(builder.AddAPort(found->second, aport.asymmetry));
    }
  }
}

}  // namespace fabscope::internal
