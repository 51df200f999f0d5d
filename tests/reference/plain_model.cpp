#include "reference/plain_model.h"

#include <stdexcept>
#include <utility>

#include "fabric/fabric_builder.h"

namespace fabscope::internal::reference {
namespace {

void Require(const FabricBuilder::Problem& problem) {
  if (problem) throw std::logic_error("plain fabric: " + *problem);
}

NodeSpec SpecOf(const PlainNode& node) {
  NodeSpec spec;
  spec.guid = node.guid;
  spec.type = static_cast<std::uint8_t>(node.type);
  spec.name = node.name;
  spec.numPorts = static_cast<std::uint8_t>(node.numPorts);
  spec.systemGuid = node.systemGuid;
  spec.displayName = node.displayName;
  spec.smdbRank = static_cast<std::uint8_t>(node.smdbRank);
  spec.special = node.special;
  spec.multiAsic = node.multiAsic;
  spec.asic = node.asic;
  spec.planesNumber = node.planesNumber;
  spec.suitablePlane = node.suitablePlane;
  spec.planes = std::vector<std::int32_t>(node.planes.begin(), node.planes.end());
  for (const int flid : node.flids) spec.flids.push_back(static_cast<std::uint16_t>(flid));
  return spec;
}

PortSpec SpecOf(int num, const PlainPort& port) {
  PortSpec spec;
  spec.num = static_cast<std::uint8_t>(num);
  spec.state = port.state;
  spec.speed = port.speed;
  spec.symmetric = port.symmetric;
  spec.fnm = port.fnm;
  spec.fnm1 = port.fnm1;
  spec.inSubFabric = port.inSubFabric;
  spec.planeMultiplicity = port.planeMultiplicity;
  spec.group = port.group;
  return spec;
}

}  // namespace

std::unique_ptr<IBFabric> ModelOf(const PlainFabric& fabric) {
  FabricBuilder builder;
  std::vector<std::vector<PortRef>> aports(fabric.aportAsymmetry.size());
  for (const PlainNode& node : fabric.nodes) Require(builder.AddNode(SpecOf(node)));
  for (std::uint32_t i = 0; i < fabric.nodes.size(); ++i) {
    const PlainNode& node = fabric.nodes[i];
    for (const auto& [num, port] : node.ports) {
      const PortRef end{node.guid, static_cast<std::uint8_t>(num)};
      Require(builder.SetPort(node.guid, SpecOf(num, port)));
      if (port.aport >= 0) aports[static_cast<std::size_t>(port.aport)].push_back(end);
      if (port.remoteNode < 0 || builder.HasLink({i, end.num})) continue;
      const PortRef far{fabric.nodes[static_cast<std::size_t>(port.remoteNode)].guid,
                        static_cast<std::uint8_t>(port.remotePort)};
      Require(builder.AddLink({end, far}));
    }
  }
  for (std::size_t i = 0; i < aports.size(); ++i) {
    Require(builder.AddAPort(aports[i], fabric.aportAsymmetry[i]));
  }
  return builder.Build();
}

}  // namespace fabscope::internal::reference
