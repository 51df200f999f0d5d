#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "check/check.h"
#include "check/checked_tree.h"
#include "check/proven_plan.h"
#include "fabric/ib_fabric.h"
#include "formats/diagnostics.h"

namespace fabscope::internal {

// Everything a report may tell of one search for repairs.
struct RepairResult {
  std::string input;  // the fabric as the user named it
  int showGuid = 0;   // as the user asked: how texts name switches
  MaybeError inputError;
  std::vector<std::string> warnings;  // oddities of the input files, a line each
  std::size_t switchesOfSharedName = 0;
  std::string message;  // why the work failed; empty if it did not
  std::string advice;   // what the user can do then
  // Why the roots may be wrong ones, in the fabric as it will be; empty if nothing says so.
  std::string doubt;
  const char* method = "inferred";  // how they were found: "inferred", "smdb" or "regex"

  std::shared_ptr<const IBFabric> fabric;
  std::shared_ptr<const Locations> locations;  // null when none were given
  // The fabric as it is, with the roots of the plan. It may have a problem when there are steps.
  CheckedTree before;
  ProvenPlan proven;  // without steps it is the plan alone

  // False when there is nothing but the message.
  bool IsDone() const { return !inputError && message.empty(); }
  // The fabric as it will be, and what a check says of it.
  const IBFabric& Repaired() const { return proven.repaired ? *proven.repaired : *fabric; }
  const CheckedTree& After() const { return proven.repaired ? proven.after : before; }
};

// Loads a fabric, finds the cables to move, and proves that this helps. Without a regular
// expression or ranks the roots are inferred.
RepairResult RunRepair(const CheckOptions& options);
// The same of a fabric that is loaded; files that the options name are not looked at.
RepairResult RunRepair(const LoadedInput& input, const CheckOptions& options);

}  // namespace fabscope::internal
