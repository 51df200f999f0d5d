#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

// A fabric and a plan of repairs as plain data: all that the verifier reads. Nothing of it comes
// from what finds repairs.
namespace fabscope::internal::plain {

struct Socket {
  std::uint64_t guid = 0;
  int port = 0;

  friend bool operator==(const Socket&, const Socket&) = default;
  friend bool operator<(const Socket& a, const Socket& b) {
    return std::tie(a.guid, a.port) < std::tie(b.guid, b.port);
  }
};

// A cable as a plan tells it.
struct Link {
  Socket upper;
  Socket lower;

  friend bool operator==(const Link&, const Link&) = default;
};

struct Switch {
  std::uint64_t guid = 0;
  int ports = 0;
  int rank = -1;  // -1: not in the tree
  bool hasHosts = false;

  friend bool operator==(const Switch&, const Switch&) = default;
};

struct Fabric {
  std::vector<Switch> switches;  // in model order
  // Cables that count for the tree, from both ends; those of a switch to itself are among them.
  std::map<Socket, Socket> cables;
  // Ports that hold anything else, hosts and cables that do not count, and empty ports at which a
  // cable would not count.
  std::set<Socket> taken;
  // Switches that are joined by cables which do not count.
  std::set<std::pair<std::uint64_t, std::uint64_t>> joinedOtherwise;
  // Of the cables that count, by end, and of empty ports that have a speed of their own.
  std::map<Socket, std::uint32_t> speeds;
};

enum class Action { Swap, Move, Connect, Disconnect };
enum class Trust { Sure, Likely, Ask };
enum class Reason {
  WrongGroup,
  WrongSpine,
  SameRank,
  SkipsRank,
  TooMany,
  LinkLacking,
  Exchanged,
  Rotated
};
enum class Status { Clean, Repairs, Abstained };
enum class NoteKind {
  DeadSwitch,
  SelfLoop,
  HostsOnSpines,
  UnusualGroup,
  UncertainGroup,
  SwitchWithoutTree
};

struct Change {
  std::optional<Link> before;
  std::optional<Link> after;

  friend bool operator==(const Change&, const Change&) = default;
};
using Changes = std::vector<Change>;

struct Step {
  Action action{};
  Trust trust{};
  Reason reason{};
  Changes changes;
  std::vector<Changes> alternatives;
};

struct Note {
  NoteKind kind{};
  int rank = -1;
  std::vector<std::uint64_t> switches;
  std::vector<int> ports;
};

// Of a fabric whose switches have the plan's ranks.
struct Plan {
  Status status = Status::Clean;
  std::string message;
  int levels = 0;
  std::uint64_t misfits = 0;
  std::vector<Step> steps;
  std::size_t lowerBound = 0;
  std::vector<Note> notes;
};

}  // namespace fabscope::internal::plain
