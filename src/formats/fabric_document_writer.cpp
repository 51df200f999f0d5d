#include <fmt/format.h>
#include <iterator>
#include <map>
#include <vector>

#include "fabric/fabric_walk.h"
#include "fabric/guid.h"
#include "formats/fabric_document.h"
#include "formats/link_speeds.h"
#include "formats/node_kinds.h"
#include "text/json_members.h"

namespace fabscope::internal {
namespace {

constexpr std::uint32_t stateDown = 1;
constexpr std::uint32_t stateActive = 4;

void AppendSpeed(JsonMembers& members, std::uint32_t code) {
  if (const std::string_view name = SpeedName(code); !name.empty()) {
    members.Text("speed", name);
  } else {
    members.Number("speed", code);
  }
}

// A link is written at the end that comes first in the model, with that end's attributes.
const IBPort& FirstEnd(const IBPort& port) { return IsFirstEnd(port) ? port : *port.remotePort; }

void AppendPort(std::string& json, const IBPort& port) {
  const bool linked = port.remotePort != nullptr;
  const std::uint32_t linkSpeed = linked ? FirstEnd(port).speed : 0;
  const bool linkSymmetric = !linked || FirstEnd(port).isSymmetricLink();
  JsonMembers members(json, '{', '}');
  members.Number("num", port.num);
  if (port.GetState() != (linked ? stateActive : stateDown)) {
    members.Number("state", port.GetState());
  }
  if (port.speed != linkSpeed) AppendSpeed(members, port.speed);
  if (port.isSymmetricLink() != linkSymmetric) {
    members.Flag("symmetric", port.isSymmetricLink());
  }
  if (port.fnm) members.Flag("fnm", true);
  if (port.fnm1) members.Flag("fnm1", true);
  if (!port.inSubFabric) members.Flag("inSubFabric", false);
  if (port.GetPlaneMultiplicity() != 1) {
    members.Number("planeMultiplicity", port.GetPlaneMultiplicity());
  }
  if (port.GetGroup()) members.Number("group", port.GetGroup()->number);
}

void AppendPorts(JsonMembers& node, const IBNode& owner) {
  std::vector<std::string> ports;
  for (const IBPort& port : owner.ports) {
    std::string json;
    AppendPort(json, port);
    // A port of which only the number would be told is told by its link.
    if (json.find(',') != std::string::npos) ports.push_back(std::move(json));
  }
  if (ports.empty()) return;
  JsonMembers array(node.Key("ports"), '[', ']');
  for (const std::string& port : ports) array.Next() += port;
}

void AppendNode(std::string& json, const IBNode& node) {
  JsonMembers members(json, '{', '}');
  members.Guid("guid", node.guid);
  members.Text("type", KindOf(node).name);
  members.Text("name", node.name);
  members.Number("numPorts", node.numPorts);
  if (node.systemGuid != node.guid) members.Guid("systemGuid", node.systemGuid);
  if (node.getAlternativeName() != node.name) {
    members.Text("displayName", node.getAlternativeName());
  }
  if (node.smdbRank != 255) members.Number("smdbRank", node.smdbRank);
  if (node.special) members.Flag("special", true);
  if (node.multiAsic) members.Flag("multiAsic", true);
  if (const std::string& asic = node.getVortaSwitchASIC(); !asic.empty()) {
    members.Text("asic", asic);
  }
  if (node.getPlanesNumber() != 1) members.Number("planesNumber", node.getPlanesNumber());
  if (node.getSuitablePlane() != 1) members.Number("suitablePlane", node.getSuitablePlane());
  if (node.HasPlanes()) members.NumberArray("planes", node.GetPlanes());
  if (!node.GetFlids().empty()) members.NumberArray("flids", node.GetFlids());
  AppendPorts(members, node);
}

void AppendLink(std::string& json, const IBPort& port) {
  JsonMembers members(json, '{', '}');
  members.Guid("a", port.node->guid);
  members.Number("aPort", port.num);
  members.Guid("b", port.remotePort->node->guid);
  members.Number("bPort", port.remotePort->num);
  if (port.speed != 0) AppendSpeed(members, port.speed);
  if (!port.symmetric) members.Flag("symmetric", false);
}

void AppendAPort(std::string& json, const APort& aport, const std::vector<const IBPort*>& ports) {
  JsonMembers members(json, '{', '}');
  {
    JsonMembers array(members.Key("ports"), '[', ']');
    for (const IBPort* port : ports) {
      array.Next() += fmt::format(R"(["{}",{}])", GuidText(port->node->guid), port->num);
    }
  }
  if (aport.asymmetry != 0) members.Number("asymmetry", aport.asymmetry);
}

}  // namespace

std::string FabricDocumentText(const IBFabric& fabric) {
  std::string json = "{\"format\":\"fabscope-fabric\",\"version\":1,\n\"nodes\":";
  {
    JsonMembers nodes(json, '[', ']');
    for (const IBNode& node : fabric.GetNodes()) AppendNode(nodes.Next() += '\n', node);
  }
  json += ",\n\"links\":";
  {
    JsonMembers links(json, '[', ']');
    for (const IBPort& port : fabric.GetPorts()) {
      if (port.remotePort == nullptr || !IsFirstEnd(port)) continue;
      AppendLink(links.Next() += '\n', port);
    }
  }
  std::map<const APort*, std::vector<const IBPort*>> members;
  for (const IBPort& port : fabric.GetPorts()) {
    if (port.GetAPort() != nullptr) members[port.GetAPort()].push_back(&port);
  }
  json += ",\n\"aports\":";
  {
    JsonMembers aports(json, '[', ']');
    for (const APort& aport : fabric.GetAPorts()) {
      AppendAPort(aports.Next() += '\n', aport, members[&aport]);
    }
  }
  return json + "}\n";
}

}  // namespace fabscope::internal
