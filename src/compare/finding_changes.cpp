#include "compare/finding_changes.h"

#include <algorithm>
#include <map>
#include <set>
#include <utility>
#include <variant>

#include "fat_tree/neighborhood.h"

namespace fabscope {
namespace {

using Faults = std::vector<Fault>;

class FaultList {
 public:
  explicit FaultList(const FTTopology& topology) {
    for (const auto& groups : topology.GetNeighborhoods()) {
      for (const FTNeighborhood* group : groups) {
        const bool isNeighborhood = topology.IsLastRankNeighborhood(group->GetRank());
        groups_[{isNeighborhood, group->GetId()}] = group;
      }
    }
  }

  Faults Of(const std::deque<Finding>& findings) {
    for (const Finding& finding : findings) {
      std::visit([&](const auto& found) { Add(finding, found); }, finding);
    }
    return std::move(faults_);
  }

 private:
  void Add(const Finding& finding, const MissingLink& found) {
    faults_.push_back({&finding, {{found.spine, 0}, {found.line, 0}}});
  }
  void Add(const Finding& finding, const InvalidLink& found) {
    const FTLinkIssue& link = found.link;
    faults_.push_back({&finding, {{link.node1, link.port1}, {link.node2, link.port2}}});
  }
  void Add(const Finding& finding, const UnevenLinks& found) {
    for (const UnevenLinks::Count& count : found.others) {
      for (const IBNode* node : count.nodes) {
        faults_.push_back({&finding, {{node, 0}}, count.links});
      }
    }
  }
  void Add(const Finding& finding, const SuspectedBlocking& found) {
    AddGroups(finding, found.isNeighborhood, {found.group});
  }
  void Add(const Finding& finding, const AsymmetricAPorts& found) {
    for (const IBPort* port : found.ports) {
      faults_.push_back({&finding, {{port->node, port->num}}});
    }
  }
  void Add(const Finding& finding, const SharedFlid& found) {
    AddGroups(finding, found.isNeighborhood, found.groups);
  }
  // A group has lines: it is made of the switches that reach its spines.
  void AddGroups(const Finding& finding, bool isNeighborhood,
                 const std::vector<std::uint64_t>& ids) {
    Fault& fault = faults_.emplace_back(Fault{&finding, {}});
    for (const std::uint64_t id : ids) {
      const FTNeighborhood* group = groups_.at({isNeighborhood, id});
      fault.groups.push_back(group);
      fault.places.push_back({*group->GetLines().begin(), 0});
    }
  }

  std::map<std::pair<bool, std::uint64_t>, const FTNeighborhood*> groups_;
  Faults faults_;
};

// What tells that two faults are the same.
using Key = std::vector<std::uint64_t>;

// One of the two fabrics: how its nodes are known, and which of them the other one has, too.
class Side {
 public:
  Side(const Counterparts& nodes, bool isNew) : nodes_(nodes), isNew_(isNew) {}

  std::uint64_t IdentityOf(const IBNode& node) const {
    return isNew_ ? nodes_.IdentityOfNew(node) : nodes_.IdentityOfOld(node);
  }
  // By the lines that stayed, if there are any.
  std::uint64_t IdentityOf(const FTNeighborhood& group) {
    const auto [known, isNew] = firstLines_.try_emplace(&group, true, ~std::uint64_t{0});
    if (!isNew) return known->second.second;
    for (const IBNode* line : group.GetLines()) {
      known->second = std::min(known->second, {!IsInBoth(*line), IdentityOf(*line)});
    }
    return known->second.second;
  }

 private:
  bool IsInBoth(const IBNode& node) const {
    return (isNew_ ? nodes_.Then(node) : nodes_.Now(node)) != nullptr;
  }

  const Counterparts& nodes_;
  bool isNew_;
  // Of groups that were asked for: whether only one fabric has the line, and the line.
  std::map<const FTNeighborhood*, std::pair<bool, std::uint64_t>> firstLines_;
};

constexpr std::uint64_t Number(bool flag) { return flag ? 1 : 0; }

// What it tells besides places.
struct Details {
  Key operator()(const MissingLink&) const { return {}; }
  Key operator()(const InvalidLink&) const { return {}; }
  Key operator()(const UnevenLinks& found) const {
    return {static_cast<std::uint64_t>(found.expected), Number(found.isUp), Number(found.ofSpines)};
  }
  Key operator()(const SuspectedBlocking& found) const {
    return {found.spineUplinks, found.internalLinks, Number(found.isNeighborhood)};
  }
  Key operator()(const AsymmetricAPorts& found) const { return {Number(found.toHosts)}; }
  Key operator()(const SharedFlid& found) const { return {found.flid}; }
};

Key KeyOf(const Fault& fault, Side& side) {
  std::vector<std::pair<std::uint64_t, std::uint64_t>> places;
  for (const FTNeighborhood* group : fault.groups) places.emplace_back(side.IdentityOf(*group), 0);
  for (const Place& place : fault.places) {
    if (fault.groups.empty()) places.emplace_back(side.IdentityOf(*place.node), place.port);
  }
  // An end may come first in one fabric and second in the other.
  std::sort(places.begin(), places.end());
  Key key{fault.finding->index(), static_cast<std::uint64_t>(fault.links)};
  const Key details = std::visit(Details(), *fault.finding);
  key.insert(key.end(), details.begin(), details.end());
  for (const auto& [node, port] : places) key.insert(key.end(), {node, port});
  return key;
}

struct KeyedFaults {
  KeyedFaults(const CheckedFabric& checked, Side side)
      : faults(FaultList(checked.topology).Of(checked.findings)) {
    keys.reserve(faults.size());
    for (const Fault& fault : faults) keys.push_back(KeyOf(fault, side));
  }

  // Those that the others have not, each once.
  Faults Without(const KeyedFaults& others) const {
    std::set<Key> told(others.keys.begin(), others.keys.end());
    Faults rest;
    for (std::size_t i = 0; i < faults.size(); ++i) {
      if (told.insert(keys[i]).second) rest.push_back(faults[i]);
    }
    return rest;
  }

  Faults faults;
  std::vector<Key> keys;
};

}  // namespace

FindingChanges CompareFindings(const CheckedFabric& was, const CheckedFabric& is,
                               const Counterparts& nodes) {
  const KeyedFaults before(was, Side(nodes, false));
  const KeyedFaults now(is, Side(nodes, true));
  return {before.Without(now), now.Without(before)};
}

std::vector<GoneFinding> FindGone(const CheckedFabric& was, const CheckedFabric& is,
                                  const Counterparts& nodes) {
  const KeyedFaults before(was, Side(nodes, false));
  const KeyedFaults now(is, Side(nodes, true));
  const std::set<Key> left(now.keys.begin(), now.keys.end());
  std::vector<GoneFinding> gone;
  std::size_t fault = 0;
  for (std::size_t place = 0; place < was.findings.size(); ++place) {
    GoneFinding finding{place, {}};
    bool isLeft = false;
    for (; fault < before.faults.size(); ++fault) {
      if (before.faults[fault].finding != &was.findings[place]) break;
      finding.faults.push_back(before.faults[fault]);
      isLeft = isLeft || left.contains(before.keys[fault]);
    }
    if (!isLeft) gone.push_back(std::move(finding));
  }
  return gone;
}

}  // namespace fabscope
