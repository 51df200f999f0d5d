#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "check/repair_run.h"
#include "compare/finding_changes.h"
#include "compare/plan_progress.h"
#include "reports/repair_text.h"

namespace fabscope::internal {

// What to do, for the person in the machine room: a line about what was read, the steps with their
// reasons and alternatives, notes, and a verdict. For results that are done.
void WriteRepairReport(const RepairResult& result, std::ostream& stream);

// A row for each end of a cable that changes, for spreadsheets. Alternatives are not in it.
void WriteRepairCsv(const RepairResult& result, std::ostream& stream);

// The whole plan as a JSON document, also of a result that is not done, as long as the fabric could
// be read. docs/repair-plan.schema.json describes it; RepairDocument reads it again.
void WriteRepairJson(const RepairResult& result, std::ostream& stream);

// The steps as a JSON array, as the plan and the result of a check have them.
void AppendRepairSteps(std::string& json, const ProvenPlan& proven, const CheckedFabric& was,
                       int showGuid);

// "1. done" and so on: what has become of a step.
std::string ProgressText(const StepProgress& progress, const SwitchNames& names);

// All of a plan, line by line, then what is to be done now and was not planned, and a sum.
void WriteProgressReport(const std::vector<StepProgress>& steps, const RepairResult& now,
                         const std::vector<const RepairStep*>& others, std::ostream& stream);

}  // namespace fabscope::internal
