#pragma once

#include <algorithm>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "fabric/ib_port.h"

namespace fabscope::internal {

// NodeInfo NodeType values.
inline constexpr std::uint32_t NodeTypeCA = 1;
inline constexpr std::uint32_t NodeTypeSwitch = 2;
inline constexpr std::uint32_t NodeTypeRouter = 3;

// A switch, channel adapter or router. The nodes of a fabric stand in one array in model order, so
// that comparing two addresses compares their places in the model: every ordered set of nodes, and
// with it every report, follows that order.
class IBNode {
 public:
  std::uint64_t guid = 0;
  std::uint64_t systemGuid = 0;  // shared by the chips of one system
  std::uint32_t index = 0;       // the place in the model, counted from 0
  // By port number; entry 0 is a switch's management port. Entries may be null: a port that has
  // neither a cable nor an attribute of its own has no object. The array belongs to the fabric.
  std::span<IBPort*> ports;
  std::uint32_t nodeType = 0;
  std::uint8_t smdbRank = 255;  // rank given by the subnet manager; 0 marks a root, 255 none
  std::uint8_t numPorts = 0;    // ports are numbered 1 to numPorts
  bool special = false;         // a channel adapter that is no host
  bool multiAsic = false;       // a switch of the family whose chips serve all planes
  std::int32_t planesNumber = 1;
  std::int32_t suitablePlane = 1;
  // The planes the node belongs to, where it is not the suitable plane alone.
  std::optional<std::vector<std::int32_t>> planes;
  std::vector<std::uint16_t> flids;  // ascending, each once
  std::string name;
  std::string displayName;
  std::string asic;

  // The port of that number, or null. Port 0 exists on switches only, where `ports` must not be
  // empty.
  IBPort* getPort(std::uint8_t num) const;

  bool isSpecialNode() const { return special; }
  bool isVortaSwitch() const { return multiAsic; }
  const std::string& getVortaSwitchASIC() const { return asic; }
  std::int32_t getPlanesNumber() const { return planesNumber; }
  std::int32_t getSuitablePlane() const { return suitablePlane; }
  bool isOnSamePlane(std::int32_t plane) const {
    if (!planes) return plane == suitablePlane;
    return std::find(planes->begin(), planes->end(), plane) != planes->end();
  }
  std::vector<std::int32_t> GetPlanes() const {
    return planes.value_or(std::vector{suitablePlane});
  }
  const std::string& getAlternativeName() const { return displayName; }
};

}  // namespace fabscope::internal
