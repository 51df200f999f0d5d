#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <vector>

#include "synthetic/faults.h"
#include "synthetic/random.h"
#include "synthetic/tree_shape.h"

namespace fabscope::internal {

// The trees and faults by which the search for roots is judged.
inline constexpr std::array<int, 3> measuredLevels{2, 3, 4};
inline constexpr std::array<int, 4> measuredFaults{1, 2, 4, 8};

inline const std::vector<FaultKind>& MeasuredKinds() {
  static const std::vector<FaultKind> kinds{FaultKind::MissingLink,  FaultKind::SwappedCables,
                                            FaultKind::SameRankLink, FaultKind::RootLink,
                                            FaultKind::MovedCable,   FaultKind::DeadSwitch,
                                            FaultKind::MissingHost,  FaultKind::StrayHost};
  return kinds;
}

inline Random RandomOf(std::uint64_t seed, int levels, int faults) {
  return Random(seed * 1000 + static_cast<std::uint64_t>(levels * 10 + faults));
}

inline unsigned Between(unsigned least, unsigned greatest, Random& random) {
  return least + static_cast<unsigned>(random.Below(greatest - least + 1));
}

// Room on every switch for cables that faults add, so that none has to be pulled for them.
inline void AddSparePorts(unsigned ports, TreeShape& shape) {
  for (std::size_t level = 1; level <= shape.Levels(); ++level) {
    shape.radix = std::max(shape.radix, shape.PortsOnLevel(level) + ports);
  }
}

// Small to middling trees: the smaller a tree is, the more a fault weighs.
inline TreeShape RandomShape(int levels, Random& random) {
  constexpr unsigned sparePorts = 8;
  const auto between = [&](unsigned least, unsigned greatest) {
    return Between(least, greatest, random);
  };
  TreeShape shape;
  switch (levels) {
    case 2:
      shape.children = {between(2, 8), between(6, 36)};
      shape.parents = {1, between(2, 12)};
      break;
    case 3:
      shape.children = {between(2, 4), between(4, 12), between(3, 12)};
      shape.parents = {1, between(2, 6), between(2, 4)};
      break;
    default:
      shape.children = {between(1, 3), between(2, 5), between(2, 5), between(3, 8)};
      shape.parents = {1, between(2, 4), between(2, 4), between(2, 3)};
  }
  AddSparePorts(sparePorts, shape);
  return shape;
}

}  // namespace fabscope::internal
