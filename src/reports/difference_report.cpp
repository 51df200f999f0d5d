#include "reports/difference_report.h"

#include <algorithm>
#include <string>

#include "fabric/guid.h"
#include "formats/link_speeds.h"
#include "reports/fault_text.h"
#include "reports/node_types.h"
#include "reports/repair_report.h"
#include "text/text_fields.h"

namespace fabscope::internal {
namespace {

std::string SpeedOf(const IBPort& port) {
  const std::string speed = SpeedText(port.speed);
  return speed.empty() ? "unknown" : speed;
}

// "HDR", or "HDR/unknown" where the ends differ.
std::string SpeedOf(const Cable& cable) {
  const std::string speed = SpeedOf(*cable.end1);
  const std::string other = SpeedOf(*cable.end2);
  return speed == other ? speed : speed + "/" + other;
}

class DifferenceReport {
 public:
  DifferenceReport(const Difference& difference, const TextStyle& style, std::ostream& stream)
      : difference_(difference),
        style_(style),
        stream_(stream),
        then_(difference.was),
        now_(difference.is) {}

  void Write() {
    WriteNodes();
    WriteCables();
    if (difference_.findings) WriteFindings();
    WriteSum();
    if (difference_.plan) WritePlan();
  }

 private:
  void WriteNodes();
  void WriteCables();
  void WriteFindings();
  void WriteSum();
  void WritePlan();

  void Line(const std::string& what, const std::string& text) {
    WriteReportLine(text, style_, stream_, what + ": ");
  }
  void CountNode(const IBNode& node) { ++(node.nodeType == NodeTypeSwitch ? switches_ : hosts_); }

  void NodeLine(const NodeAndCables& change, const char* what, const NodeNames& names) {
    CountNode(*change.node);
    Line(NodeTypeName(*change.node) + what,
         names.Of(*change.node) + ", with " + std::to_string(change.cables) + " cables");
  }
  void CableLine(const Cable& cable, const char* what, const NodeNames& names,
                 const std::string& more) {
    ++cables_;
    Line(what, names.Of(*cable.end1) + " to " + names.Of(*cable.end2) + more);
  }

  const Difference& difference_;
  const TextStyle& style_;
  std::ostream& stream_;
  const NodeNames then_;
  const NodeNames now_;
  std::size_t switches_ = 0;
  std::size_t hosts_ = 0;  // and routers
  std::size_t cables_ = 0;
};

void DifferenceReport::WriteNodes() {
  const FabricChanges& fabric = difference_.fabric;
  for (const NodeAndCables& change : fabric.nodesWent) NodeLine(change, " went", then_);
  for (const NodeAndCables& change : fabric.nodesCame) NodeLine(change, " came", now_);
  for (const NodeChange& change : fabric.replaced) {
    CountNode(*change.is);
    Line(NodeTypeName(*change.is) + " replaced", std::string(change.is->getAlternativeName()) +
                                                     ", " + GuidText(change.was->guid) + " by " +
                                                     GuidText(change.is->guid));
  }
  for (const NodeChange& change : fabric.renamed) {
    CountNode(*change.is);
    // A change of the name need not be one of the name that is shown.
    const bool isShown = change.was->getAlternativeName() != change.is->getAlternativeName();
    Line(NodeTypeName(*change.is) + " renamed",
         isShown ? then_.Of(*change.was) + " to " + now_.Of(*change.is)
                 : std::string(change.was->name) + " to " + std::string(change.is->name));
  }
}

void DifferenceReport::WriteCables() {
  const FabricChanges& fabric = difference_.fabric;
  for (const MovedCable& move : fabric.moved) {
    const IBNode& node = *move.kept->node;
    const bool isHost = node.nodeType != NodeTypeSwitch;
    ++(isHost ? hosts_ : cables_);
    Line((isHost ? NodeTypeName(node) : "cable") + " moved",
         now_.Of(*move.kept) + " from " + then_.Of(*move.was) + " to " + now_.Of(*move.is));
  }
  for (const Cable& cable : fabric.cablesWent) CableLine(cable, "cable went", then_, "");
  for (const Cable& cable : fabric.cablesCame) CableLine(cable, "cable came", now_, "");
  for (const SpeedChange& change : fabric.speeds) {
    CableLine(change.is, "cable changed speed", now_,
              ", from " + SpeedOf(change.was) + " to " + SpeedOf(change.is));
  }
}

void DifferenceReport::WriteFindings() {
  for (const Fault fault : difference_.findings->cured) {
    Line("finding cured", FaultText(fault, then_));
  }
  for (const Fault fault : difference_.findings->appeared) {
    Line("finding appeared", FaultText(fault, now_));
  }
}

void DifferenceReport::WriteSum() {
  if (difference_.IsEmpty()) return;
  std::string sum = "-I- Difference: " + std::to_string(switches_) + " switches, " +
                    std::to_string(hosts_) + " hosts, " + std::to_string(cables_) + " cables";
  if (difference_.findings) {
    sum += ", " + std::to_string(difference_.findings->cured.size()) + " findings cured, " +
           std::to_string(difference_.findings->appeared.size()) + " appeared";
  }
  WriteReportLine(sum, style_, stream_);
}

void DifferenceReport::WritePlan() {
  const SwitchNames names(difference_.is, difference_.showGuid);
  for (const StepProgress& step : *difference_.plan) Line("plan", ProgressText(step, names));
}

}  // namespace

void WriteDifferenceReport(const Difference& difference, const TextStyle& style,
                           std::ostream& stream) {
  WriteForPeople(stream,
                 [&](std::ostream& text) { DifferenceReport(difference, style, text).Write(); });
}

}  // namespace fabscope::internal
