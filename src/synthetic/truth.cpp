#include "synthetic/truth.h"

#include <algorithm>
#include <vector>

#include "formats/link_speeds.h"
#include "text/json_members.h"

namespace fabscope::internal {
namespace {

class TruthWriter {
 public:
  explicit TruthWriter(const FabricPlan& plan) : plan_(plan) {}

  void AppendFault(std::string& json, const InjectedFault& fault) const {
    JsonMembers members(json, '{', '}');
    members.Text("kind", FaultName(fault.kind));
    const std::vector<std::size_t> all = NodesOf(fault);
    AppendNodes(members, "switches", all, true);
    AppendNodes(members, "hosts", all, false);
    AppendComeAndGone(members, fault);
    AppendLinks(members.Key("before"), fault, fault.before);
    AppendLinks(members.Key("after"), fault, fault.after);
    AppendAPorts(members, fault);
    AppendFlids(members, fault);
  }

 private:
  using Nodes = std::vector<std::size_t>;

  // All that the fault is about, in the order of the plan.
  Nodes NodesOf(const InjectedFault& fault) const;
  // The planes on which a cable of the fault has changed.
  std::vector<unsigned> PlanesOf(const InjectedFault& fault) const;

  void AppendNode(std::string& json, std::size_t node, unsigned plane) const {
    const NodeSpec spec = plan_.NodeOnPlane(node, plane);
    JsonMembers members(json, '{', '}');
    members.Guid("guid", spec.guid);
    members.Text("name", spec.name);
  }
  // Those that are switches, or those that are not; nothing if there are none.
  void AppendNodes(JsonMembers& fault, const char* key, Nodes nodes, bool switches) const;
  void AppendComeAndGone(JsonMembers& members, const InjectedFault& fault) const;
  void AppendEnd(std::string& json, const PlannedEnd& end, unsigned plane) const;
  void AppendLinks(std::string& json, const InjectedFault& fault,
                   const std::vector<PlannedCable>& cables) const;
  void AppendAPorts(JsonMembers& fault, const InjectedFault& done) const;
  void AppendFlids(JsonMembers& fault, const InjectedFault& done) const;

  const FabricPlan& plan_;
};

TruthWriter::Nodes TruthWriter::NodesOf(const InjectedFault& fault) const {
  Nodes nodes = fault.nodes;
  for (const auto* cables : {&fault.before, &fault.after}) {
    for (const PlannedCable& cable : *cables) {
      nodes.push_back(cable.upper.node);
      nodes.push_back(cable.lower.node);
    }
  }
  for (const AddedFlid& added : fault.flids) {
    nodes.push_back(added.owner);
    nodes.push_back(added.node);
  }
  std::sort(nodes.begin(), nodes.end());
  nodes.erase(std::unique(nodes.begin(), nodes.end()), nodes.end());
  return nodes;
}

std::vector<unsigned> TruthWriter::PlanesOf(const InjectedFault& fault) const {
  if (fault.kind == FaultKind::AsymmetricAPort) return {fault.after.front().slowPlane};
  std::vector<unsigned> planes(plan_.planes);
  for (unsigned i = 0; i < plan_.planes; ++i) planes[i] = i + 1;
  return planes;
}

void TruthWriter::AppendNodes(JsonMembers& fault, const char* key, Nodes nodes,
                              bool switches) const {
  std::erase_if(nodes, [&](std::size_t node) { return plan_.IsSwitch(node) != switches; });
  if (nodes.empty()) return;
  JsonMembers array(fault.Key(key), '[', ']');
  for (const std::size_t node : nodes) {
    const unsigned chips = switches ? plan_.planes : 1;
    for (unsigned plane = 1; plane <= chips; ++plane) AppendNode(array.Next(), node, plane);
  }
}

// A node that came has cables now, one that went is marked as gone.
void TruthWriter::AppendComeAndGone(JsonMembers& members, const InjectedFault& fault) const {
  for (const bool gone : {true, false}) {
    Nodes nodes = fault.nodes;
    std::erase_if(nodes, [&](std::size_t node) { return plan_.nodes[node].removed != gone; });
    if (nodes.empty()) continue;
    JsonMembers array(members.Key(gone ? "removedNodes" : "addedNodes"), '[', ']');
    for (const std::size_t node : nodes) {
      const unsigned chips = plan_.IsSwitch(node) ? plan_.planes : 1;
      for (unsigned plane = 1; plane <= chips; ++plane) {
        array.Guid(plan_.NodeOnPlane(node, plane).guid);
      }
    }
  }
}

void TruthWriter::AppendEnd(std::string& json, const PlannedEnd& end, unsigned plane) const {
  const PortRef port = plan_.PortOnPlane(end, plane);
  JsonMembers members(json, '{', '}');
  members.Guid("guid", port.guid);
  members.Text("name", plan_.NodeOnPlane(end.node, plane).name);
  members.Number("port", port.num);
}

void TruthWriter::AppendLinks(std::string& json, const InjectedFault& fault,
                              const std::vector<PlannedCable>& cables) const {
  JsonMembers array(json, '[', ']');
  for (const PlannedCable& cable : cables) {
    for (const unsigned plane : PlanesOf(fault)) {
      JsonMembers members(array.Next() += "\n  ", '{', '}');
      AppendEnd(members.Key("a"), cable.upper, plane);
      AppendEnd(members.Key("b"), cable.lower, plane);
      members.Text("speed", SpeedName(plan_.LinkOnPlane(cable, plane).speed));
    }
  }
}

// Those that are asymmetric now, as the fabric document has them.
void TruthWriter::AppendAPorts(JsonMembers& fault, const InjectedFault& done) const {
  if (done.kind != FaultKind::AsymmetricAPort) return;
  JsonMembers array(fault.Key("aports"), '[', ']');
  const PlannedCable& cable = done.after.front();
  for (const PlannedEnd& end : {cable.upper, cable.lower}) {
    JsonMembers aport(array.Next() += "\n  ", '{', '}');
    {
      JsonMembers ports(aport.Key("ports"), '[', ']');
      for (unsigned plane = 1; plane <= plan_.planes; ++plane) {
        const PortRef port = plan_.PortOnPlane(end, plane);
        JsonMembers pair(ports.Next(), '[', ']');
        pair.Guid(port.guid);
        pair.Next() += std::to_string(port.num);
      }
    }
    aport.Number("asymmetry", FabricPlan::AsymmetryMark);
  }
}

void TruthWriter::AppendFlids(JsonMembers& fault, const InjectedFault& done) const {
  if (done.flids.empty()) return;
  JsonMembers array(fault.Key("addedFlids"), '[', ']');
  for (const AddedFlid& added : done.flids) {
    for (unsigned plane = 1; plane <= plan_.planes; ++plane) {
      JsonMembers members(array.Next(), '{', '}');
      members.Guid("guid", plan_.NodeOnPlane(added.node, plane).guid);
      members.Number("flid", added.flid);
    }
  }
}

}  // namespace

std::string TruthText(const FabricPlan& plan, std::uint64_t seed,
                      std::span<const InjectedFault> faults) {
  const TruthWriter writer(plan);
  std::string json;
  {
    JsonMembers members(json, '{', '}');
    members.Text("format", "fabscope-truth");
    members.Number("version", 1);
    members.Number("seed", seed);
    JsonMembers array(members.Key("faults"), '[', ']');
    for (const InjectedFault& fault : faults) writer.AppendFault(array.Next() += '\n', fault);
  }
  return json + '\n';
}

}  // namespace fabscope::internal
