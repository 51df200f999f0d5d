#include "reports/summary_report.h"

#include <algorithm>
#include <set>
#include <utility>

#include "compare/cures.h"
#include "compare/repair_document.h"
#include "reports/finding_counts.h"
#include "reports/repair_text.h"
#include "reports/text_report.h"
#include "reports/tree_cables.h"
#include "text/text_fields.h"

namespace fabscope::internal {
namespace {

// More than that many repairs are read in the report of `fabscope repair`.
constexpr std::size_t mostRepairs = 20;

std::size_t CountCured(const CheckResult& result) {
  const CheckedTree& after = result.repairs->after;
  std::set<std::size_t> cured;
  for (const auto& cures : CuresOf(result.repairs->plan.steps, {*result.topology, result.findings},
                                   {*after.topology, after.findings})) {
    cured.insert(cures.begin(), cures.end());
  }
  return cured.size();
}

std::string RepairVerdict(const CheckResult& result) {
  const std::vector<RepairStep>& steps = result.repairs->plan.steps;
  const CheckedTree& after = result.repairs->after;
  // A check does not miss a dead switch, but a note does.
  const bool isAll = after.findings.empty() && result.repairs->plan.notes.empty();
  if (isAll) return CountText(steps) + " would put this fabric right";
  // Which findings are cured is not known when not all are there.
  if (result.findings.RecordsNotListed() != 0) {
    return CountText(steps) + " would help; " +
           Counted(after.findings.size(), "finding stays", "findings stay");
  }
  return CountText(steps) + (steps.size() == 1 ? " cures " : " cure ") +
         std::to_string(CountCured(result)) + " of " +
         Counted(result.findings.size(), "finding", "findings");
}

class Summary {
 public:
  Summary(const CheckResult& result, std::ostream& stream) : result_(result), stream_(stream) {}

  void Write() {
    stream_ << result_.input << ": " << VerdictOf(result_) << '\n';
    WriteSize();
    if (result_.repairs) WriteRepairs(result_.repairs->plan);
    WriteCounts();
  }

 private:
  void WriteSize();
  void WriteRepairs(const RepairPlan& plan);
  void WriteCounts();

  const CheckResult& result_;
  std::ostream& stream_;
};

void Summary::WriteSize() {
  const FTTopology& topology = *result_.topology;
  const auto& switches = topology.GetFabric().switches;
  std::size_t ranked = 0;
  std::string ranks;
  for (const NodeSet& rank : topology.GetRanks()) {
    ranked += rank.size();
    ranks += (ranks.empty() ? "" : ", ") + std::to_string(rank.size());
  }
  if (result_.status == CheckStatus::NotBuilt) ranked = 0;
  std::size_t cables = 0;
  ForEachTreeCable(topology, [&](const IBNode&, const TreeLink&) { ++cables; });
  std::size_t hosts = 0;
  for (const IBNode* node : switches) hosts += topology.GetTreeLinks().Hosts(*node);
  if (ranked != 0) {
    stream_ << Counted(topology.GetRanks().size(), "level", "levels") << " with " << ranks
            << " switches";
    if (ranked != switches.size()) stream_ << ", " << switches.size() - ranked << " outside";
  } else {
    stream_ << Counted(switches.size(), "switch", "switches");
  }
  stream_ << ", " << Counted(cables, "cable", "cables") << " between them, "
          << Counted(hosts, "host link", "host links") << '\n';
}

void Summary::WriteRepairs(const RepairPlan& plan) {
  const SwitchNames names(result_.topology->GetFabric(), result_.showGuid);
  const std::size_t shown = std::min(plan.steps.size(), mostRepairs);
  for (std::size_t i = 0; i < shown; ++i) {
    stream_ << i + 1 << ". [" << NameOf(plan.steps[i].trust) << "] "
            << StepText(plan.steps[i].cables, plan.ranks, names) << '\n';
  }
  if (shown != plan.steps.size()) {
    stream_ << plan.steps.size() - shown << " more: see fabscope repair\n";
  }
  for (std::size_t i = 0; i < std::min(plan.notes.size(), mostRepairs); ++i) {
    stream_ << "note: " << NoteText(plan.notes[i], names) << '\n';
  }
}

void Summary::WriteCounts() {
  const std::string counts = CountsByKind(result_.findings);
  if (!counts.empty()) stream_ << "found: " << counts << '\n';
  const std::string rest = RecordsNotListedText(result_);
  if (!rest.empty()) stream_ << rest << '\n';
}

}  // namespace

std::string VerdictOf(const CheckResult& result) {
  if (result.status != CheckStatus::Done) return "the check could not be finished";
  std::string verdict = "no faults found";
  if (result.repairs) {
    verdict = RepairVerdict(result);
  } else if (result.HasFindings()) {
    verdict = Counted(result.findings.size(), "finding", "findings") + ", no repair known";
  }
  // All holds for the tree that was checked, which may be a wrong one.
  if (result.roots.method == RootsFrom::Inferred) {
    verdict += ", if the inferred tree is right";
  } else if (!result.roots.doubt.empty()) {
    verdict += ", if the tree is right";
  }
  return verdict;
}

void WriteSummary(const CheckResult& result, std::ostream& stream) {
  WriteForPeople(stream, [&](std::ostream& text) { Summary(result, text).Write(); });
}

}  // namespace fabscope::internal
