#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "fabric/aport.h"

namespace fabscope::internal {

// The record that tells the plane ports of one host apart from those of others.
struct GroupRecord {
  std::int32_t number = 0;
};

// What few ports have. Absent values are those of an ordinary port.
struct PortExtras {
  std::optional<std::uint32_t> state;
  APort* aport = nullptr;
  std::int32_t planeMultiplicity = 1;
  std::optional<GroupRecord> group;
};

// What few nodes have, and few of their ports. A large fabric has tens of thousands of nodes
// without any of it; those take no memory here.
struct NodeExtras {
  std::optional<std::string> displayName;
  std::string asic;
  std::int32_t planesNumber = 1;
  std::int32_t suitablePlane = 1;
  std::optional<std::vector<std::int32_t>> planes;
  std::vector<std::uint16_t> flids;
  std::map<std::uint8_t, PortExtras> ports;  // by port number
};

}  // namespace fabscope::internal
