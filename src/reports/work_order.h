#pragma once

#include <ostream>

#include "fat_tree/topology.h"
#include "formats/locations.h"
#include "repair/repair_plan.h"

namespace fabscope::internal {

// Repairs for somebody who walks along the racks.
struct WorkOrder {
  const IBFabric& fabric;
  const RepairPlan& plan;
  const Locations* locations;  // null where nobody knows them
  int showGuid = 0;            // see GetNodeRecord
};

// The places of the steps in the plan, in an order that one can walk: each follows on the one
// before it along the racks or, where these are not known, along the names. Steps at one switch
// stay in the order of the plan.
std::vector<std::size_t> OrderOfWalk(const WorkOrder& order);

// A row for each step, for a spreadsheet: a box to tick, what to do, and the two ports that plugs
// go into or come out of, with their places.
void WriteWorkOrder(const WorkOrder& order, std::ostream& stream);

}  // namespace fabscope::internal
