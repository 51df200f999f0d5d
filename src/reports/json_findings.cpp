#include "reports/json_findings.h"

#include "fat_tree/group_label.h"
#include "text/json_members.h"

namespace fabscope::internal {
namespace {

void AppendSwitches(JsonMembers& members, const std::vector<const IBNode*>& nodes) {
  JsonMembers switches(members.Key("switches"), '[', ']');
  for (const IBNode* node : nodes) switches.Guid(node->guid);
}

void AppendEnd(JsonMembers& ends, const IBNode& node, std::uint8_t port, std::uint64_t rank) {
  JsonMembers end(ends.Next(), '{', '}');
  end.Guid("switch", node.guid);
  end.Number("port", port);
  end.Number("rank", rank);
}

void AppendDetails(JsonMembers& members, const MissingLink& found) {
  members.Guid("spine", found.spine->guid);
  members.Guid("line", found.line->guid);
}

void AppendDetails(JsonMembers& members, const InvalidLink& found) {
  const FTLinkIssue& link = found.link;
  JsonMembers ends(members.Key("ends"), '[', ']');
  AppendEnd(ends, *link.node1, link.port1, link.rank1);
  AppendEnd(ends, *link.node2, link.port2, link.rank2);
}

void AppendDetails(JsonMembers& members, const UnevenLinks& found) {
  members.Text("set", found.ofSpines ? "spines" : "lines");
  members.Text("direction", found.isUp ? "up" : "down");
  members.Number("expected", found.expected);
  JsonMembers counts(members.Key("counts"), '[', ']');
  for (const UnevenLinks::Count& other : found.others) {
    JsonMembers count(counts.Next(), '{', '}');
    count.Number("count", other.links);
    AppendSwitches(count, other.nodes);
  }
}

void AppendDetails(JsonMembers& members, const SuspectedBlocking& found) {
  members.Number("uplinks", found.spineUplinks);
  members.Number("internalLinks", found.internalLinks);
}

void AppendDetails(JsonMembers& members, const AsymmetricAPorts& found) {
  members.Flag("toHosts", found.toHosts);
  JsonMembers ports(members.Key("ports"), '[', ']');
  for (const IBPort* port : found.ports) {
    JsonMembers pair(ports.Next(), '[', ']');
    pair.Guid(port->node->guid);
    pair.Next() += std::to_string(port->num);
  }
}

void AppendDetails(JsonMembers& members, const SharedFlid& found) {
  members.Number("flid", found.flid);
}

}  // namespace

void AppendFinding(std::string& json, const Finding& finding) {
  JsonMembers members(json, '{', '}');
  std::visit(
      [&](const auto& found) {
        members.Text("kind", found.kind);
        members.Number("level", static_cast<int>(found.Level()));
        members.Text("groupKind", GroupName(found.isNeighborhood));
        members.NumberArray("groups", found.Groups());
        members.Number("issues", IssuesOf(finding));
        AppendDetails(members, found);
      },
      finding);
}

}  // namespace fabscope::internal
