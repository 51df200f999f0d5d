#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "fabric/ib_fabric.h"

namespace fabscope::internal {

// A cable between two switches that counts for the tree, as the switch at its near end sees it.
struct TreeLink {
  std::uint32_t remote = 0;  // IBNode::index of the switch at the far end
  std::uint8_t port = 0;     // the port's number at the near end
  std::uint8_t remotePort = 0;
};

// What every switch is cabled to, read from the fabric's ports once. From a port to the switch at
// its far end it is three steps through memory, and a check goes that way a dozen times for every
// cable; here a switch's links stand side by side.
//
// Holds for the fabric as it was when this was made.
class TreeLinks {
 public:
  explicit TreeLinks(const IBFabric& fabric);

  // The links of a switch of the fabric in port order; none for other nodes.
  std::span<const TreeLink> Of(const IBNode& node) const {
    const Cables& cables = cables_[node.index];
    return {links_.data() + cables.firstLink, cables.linkCount};
  }
  // How many of its ports lead to hosts: channel adapters that are no special nodes.
  std::uint32_t HostCables(const IBNode& node) const { return cables_[node.index].hostCables; }
  // The same, but a multi-ASIC switch reaches one host through a port on each plane: there a host
  // whose ports the fabric's group records tell to belong together counts once.
  std::uint32_t Hosts(const IBNode& node) const { return cables_[node.index].hosts; }
  // Whether a cable between switches counts at one of its ends only.
  bool HasOneSided() const { return hasOneSided_; }
  // Whether any of its ports is one of several planes.
  bool HasPlanePorts(const IBNode& node) const { return cables_[node.index].hasPlanePorts; }

 private:
  struct Cables {
    std::uint32_t firstLink = 0;
    std::uint16_t linkCount = 0;
    std::uint16_t hostCables = 0;
    std::uint16_t hosts = 0;
    bool hasPlanePorts = false;
  };

  Cables Read(const IBNode& node);

  std::vector<TreeLink> links_;  // by switch, then by port
  std::vector<Cables> cables_;   // by IBNode::index
  bool hasOneSided_ = false;
};

}  // namespace fabscope::internal
