#include "reports/json_findings.h"

#include "fat_tree/group_label.h"
#include "text/json_members.h"

namespace fabscope::internal {
namespace {

class JsonParts {
 public:
  explicit JsonParts(JsonMembers& members) : members_(members) {}

  void Switch(const char* name, const IBNode& node) { members_.Guid(name, node.guid); }
  void Ends(const char* name, const FTLinkIssue& link) {
    JsonMembers ends(members_.Key(name), '[', ']');
    AppendEnd(ends, *link.node1, link.port1, link.rank1);
    AppendEnd(ends, *link.node2, link.port2, link.rank2);
  }
  void Counts(const char* name, const std::vector<LinkCount>& counts) {
    JsonMembers list(members_.Key(name), '[', ']');
    for (const LinkCount& one : counts) {
      JsonMembers count(list.Next(), '{', '}');
      count.Number("count", one.links);
      JsonMembers switches(count.Key("switches"), '[', ']');
      for (const IBNode* node : one.nodes) switches.Guid(node->guid);
    }
  }
  void Ports(const char* name, const std::vector<const IBPort*>& ports) {
    JsonMembers list(members_.Key(name), '[', ']');
    for (const IBPort* port : ports) {
      JsonMembers pair(list.Next(), '[', ']');
      pair.Guid(port->node->guid);
      pair.Next() += std::to_string(port->num);
    }
  }
  void Number(const char* name, std::uint64_t number) { members_.Number(name, number); }
  void Flag(const char* name, bool isSet) { members_.Flag(name, isSet); }
  void Choice(const char* name, bool isFirst, const char* first, const char* second) {
    members_.Text(name, isFirst ? first : second);
  }

 private:
  static void AppendEnd(JsonMembers& ends, const IBNode& node, std::uint8_t port,
                        std::uint64_t rank) {
    JsonMembers end(ends.Next(), '{', '}');
    end.Guid("switch", node.guid);
    end.Number("port", port);
    end.Number("rank", rank);
  }

  JsonMembers& members_;
};

}  // namespace

void AppendFinding(std::string& json, const Finding& finding) {
  JsonMembers members(json, '{', '}');
  members.Text("kind", KindOf(finding));
  members.Number("level", static_cast<int>(LevelOf(finding)));
  members.Text("groupKind", GroupName(IsOfNeighborhoods(finding)));
  members.NumberArray("groups", GroupsOf(finding));
  members.Number("issues", IssuesOf(finding));
  JsonParts parts(members);
  TellPartsOf(finding, parts);
}

}  // namespace fabscope::internal
