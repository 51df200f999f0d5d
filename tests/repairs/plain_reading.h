#pragma once

#include "fabric/ib_fabric.h"
#include "repair/repair_plan.h"
#include "repairs/plain_repair.h"

namespace fabscope::internal {

// A fabric whose switches have these ranks, and a plan for it, as the verifier reads them.
plain::Fabric ReadFabric(const IBFabric& fabric, const TreeRanks& ranks);
plain::Plan ReadPlan(const IBFabric& fabric, const RepairPlan& plan);

}  // namespace fabscope::internal
