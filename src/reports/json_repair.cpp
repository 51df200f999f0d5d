#include <string>

#include "compare/cures.h"
#include "compare/fabric_hash.h"
#include "compare/repair_document.h"
#include "platform/version.h"
#include "reports/repair_report.h"
#include "text/json_members.h"

namespace fabscope::internal {
namespace {

// The steps of a plan, with the findings that each of them cures.
class JsonSteps {
 public:
  JsonSteps(const IBFabric& fabric, int showGuid, std::string& json)
      : names_(fabric, showGuid), nodes_(fabric.GetNodes()), json_(json) {}

  void Write(const std::vector<RepairStep>& steps,
             const std::vector<std::vector<std::size_t>>& cures) {
    JsonMembers list(json_, '[', ']');
    for (std::size_t i = 0; i < steps.size(); ++i) {
      list.Next() += '\n';
      WriteStep(i + 1, steps[i], cures[i]);
    }
  }

 private:
  void WriteStep(std::size_t id, const RepairStep& step, const std::vector<std::size_t>& cures) {
    JsonMembers members(json_, '{', '}');
    members.Number("id", id);
    members.Text("action", NameOf(step.action));
    members.Text("class", NameOf(step.trust));
    AppendCables(members.Key("cables"), step.cables);
    members.Text("reason", ReasonText(step, names_));
    members.NumberArray("cures", cures);
    JsonMembers alternatives(members.Key("alternatives"), '[', ']');
    for (const CableChanges& cables : step.alternatives) AppendCables(alternatives.Next(), cables);
  }
  void AppendCables(std::string& json, const CableChanges& cables) {
    JsonMembers list(json, '[', ']');
    for (const CableChange& change : cables) {
      JsonMembers members(list.Next(), '{', '}');
      AppendCable(members.Key("before"), change.before);
      AppendCable(members.Key("after"), change.after);
    }
  }
  void AppendCable(std::string& json, const std::optional<RepairCable>& cable) {
    if (!cable) {
      json += "null";
      return;
    }
    JsonMembers ends(json, '[', ']');
    for (const CableEnd& end : {cable->upper, cable->lower}) {
      JsonMembers members(ends.Next(), '{', '}');
      const IBNode& node = nodes_[end.node];
      members.Guid("guid", node.guid);
      members.Text("name", node.getAlternativeName());
      members.Number("port", end.port);
    }
  }

  const SwitchNames names_;
  const std::vector<IBNode>& nodes_;
  std::string& json_;
};

class JsonPlan {
 public:
  JsonPlan(const RepairResult& result, std::string& json)
      : result_(result), plan_(result.proven.plan), json_(json) {}

  void Write() {
    JsonMembers members(json_, '{', '}');
    members.Text("format", "fabscope-repair");
    members.Number("version", 1);
    members.Text("tool", GetToolVersion());
    members.Text("input", result_.input);
    members.Text("fabric", FabricHash(*result_.fabric));
    members.Text("status", StatusName());
    members.Text("message", result_.IsDone() ? plan_.message : result_.message);
    WriteRoots(members.Key("roots"));
    WriteRanks(members.Key("ranks"));
    WriteSteps(members.Key("steps"));
    members.Number("lowerBound", result_.IsDone() ? plan_.lowerBound : 0);
    WriteAfter(members.Key("after"));
    WriteNotes(members.Key("notes"));
  }

 private:
  const char* StatusName() const {
    if (!result_.IsDone()) return "failed";
    if (plan_.status == RepairStatus::Abstained) return "abstained";
    return plan_.steps.empty() ? "clean" : "repairs";
  }
  void WriteRoots(std::string& json) {
    JsonMembers members(json, '{', '}');
    members.Text("method", result_.method);
    members.Number("misfits", plan_.misfits);
    members.Text("doubt", result_.doubt);
  }
  void WriteRanks(std::string& json) {
    JsonMembers ranks(json, '[', ']');
    for (int rank = 0; rank < plan_.ranks.levels; ++rank) {
      JsonMembers guids(ranks.Next() += '\n', '[', ']');
      for (const IBNode* node : result_.fabric->switches) {
        if (plan_.ranks.ofNode[node->index] == rank) guids.Guid(node->guid);
      }
    }
  }
  void WriteSteps(std::string& json) {
    if (!result_.IsDone()) {
      json += "[]";
      return;
    }
    AppendRepairSteps(json, result_.proven, {*result_.before.topology, result_.before.findings},
                      result_.showGuid);
  }
  void WriteAfter(std::string& json) {
    if (!result_.IsDone() || !result_.After().problem.empty()) {
      json += "null";
      return;
    }
    JsonMembers members(json, '{', '}');
    members.Number("records", result_.After().findings.RecordsCount());
    members.Number("issues", result_.After().issues);
  }
  void WriteNotes(std::string& json) {
    JsonMembers list(json, '[', ']');
    const SwitchNames names(*result_.fabric, result_.showGuid);
    for (const RepairNote& note : plan_.notes) {
      JsonMembers members(list.Next() += '\n', '{', '}');
      members.Text("kind", KindOf(note));
      members.Number("rank", note.rank);
      {
        JsonMembers switches(members.Key("switches"), '[', ']');
        for (const std::uint32_t index : note.switches) switches.Guid(names.NodeOf(index).guid);
      }
      members.NumberArray("ports", note.ports);
      members.Text("text", NoteText(note, names));
    }
  }

  const RepairResult& result_;
  const RepairPlan& plan_;
  std::string& json_;
};

}  // namespace

void AppendRepairSteps(std::string& json, const ProvenPlan& proven, const CheckedFabric& was,
                       int showGuid) {
  const std::vector<RepairStep>& steps = proven.plan.steps;
  const CheckedTree& after = proven.after;
  if (steps.empty()) {
    json += "[]";
    return;
  }
  JsonSteps(was.topology.GetFabric(), showGuid, json)
      .Write(steps, CuresOf(steps, was, {*after.topology, after.findings}));
}

void WriteRepairJson(const RepairResult& result, std::ostream& stream) {
  std::string json;
  JsonPlan(result, json).Write();
  stream << json << '\n';
}

}  // namespace fabscope::internal
