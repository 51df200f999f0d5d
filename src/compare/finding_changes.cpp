#include "compare/finding_changes.h"

#include <algorithm>
#include <functional>
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
    faults_.push_back({&finding, {FirstLine(found.isNeighborhood, found.group)}});
  }
  void Add(const Finding& finding, const AsymmetricAPorts& found) {
    for (const IBPort* port : found.ports) {
      faults_.push_back({&finding, {{port->node, port->num}}});
    }
  }
  void Add(const Finding& finding, const SharedFlid& found) {
    Fault fault{&finding, {}};
    for (const std::uint64_t group : found.groups) {
      fault.places.push_back(FirstLine(found.isNeighborhood, group));
    }
    faults_.push_back(std::move(fault));
  }

  Place FirstLine(bool isNeighborhood, std::uint64_t id) const {
    return {*groups_.at({isNeighborhood, id})->GetLines().begin(), 0};
  }

  std::map<std::pair<bool, std::uint64_t>, const FTNeighborhood*> groups_;
  Faults faults_;
};

// What tells that two faults are the same.
using Key = std::vector<std::uint64_t>;
using Identity = std::function<std::uint64_t(const IBNode& node)>;

constexpr std::uint64_t Number(bool flag) { return flag ? 1 : 0; }

Key KeyOf(const Fault& fault, const Identity& identity) {
  std::vector<std::pair<std::uint64_t, std::uint64_t>> places;
  for (const Place& place : fault.places) places.emplace_back(identity(*place.node), place.port);
  // An end may come first in one fabric and second in the other.
  std::sort(places.begin(), places.end());
  Key key{fault.finding->index(), static_cast<std::uint64_t>(fault.links)};
  for (const auto& [node, port] : places) key.insert(key.end(), {node, port});
  if (const auto* uneven = std::get_if<UnevenLinks>(fault.finding)) {
    key.insert(key.end(), {static_cast<std::uint64_t>(uneven->expected), Number(uneven->isUp),
                           Number(uneven->ofSpines)});
  } else if (const auto* shared = std::get_if<SharedFlid>(fault.finding)) {
    key.push_back(shared->flid);
  } else if (const auto* asymmetric = std::get_if<AsymmetricAPorts>(fault.finding)) {
    key.push_back(Number(asymmetric->toHosts));
  }
  return key;
}

struct KeyedFaults {
  KeyedFaults(const CheckedFabric& checked, const Identity& identity)
      : faults(FaultList(checked.topology).Of(checked.findings)) {
    keys.reserve(faults.size());
    for (const Fault& fault : faults) keys.push_back(KeyOf(fault, identity));
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
  const KeyedFaults before(was, [&](const IBNode& node) { return nodes.IdentityOfOld(node); });
  const KeyedFaults now(is, [&](const IBNode& node) { return nodes.IdentityOfNew(node); });
  return {before.Without(now), now.Without(before)};
}

}  // namespace fabscope
