#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "compare/repair_document.h"
#include "fabric/ib_fabric.h"
#include "repair/repair_plan.h"

namespace fabscope::internal {

// What has become of the steps of a plan, seen in a fabric of a later day.
enum class StepState {
  Done,          // the cables are as the step leaves them, or as an alternative of it does
  NotDone,       // the cables are as they were, or a switch is not there
  DoneOtherwise  // somebody has changed them, and they are neither
};

inline const char* NameOf(StepState state) {
  if (state == StepState::Done) return "done";
  return state == StepState::NotDone ? "not done" : "done otherwise";
}

// A port that the plan names, and what its cable leads to now.
struct EndNow {
  const KeptEnd* end;
  const IBNode* node;  // null: the switch is not in the fabric, or has no such port
  const IBPort* far;   // null: nothing is plugged in
};

struct StepProgress {
  const KeptStep* step;
  StepState state{};
  std::optional<std::size_t> alternative;  // the one that was done instead, counted from 0
  std::vector<EndNow> ends;  // what is not as planned, where more is to be told than the state
};

// Why the plan cannot be one for this fabric: fewer than half of its switches are there. Empty when
// it can.
std::string WhyForeign(const RepairDocument& plan, const IBFabric& fabric);

// One for each step. They point into the plan and the fabric.
std::vector<StepProgress> FollowPlan(const RepairDocument& plan, const IBFabric& fabric);

// The steps that a search in the fabric of the later day has found and the plan does not have, not
// even as an alternative.
std::vector<const RepairStep*> StepsNotIn(const RepairDocument& plan,
                                          const std::vector<RepairStep>& steps,
                                          const IBFabric& fabric);

}  // namespace fabscope::internal
