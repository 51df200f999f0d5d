#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "fabric/ib_fabric.h"

namespace fabscope::internal {

// One end of a cable between switches: IBNode::index and port number.
struct CableEnd {
  std::uint32_t node = 0;
  std::uint8_t port = 0;

  friend bool operator==(const CableEnd&, const CableEnd&) = default;
};

// A cable between two switches. Where the two are on different ranks, `upper` is nearer to the
// roots; on one rank it is the earlier in the model.
struct RepairCable {
  CableEnd upper;
  CableEnd lower;

  friend bool operator==(const RepairCable&, const RepairCable&) = default;
};

// A cable as it is and as it should be. Without `before` it is a new one, without `after` it goes.
struct CableChange {
  std::optional<RepairCable> before;
  std::optional<RepairCable> after;

  friend bool operator==(const CableChange&, const CableChange&) = default;
};

// What the hands do. A swap changes two cables, which exchange one end each; a move changes one end
// of one cable.
enum class RepairAction { Swap, Move, Connect, Disconnect };

// How far a step may be trusted.
enum class RepairClass {
  Sure,    // proven, and the next best explanation costs at least two changes more
  Likely,  // proven, but the groups it touches are unusual or few cables speak for it
  Ask      // another repair is as good: see the alternatives
};

// Why a cable is wrong, as the tree sees it.
enum class RepairReason {
  WrongGroup,   // it leads into another group, while its own lacks one
  WrongSpine,   // inside its group: one cable too many to one spine, one too few to another
  SameRank,     // it joins two switches of one rank
  SkipsRank,    // it joins ranks that are not neighbors
  TooMany,      // more cables than the other pairs of the group have
  LinkLacking,  // all others of the group have a link here
  Exchanged,    // of a swap: each is plugged in where the other belongs
  Rotated,      // of several swaps: three or more cables are in each other's places
};

using CableChanges = std::vector<CableChange>;

struct RepairStep {
  RepairAction action{};
  RepairClass trust{};
  RepairReason reason{};
  CableChanges cables;  // two of a swap, else one
  // Other repairs that would do as well, best first; the step itself is not among them.
  std::vector<CableChanges> alternatives;
};

// What a person should know that no cable cures.
struct RepairNote {
  enum class Kind {
    DeadSwitch,        // `switches` all have `ports` empty where their siblings use them
    SelfLoop,          // a cable from a switch to itself: `switches` has that one, `ports` both
    HostsOnSpines,     // `switches` above the leaves lead to hosts
    UnusualGroup,      // a group is smaller or larger than those beside it, as if by design
    UncertainGroup,    // too much of the group is wrong to say what belongs where
    SwitchWithoutTree  // `switches` have no place in the tree
  };
  Kind kind{};
  int rank = -1;                        // of what is noted; -1 where it has none
  std::vector<std::uint32_t> switches;  // IBNode::index, ascending
  std::vector<std::uint8_t> ports;      // ascending
};

enum class RepairStatus {
  Clean,      // nothing to be done
  Repairs,    // there are steps
  Abstained,  // something is wrong, but what cannot be said: `message` tells why
};

// The ranks of a fabric's switches, however they were found.
struct TreeRanks {
  static constexpr int none = -1;
  std::vector<int> ofNode;  // by IBNode::index: 0 the roots; none: no switch, or not in the tree
  int levels = 0;
};

// What must be done so that a fabric is a proper fat tree: on each pair of neighboring ranks groups
// in which every spine has the same number of cables to every line, and no other cable.
struct RepairPlan {
  RepairStatus status = RepairStatus::Clean;
  std::string message;
  TreeRanks ranks;
  std::uint64_t misfits = 0;  // cables that must go and cables that lack
  // In an order in which they can be done one by one: each finds its cables and its free ports, and
  // leaves hosts a path as FindSafeOrder says.
  std::vector<RepairStep> steps;
  std::size_t lowerBound = 0;  // no plan for these groups has fewer steps
  std::vector<RepairNote> notes;
};

}  // namespace fabscope::internal
