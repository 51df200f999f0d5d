#include "cli/check_command.h"

#include "check/advice.h"
#include "cli/check_several.h"
#include "cli/exit_status.h"
#include "os/progress_line.h"
#include "reports/summary_report.h"
#include "text/text_fields.h"

namespace fabscope::internal {
namespace {

class CheckCommand {
 public:
  explicit CheckCommand(const CheckArguments& arguments) : arguments_(arguments) {}

  int Run() {
    const int status =
        arguments_.operands.size() > 1 ? CheckSeveral(arguments_, run_.messages) : CheckOne();
    // The log tells of the other files, too.
    const bool written = Write([](Due due, Dash) { return due == Due::AtEnd; });
    return written ? status : ExitFailed;
  }

 private:
  int CheckOne() {
    CheckWithProgress();
    if (!run_.result.inputError) return Report();
    // What was odd before the input turned out to be unreadable would only hide the reason.
    run_.messages.Tell(run_.result.inputError->Text());
    return ExitFailed;
  }
  void CheckWithProgress() {
    const ProgressLine line(IsWatched() && !arguments_.quiet);
    run_.result = RunCheck(arguments_.options);
  }
  int Report();
  bool WriteReports();
  void WriteReport(std::ostream& stream) const;

  template <typename IsDue>
  bool Write(IsDue isDue) {
    return WriteOutputs(
        CheckOutputs(), arguments_.outputs, run_, run_.messages,
        [&](const Output<CheckRun>& output) { return isDue(output.due, output.dash); });
  }

  const CheckArguments& arguments_;
  CheckRun run_;
};

int CheckCommand::Report() {
  const CheckResult& result = run_.result;
  Messages& messages = run_.messages;
  for (const std::string& warning : result.warnings) messages.Tell(warning);
  const std::string onNames = AdviceOnNames(result, arguments_.options);
  if (!onNames.empty()) messages.Tell(onNames);
  const bool written = WriteReports();
  if (result.status != CheckStatus::Done) messages.Tell(result.message);
  if (!result.advice.empty()) messages.Tell(result.advice);
  if (!result.roots.doubt.empty()) messages.Tell(result.roots.doubt);
  if (!written || result.status != CheckStatus::Done) return ExitFailed;
  return result.HasFindings() ? ExitFindings : ExitClean;
}

Due ReachedBy(CheckStatus status) {
  if (status == CheckStatus::Done) return Due::Done;
  return status == CheckStatus::NotBuilt ? Due::Read : Due::Built;
}

void CheckCommand::WriteReport(std::ostream& stream) const {
  const CheckResult& result = run_.result;
  if (!arguments_.summary) return WriteTextReport(result, run_.style, stream);
  const bool isClean =
      result.status == CheckStatus::Done && !result.HasFindings() && result.notes.empty();
  if (!isClean || !arguments_.quiet) WriteSummary(result, stream);
  if (run_.style.withDump) WriteForPeople(result.dump, stream);
}

bool CheckCommand::WriteReports() {
  const CheckResult& result = run_.result;
  TextStyle& style = run_.style;
  style.withDump = arguments_.outputs.Of("--dump") == standardStream;
  style.quiet = arguments_.quiet;
  style.color = WantsColor(arguments_.color);

  bool written = true;
  if (!IsReportReplaced(CheckOutputs(), arguments_.outputs)) {
    const auto write = [&](std::ostream& stream) { WriteReport(stream); };
    written &= WriteOrTell(standardStream, write, run_.messages);
  }
  // What could stand in the report comes behind all that could take its place.
  const Due reached = ReachedBy(result.status);
  for (const bool isOfReport : {false, true}) {
    written &= Write([&](Due due, Dash dash) {
      return due <= reached && isOfReport == (dash == Dash::IsInReport);
    });
  }
  return written;
}

}  // namespace

int RunCheckCommand(const CheckArguments& arguments) { return CheckCommand(arguments).Run(); }

}  // namespace fabscope::internal
