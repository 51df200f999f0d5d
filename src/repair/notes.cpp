// A switch that is dead leaves a smaller tree without fault: nothing lacks in it but a port that
// all switches around the gap have empty and all others of their kind use. That is what is looked
// for where a group is smaller than most.

#include "repair/notes.h"

#include <algorithm>
#include <array>
#include <bitset>
#include <cstddef>
#include <map>

namespace fabscope::internal {
namespace {

using Ports = std::bitset<256>;

class NoteFinder {
 public:
  NoteFinder(const TreeGroups& groups, const Changes& changes)
      : groups_(groups),
        changes_(changes),
        members_(groups.pairs.size()),
        planned_(groups.graph.Count()) {
    for (const CableTarget& target : changes.targets) {
      for (const auto& end : {target.upper, target.lower}) {
        if (end) planned_[end->number].set(end->port);
      }
    }
  }

  std::vector<RepairNote> Find() {
    NoteLoops();
    NoteStrangers();
    NoteHostsOnSpines();
    for (std::size_t rank = 0; rank < groups_.pairs.size(); ++rank) {
      NoteGaps(rank, SpineSide);
      NoteGaps(rank, LineSide);
    }
    for (std::size_t rank = 0; rank < groups_.pairs.size(); ++rank) NoteUnusual(rank);
    NoteUncertain();
    for (RepairNote& note : notes_) std::sort(note.switches.begin(), note.switches.end());
    return std::move(notes_);
  }

 private:
  std::uint32_t IndexOf(std::uint32_t number) const { return groups_.graph.NodeOf(number).index; }
  void NoteLoops();
  void NoteStrangers();
  void NoteHostsOnSpines();
  void NoteGaps(std::size_t rank, Side missing);
  static std::vector<std::size_t> GroupsWithBothSides(const Grouping& grouping);
  static std::uint32_t UsualSize(const Grouping& grouping, Side side);
  Ports PortsOfMost(const std::vector<std::uint32_t>& switches, int farRank) const;
  Ports EmptyAtAll(const std::vector<std::uint32_t>& switches) const;
  void NoteUnusual(std::size_t rank);
  void NoteGroup(RepairNote::Kind kind, int rank, int group);
  const std::vector<std::vector<std::uint32_t>>& MembersOf(int upperRank);
  void NoteUncertain();

  const TreeGroups& groups_;
  const Changes& changes_;
  // By upper rank, once they were asked for: by group.
  std::vector<std::vector<std::vector<std::uint32_t>>> members_;
  std::vector<Ports> planned_;  // by switch: those that will be used
  std::vector<RepairNote> notes_;
};

void NoteFinder::NoteLoops() {
  for (const SwitchGraph::Cable& loop : groups_.graph.Loops()) {
    const auto [low, high] = std::minmax(loop.portA, loop.portB);
    notes_.push_back(
        {RepairNote::Kind::SelfLoop, groups_.ranks[loop.a], {IndexOf(loop.a)}, {low, high}});
  }
}

void NoteFinder::NoteStrangers() {
  RepairNote note{RepairNote::Kind::SwitchWithoutTree, -1, {}, {}};
  for (std::uint32_t i = 0; i < groups_.graph.Count(); ++i) {
    // A switch without hosts that leads nowhere is not in use.
    const bool isAlone = groups_.graph.CablesOf(i).empty();
    const bool isLost = isAlone ? groups_.graph.Hosts(i) != 0 && groups_.LastRank() > 0
                                : groups_.ranks[i] == TreeRanks::none;
    if (!isLost) continue;
    note.switches.push_back(IndexOf(i));
  }
  if (!note.switches.empty()) notes_.push_back(std::move(note));
}

void NoteFinder::NoteHostsOnSpines() {
  std::map<int, std::vector<std::uint32_t>> byRank;
  for (std::uint32_t i = 0; i < groups_.graph.Count(); ++i) {
    const int rank = groups_.ranks[i];
    if (rank < 0 || rank >= groups_.LastRank() || groups_.graph.Hosts(i) == 0) continue;
    byRank[rank].push_back(IndexOf(i));
  }
  for (auto& [rank, switches] : byRank) {
    notes_.push_back({RepairNote::Kind::HostsOnSpines, rank, std::move(switches), {}});
  }
}

// `missing`: the side of which a group has fewer than most groups of the pair.
void NoteFinder::NoteGaps(std::size_t rank, Side missing) {
  const Grouping& grouping = groups_.groupings[rank];
  const std::uint32_t usual = UsualSize(grouping, missing);
  if (usual == 0) return;
  const Side around = OtherSide(missing);
  const RankPair& pair = groups_.pairs[rank];
  const auto& switches = around == SpineSide ? pair.Spines() : pair.Lines();
  std::vector<std::vector<std::uint32_t>> members(grouping.Count());
  for (std::size_t i = 0; i < switches.size(); ++i) {
    const int group = grouping.groupOf[around][i];
    if (group != Grouping::none) members[static_cast<std::size_t>(group)].push_back(switches[i]);
  }
  const int farRank = static_cast<int>(rank) + (missing == SpineSide ? 0 : 1);
  std::vector<std::uint32_t> whole;  // in groups of the usual size
  for (std::size_t group = 0; group < members.size(); ++group) {
    if (grouping.size[missing][group] != usual) continue;
    whole.insert(whole.end(), members[group].begin(), members[group].end());
  }
  const Ports used = PortsOfMost(whole, farRank);
  for (std::size_t group = 0; group < members.size(); ++group) {
    if (grouping.size[missing][group] >= usual || members[group].empty()) continue;
    const Ports gap = used & EmptyAtAll(members[group]);
    if (gap.none()) continue;
    RepairNote note{RepairNote::Kind::DeadSwitch, farRank, {}, {}};
    for (std::size_t port = 1; port < gap.size(); ++port) {
      if (gap.test(port)) note.ports.push_back(static_cast<std::uint8_t>(port));
    }
    for (const std::uint32_t number : members[group]) note.switches.push_back(IndexOf(number));
    notes_.push_back(std::move(note));
  }
}

// Groups lose switches to others, and some of them all.
std::vector<std::size_t> NoteFinder::GroupsWithBothSides(const Grouping& grouping) {
  std::vector<std::size_t> groups;
  for (std::size_t group = 0; group < grouping.Count(); ++group) {
    if (grouping.size[SpineSide][group] != 0 && grouping.size[LineSide][group] != 0) {
      groups.push_back(group);
    }
  }
  return groups;
}

// What half of the groups, and more than one, have of a side; 0 if they do not agree.
std::uint32_t NoteFinder::UsualSize(const Grouping& grouping, Side side) {
  const std::vector<std::size_t> groups = GroupsWithBothSides(grouping);
  std::map<std::uint32_t, std::size_t> sizes;
  for (const std::size_t group : groups) ++sizes[grouping.size[side][group]];
  std::uint32_t usual = 0;
  std::size_t most = 0;
  for (const auto& [size, times] : sizes) {
    if (times >= most) most = times, usual = size;
  }
  return most < 2 || 2 * most < groups.size() ? 0 : usual;
}

// Ports that lead to that rank on four of five of the switches.
Ports NoteFinder::PortsOfMost(const std::vector<std::uint32_t>& switches, int farRank) const {
  std::array<std::size_t, 256> uses{};
  for (const std::uint32_t number : switches) {
    for (const std::uint32_t i : groups_.graph.CablesOf(number)) {
      const SwitchGraph::Cable& cable = groups_.graph.Cables()[i];
      if (groups_.ranks[cable.Other(number)] == farRank) ++uses.at(cable.PortAt(number));
    }
  }
  Ports ports;
  for (std::size_t port = 1; port < uses.size(); ++port) {
    ports.set(port, !switches.empty() && 5 * uses.at(port) >= 4 * switches.size());
  }
  return ports;
}

// Ports that are empty on all of the switches, and will be.
Ports NoteFinder::EmptyAtAll(const std::vector<std::uint32_t>& switches) const {
  Ports empty;
  empty.set();
  for (const std::uint32_t number : switches) {
    const IBNode& node = groups_.graph.NodeOf(number);
    for (const IBPort& port : node.ports) {
      const bool isSpoiled = port.fnm || port.fnm1 || !port.symmetric;
      if (port.remotePort != nullptr || isSpoiled) empty.reset(port.num);
    }
    for (std::size_t port = node.numPorts + std::size_t{1}; port < empty.size(); ++port) {
      empty.reset(port);
    }
    empty &= ~planned_[number];
  }
  return empty;
}

// Groups with other numbers of parallel cables than nearly all others.
void NoteFinder::NoteUnusual(std::size_t rank) {
  const Grouping& grouping = groups_.groupings[rank];
  const std::vector<std::size_t> groups = GroupsWithBothSides(grouping);
  std::map<std::uint32_t, std::size_t> times;
  for (const std::size_t group : groups) ++times[grouping.multiplicity[group]];
  for (const std::size_t group : groups) {
    if (3 * times[grouping.multiplicity[group]] > groups.size()) continue;
    NoteGroup(RepairNote::Kind::UnusualGroup, static_cast<int>(rank), static_cast<int>(group));
  }
}

void NoteFinder::NoteGroup(RepairNote::Kind kind, int rank, int group) {
  const auto& members = MembersOf(rank);
  notes_.push_back({kind, rank, members[static_cast<std::size_t>(group)], {}});
}

// By group of the pair: the switches.
const std::vector<std::vector<std::uint32_t>>& NoteFinder::MembersOf(int upperRank) {
  std::vector<std::vector<std::uint32_t>>& members = members_[static_cast<std::size_t>(upperRank)];
  if (!members.empty()) return members;
  members.resize(groups_.groupings[static_cast<std::size_t>(upperRank)].Count());
  for (std::uint32_t i = 0; i < groups_.graph.Count(); ++i) {
    if (groups_.ranks[i] != upperRank && groups_.ranks[i] != upperRank + 1) continue;
    const int group = groups_.ranks[i] == upperRank ? groups_.GroupBelow(i) : groups_.GroupAbove(i);
    if (group != Grouping::none) members[static_cast<std::size_t>(group)].push_back(IndexOf(i));
  }
  return members;
}

void NoteFinder::NoteUncertain() {
  for (const auto& [rank, group] : changes_.uncertain) {
    if (group != Grouping::none) NoteGroup(RepairNote::Kind::UncertainGroup, rank, group);
  }
}

}  // namespace

std::vector<RepairNote> FindNotes(const TreeGroups& groups, const Changes& changes) {
  return NoteFinder(groups, changes).Find();
}

}  // namespace fabscope::internal
