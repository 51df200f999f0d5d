#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <vector>

#include "compare/counterparts.h"
#include "fat_tree/findings.h"
#include "fat_tree/topology.h"

namespace fabscope {

// A switch, or one of its ports; port 0 stands for the switch.
struct Place {
  const IBNode* node;
  std::uint8_t port;
};

// The smallest thing of a finding that can be mended by itself: a finding of uneven links names
// many switches, each of which is a fault. It belongs to the finding and to its fabric.
struct Fault {
  const Finding* finding;
  // The ends of a link; the switch or the port at fault; of what is wrong with groups, the first
  // line of each.
  std::vector<Place> places;
  std::int32_t links = 0;                       // what the switch has, of uneven links
  std::vector<const FTNeighborhood*> groups{};  // of what is wrong with groups
};

// What a check has found of a fabric.
struct CheckedFabric {
  const FTTopology& topology;
  const std::deque<Finding>& findings;
};

struct FindingChanges {
  std::vector<Fault> cured;     // as they were, in the order of the old report
  std::vector<Fault> appeared;  // as they are, in the order of the new report
};

// Faults are the same when they are of one kind and at the same places with the same counts of
// links. The numbers of groups do not matter, since they change when other groups come or go: two
// groups are the same when the first by GUID of their lines that are in both fabrics is.
FindingChanges CompareFindings(const CheckedFabric& was, const CheckedFabric& is,
                               const Counterparts& nodes);

// A finding none of whose faults is left.
struct GoneFinding {
  std::size_t place;  // among the findings as they were
  std::vector<Fault> faults;
};

// In the order of the old report.
std::vector<GoneFinding> FindGone(const CheckedFabric& was, const CheckedFabric& is,
                                  const Counterparts& nodes);

}  // namespace fabscope
