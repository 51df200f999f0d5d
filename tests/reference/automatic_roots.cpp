#include "reference/automatic_roots.h"

#include <sstream>
#include <thread>

#include "check/check.h"
#include "reference/plain_document.h"
#include "reports/csv_report.h"
#include "reports/json_report.h"
#include "reports/text_report.h"

namespace fabscope::internal::reference {
namespace {

// All that a user gets of a check.
struct Answer {
  std::string text;
  std::string csv;
  std::string json;
  std::string messages;
  bool hasRanks = false;  // at least two
  CheckStatus status{};
  RootsUsed roots;
};

Answer AnswerOf(const CheckResult& result) {
  Answer answer;
  std::ostringstream text;
  std::ostringstream csv;
  std::ostringstream json;
  WriteTextReport(result, {.withDump = true}, text);
  WriteCsvReport(result, csv);
  WriteJsonReport(result, {}, json);
  answer.text = text.str();
  answer.csv = csv.str();
  answer.json = json.str();
  answer.messages = result.message + "\n" + result.advice + "\n" + result.roots.doubt;
  answer.status = result.status;
  answer.hasRanks = result.topology != nullptr && result.topology->GetRanks().size() > 1;
  answer.roots = result.roots;
  return answer;
}

// A thread of its own numbers the groups from 0.
Answer Ask(const CheckOptions& options) {
  Answer answer;
  std::thread([&] { answer = AnswerOf(RunCheck(options)); }).join();
  return answer;
}

bool ShouldInfer(const Answer& searched, const Answer& inferred) {
  if (inferred.status == CheckStatus::NotBuilt || !inferred.hasRanks) return false;
  if (searched.status == CheckStatus::NotBuilt) return true;
  return inferred.roots.misfits < searched.roots.misfits;
}

// "" where the answers are the same but for what stands in front of the text.
std::string Difference(const Answer& answer, const Answer& expected, const std::string& front) {
  if (answer.text != front + expected.text) return "another report";
  if (answer.csv != expected.csv) return "other CSV";
  if (answer.messages != expected.messages) return "other messages";
  if (answer.status != expected.status) return "another status";
  if (answer.roots.method != expected.roots.method) return "another method";
  if (answer.roots.misfits != expected.roots.misfits) return "other misfits";
  if (front.empty() && answer.json != expected.json) return "other JSON";
  return {};
}

}  // namespace

std::string AutomaticRoots::Compare(const PlainCase& what, std::uint64_t number) {
  document_.Write(DocumentOf(what.fabric, number));
  CheckOptions options;
  options.fabric = document_.Path();
  options.retries = what.options.retries;
  options.equalClassifications = what.options.equal;
  options.mergePercent = what.options.mergePercent;
  options.showGuid = what.options.showGuid;
  options.wantDump = options.wantMisfits = true;
  const auto ask = [&](RootsFrom method) {
    options.roots = method;
    return Ask(options);
  };
  const Answer automatic = ask(RootsFrom::Auto);
  const Answer searched = ask(RootsFrom::Search);
  const Answer inferred = ask(RootsFrom::Inferred);

  const bool shouldInfer = ShouldInfer(searched, inferred);
  const bool isRefused = searched.status == CheckStatus::NotBuilt;
  ++(shouldInfer ? (isRefused ? helped_ : replaced_) : (isRefused ? refused_ : kept_));
  const std::string start = "case " + std::to_string(number) + " (" + what.kind + "): ";
  const std::string& notice = automatic.roots.notice;
  if (notice.empty() == shouldInfer) return start + "the other roots should be used\n";
  if (notice.find('\n') != std::string::npos) return start + "the notice is not one line\n";
  const std::string difference = shouldInfer ? Difference(automatic, inferred, notice + "\n")
                                             : Difference(automatic, searched, "");
  return difference.empty() ? "" : start + difference + "\n";
}

}  // namespace fabscope::internal::reference
