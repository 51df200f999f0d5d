#pragma once

#include <cstdint>
#include <string>

namespace fabscope::internal {

// How texts name a group of switches. Groups on the last pair of ranks, where the leaves are, are
// called neighborhoods; groups above them connectivity groups.

inline const char* GroupTitle(bool isNeighborhood) {
  return isNeighborhood ? "Neighborhood " : "Connectivity group ";
}

inline const char* GroupName(bool isNeighborhood) {
  return isNeighborhood ? "neighborhood" : "connectivity group";
}

// "neighborhood: 3", "connectivity group: 3"
inline std::string GroupLabel(bool isNeighborhood, std::uint64_t id) {
  std::string label = GroupName(isNeighborhood);
  label += ": ";
  label += std::to_string(id);
  return label;
}

}  // namespace fabscope::internal
