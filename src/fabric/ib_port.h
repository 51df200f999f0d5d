#pragma once

#include <cstdint>
#include <optional>

#include "fabric/node_extras.h"

namespace fabscope::internal {

class IBNode;

// One port of a node. Ports belong to their fabric and are never changed once it is built. A large
// fabric has some hundred thousand, so one takes 24 bytes, and what few have stands with the node.
class IBPort {
 public:
  IBPort* remotePort = nullptr;  // the far end of the cable; null without one
  IBNode* node = nullptr;        // the owner, never null in a built fabric
  std::uint32_t speed = 0;       // one-bit link speed code (0x400 = HDR, ...); 0 unknown
  std::uint8_t num = 0;
  bool symmetric : 1 = true;
  bool fnm : 1 = false;
  bool fnm1 : 1 = false;
  bool inSubFabric : 1 = true;  // false: left out where aggregated ports are checked

  IBNode* get_remote_node() const { return remotePort != nullptr ? remotePort->node : nullptr; }
  bool isSymmetricLink() const { return symmetric; }
  bool isFNMPort() const { return fnm; }
  bool isFNM1Port() const { return fnm1; }
  bool getInSubFabric() const { return inSubFabric; }

  // PortInfo PortState, 1 down .. 4 active: the latter with a cable, unless the fabric says
  // otherwise.
  std::uint32_t GetState() const;
  // Null when the port is in no aggregated port.
  const APort* GetAPort() const { return GetExtras().aport; }
  // Above 1: one of the ports of an aggregated port, each on its plane.
  std::int32_t GetPlaneMultiplicity() const { return GetExtras().planeMultiplicity; }
  const std::optional<GroupRecord>& GetGroup() const { return GetExtras().group; }

 private:
  friend class FabricBuilder;

  const PortExtras& GetExtras() const { return hasExtras_ ? FindExtras() : ordinary; }
  const PortExtras& FindExtras() const;

  static const PortExtras ordinary;

  bool hasExtras_ : 1 = false;
};

}  // namespace fabscope::internal
