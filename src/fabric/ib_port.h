#pragma once

#include <cstdint>
#include <optional>

#include "fabric/aport.h"

namespace fabscope::internal {

class IBNode;

// One port of a node. Ports belong to their fabric and are never changed once it is built.
class IBPort {
 public:
  // The record that tells the plane ports of one host apart from those of others.
  struct GroupRecord {
    std::int32_t number = 0;
  };

  IBPort* remotePort = nullptr;  // the far end of the cable; null without one
  IBNode* node = nullptr;        // the owner, never null in a built fabric
  APort* aport = nullptr;        // null when the port is in no aggregated port
  std::uint32_t state = 1;       // PortInfo PortState: 1 down .. 4 active
  std::uint32_t speed = 0;       // one-bit link speed code (0x400 = HDR, ...); 0 unknown
  // Above 1: one of the ports of an aggregated port, each on its plane.
  std::int32_t planeMultiplicity = 1;
  std::optional<GroupRecord> group;
  std::uint8_t num = 0;

  // Four flags in one byte: a large fabric has some hundred thousand ports.
  bool symmetric : 1 = true;
  bool fnm : 1 = false;
  bool fnm1 : 1 = false;
  bool inSubFabric : 1 = true;  // false: left out where aggregated ports are checked

  IBNode* get_remote_node() const { return remotePort != nullptr ? remotePort->node : nullptr; }
  bool isSymmetricLink() const { return symmetric; }
  bool isFNMPort() const { return fnm; }
  bool isFNM1Port() const { return fnm1; }
  bool getInSubFabric() const { return inSubFabric; }
};

}  // namespace fabscope::internal
