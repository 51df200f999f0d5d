#include "compare/faults.h"

#include <type_traits>
#include <variant>

#include "fat_tree/neighborhood.h"

namespace fabscope::internal {
namespace {

// A group has lines: it is made of the switches that reach its spines.
template <typename Groups>
void AddGroups(Fault& fault, const Groups& groups, bool isNeighborhood,
               const std::vector<std::uint64_t>& ids) {
  for (const std::uint64_t id : ids) {
    const FTNeighborhood* group = groups.at({isNeighborhood, id});
    fault.groups.push_back(group);
    fault.places.push_back({*group->GetLines().begin(), 0});
  }
}

}  // namespace

FaultList::FaultList(const CheckedFabric& checked) : findings_(&checked.findings) {
  Groups groups;
  for (const auto& ofRank : checked.topology.GetNeighborhoods()) {
    for (const FTNeighborhood* group : ofRank) {
      const bool isNeighborhood = checked.topology.IsLastRankNeighborhood(group->GetRank());
      groups[{isNeighborhood, group->GetId()}] = group;
    }
  }
  groups_ = std::make_shared<const Groups>(std::move(groups));
  std::uint32_t place = 0;
  for (const Finding& finding : checked.findings) {
    if (const auto* uneven = std::get_if<UnevenLinks>(&finding)) {
      for (std::uint32_t count = 0; count < uneven->others.size(); ++count) {
        Add(place, uneven->others[count].nodes.size(), count);
      }
    } else if (const auto* asymmetric = std::get_if<AsymmetricAPorts>(&finding)) {
      Add(place, asymmetric->ports.size());
    } else {
      Add(place, 1);
    }
    ++place;
  }
}

void FaultList::Add(std::uint32_t finding, std::size_t parts, std::uint32_t count) {
  for (std::uint32_t part = 0; part < parts; ++part) entries_.push_back({finding, part, count});
}

Fault FaultList::operator[](std::size_t place) const {
  const Entry& entry = entries_[place];
  const Finding& finding = (*findings_)[entry.finding];
  Fault fault{&finding, {}};
  std::visit(
      [&](const auto& found) {
        using Kind = std::decay_t<decltype(found)>;
        if constexpr (std::is_same_v<Kind, MissingLink>) {
          fault.places = {{found.spine, 0}, {found.line, 0}};
        } else if constexpr (std::is_same_v<Kind, InvalidLink>) {
          const FTLinkIssue& link = found.link;
          fault.places = {{link.node1, link.port1}, {link.node2, link.port2}};
        } else if constexpr (std::is_same_v<Kind, UnevenLinks>) {
          const UnevenLinks::Count& count = found.others[entry.count];
          fault.places = {{count.nodes[entry.part], 0}};
          fault.links = count.links;
        } else if constexpr (std::is_same_v<Kind, AsymmetricAPorts>) {
          const IBPort* port = found.ports[entry.part];
          fault.places = {{port->node, port->num}};
        } else {
          AddGroups(fault, *groups_, found.isNeighborhood, found.Groups());
        }
      },
      finding);
  return fault;
}

FaultList FaultList::Only(const std::vector<bool>& flags) const {
  FaultList some;
  some.findings_ = findings_;
  some.groups_ = groups_;
  for (std::size_t place = 0; place < entries_.size(); ++place) {
    if (flags[place]) some.entries_.push_back(entries_[place]);
  }
  return some;
}

}  // namespace fabscope::internal
