#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "fabric/ib_port.h"

namespace fabscope::internal {

// NodeInfo NodeType values.
inline constexpr std::uint8_t NodeTypeCA = 1;
inline constexpr std::uint8_t NodeTypeSwitch = 2;
inline constexpr std::uint8_t NodeTypeRouter = 3;

// A switch, channel adapter or router. The nodes of a fabric stand in one array in model order, so
// that comparing two addresses compares their places in the model: every ordered set of nodes, and
// with it every report, follows that order.
class IBNode {
 public:
  std::uint64_t guid = 0;
  std::uint64_t systemGuid = 0;  // shared by the chips of one system
  // The ports that have a cable or an attribute of their own, by number. They and the name belong
  // to the fabric.
  std::span<IBPort> ports;
  std::string_view name;
  std::uint32_t index = 0;  // the place in the model, counted from 0
  std::uint8_t nodeType = 0;
  std::uint8_t smdbRank = 255;  // rank given by the subnet manager; 0 marks a root, 255 none
  std::uint8_t numPorts = 0;    // ports are numbered 1 to numPorts
  bool special : 1 = false;     // a channel adapter that is no host
  bool multiAsic : 1 = false;   // a switch of the family whose chips serve all planes

  // The port of that number, or null. Port 0, a switch's management port, takes part in no tree and
  // is never there.
  IBPort* getPort(std::uint8_t num) const {
    // Mostly every number has its port.
    const std::size_t guess = num - std::size_t{1};
    if (guess < ports.size() && ports[guess].num == num) return &ports[guess];
    return FindPort(num);
  }

  bool isSpecialNode() const { return special; }
  bool isVortaSwitch() const { return multiAsic; }
  const std::string& getVortaSwitchASIC() const { return GetExtras().asic; }
  std::int32_t getPlanesNumber() const { return GetExtras().planesNumber; }
  std::int32_t getSuitablePlane() const { return GetExtras().suitablePlane; }
  bool isOnSamePlane(std::int32_t plane) const;
  // The planes the node belongs to; the suitable one where nothing else is said.
  std::vector<std::int32_t> GetPlanes() const;
  bool HasPlanes() const { return GetExtras().planes.has_value(); }
  // Ascending, each once.
  const std::vector<std::uint16_t>& GetFlids() const { return GetExtras().flids; }
  // The display name; the name where there is none.
  std::string_view getAlternativeName() const;

 private:
  friend class FabricBuilder;
  friend class IBPort;

  IBPort* FindPort(std::uint8_t num) const;
  const NodeExtras& GetExtras() const { return extras_ != nullptr ? *extras_ : ordinary; }

  static const NodeExtras ordinary;

  NodeExtras* extras_ = nullptr;  // the fabric's; null for an ordinary node
};

}  // namespace fabscope::internal
