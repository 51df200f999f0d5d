#include "cli/repair_command.h"

#include <algorithm>

#include "cli/exit_status.h"
#include "cli/load_plan.h"
#include "compare/plan_progress.h"
#include "os/progress_line.h"
#include "os/terminal.h"
#include "reports/repair_report.h"

namespace fabscope::internal {
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
  void TellFailure();

  bool Write(Due due) {
    return WriteOutputs(RepairOutputs(), arguments_.outputs, {result_, arguments_.afterFormat},
                        messages_,
                        [due](const Output<RepairRun>& output) { return output.due == due; });
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
  bool isWritten = Write(Due::Read);
  if (!result_.IsDone()) {
    TellFailure();
    return ExitFailed;
  }
  if (!IsReportReplaced(RepairOutputs(), arguments_.outputs)) {
    const auto write = [this](std::ostream& stream) { WriteRepairReport(result_, stream); };
    isWritten &= WriteOrTell(standardStream, write, messages_);
  }
  isWritten &= Write(Due::Done);
  if (!result_.doubt.empty()) messages_.Tell(result_.doubt);
  if (!isWritten) return ExitFailed;
  const RepairPlan& plan = result_.proven.plan;
  const bool isClean = plan.status != RepairStatus::Abstained && plan.steps.empty();
  return isClean ? ExitClean : ExitFindings;
}

int RepairCommand::Verify() {
  const std::string foreign = WhyForeign(plan_, *result_.fabric);
  if (!foreign.empty()) {
    messages_.Tell(plan_.file + ": " + foreign);
    return ExitFailed;
  }
  const std::vector<StepProgress> steps = FollowPlan(plan_, *result_.fabric);
  const auto others = StepsNotIn(plan_, result_.proven.plan.steps, *result_.fabric);
  const auto write = [&](std::ostream& stream) {
    WriteProgressReport(steps, result_, others, stream);
  };
  const bool isWritten = WriteOrTell(standardStream, write, messages_);
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

}  // namespace fabscope::internal
