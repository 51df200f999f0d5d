#include "cli/diff_command.h"

#include <array>
#include <cstddef>
#include <string>

#include "cli/exit_status.h"
#include "cli/load_plan.h"
#include "fat_tree/topology.h"
#include "os/ordered_work.h"
#include "os/progress_line.h"
#include "platform/progress.h"
#include "reports/difference_report.h"

namespace fabscope::internal {
namespace {

bool IsComparable(const CheckResult& result) {
  return result.status == CheckStatus::Done && result.findings.RecordsNotListed() == 0;
}

std::string TooManyRecords(const CheckResult& result) {
  const FindingList& findings = result.findings;
  return std::to_string(findings.RecordsCount()) + " error records, more than --max-records " +
         std::to_string(findings.RecordsCount() - findings.RecordsNotListed());
}

class DiffCommand {
 public:
  explicit DiffCommand(const DiffArguments& arguments) : arguments_(arguments) {}

  int Run() {
    if (!arguments_.planFile.empty() && !LoadPlan(arguments_.planFile, plan_, messages_)) {
      return ExitFailed;
    }
    CheckBoth();
    if (TellInputErrors()) return ExitFailed;
    TellWarnings();
    const CheckResult& was = results_[0];
    const CheckResult& is = results_[1];
    if (IsPlanForeign()) return ExitFailed;
    const Counterparts nodes(*was.fabric, *is.fabric);
    Difference difference{
        was.input,    is.input,       arguments_.options.showGuid,
        *was.fabric,  *is.fabric,     CompareFabrics(*was.fabric, *is.fabric, nodes),
        std::nullopt, WhyNoFindings()};
    if (difference.message.empty()) {
      difference.findings =
          CompareFindings({*was.topology, was.findings}, {*is.topology, is.findings}, nodes);
    }
    if (!arguments_.planFile.empty()) difference.plan = FollowPlan(plan_, *is.fabric);
    const bool written = Write(difference);
    TellFailures();
    TellDoubts();
    if (!written || !difference.findings) return ExitFailed;
    return difference.IsEmpty() ? ExitClean : ExitFindings;
  }

 private:
  void CheckBoth();
  bool TellInputErrors();
  void TellWarnings();
  bool IsPlanForeign();
  void TellFailures();
  void TellDoubts();
  static std::string WhyNot(const CheckResult& result);
  std::string WhyNoFindings() const;
  bool Write(const Difference& difference);

  const DiffArguments& arguments_;
  Messages messages_;
  RepairDocument plan_;                 // empty when none was given
  std::array<CheckResult, 2> results_;  // of OLD and NEW
};

// At the same time.
void DiffCommand::CheckBoth() {
  const ProgressLine line(IsWatched());
  const auto check = [this](std::size_t index) {
    CheckOptions options = arguments_.options;
    options.fabric = arguments_.operands[index];
    return RunCheck(options);
  };
  std::size_t done = 0;
  DoInOrder<CheckResult>(results_.size(), results_.size(), check, [&](CheckResult&& result) {
    results_.at(done++) = std::move(result);
    ReportProgress("checking fabrics", done, results_.size());
  });
}

bool DiffCommand::TellInputErrors() {
  bool isTold = false;
  for (const CheckResult& result : results_) {
    if (!result.inputError) continue;
    messages_.Tell(result.inputError->Text());
    isTold = true;
  }
  return isTold;
}

void DiffCommand::TellWarnings() {
  for (const CheckResult& result : results_) {
    for (const std::string& warning : result.warnings) messages_.Tell(warning);
  }
}

bool DiffCommand::IsPlanForeign() {
  const std::string why = WhyForeign(plan_, *results_[1].fabric);
  if (why.empty()) return false;
  messages_.Tell(plan_.file + ": " + why);
  return true;
}

std::string DiffCommand::WhyNot(const CheckResult& result) {
  const std::string why =
      result.status == CheckStatus::Done ? TooManyRecords(result) : result.message;
  return result.input + ": " + why + ": findings are not compared";
}

std::string DiffCommand::WhyNoFindings() const {
  for (const CheckResult& result : results_) {
    if (!IsComparable(result)) return WhyNot(result);
  }
  return {};
}

void DiffCommand::TellFailures() {
  for (const CheckResult& result : results_) {
    if (IsComparable(result)) continue;
    messages_.Tell(WhyNot(result));
    if (!result.advice.empty()) messages_.Tell(result.input + ": " + result.advice);
  }
}

void DiffCommand::TellDoubts() {
  for (const CheckResult& result : results_) {
    const std::string& doubt = result.roots.doubt;
    if (!doubt.empty()) messages_.Tell(result.input + ": " + doubt);
  }
}

bool DiffCommand::Write(const Difference& difference) {
  bool isWritten = true;
  if (!IsReportReplaced(DiffOutputs(), arguments_.outputs)) {
    TextStyle style;
    style.quiet = arguments_.quiet;
    style.color = WantsColor(arguments_.color);
    const auto write = [&](std::ostream& stream) {
      WriteDifferenceReport(difference, style, stream);
    };
    isWritten = WriteOrTell(standardStream, write, messages_);
  }
  const auto isDue = [](const Output<Difference>&) { return true; };
  return WriteOutputs(DiffOutputs(), arguments_.outputs, difference, messages_, isDue) && isWritten;
}

}  // namespace

int RunDiffCommand(const DiffArguments& arguments) { return DiffCommand(arguments).Run(); }

}  // namespace fabscope::internal
