#include "reference/comparison.h"

#include <algorithm>
#include <memory>
#include <sstream>

#include "check/check.h"
#include "reference/plain_document.h"
#include "reports/csv_report.h"
#include "reports/text_report.h"

namespace fabscope::internal::reference {
namespace {

CheckOptions OptionsOf(const PlainOptions& plain, const std::string& document) {
  CheckOptions options;
  options.fabric = document;
  switch (plain.roots) {
    case PlainRoots::Auto:
      options.roots = RootsFrom::Search;
      break;
    case PlainRoots::Smdb:
      options.roots = RootsFrom::Smdb;
      break;
    case PlainRoots::Regex:
      options.roots = RootsFrom::Regex;
      options.rootRegex = std::make_shared<regExp>(plain.rootRegex);
      break;
  }
  options.retries = plain.retries;
  options.equalClassifications = plain.equal;
  options.mergePercent = plain.mergePercent;
  options.showGuid = plain.showGuid;
  options.wantDump = true;
  return options;
}

// What the command answers with, as the reference tells it.
ReferenceResult AnswerOf(const CheckResult& result) {
  ReferenceResult answer;
  std::ostringstream report;
  WriteTextReport(result, {.withDump = true}, report);
  answer.report = report.str();
  answer.dump = result.dump;
  answer.message = result.message;
  if (result.status == CheckStatus::Done) {
    answer.exitStatus = result.HasFindings() ? 1 : 0;
  } else {
    answer.exitStatus = 2;
  }
  if (result.status != CheckStatus::NotBuilt) {
    std::ostringstream csv;
    WriteCsvReport(result, csv);
    answer.csv = csv.str();
  }
  return answer;
}

std::string Line(const std::string& text, std::size_t start) {
  return start < text.size() ? text.substr(start, text.find('\n', start) - start) : "(end)";
}

std::string FirstDifference(const char* what, const std::string& answer,
                            const std::string& expected) {
  if (answer == expected) return {};
  const auto [a, b] = std::mismatch(answer.begin(), answer.end(), expected.begin(), expected.end());
  const std::size_t newline =
      a == answer.begin() ? std::string::npos
                          : answer.rfind('\n', static_cast<std::size_t>(a - answer.begin()) - 1);
  const std::size_t start = newline == std::string::npos ? 0 : newline + 1;
  const auto number =
      std::count(answer.begin(), answer.begin() + static_cast<std::ptrdiff_t>(start), '\n') + 1;
  return std::string(what) + ", line " + std::to_string(number) +
         "\n  fabscope:  " + Line(answer, start) + "\n  reference: " + Line(expected, start) + "\n";
}

std::string Difference(const ReferenceResult& answer, const ReferenceResult& expected) {
  std::string text = FirstDifference("message", answer.message, expected.message);
  text += FirstDifference("report", answer.report, expected.report);
  text += FirstDifference("dump", answer.dump, expected.dump);
  text +=
      FirstDifference("CSV", answer.csv.value_or("(no file)"), expected.csv.value_or("(no file)"));
  text += FirstDifference("exit status", std::to_string(answer.exitStatus),
                          std::to_string(expected.exitStatus));
  return text;
}

}  // namespace

std::string Comparison::Compare(const PlainCase& what, std::uint64_t number) {
  document_.Write(DocumentOf(what.fabric, number));
  const CheckResult result = RunCheck(OptionsOf(what.options, document_.Path()));
  const std::string start = "case " + std::to_string(number) + " (" + what.kind + "): ";
  if (result.status == CheckStatus::BadInput) {
    return start + "the document was refused: " + result.inputError->Text() + "\n";
  }
  const ReferenceResult expected = ReferenceCheck(what.fabric, what.options);
  reached_.insert(expected.reached.begin(), expected.reached.end());
  const std::string difference = Difference(AnswerOf(result), expected);
  return difference.empty() ? "" : start + difference;
}

}  // namespace fabscope::internal::reference
