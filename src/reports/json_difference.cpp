#include <string>
#include <variant>

#include "formats/link_speeds.h"
#include "platform/version.h"
#include "reports/difference_report.h"
#include "reports/fault_text.h"
#include "reports/node_types.h"
#include "reports/repair_report.h"
#include "text/json_members.h"

namespace fabscope::internal {
namespace {

class JsonDifference {
 public:
  JsonDifference(const Difference& difference, std::string& json)
      : difference_(difference), json_(json) {}

  void Write() {
    JsonMembers members(json_, '{', '}');
    members.Text("format", "fabscope-difference");
    members.Number("version", 1);
    members.Text("tool", GetToolVersion());
    members.Text("old", difference_.oldName);
    members.Text("new", difference_.newName);
    members.Text("status", StatusName());
    members.Text("message", difference_.message);
    WriteNodes(members.Key("nodes"));
    WriteCables(members.Key("cables"));
    WriteFindings(members.Key("findings"));
    if (difference_.plan) WritePlan(members);
  }

 private:
  const char* StatusName() const {
    if (!difference_.findings) return "failed";
    return difference_.IsEmpty() ? "same" : "different";
  }

  // A list, each of its members on a line of its own.
  template <typename Changes, typename WriteMembers>
  void List(JsonMembers& owner, const char* key, const Changes& changes, WriteMembers write) {
    JsonMembers list(owner.Key(key), '[', ']');
    for (const auto& change : changes) {
      JsonMembers object(list.Next() += '\n', '{', '}');
      write(object, change);
    }
  }

  static void AppendPort(JsonMembers& owner, const IBPort& port) {
    JsonMembers end(owner.Next(), '{', '}');
    AppendPlace(end, *port.node, port.num);
  }
  static void AppendPort(JsonMembers& owner, const char* key, const IBPort& port) {
    JsonMembers end(owner.Key(key), '{', '}');
    AppendPlace(end, *port.node, port.num);
  }
  static void AppendPlace(JsonMembers& place, const IBNode& node, std::uint8_t port) {
    place.Guid("guid", node.guid);
    place.Text("name", node.getAlternativeName());
    if (port != 0) place.Number("port", port);
  }
  static void AppendEnds(JsonMembers& owner, const Cable& cable) {
    JsonMembers ends(owner.Key("ends"), '[', ']');
    AppendPort(ends, *cable.end1);
    AppendPort(ends, *cable.end2);
  }
  static void AppendNode(JsonMembers& object, const NodeAndCables& change) {
    object.Text("type", NodeTypeName(*change.node));
    AppendPlace(object, *change.node, 0);
    object.Number("cables", change.cables);
  }

  void WriteNodes(std::string& json);
  void WriteCables(std::string& json);
  void WriteFindings(std::string& json);
  void WritePlan(JsonMembers& owner);
  void WriteFaults(JsonMembers& owner, const char* key, const FaultList& faults,
                   const NodeNames& names);

  const Difference& difference_;
  std::string& json_;
};

void JsonDifference::WriteNodes(std::string& json) {
  const FabricChanges& fabric = difference_.fabric;
  JsonMembers nodes(json, '{', '}');
  List(nodes, "went", fabric.nodesWent, AppendNode);
  List(nodes, "came", fabric.nodesCame, AppendNode);
  List(nodes, "replaced", fabric.replaced, [](JsonMembers& object, const NodeChange& change) {
    object.Text("type", NodeTypeName(*change.is));
    object.Text("name", change.is->getAlternativeName());
    object.Guid("old", change.was->guid);
    object.Guid("new", change.is->guid);
  });
  List(nodes, "renamed", fabric.renamed, [](JsonMembers& object, const NodeChange& change) {
    object.Text("type", NodeTypeName(*change.is));
    object.Guid("guid", change.is->guid);
    object.Text("old", change.was->name);
    object.Text("new", change.is->name);
  });
}

void JsonDifference::WriteCables(std::string& json) {
  const FabricChanges& fabric = difference_.fabric;
  JsonMembers cables(json, '{', '}');
  List(cables, "went", fabric.cablesWent, AppendEnds);
  List(cables, "came", fabric.cablesCame, AppendEnds);
  List(cables, "moved", fabric.moved, [](JsonMembers& object, const MovedCable& move) {
    AppendPort(object, "kept", *move.kept);
    AppendPort(object, "from", *move.was);
    AppendPort(object, "to", *move.is);
  });
  List(cables, "changedSpeed", fabric.speeds, [](JsonMembers& object, const SpeedChange& change) {
    AppendEnds(object, change.is);
    object.Text("from", SpeedText(*change.was.end1, *change.was.end2));
    object.Text("to", SpeedText(*change.is.end1, *change.is.end2));
  });
}

void JsonDifference::WriteFindings(std::string& json) {
  if (!difference_.findings) {
    json += "null";
    return;
  }
  JsonMembers findings(json, '{', '}');
  WriteFaults(findings, "cured", difference_.findings->cured, NodeNames(difference_.was));
  WriteFaults(findings, "appeared", difference_.findings->appeared, NodeNames(difference_.is));
}

void JsonDifference::WriteFaults(JsonMembers& owner, const char* key, const FaultList& faults,
                                 const NodeNames& names) {
  List(owner, key, faults, [&](JsonMembers& object, const Fault& fault) {
    object.Text("kind", KindOf(*fault.finding));
    object.Number("level", static_cast<int>(LevelOf(*fault.finding)));
    {
      JsonMembers places(object.Key("places"), '[', ']');
      for (const Place& place : fault.places) {
        JsonMembers members(places.Next(), '{', '}');
        AppendPlace(members, *place.node, place.port);
      }
    }
    object.Text("text", FaultText(fault, names));
  });
}

void JsonDifference::WritePlan(JsonMembers& owner) {
  const SwitchNames names(difference_.is, difference_.showGuid);
  List(owner, "plan", *difference_.plan, [&](JsonMembers& object, const StepProgress& step) {
    object.Number("id", step.step->id);
    object.Text("state", NameOf(step.state));
    object.Text("text", ProgressText(step, names));
  });
}

}  // namespace

void WriteDifferenceJson(const Difference& difference, std::ostream& stream) {
  std::string json;
  JsonDifference(difference, json).Write();
  stream << json << '\n';
}

}  // namespace fabscope::internal
