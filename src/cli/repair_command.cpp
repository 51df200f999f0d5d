#include "cli/repair_command.h"

#include <algorithm>

#include "check/advice.h"
#include "check/repair_run.h"
#include "cli/exit_status.h"
#include "cli/load_plan.h"
#include "cli/messages.h"
#include "compare/plan_progress.h"
#include "os/output_file.h"
#include "os/progress_line.h"
#include "os/standard_streams.h"
#include "os/terminal.h"
#include "reports/repair_report.h"

namespace fabscope {
namespace {

class RepairCommand {
 public:
  explicit RepairCommand(const RepairArguments& arguments) : arguments_(arguments) {}

  int Run() {
    if (!arguments_.planFile.empty() && !LoadPlan(arguments_.planFile, plan_, messages_)) {
      return ExitFailed;
    }
    Search();
    if (result_.inputError) {
      messages_.Tell(result_.inputError->Text());
      return ExitFailed;
    }
    for (const std::string& warning : result_.warnings) messages_.Tell(warning);
    return arguments_.planFile.empty() ? Report() : Verify();
  }

 private:
  void Search() {
    const ProgressLine line(IsWatched());
    result_ = RunRepair(arguments_.options);
  }
  int Report();
  int Verify();
  bool WriteAfter();
  void TellFailure();

  bool Write(const std::string& file, const WriteTo& write) {
    const auto problem = WriteOutput(file, write);
    if (problem) messages_.Tell(*problem);
    return !problem;
  }
  bool IsReportReplaced() const {
    return arguments_.csvFile == standardStream || arguments_.jsonFile == standardStream;
  }

  const RepairArguments& arguments_;
  Messages messages_;
  RepairDocument plan_;
  RepairResult result_;
};

void RepairCommand::TellFailure() {
  messages_.Tell(result_.message);
  if (!result_.advice.empty()) messages_.Tell(result_.advice);
}

int RepairCommand::Report() {
  bool isWritten = true;
  if (!arguments_.jsonFile.empty()) {
    isWritten &= Write(arguments_.jsonFile,
                       [this](std::ostream& stream) { WriteRepairJson(result_, stream); });
  }
  if (!result_.IsDone()) {
    TellFailure();
    return ExitFailed;
  }
  if (!IsReportReplaced()) {
    isWritten &=
        Write(standardStream, [this](std::ostream& stream) { WriteRepairReport(result_, stream); });
  }
  if (!arguments_.csvFile.empty()) {
    isWritten &= Write(arguments_.csvFile,
                       [this](std::ostream& stream) { WriteRepairCsv(result_, stream); });
  }
  if (!arguments_.afterFile.empty()) isWritten &= WriteAfter();
  if (!result_.doubt.empty()) messages_.Tell(result_.doubt);
  if (!isWritten) return ExitFailed;
  const RepairPlan& plan = result_.proven.plan;
  const bool isClean = plan.status != RepairStatus::Abstained && plan.steps.empty();
  return isClean ? ExitClean : ExitFindings;
}

bool RepairCommand::WriteAfter() {
  const IBFabric& fabric = result_.Repaired();
  const bool isWritten = Write(arguments_.afterFile, [&](std::ostream& stream) {
    WriteFabric(fabric, *arguments_.afterFormat, stream);
  });
  if (!isWritten) return false;
  for (const std::string& loss : LossesOf(fabric, *arguments_.afterFormat)) {
    messages_.Tell(arguments_.afterFile + ": warning: " + loss);
  }
  return true;
}

int RepairCommand::Verify() {
  const std::string foreign = WhyForeign(plan_, *result_.fabric);
  if (!foreign.empty()) {
    messages_.Tell(plan_.file + ": " + foreign);
    return ExitFailed;
  }
  const std::vector<StepProgress> steps = FollowPlan(plan_, *result_.fabric);
  const auto others = StepsNotIn(plan_, result_.proven.plan.steps, *result_.fabric);
  const bool isWritten = Write(standardStream, [&](std::ostream& stream) {
    WriteProgressReport(steps, result_, others, stream);
  });
  if (!result_.doubt.empty()) messages_.Tell(result_.doubt);
  if (!result_.IsDone()) TellFailure();
  if (!isWritten || !result_.IsDone()) return ExitFailed;
  const bool areDone = std::all_of(steps.begin(), steps.end(), [](const StepProgress& step) {
    return step.state == StepState::Done;
  });
  const bool isUnclear = result_.proven.plan.status == RepairStatus::Abstained;
  return areDone && !isUnclear ? ExitClean : ExitFindings;
}

}  // namespace

int RunRepairCommand(const RepairArguments& arguments) { return RepairCommand(arguments).Run(); }

}  // namespace fabscope
