#include <fabscope/repair.h>
#include <ostream>
#include <utility>

#include "library/access.h"
#include "reports/repair_report.h"
#include "reports/repair_text.h"

namespace fabscope {
namespace {

using internal::Access;

RepairAction ActionOf(internal::RepairAction action) {
  switch (action) {
    case internal::RepairAction::Swap:
      return RepairAction::Swap;
    case internal::RepairAction::Move:
      return RepairAction::Move;
    case internal::RepairAction::Connect:
      return RepairAction::Connect;
    case internal::RepairAction::Disconnect:
      break;
  }
  return RepairAction::Disconnect;
}

RepairClass ClassOf(internal::RepairClass trust) {
  switch (trust) {
    case internal::RepairClass::Sure:
      return RepairClass::Sure;
    case internal::RepairClass::Likely:
      return RepairClass::Likely;
    case internal::RepairClass::Ask:
      break;
  }
  return RepairClass::Ask;
}

class PublicSteps {
 public:
  explicit PublicSteps(const internal::RepairResult& result)
      : nodes_(result.fabric->GetNodes()),
        plan_(result.proven.plan),
        names_(*result.fabric, result.showGuid) {}

  std::vector<RepairStep> All() const {
    std::vector<RepairStep> steps;
    for (const internal::RepairStep& step : plan_.steps) steps.push_back(One(step));
    return steps;
  }
  std::vector<std::string> Notes() const {
    std::vector<std::string> notes;
    for (const internal::RepairNote& note : plan_.notes) notes.push_back(NoteText(note, names_));
    return notes;
  }

 private:
  RepairStep One(const internal::RepairStep& step) const {
    RepairStep result;
    result.action = ActionOf(step.action);
    result.trust = ClassOf(step.trust);
    result.cables = ChangesOf(step.cables);
    for (const internal::CableChanges& other : step.alternatives) {
      result.alternatives.push_back(ChangesOf(other));
    }
    result.text = StepText(step.cables, plan_.ranks, names_);
    result.reason = ReasonText(step, names_);
    return result;
  }
  std::vector<CableChange> ChangesOf(const internal::CableChanges& changes) const {
    std::vector<CableChange> result;
    for (const internal::CableChange& change : changes) {
      result.push_back({CableOf(change.before), CableOf(change.after)});
    }
    return result;
  }
  std::optional<Cable> CableOf(const std::optional<internal::RepairCable>& cable) const {
    if (!cable) return std::nullopt;
    return Cable{PortOf(cable->upper), PortOf(cable->lower)};
  }
  Port PortOf(const internal::CableEnd& end) const {
    return Access::MakePort(nodes_[end.node], end.port);
  }

  const std::vector<internal::IBNode>& nodes_;
  const internal::RepairPlan& plan_;
  const internal::SwitchNames names_;
};

}  // namespace

bool RepairPlan::IsKnown() const {
  return data_->result.IsDone() &&
         data_->result.proven.plan.status != internal::RepairStatus::Abstained;
}

const std::string& RepairPlan::Message() const {
  const internal::RepairResult& result = data_->result;
  return result.IsDone() ? result.proven.plan.message : result.message;
}

std::vector<RepairStep> RepairPlan::Steps() const { return PublicSteps(data_->result).All(); }
std::vector<std::string> RepairPlan::Notes() const { return PublicSteps(data_->result).Notes(); }

Fabric RepairPlan::Repaired() const {
  const auto& repaired = data_->result.proven.repaired;
  if (!repaired) return Access::MakeFabric(data_->input);
  auto input = std::make_shared<internal::LoadedInput>();
  input->name = data_->input->name;
  input->fabric = repaired;
  input->switchesOfSharedName = data_->input->switchesOfSharedName;
  return Access::MakeFabric(std::move(input));
}

void RepairPlan::WriteText(std::ostream& stream) const {
  if (data_->result.IsDone()) WriteRepairReport(data_->result, stream);
}

void RepairPlan::WriteCsv(std::ostream& stream) const {
  if (data_->result.IsDone()) WriteRepairCsv(data_->result, stream);
}

void RepairPlan::WriteJson(std::ostream& stream) const { WriteRepairJson(data_->result, stream); }

RepairPlan FindRepairs(const Fabric& fabric, const CheckOptions& options) {
  const auto& input = Access::InputOf(fabric);
  return Access::MakePlan(
      std::make_shared<const internal::PlannedFabricData>(internal::PlannedFabricData{
          input, internal::RunRepair(*input, internal::InnerOptions(options))}));
}

}  // namespace fabscope
