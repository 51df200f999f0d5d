#include "library/findings.h"

#include <sstream>
#include <type_traits>
#include <variant>

#include "library/access.h"

namespace fabscope::internal {
namespace {

using PublicOne = fabscope::Finding;

void AddDetails(const MissingLink& found, PublicOne& finding) {
  finding.switches = {Access::MakeNode(*found.spine), Access::MakeNode(*found.line)};
}

void AddDetails(const InvalidLink& found, PublicOne& finding) {
  const FTLinkIssue& link = found.link;
  finding.ports = {Access::MakePort(*link.node1, link.port1),
                   Access::MakePort(*link.node2, link.port2)};
}

void AddDetails(const UnevenLinks& found, PublicOne& finding) {
  finding.expectedLinks = found.expected;
  for (const UnevenLinks::Count& other : found.others) {
    for (const IBNode* node : other.nodes) {
      finding.switches.push_back(Access::MakeNode(*node));
      finding.links.push_back(other.links);
    }
  }
}

void AddDetails(const SuspectedBlocking& /*found*/, PublicOne& /*finding*/) {}

void AddDetails(const AsymmetricAPorts& found, PublicOne& finding) {
  for (const IBPort* port : found.ports) {
    finding.ports.push_back(Access::MakePort(*port->node, port->num));
  }
}

void AddDetails(const SharedFlid& found, PublicOne& finding) { finding.flid = found.flid; }

// The lines of an issue without the tag of the first and the end of the last.
template <typename Kind>
std::string TextOf(const Kind& found, int showGuid) {
  if constexpr (RecordKind<Kind>) {
    return found.Description(showGuid);
  } else {
    std::ostringstream lines;
    found.WriteLines(lines, showGuid);
    std::string text = lines.str();
    if (text.starts_with(TagOf(found.Level()))) text.erase(0, 4);
    if (text.ends_with('\n')) text.pop_back();
    return text;
  }
}

}  // namespace

fabscope::Finding PublicFinding(const Finding& finding, int showGuid) {
  PublicOne result;
  result.kind = KindOf(finding);
  result.level = LevelOf(finding) == EN_FABRIC_ERR_WARNING ? Level::Warning : Level::Error;
  result.isRecord = IsRecord(finding);
  result.issues = IssuesOf(finding);
  result.groups = GroupsOf(finding);
  result.ofNeighborhoods = IsOfNeighborhoods(finding);
  std::visit(
      [&](const auto& found) {
        AddDetails(found, result);
        result.text = TextOf(found, showGuid);
      },
      finding);
  return result;
}

}  // namespace fabscope::internal
