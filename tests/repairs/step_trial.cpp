#include "repairs/step_trial.h"

#include <optional>
#include <sstream>

#include "repair/find_repairs.h"
#include "repairs/plain_cabling.h"
#include "repairs/plain_reading.h"
#include "repairs/plain_steps.h"

namespace fabscope::internal {
namespace {

constexpr std::size_t mostSteps = 4;

}  // namespace

std::string StepsScore::Text() const {
  std::ostringstream text;
  text << plans << " plans say that no fewer steps will do, " << ofSeveralSteps
       << " of them have several; " << otherGroups
       << " times fewer make a proper tree of other groups; " << tooLong << " not tried";
  return text.str();
}

std::string TryFewerSteps(const RepairCase& what, StepsScore& score) {
  const RepairPlan plan =
      what.known ? FindRepairs(*what.fabric, *what.known) : FindRepairs(*what.fabric);
  if (plan.status != RepairStatus::Repairs || plan.lowerBound != plan.steps.size()) return {};
  ++score.plans;
  if (plan.steps.size() > 1) ++score.ofSeveralSteps;
  if (plan.steps.size() > mostSteps) {
    ++score.tooLong;
    return {};
  }
  const plain::Fabric fabric = ReadFabric(*what.fabric, plan.ranks);
  plain::Cabling after(fabric);
  for (const plain::Step& step : ReadPlan(*what.fabric, plan).steps) {
    if (std::string problem = after.Do(step.changes); !problem.empty()) return problem;
  }
  plain::Fabric repaired = fabric;
  repaired.cables = after.Cables();
  const plain::StepState goal = plain::StateOf(repaired);
  const std::optional<bool> isShorter = plain::LeadsInFewer(
      fabric, plan.steps.size(),
      [&](const plain::StepState& state) { return state.cables == goal.cables; });
  const std::optional<bool> hasOther = plain::HasCureInFewer(fabric, plan.steps.size());
  if (isShorter.value_or(false)) return "fewer steps join the same switches";
  if (!isShorter || !hasOther) ++score.tooLong;
  if (hasOther.value_or(false)) ++score.otherGroups;
  return {};
}

}  // namespace fabscope::internal
