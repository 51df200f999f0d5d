#include "cli/check_several.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <mutex>
#include <new>
#include <optional>
#include <shared_mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "cli/exit_status.h"
#include "fat_tree/topology.h"
#include "os/ordered_work.h"
#include "os/output_file.h"
#include "os/progress_line.h"
#include "os/standard_streams.h"
#include "platform/progress.h"
#include "reports/json_report.h"
#include "reports/text_report.h"
#include "text/text_fields.h"

namespace fabscope::internal {
namespace {

// What is left of a check.
struct Outcome {
  int status = ExitFailed;
  std::vector<std::string> messages;
  std::string line;  // of the report
  std::string json;
};

// Without the line ends between its members; those inside of texts are escaped.
std::string JsonLine(const CheckResult& result, const TextStyle& style) {
  std::string json;
  ForEachPieceOfJson(result, style, [&](std::string_view piece) {
    std::copy_if(piece.begin(), piece.end(), std::back_inserter(json),
                 [](char letter) { return letter != '\n'; });
  });
  return json + '\n';
}

std::string ReportLine(const CheckResult& result) {
  if (result.status != CheckStatus::Done) return "-E- " + result.input + ": not checked";
  const char* tag = result.issuesCount != 0 ? "-W- " : "-I- ";
  if (result.findings.RecordsCount() != 0) tag = "-E- ";
  return tag + result.input + ": " + std::to_string(result.findings.RecordsCount()) +
         " error records, " + std::to_string(result.issuesCount) + " issues";
}

std::vector<std::string> MessagesOf(const CheckResult& result) {
  if (result.inputError) return {result.inputError->Text()};
  std::vector<std::string> messages = result.warnings;  // these name their file
  for (const std::string* text : {&result.message, &result.advice, &result.roots.doubt}) {
    if (!text->empty()) messages.push_back(result.input + ": " + *text);
  }
  return messages;
}

// Of the style only what is left out matters to the lines of a result.
Outcome OutcomeOf(const CheckResult& result, const TextStyle* jsonStyle) {
  Outcome outcome;
  if (result.status == CheckStatus::Done) {
    outcome.status = result.HasFindings() ? ExitFindings : ExitClean;
  }
  outcome.messages = MessagesOf(result);
  outcome.line = TextForPeople(CleanText(ReportLine(result)));
  if (jsonStyle != nullptr) outcome.json = JsonLine(result, *jsonStyle);
  return outcome;
}

Outcome WithoutMemory(const std::string& fabric, const TextStyle* jsonStyle) {
  CheckResult result;
  result.input = fabric;
  result.inputError = InputError{fabric, 0, 0, "out of memory"};
  return OutcomeOf(result, jsonStyle);
}

// Checks fabrics side by side. One that finds no memory left is checked again when no other is:
// they may have taken it.
class SharedMemory {
 public:
  Outcome Check(const CheckOptions& options, const TextStyle* jsonStyle) {
    const auto check = [&] { return OutcomeOf(RunCheck(options), jsonStyle); };
    try {
      const std::shared_lock together(isUsed_);
      return check();
    } catch (const std::bad_alloc&) {
    }
    try {
      const std::unique_lock alone(isUsed_);
      return check();
    } catch (const std::bad_alloc&) {
    }
    return WithoutMemory(options.fabric, jsonStyle);
  }

 private:
  std::shared_mutex isUsed_;
};

class SeveralChecks {
 public:
  SeveralChecks(const CheckArguments& arguments, Messages& messages)
      : arguments_(arguments), messages_(messages) {
    style_.quiet = arguments.quiet;
    style_.color = WantsColor(arguments.color);
  }

  int Run() {
    const std::string& jsonFile = arguments_.outputs.Of("--json");
    const bool isJsonShown = jsonFile == standardStream;
    std::optional<std::string> problem;
    const auto toScreen = [&](std::ostream* json) {
      problem = WriteStandardOutput([&](std::ostream& stream) {
        if (isJsonShown) {
          CheckAll(nullptr, &stream);
        } else {
          CheckAll(&stream, json);
        }
      });
    };
    if (jsonFile.empty() || isJsonShown) {
      toScreen(nullptr);
    } else {
      bool isShown = false;
      const auto failure = WriteFile(jsonFile, [&](std::ostream& stream) {
        toScreen(&stream);
        isShown = true;
      });
      // The report does not suffer from a file that cannot be made.
      if (!isShown) toScreen(nullptr);
      if (failure) Fail(*failure);
    }
    if (problem) Fail(*problem);
    return status_;
  }

 private:
  void CheckAll(std::ostream* lines, std::ostream* json);
  void TakeOver(const Outcome& outcome, std::ostream* lines, std::ostream* json);
  void Fail(const std::string& problem) {
    messages_.Tell(problem);
    status_ = ExitFailed;
  }

  const CheckArguments& arguments_;
  Messages& messages_;
  TextStyle style_;
  int status_ = ExitClean;
  std::array<std::size_t, 3> counts_{};  // of fabrics, by their status
};

void SeveralChecks::CheckAll(std::ostream* lines, std::ostream* json) {
  const std::vector<std::string>& fabrics = arguments_.operands;
  ProgressLine progress(IsWatched() && !arguments_.quiet);
  SharedMemory memory;
  const auto check = [&](std::size_t index) {
    CheckOptions options = arguments_.options;
    options.fabric = fabrics[index];
    return memory.Check(options, json != nullptr ? &style_ : nullptr);
  };
  std::size_t done = 0;
  const auto take = [&](const Outcome& outcome) {
    progress.Hide();
    TakeOver(outcome, lines, json);
    ReportProgress("checking fabrics", ++done, fabrics.size());
  };
  const std::size_t cores = std::max(std::thread::hardware_concurrency(), 1U);
  DoInOrder<Outcome>(fabrics.size(), cores, check, take);
  if (lines == nullptr) return;
  WriteReportLine("-I- " + std::to_string(fabrics.size()) +
                      " fabrics: " + std::to_string(counts_[ExitClean]) + " clean, " +
                      std::to_string(counts_[ExitFindings]) + " with findings, " +
                      std::to_string(counts_[ExitFailed]) + " not checked",
                  style_, *lines);
}

void SeveralChecks::TakeOver(const Outcome& outcome, std::ostream* lines, std::ostream* json) {
  for (const std::string& message : outcome.messages) messages_.Tell(message);
  if (lines != nullptr) {
    WriteReportLine(outcome.line, style_, *lines);
    lines->flush();  // whoever looks on sees it when it is known
  }
  if (json != nullptr) *json << outcome.json << std::flush;  // it may be the same terminal
  ++counts_.at(static_cast<std::size_t>(outcome.status));
  status_ = std::max(status_, outcome.status);
}

}  // namespace

int CheckSeveral(const CheckArguments& arguments, Messages& messages) {
  return SeveralChecks(arguments, messages).Run();
}

}  // namespace fabscope::internal
