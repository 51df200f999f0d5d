#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <utility>
#include <vector>

#include "fat_tree/finding_list.h"
#include "fat_tree/topology.h"

namespace fabscope::internal {

// A switch, or one of its ports; port 0 stands for the switch.
struct Place {
  const IBNode* node;
  std::uint8_t port;
};

// The smallest thing of a finding that can be mended by itself: a finding of uneven links names
// many switches, each of which is a fault. It belongs to the finding and to its fabric.
struct Fault {
  const Finding* finding;
  // The ends of a link; the switch or the port at fault; of what is wrong with groups, the first
  // line of each.
  std::vector<Place> places;
  std::int32_t links = 0;                       // what the switch has, of uneven links
  std::vector<const FTNeighborhood*> groups{};  // of what is wrong with groups
};

// What a check has found of a fabric.
struct CheckedFabric {
  const FTTopology& topology;
  const FindingList& findings;
};

// The faults of a fabric's findings, in their order, or some of them. There can be millions, so
// each is made when it is asked for. It reads the checked fabric, which must outlive it.
class FaultList {
 public:
  class const_iterator {
   public:
    const_iterator(const FaultList& list, std::size_t place) : list_(&list), place_(place) {}
    Fault operator*() const { return (*list_)[place_]; }
    const_iterator& operator++() {
      ++place_;
      return *this;
    }
    friend bool operator==(const const_iterator&, const const_iterator&) = default;

   private:
    const FaultList* list_;
    std::size_t place_;
  };

  FaultList() = default;  // without any
  explicit FaultList(const CheckedFabric& checked);

  std::size_t size() const { return entries_.size(); }
  bool empty() const { return entries_.empty(); }
  Fault operator[](std::size_t place) const;
  const_iterator begin() const { return {*this, 0}; }
  const_iterator end() const { return {*this, size()}; }

  const Finding& FindingAt(std::size_t place) const { return (*findings_)[FindingOf(place)]; }
  // The place of a fault's finding among the findings.
  std::size_t FindingOf(std::size_t place) const { return entries_[place].finding; }
  // Those for which the flag at their place is set.
  FaultList Only(const std::vector<bool>& flags) const;

 private:
  struct Entry {
    std::uint32_t finding;
    std::uint32_t part;   // of the switches or ports that it names
    std::uint32_t count;  // of uneven links: which number of links
  };
  using Groups = std::map<std::pair<bool, std::uint64_t>, const FTNeighborhood*>;

  void Add(std::uint32_t finding, std::size_t parts, std::uint32_t count = 0);
  void AddGroups(Fault& fault) const;

  const FindingList* findings_ = nullptr;
  std::shared_ptr<const Groups> groups_;  // by what they are called and their number
  std::vector<Entry> entries_;
};

}  // namespace fabscope::internal
