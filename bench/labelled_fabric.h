#pragma once

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "synthetic/fabric_plan.h"
#include "synthetic/faults.h"

namespace fabscope::internal {

// Fabrics that are alike in all but their seed.
struct Cell {
  std::string set;
  std::string kind;
  int levels = 0;
  int faults = 0;
  int usualCount = 0;  // fabrics that a measurement takes
};

// A cable between switches by GUIDs and ports, its lesser end first.
using GuidEnd = std::pair<std::uint64_t, std::uint8_t>;
using GuidCable = std::pair<GuidEnd, GuidEnd>;
using GuidCables = std::multiset<GuidCable>;

GuidCable CableBetween(const GuidEnd& a, const GuidEnd& b);

// Switches that show by an empty port that their neighbor is dead.
struct Witnesses {
  std::set<std::uint64_t> switches;  // GUIDs
  std::set<std::uint8_t> ports;
};

// A tree with faults that are known.
struct LabelledFabric {
  FabricPlan plan;                    // with its faults
  std::vector<InjectedFault> faults;  // those of the clean kind have none
  GuidCables truth;  // cables between switches as they were meant, without those of dead switches
  // Of a dead switch: either of these may tell it, those below it and those above it.
  std::vector<Witnesses> witnesses;
};

// Every cell that is measured, by set.
std::vector<Cell> AllCells();

// The fabric of a cell and a seed; nothing where its tree is too small for such faults.
std::optional<LabelledFabric> MakeFabric(const Cell& cell, std::uint64_t seed);

}  // namespace fabscope::internal
