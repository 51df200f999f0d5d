#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "fabric/ib_fabric.h"
#include "fat_tree/topology.h"

namespace fabscope::internal {

// Counts taken from the model by plain loops over its fields. Nothing here calls an operation of
// the stage but the questions for its results.

struct Links {
  int up = 0;
  int down = 0;
};

// The ports of a node that have an object, by number.
std::vector<const IBPort*> PortsOf(const IBNode& node);

// The switch to which a port's cable leads if the cable counts for the tree, else null. The far
// end's own marks are not looked at.
const IBNode* CountedSwitch(const IBPort& port);

// What a built tree says of its switches, turned round.
class Recount {
 public:
  explicit Recount(const FTTopology& topology);

  int RankOf(const IBNode* node) const;  // -1 without one
  // Cables of a ranked switch towards the roots and away from them.
  Links LinksOf(const IBNode& node) const;
  std::size_t RankCount() const { return rankCount_; }

 private:
  int HostsOf(const IBNode& leaf) const;

  std::map<const IBNode*, int> rankOf_;
  std::size_t rankCount_;
};

// The text that names a switch in reports, when GUIDs are shown.
std::string NameWithGuid(const IBNode& node);

}  // namespace fabscope::internal
