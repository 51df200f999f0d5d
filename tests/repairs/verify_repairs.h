#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "fabric/ib_fabric.h"
#include "repair/repair_plan.h"

namespace fabscope::internal {

// What came of the repairs of one fabric.
struct RepairsVerdict {
  std::string complaints;  // a line each; empty when the plan keeps what it promises
  RepairPlan plan;
  std::size_t cuts = 0;  // see plain::Verdict
  bool isProperAfterwards = false;
};

// Looks for the repairs of a fabric, does them, and has all of it verified. With `known` ranks
// these are taken; otherwise they are inferred.
RepairsVerdict VerifyRepairs(const IBFabric& fabric, const std::optional<TreeRanks>& known);

}  // namespace fabscope::internal
