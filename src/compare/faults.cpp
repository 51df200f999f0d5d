#include "compare/faults.h"

#include "fat_tree/neighborhood.h"

namespace fabscope::internal {
namespace {

// The switches of a finding by their number of links, and its ports: each is a fault.
struct ManyParts : IgnoredParts {
  void Counts(const char* /*name*/, const std::vector<LinkCount>& found) { counts = &found; }
  void Ports(const char* /*name*/, const std::vector<const IBPort*>& found) { ports = &found; }

  const std::vector<LinkCount>* counts = nullptr;
  const std::vector<const IBPort*>* ports = nullptr;
};

// Of a finding that is one fault.
struct PlacesOfOne : IgnoredParts {
  explicit PlacesOfOne(Fault& fault) : fault_(fault) {}

  void Switch(const char* /*name*/, const IBNode& node) { fault_.places.push_back({&node, 0}); }
  void Ends(const char* /*name*/, const FTLinkIssue& link) {
    fault_.places.push_back({link.node1, link.port1});
    fault_.places.push_back({link.node2, link.port2});
  }

 private:
  Fault& fault_;
};

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
    ManyParts many;
    TellPartsOf(finding, many);
    if (many.counts != nullptr) {
      for (std::uint32_t count = 0; count < many.counts->size(); ++count) {
        Add(place, (*many.counts)[count].nodes.size(), count);
      }
    } else {
      Add(place, many.ports != nullptr ? many.ports->size() : 1);
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
  ManyParts many;
  TellPartsOf(finding, many);
  if (many.counts != nullptr) {
    const LinkCount& count = (*many.counts)[entry.count];
    fault.places = {{count.nodes[entry.part], 0}};
    fault.links = count.links;
  } else if (many.ports != nullptr) {
    const IBPort* port = (*many.ports)[entry.part];
    fault.places = {{port->node, port->num}};
  } else {
    PlacesOfOne places(fault);
    TellPartsOf(finding, places);
    if (fault.places.empty()) AddGroups(fault);
  }
  return fault;
}

// A group has lines: it is made of the switches that reach its spines.
void FaultList::AddGroups(Fault& fault) const {
  const bool isNeighborhood = IsOfNeighborhoods(*fault.finding);
  for (const std::uint64_t id : GroupsOf(*fault.finding)) {
    const FTNeighborhood* group = groups_->at({isNeighborhood, id});
    fault.groups.push_back(group);
    fault.places.push_back({*group->GetLines().begin(), 0});
  }
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
