#include "reports/summary_report.h"

#include <algorithm>
#include <cstdint>
#include <utility>

#include "compare/repair_document.h"
#include "reports/finding_counts.h"
#include "reports/repair_text.h"
#include "reports/text_report.h"
#include "reports/tree_cables.h"
#include "text/text_fields.h"

namespace fabscope::internal {
namespace {

// Of repairs, and of notes.
constexpr std::size_t mostLines = 20;

std::uint64_t CountOf(const FindingList& findings) {
  return findings.size() + findings.RecordsNotListed();
}

std::string RepairVerdict(const CheckResult& result) {
  const std::string repairs = CountText(result.repairs->plan.steps);
  const std::uint64_t all = CountOf(result.findings);
  const std::uint64_t left = CountOf(result.repairs->after.findings);
  // A check does not miss a dead switch, but a note does.
  if (left == 0 && result.notes.empty()) return repairs + " would put this fabric right";
  return repairs + " would bring " + Counted(all, "finding", "findings") + " down to " +
         std::to_string(left);
}

class Summary {
 public:
  Summary(const CheckResult& result, std::ostream& stream)
      : result_(result), names_(result.topology->GetFabric(), result.showGuid), stream_(stream) {}

  void Write() {
    stream_ << result_.input << ": " << VerdictOf(result_) << '\n';
    WriteSize();
    if (result_.repairs) WriteRepairs(result_.repairs->plan);
    WriteNotes();
    WriteCounts();
  }

 private:
  void WriteSize();
  void WriteRepairs(const RepairPlan& plan);
  void WriteNotes();
  void WriteCounts();

  const CheckResult& result_;
  const SwitchNames names_;
  std::ostream& stream_;
};

void Summary::WriteSize() {
  const FTTopology& topology = *result_.topology;
  const auto& switches = topology.GetFabric().switches;
  std::size_t ranked = 0;
  std::string ranks;
  const std::size_t levels = topology.GetRanks().size();
  for (std::size_t rank = 0; rank < levels; ++rank) {
    const std::size_t count = topology.GetRanks()[rank].size();
    ranked += count;
    if (rank != 0) ranks += rank + 1 == levels ? " and " : ", ";
    ranks += std::to_string(count);
  }
  if (result_.status == CheckStatus::NotBuilt) ranked = 0;
  std::size_t cables = 0;
  ForEachTreeCable(topology, [&](const IBNode&, const TreeLink&) { ++cables; });
  std::size_t hosts = 0;
  for (const IBNode* node : switches) hosts += topology.GetTreeLinks().Hosts(*node);
  if (ranked != 0) {
    stream_ << Counted(levels, "level", "levels") << " with " << ranks << " switches";
    if (ranked != switches.size()) stream_ << ", " << switches.size() - ranked << " outside";
  } else {
    stream_ << Counted(switches.size(), "switch", "switches");
  }
  stream_ << ", " << Counted(cables, "cable", "cables") << " between them, "
          << Counted(hosts, "host link", "host links") << '\n';
}

void Summary::WriteRepairs(const RepairPlan& plan) {
  const std::size_t shown = std::min(plan.steps.size(), mostLines);
  for (std::size_t i = 0; i < shown; ++i) {
    stream_ << i + 1 << ". [" << NameOf(plan.steps[i].trust) << "] "
            << StepText(plan.steps[i].cables, plan.ranks, names_) << '\n';
  }
  if (shown != plan.steps.size()) {
    stream_ << plan.steps.size() - shown << " more: --work-order FILE lists them all\n";
  }
}

void Summary::WriteNotes() {
  const std::vector<RepairNote>& notes = result_.notes;
  for (std::size_t i = 0; i < std::min(notes.size(), mostLines); ++i) {
    stream_ << "note: " << NoteText(notes[i], names_) << '\n';
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
  if (result.HasFindings()) {
    verdict = result.repairs
                  ? RepairVerdict(result)
                  : Counted(CountOf(result.findings), "finding", "findings") + ", no repair known";
  }
  if (!result.notes.empty())
    verdict += result.notes.size() == 1 ? "; see the note" : "; see the notes";
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
