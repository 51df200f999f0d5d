#include "library/findings.h"

#include <sstream>
#include <type_traits>
#include <variant>

#include "library/access.h"

namespace fabscope::internal {
namespace {

class PublicParts {
 public:
  explicit PublicParts(fabscope::Finding& finding) : finding_(finding) {}

  void Switch(const char* /*name*/, const IBNode& node) {
    finding_.switches.push_back(Access::MakeNode(node));
  }
  void Ends(const char* /*name*/, const FTLinkIssue& link) {
    finding_.ports = {Access::MakePort(*link.node1, link.port1),
                      Access::MakePort(*link.node2, link.port2)};
  }
  void Counts(const char* /*name*/, const std::vector<LinkCount>& counts) {
    for (const LinkCount& count : counts) {
      for (const IBNode* node : count.nodes) {
        finding_.switches.push_back(Access::MakeNode(*node));
        finding_.links.push_back(count.links);
      }
    }
  }
  void Ports(const char* /*name*/, const std::vector<const IBPort*>& ports) {
    for (const IBPort* port : ports) {
      finding_.ports.push_back(Access::MakePort(*port->node, port->num));
    }
  }
  void Number(const char* name, std::uint64_t number) { finding_.numbers.emplace(name, number); }
  void Flag(const char* name, bool isSet) { finding_.numbers.emplace(name, isSet ? 1 : 0); }
  void Choice(const char* name, bool isFirst, const char* first, const char* second) {
    finding_.words.emplace(name, isFirst ? first : second);
  }

 private:
  fabscope::Finding& finding_;
};

// The lines of an issue without the tag of the first and the end of the last.
template <typename Kind>
std::string TextOf(const Kind& found, int showGuid) {
  if constexpr (RecordKind<Kind>) {
    std::string text;
    found.AppendDescription(showGuid, text);
    return text;
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
  fabscope::Finding result;
  result.kind = KindOf(finding);
  result.level = LevelOf(finding) == EN_FABRIC_ERR_WARNING ? Level::Warning : Level::Error;
  result.isRecord = IsRecord(finding);
  result.issues = IssuesOf(finding);
  result.groups = GroupsOf(finding);
  result.ofNeighborhoods = IsOfNeighborhoods(finding);
  PublicParts parts(result);
  TellPartsOf(finding, parts);
  result.text = std::visit([&](const auto& found) { return TextOf(found, showGuid); }, finding);
  return result;
}

}  // namespace fabscope::internal
