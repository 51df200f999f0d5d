#pragma once

#include <algorithm>
#include <functional>
#include <map>
#include <ostream>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "check/check.h"
#include "cli/messages.h"
#include "cli/named_files.h"
#include "cli/option_values.h"
#include "os/output_file.h"
#include "os/standard_streams.h"

namespace fabscope::internal {

// What commands write besides their report. Each command has one table of it; its options and help,
// what it asks of the check, what it refuses and what it writes all follow from the entries.

// When an output is written.
enum class Due {
  Read,   // the fabric was read, whatever comes of it then
  Built,  // its tree was built
  Done,   // all was done
  AtEnd,  // behind everything else, also when nothing could be read
};

// What becomes of the report when an output goes to standard output.
enum class Dash {
  ReplacesReport,
  IsInReport,  // the report has it then, and the output is not written
  IsBehind,    // it follows the report
};

// An output, written where its option names a file. `Run` is what the command has to tell.
template <typename Run>
struct Output {
  OptionText text;
  Due due;
  Dash dash;
  void (*write)(const Run& run, std::ostream& stream);
  void (*ask)(CheckOptions& options) = nullptr;  // for what the check must find out for it
  // What the file could not hold, told once it is there.
  std::vector<std::string> (*losses)(const Run& run) = nullptr;
  bool ofSeveral = false;  // it can be of several fabrics: check_several.cpp writes it, too
};

template <typename Run>
using Outputs = std::span<const Output<Run>>;

// The heading of most of them in a help.
inline constexpr const char* alsoWritten = "Also write (- for standard output)";

// The files that a command line names for outputs, by option.
class OutputFiles {
 public:
  // Empty when not asked for, "-" for standard output.
  const std::string& Of(std::string_view option) const;
  // The option of an output; the object must outlive it.
  BoundOption Bind(const OptionText& text);

 private:
  std::map<std::string, std::string, std::less<>> files_;
};

// Whether a file arrived; says so if it did not.
bool WriteOrTell(const std::string& file, const WriteTo& write, Messages& messages);

// Says what a file could not hold, a line each.
void TellLosses(const std::string& file, const std::vector<std::string>& losses,
                Messages& messages);

// Behind the options that there are already.
template <typename Run>
void BindOutputs(Outputs<Run> outputs, OutputFiles& files, std::vector<BoundOption>& options) {
  for (const Output<Run>& output : outputs) options.push_back(files.Bind(output.text));
}

// Those that were asked for, in the order of the table.
template <typename Run>
std::vector<NamedOutput> NamedOutputs(Outputs<Run> outputs, const OutputFiles& files) {
  std::vector<NamedOutput> named;
  for (const Output<Run>& output : outputs) {
    const std::string& file = files.Of(output.text.name);
    if (!file.empty()) named.push_back({output.text.name, file});
  }
  return named;
}

template <typename Run>
void AskForOutputs(Outputs<Run> outputs, const OutputFiles& files, CheckOptions& options) {
  for (const Output<Run>& output : outputs) {
    if (output.ask != nullptr && !files.Of(output.text.name).empty()) output.ask(options);
  }
}

// Whether an output takes the place of the report.
template <typename Run>
bool IsReportReplaced(Outputs<Run> outputs, const OutputFiles& files) {
  return std::any_of(outputs.begin(), outputs.end(), [&files](const Output<Run>& output) {
    return output.dash == Dash::ReplacesReport && files.Of(output.text.name) == standardStream;
  });
}

// Writes, in the order of the table, what was asked for and `isDue(output)`. Answers whether all of
// it arrived, and says what did not.
template <typename Run, typename IsDue>
bool WriteOutputs(Outputs<Run> outputs, const OutputFiles& files,
                  const std::type_identity_t<Run>& run, Messages& messages, IsDue isDue) {
  bool haveArrived = true;
  for (const Output<Run>& output : outputs) {
    const std::string& file = files.Of(output.text.name);
    if (file.empty() || !isDue(output)) continue;
    if (file == standardStream && output.dash == Dash::IsInReport) continue;
    const auto write = [&](std::ostream& stream) { output.write(run, stream); };
    const bool hasArrived = WriteOrTell(file, write, messages);
    if (hasArrived && output.losses != nullptr) TellLosses(file, output.losses(run), messages);
    haveArrived = haveArrived && hasArrived;
  }
  return haveArrived;
}

}  // namespace fabscope::internal
