#include "cli/check_command.h"

#include <iostream>

#include "cli/exit_status.h"
#include "cli/output_file.h"
#include "reports/csv_report.h"
#include "reports/text_report.h"

namespace fabscope {
namespace {

constexpr const char* standardOutput = "-";

void Complain(const std::string& line) { std::cerr << "fabscope: " << line << '\n'; }

// Whether all outputs arrived; says so for each that did not.
bool WriteOutputs(const CheckArguments& arguments, const CheckResult& result) {
  const auto write = [](const std::string& file, const WriteTo& writeTo) {
    const auto problem =
        file == standardOutput ? WriteStandardOutput(writeTo) : WriteFile(file, writeTo);
    if (problem) Complain(*problem);
    return !problem;
  };

  bool written = true;
  if (arguments.csvFile != standardOutput) {
    written &= write(standardOutput, [&](std::ostream& stream) {
      WriteTextReport(result, arguments.dumpFile == standardOutput, stream);
    });
  }
  if (!arguments.csvFile.empty() && result.status != CheckStatus::NotBuilt) {
    written &=
        write(arguments.csvFile, [&](std::ostream& stream) { WriteCsvReport(result, stream); });
  }
  const bool dumpToFile = !arguments.dumpFile.empty() && arguments.dumpFile != standardOutput;
  if (dumpToFile && result.status == CheckStatus::Done) {
    written &= write(arguments.dumpFile, [&](std::ostream& stream) { stream << result.dump; });
  }
  return written;
}

}  // namespace

int RunCheckCommand(const CheckArguments& arguments) {
  const CheckResult result = RunCheck(arguments.options);
  if (result.inputError) {
    // What was odd before the input turned out to be unreadable would only hide the reason.
    Complain(result.inputError->Text());
    return ExitFailed;
  }
  for (const std::string& warning : result.warnings) Complain(warning);

  const bool written = WriteOutputs(arguments, result);
  if (result.status != CheckStatus::Done) Complain(result.message);
  if (!written || result.status != CheckStatus::Done) return ExitFailed;
  return result.HasFindings() ? ExitFindings : ExitClean;
}

}  // namespace fabscope
