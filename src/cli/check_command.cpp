#include "cli/check_command.h"

#include <chrono>

#include "check/advice.h"
#include "cli/check_several.h"
#include "cli/exit_status.h"
#include "cli/messages.h"
#include "os/output_file.h"
#include "os/progress_line.h"
#include "os/standard_streams.h"
#include "reports/csv_report.h"
#include "reports/html_report.h"
#include "reports/json_report.h"
#include "reports/prometheus_report.h"
#include "reports/svg_report.h"
#include "reports/text_report.h"
#include "text/text_fields.h"

namespace fabscope {
namespace {

class CheckCommand {
 public:
  explicit CheckCommand(const CheckArguments& arguments) : arguments_(arguments) {}

  int Run() {
    const int status =
        arguments_.operands.size() > 1 ? CheckSeveral(arguments_, messages_) : CheckOne();
    return WriteLog() ? status : ExitFailed;
  }

 private:
  int CheckOne() {
    const CheckResult result = RunWithProgress();
    if (!result.inputError) return Report(result);
    // What was odd before the input turned out to be unreadable would only hide the reason.
    messages_.Tell(result.inputError->Text());
    return ExitFailed;
  }
  CheckResult RunWithProgress() {
    const ProgressLine line(IsWatched() && !arguments_.quiet);
    return RunCheck(arguments_.options);
  }
  int Report(const CheckResult& result);
  bool WriteReports(const CheckResult& result);
  CheckTime GetTime() const {
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start_;
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return {taken.count(), std::chrono::duration_cast<std::chrono::seconds>(now).count()};
  }
  // Whether another form of it goes to standard output.
  bool IsReportReplaced() const {
    return arguments_.csvFile == standardStream || arguments_.jsonFile == standardStream ||
           arguments_.htmlFile == standardStream || arguments_.svgFile == standardStream ||
           arguments_.prometheusFile == standardStream;
  }

  // Whether the output arrived; says so if it did not.
  bool Write(const std::string& file, const WriteTo& writeTo) {
    const auto problem = WriteOutput(file, writeTo);
    if (problem) messages_.Tell(*problem);
    return !problem;
  }
  // Last of all, since it tells of the other files too.
  bool WriteLog() {
    if (arguments_.logFile.empty()) return true;
    return Write(arguments_.logFile, [&](std::ostream& stream) { stream << messages_.GetLog(); });
  }

  const CheckArguments& arguments_;
  const std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
  Messages messages_;
};

int CheckCommand::Report(const CheckResult& result) {
  for (const std::string& warning : result.warnings) messages_.Tell(warning);
  const std::string onNames = AdviceOnNames(result, arguments_.options);
  if (!onNames.empty()) messages_.Tell(onNames);
  const bool written = WriteReports(result);
  if (result.status != CheckStatus::Done) messages_.Tell(result.message);
  if (!result.advice.empty()) messages_.Tell(result.advice);
  if (!result.roots.doubt.empty()) messages_.Tell(result.roots.doubt);
  if (!written || result.status != CheckStatus::Done) return ExitFailed;
  return result.HasFindings() ? ExitFindings : ExitClean;
}

bool CheckCommand::WriteReports(const CheckResult& result) {
  TextStyle style;
  style.withDump = arguments_.dumpFile == standardStream;
  style.quiet = arguments_.quiet;

  bool written = true;
  if (!IsReportReplaced()) {
    written &= Write(standardStream, [&](std::ostream& stream) {
      TextStyle screenStyle = style;
      screenStyle.color = WantsColor(arguments_.color);
      WriteTextReport(result, screenStyle, stream);
    });
  }
  if (!arguments_.csvFile.empty() && result.status != CheckStatus::NotBuilt) {
    written &=
        Write(arguments_.csvFile, [&](std::ostream& stream) { WriteCsvReport(result, stream); });
  }
  if (!arguments_.jsonFile.empty()) {
    written &= Write(arguments_.jsonFile,
                     [&](std::ostream& stream) { WriteJsonReport(result, style, stream); });
  }
  if (!arguments_.htmlFile.empty()) {
    written &=
        Write(arguments_.htmlFile, [&](std::ostream& stream) { WriteHtmlReport(result, stream); });
  }
  if (!arguments_.svgFile.empty() && result.status != CheckStatus::NotBuilt) {
    written &=
        Write(arguments_.svgFile, [&](std::ostream& stream) { WriteSvgReport(result, stream); });
  }
  if (!arguments_.prometheusFile.empty() && result.status == CheckStatus::Done) {
    written &= Write(arguments_.prometheusFile, [&](std::ostream& stream) {
      WritePrometheusReport(result, GetTime(), stream);
    });
  }
  const bool dumpToFile = !arguments_.dumpFile.empty() && arguments_.dumpFile != standardStream;
  if (dumpToFile && result.status == CheckStatus::Done) {
    written &= Write(arguments_.dumpFile,
                     [&](std::ostream& stream) { WriteForPeople(result.dump, stream); });
  }
  return written;
}

}  // namespace

int RunCheckCommand(const CheckArguments& arguments) { return CheckCommand(arguments).Run(); }

}  // namespace fabscope
