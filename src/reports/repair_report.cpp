#include "reports/repair_report.h"

#include <algorithm>

#include "compare/repair_document.h"
#include "fabric/fabric_walk.h"
#include "fabric/guid.h"
#include "platform/csv_desc.h"
#include "text/text_fields.h"

namespace fabscope::internal {
namespace {

std::size_t CountCables(const IBFabric& fabric) {
  const std::vector<IBPort>& ports = fabric.GetPorts();
  return static_cast<std::size_t>(std::count_if(ports.begin(), ports.end(), [](const IBPort& port) {
    return port.remotePort != nullptr && port.node->nodeType == NodeTypeSwitch &&
           port.remotePort->node->nodeType == NodeTypeSwitch && IsFirstEnd(port);
  }));
}

// "a" to "z", then "aa".
std::string Letter(std::size_t number) {
  constexpr std::size_t count = 26;
  const auto last = static_cast<char>('a' + number % count);
  return (number < count ? "" : Letter(number / count - 1)) + last;
}

std::string FindingsText(const CheckedTree& tree) {
  return std::to_string(tree.findings.RecordsCount()) + " error records, " +
         std::to_string(tree.issues) + " issues";
}

class RepairReport {
 public:
  RepairReport(const RepairResult& result, std::ostream& stream)
      : result_(result),
        plan_(result.proven.plan),
        names_(*result.fabric, result.showGuid),
        stream_(stream) {}

  void Write() {
    WriteHead();
    for (std::size_t i = 0; i < plan_.steps.size(); ++i) WriteStep(i + 1, plan_.steps[i]);
    for (const RepairNote& note : plan_.notes) {
      stream_ << "note: " << NoteText(note, names_) << '\n';
    }
    WriteVerdict();
  }

 private:
  void WriteHead() {
    stream_ << result_.input << ": " << result_.fabric->switches.size() << " switches, "
            << CountCables(*result_.fabric) << " cables between them, " << plan_.ranks.levels
            << " levels\n";
  }
  void WriteStep(std::size_t number, const RepairStep& step) {
    stream_ << number << ". [" << NameOf(step.trust) << "] "
            << StepText(step.cables, plan_.ranks, names_) << '\n'
            << indent << ReasonText(step, names_) << '\n';
    for (std::size_t i = 0; i < step.alternatives.size(); ++i) {
      stream_ << indent << "or " << Letter(i) << ". "
              << StepText(step.alternatives[i], plan_.ranks, names_) << '\n';
    }
  }
  void WriteVerdict();

  static constexpr const char* indent = "   ";
  const RepairResult& result_;
  const RepairPlan& plan_;
  const SwitchNames names_;
  std::ostream& stream_;
};

void RepairReport::WriteVerdict() {
  const std::string left = FindingsText(result_.After());
  const bool isAbstained = plan_.status == RepairStatus::Abstained;
  if (plan_.steps.empty()) {
    if (isAbstained) {
      stream_ << "no repairs proposed: " << plan_.message << '\n';
      return;
    }
    const bool isClean = result_.before.findings.RecordsCount() == 0 && result_.before.issues == 0;
    stream_ << "no repairs" << (isClean ? "" : "; no cable cures what is found: " + left) << '\n';
    return;
  }
  stream_ << CountText(plan_.steps) << "; afterwards: " << left;
  const bool isLeast = plan_.steps.size() == plan_.lowerBound;
  if (isLeast && !isAbstained) stream_ << "; no fewer will do";
  if (isAbstained) stream_ << "; beyond that none proposed: " << plan_.message;
  stream_ << '\n';
}

std::string EndFields(const std::optional<CableEnd>& end, const SwitchNames& names) {
  if (!end) return ",,";
  const IBNode& node = names.NodeOf(end->node);
  return QuotedCsv(names.Of(node)) + "," + GuidText(node.guid) + "," + std::to_string(end->port);
}

std::string EndName(const KeptEnd& end, const IBNode* node, const SwitchNames& names) {
  const std::string port = " port " + std::to_string(end.port);
  if (node != nullptr) return names.Of(*node) + port;
  return (end.name.empty() ? "" : end.name + " ") + "(" + GuidText(end.guid) + ")" + port;
}

std::string EndText(const EndNow& now, const SwitchNames& names) {
  const std::string name = EndName(*now.end, now.node, names);
  if (now.node == nullptr) return name + " is not there";
  if (now.far == nullptr) return name + " is empty";
  return name + " now leads to " + names.Of(*now.far->node, now.far->num);
}

void WriteProgress(const std::vector<StepProgress>& steps, const RepairResult& now,
                   const std::vector<const RepairStep*>& others, std::ostream& text) {
  const SwitchNames names(*now.fabric, now.showGuid);
  for (const StepProgress& step : steps) text << ProgressText(step, names) << '\n';
  for (const RepairStep* step : others) {
    text << "new: [" << NameOf(step->trust) << "] "
         << StepText(step->cables, now.proven.plan.ranks, names) << '\n';
  }
  const auto done = std::count_if(steps.begin(), steps.end(), [](const StepProgress& step) {
    return step.state == StepState::Done;
  });
  text << done << " of " << steps.size() << " repairs done, " << others.size() << " new";
  const RepairPlan& plan = now.proven.plan;
  if (plan.status == RepairStatus::Abstained) {
    text << "; beyond that none proposed: " << plan.message;
  }
  text << '\n';
}

}  // namespace

void WriteRepairReport(const RepairResult& result, std::ostream& stream) {
  WriteForPeople(stream, [&](std::ostream& text) { RepairReport(result, text).Write(); });
}

void WriteRepairCsv(const RepairResult& result, std::ostream& stream) {
  stream << "Step,Class,Action,Switch,Guid,Port,FromSwitch,FromGuid,FromPort,ToSwitch,ToGuid,"
            "ToPort,Reason\n";
  const SwitchNames names(*result.fabric, result.showGuid);
  std::size_t number = 0;
  for (const RepairStep& step : result.proven.plan.steps) {
    ++number;
    for (const CableChange& change : step.cables) {
      for (const Handling& handling : HandlingsOf(change)) {
        stream << number << ',' << NameOf(step.trust) << ',' << NameOf(step.action) << ','
               << EndFields(handling.kept, names) << ',' << EndFields(handling.from, names) << ','
               << EndFields(handling.to, names) << ',' << QuotedCsv(ReasonText(step, names))
               << '\n';
      }
    }
  }
}

std::string ProgressText(const StepProgress& progress, const SwitchNames& names) {
  std::string text = std::to_string(progress.step->id) + ". " + NameOf(progress.state);
  if (progress.alternative) text += ": alternative " + Letter(*progress.alternative);
  for (std::size_t i = 0; i < progress.ends.size(); ++i) {
    text += (i == 0 ? ": " : ", ") + EndText(progress.ends[i], names);
  }
  return text;
}

void WriteProgressReport(const std::vector<StepProgress>& steps, const RepairResult& now,
                         const std::vector<const RepairStep*>& others, std::ostream& stream) {
  WriteForPeople(stream, [&](std::ostream& text) { WriteProgress(steps, now, others, text); });
}

}  // namespace fabscope::internal
