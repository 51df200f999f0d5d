#include "reference/reference_check.h"

#include <cstddef>
#include <optional>
#include <stdexcept>
#include <string>

#include "reference/reference_run.h"

namespace fabscope::internal::reference {
namespace {

using detail::Group;
using detail::Run;

bool Validate(Run& run) {
  if (run.ranks.size() > 1) run.groups.resize(run.ranks.size() - 1);
  for (std::size_t rank = 0; rank < run.groups.size(); ++rank) {
    if (!MakeGroups(run, rank)) return false;
  }
  if (run.ranks.size() < 2) {
    run.Note("fewer than two ranks do not validate");
    run.errors += "Cannot calculate Up/Down links. It is not a Fat-Tree topology";
    return false;
  }
  for (auto& groups : run.groups) {
    for (Group& group : groups) {
      CheckLinkCounts(run, group);
      CheckAPorts(run, group);
    }
  }
  CheckFlids(run);
  return true;
}

void CheckBuiltTree(Run& run, ReferenceResult& result) {
  run.out += LevelsReport(run);
  const bool isValidated = Validate(run);
  run.out += RecordLines(run);
  result.csv = CsvFile(run);
  if (!isValidated) {
    result.exitStatus = 2;
    result.message = "Cannot validate Fat-Tree topology. " + run.errors;
    if (!run.records.empty()) run.Note("records before the failure stand");
    return;
  }
  result.dump = Dump(run);
  run.out += result.dump;
  run.out += "\n-I- Fat-tree check: " + std::to_string(run.records.size()) + " error records, " +
             std::to_string(run.issues) + " issues\n";
  const bool hasFindings = !run.records.empty() || run.issues > 0;
  result.exitStatus = hasFindings ? 1 : 0;
  run.Note(hasFindings ? "findings" : "nothing found");
}

}  // namespace

ReferenceResult ReferenceCheck(const PlainFabric& fabric, const PlainOptions& options) {
  Run run{fabric, options};
  ReferenceResult result;
  const std::optional<std::string> failure = Build(run);
  if (failure) {
    result.exitStatus = 2;
    result.message = *failure;
  } else {
    CheckBuiltTree(run, result);
  }
  result.report = run.out;
  result.reached = run.reached;
  for (const std::string& rule : result.reached) {
    if (!AllRules().contains(rule)) throw std::logic_error("rule without an entry: " + rule);
  }
  return result;
}

}  // namespace fabscope::internal::reference
