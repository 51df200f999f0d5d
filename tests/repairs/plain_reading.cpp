#include "repairs/plain_reading.h"

#include <algorithm>

#include "fabric/fabric_walk.h"

namespace fabscope::internal {
namespace {

// --- The fabric as plain data.

void AddPort(const IBPort& port, plain::Fabric& fabric) {
  if (port.node->nodeType != NodeTypeSwitch) return;
  const plain::Socket here{port.node->guid, port.num};
  const IBPort* far = port.remotePort;
  if (far == nullptr) {
    const bool counts = port.isSymmetricLink() && !port.isFNMPort() && !port.isFNM1Port();
    if (!counts) fabric.taken.insert(here);
    if (port.speed != 0) fabric.speeds[here] = port.speed;
    return;
  }
  if (GetRemoteSwitch(port) == nullptr || GetRemoteSwitch(*far) == nullptr) {
    fabric.taken.insert(here);
    if (far->node->nodeType == NodeTypeSwitch) {
      fabric.joinedOtherwise.insert({port.node->guid, far->node->guid});
    }
    return;
  }
  fabric.cables[here] = {far->node->guid, far->num};
  fabric.speeds[here] = port.speed;
}

bool HasHosts(const IBNode& node) {
  return std::any_of(node.ports.begin(), node.ports.end(), [](const IBPort& port) {
    const IBNode* far = GetLinkedNode(port);
    return far != nullptr && far->nodeType == NodeTypeCA && !far->isSpecialNode();
  });
}

// --- The plan as plain data.

plain::Action PlainOf(RepairAction action) {
  switch (action) {
    case RepairAction::Swap:
      return plain::Action::Swap;
    case RepairAction::Move:
      return plain::Action::Move;
    case RepairAction::Connect:
      return plain::Action::Connect;
    case RepairAction::Disconnect:
      break;
  }
  return plain::Action::Disconnect;
}

plain::Trust PlainOf(RepairClass trust) {
  switch (trust) {
    case RepairClass::Sure:
      return plain::Trust::Sure;
    case RepairClass::Likely:
      return plain::Trust::Likely;
    case RepairClass::Ask:
      break;
  }
  return plain::Trust::Ask;
}

plain::Reason PlainOf(RepairReason reason) {
  switch (reason) {
    case RepairReason::WrongGroup:
      return plain::Reason::WrongGroup;
    case RepairReason::WrongSpine:
      return plain::Reason::WrongSpine;
    case RepairReason::SameRank:
      return plain::Reason::SameRank;
    case RepairReason::SkipsRank:
      return plain::Reason::SkipsRank;
    case RepairReason::TooMany:
      return plain::Reason::TooMany;
    case RepairReason::Exchanged:
      return plain::Reason::Exchanged;
    case RepairReason::Rotated:
      return plain::Reason::Rotated;
    case RepairReason::LinkLacking:
      break;
  }
  return plain::Reason::LinkLacking;
}

plain::Status PlainOf(RepairStatus status) {
  switch (status) {
    case RepairStatus::Clean:
      return plain::Status::Clean;
    case RepairStatus::Repairs:
      return plain::Status::Repairs;
    case RepairStatus::Abstained:
      break;
  }
  return plain::Status::Abstained;
}

plain::NoteKind PlainOf(RepairNote::Kind kind) {
  switch (kind) {
    case RepairNote::Kind::DeadSwitch:
      return plain::NoteKind::DeadSwitch;
    case RepairNote::Kind::SelfLoop:
      return plain::NoteKind::SelfLoop;
    case RepairNote::Kind::HostsOnSpines:
      return plain::NoteKind::HostsOnSpines;
    case RepairNote::Kind::UnusualGroup:
      return plain::NoteKind::UnusualGroup;
    case RepairNote::Kind::UncertainGroup:
      return plain::NoteKind::UncertainGroup;
    case RepairNote::Kind::SwitchWithoutTree:
      break;
  }
  return plain::NoteKind::SwitchWithoutTree;
}

class PlanReader {
 public:
  explicit PlanReader(const IBFabric& fabric) : fabric_(fabric) {}

  plain::Plan Read(const RepairPlan& plan) const {
    plain::Plan read{PlainOf(plan.status),
                     plan.message,
                     plan.ranks.levels,
                     plan.misfits,
                     {},
                     plan.lowerBound,
                     {}};
    for (const RepairStep& step : plan.steps) {
      read.steps.push_back(
          {PlainOf(step.action), PlainOf(step.trust), PlainOf(step.reason), Read(step.cables), {}});
      for (const CableChanges& changes : step.alternatives) {
        read.steps.back().alternatives.push_back(Read(changes));
      }
    }
    for (const RepairNote& note : plan.notes) {
      read.notes.push_back({PlainOf(note.kind), note.rank, {}, {}});
      for (const std::uint32_t index : note.switches) {
        read.notes.back().switches.push_back(GuidOf(index));
      }
      read.notes.back().ports.assign(note.ports.begin(), note.ports.end());
    }
    return read;
  }

 private:
  std::uint64_t GuidOf(std::uint32_t index) const { return fabric_.GetNodes().at(index).guid; }
  plain::Socket Read(const CableEnd& end) const { return {GuidOf(end.node), end.port}; }
  plain::Link Read(const RepairCable& cable) const {
    return {Read(cable.upper), Read(cable.lower)};
  }
  plain::Changes Read(const CableChanges& changes) const {
    plain::Changes read;
    for (const CableChange& change : changes) {
      plain::Change& next = read.emplace_back();
      if (change.before) next.before = Read(*change.before);
      if (change.after) next.after = Read(*change.after);
    }
    return read;
  }

  const IBFabric& fabric_;
};

}  // namespace

plain::Fabric ReadFabric(const IBFabric& fabric, const TreeRanks& ranks) {
  plain::Fabric made;
  for (const IBNode& node : fabric.GetNodes()) {
    if (node.nodeType != NodeTypeSwitch) continue;
    made.switches.push_back(
        {node.guid, node.numPorts, ranks.ofNode.at(node.index), HasHosts(node)});
  }
  for (const IBPort& port : fabric.GetPorts()) AddPort(port, made);
  return made;
}

plain::Plan ReadPlan(const IBFabric& fabric, const RepairPlan& plan) {
  return PlanReader(fabric).Read(plan);
}

}  // namespace fabscope::internal
