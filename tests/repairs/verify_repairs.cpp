#include "repairs/verify_repairs.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "fabric/fabric_walk.h"
#include "repair/find_repairs.h"
#include "repair/inferred_ranks.h"
#include "repairs/plain_groups.h"
#include "repairs/plan_verifier.h"

namespace fabscope {
namespace {

// --- The fabric as plain data.

void AddPort(const IBPort& port, plain::Fabric& fabric) {
  if (port.node->nodeType != NodeTypeSwitch || port.num == 0) return;
  const plain::Socket here{port.node->guid, port.num};
  const IBPort* far = port.remotePort;
  if (far == nullptr) {
    const bool counts = port.isSymmetricLink() && !port.isFNMPort() && !port.isFNM1Port();
    if (!counts) fabric.taken.insert(here);
    if (port.speed != 0) fabric.speeds[here] = port.speed;
    return;
  }
  if (GetRemoteSwitch(&port) == nullptr || GetRemoteSwitch(far) == nullptr) {
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
  const auto ports = GetTreePorts(node);
  return std::any_of(ports.begin(), ports.end(), [](const IBPort* port) {
    const IBNode* far = GetLinkedNode(port);
    return far != nullptr && far->nodeType == NodeTypeCA && !far->isSpecialNode();
  });
}

plain::Fabric PlainOf(const IBFabric& fabric, const TreeRanks& ranks) {
  plain::Fabric made;
  for (const IBNode& node : fabric.GetNodes()) {
    if (node.nodeType != NodeTypeSwitch) continue;
    made.switches.push_back(
        {node.guid, node.numPorts, ranks.ofNode.at(node.index), HasHosts(node)});
  }
  for (const IBPort& port : fabric.GetPorts()) AddPort(port, made);
  return made;
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

// --- What a plan cannot tell of itself.

class Trial {
 public:
  Trial(const IBFabric& fabric, const std::optional<TreeRanks>& known)
      : fabric_(fabric), known_(known) {}

  RepairsVerdict Run() {
    verdict_.plan = Find();
    const RepairPlan& plan = verdict_.plan;
    if (!CheckRanks(plan.ranks)) return std::move(verdict_);
    const plain::Fabric before = PlainOf(fabric_, plan.ranks);
    const auto repaired = ApplySteps(fabric_, plan.steps);
    std::optional<plain::Fabric> after;
    if (repaired) after = PlainOf(*repaired, plan.ranks);
    const plain::Verdict verdict =
        plain::VerifyPlan(before, PlanReader(fabric_).Read(plan), after ? &*after : nullptr);
    for (const std::string& complaint : verdict.complaints) Require(false, complaint);
    verdict_.cuts = verdict.cuts;
    verdict_.isProperAfterwards = verdict.isProperAfterwards;
    Require(CountMisfits(fabric_, plan.ranks) == plan.misfits, "misfits are counted differently");
    CheckAgain(plan);
    if (repaired && verdict.complaints.empty()) CheckRepaired(*repaired, plan);
    return std::move(verdict_);
  }

 private:
  void Require(bool holds, const std::string& complaint) {
    if (!holds) verdict_.complaints += complaint + "\n";
  }
  RepairPlan Find() const { return known_ ? FindRepairs(fabric_, *known_) : FindRepairs(fabric_); }

  bool CheckRanks(const TreeRanks& ranks) {
    Require(ranks.ofNode.size() == fabric_.GetNodes().size(), "a node has no place for its rank");
    if (!verdict_.complaints.empty()) return false;
    for (const IBNode& node : fabric_.GetNodes()) {
      const bool isSwitch = node.nodeType == NodeTypeSwitch;
      Require(isSwitch || ranks.ofNode[node.index] == TreeRanks::none, "a host has a rank");
    }
    if (known_) Require(ranks.ofNode == known_->ofNode, "other ranks are taken than those known");
    return true;
  }

  // The same again gives the same.
  void CheckAgain(const RepairPlan& plan) {
    const RepairPlan again = Find();
    bool isSame = again.status == plan.status && again.misfits == plan.misfits &&
                  again.ranks.ofNode == plan.ranks.ofNode &&
                  again.steps.size() == plan.steps.size();
    for (std::size_t i = 0; isSame && i < plan.steps.size(); ++i) {
      isSame = again.steps[i].cables == plan.steps[i].cables &&
               again.steps[i].trust == plan.steps[i].trust;
    }
    Require(isSame, "looked for again, the repairs are others");
  }

  void CheckRepaired(const IBFabric& repaired, const RepairPlan& plan) {
    const bool isProper = verdict_.isProperAfterwards;
    Require((CountMisfits(repaired, plan.ranks) == 0) == isProper,
            "the repaired fabric has no misfits exactly if it is a proper tree");
    if (!isProper) return;
    Require(FindRepairs(repaired, plan.ranks).status == RepairStatus::Clean,
            "the repaired fabric is not clean");
  }

  const IBFabric& fabric_;
  const std::optional<TreeRanks>& known_;
  RepairsVerdict verdict_;
};

}  // namespace

RepairsVerdict VerifyRepairs(const IBFabric& fabric, const std::optional<TreeRanks>& known) {
  return Trial(fabric, known).Run();
}

}  // namespace fabscope
