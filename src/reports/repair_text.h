#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "fabric/ib_fabric.h"
#include "repair/repair_plan.h"

namespace fabscope::internal {

// Switches as the check's report names them, with the GUID behind the name where that would not
// tell a switch from another.
class SwitchNames {
 public:
  // The fabric must outlive it; see GetNodeRecord for `showGuid`.
  SwitchNames(const IBFabric& fabric, int showGuid);

  const IBNode& NodeOf(std::uint32_t index) const { return fabric_.GetNodes()[index]; }
  std::string Of(const IBNode& node) const;
  // "leaf-1 port 7"
  std::string Of(const IBNode& node, std::uint8_t port) const;
  std::string Of(const CableEnd& end) const { return Of(NodeOf(end.node), end.port); }

 private:
  const IBFabric& fabric_;
  int showGuid_;
  std::map<std::string, std::size_t> counts_;  // of switches, by name
};

// What one pair of hands does to one end of a cable. Without `from` the cable is a new one, without
// `to` it goes.
struct Handling {
  CableEnd kept;
  std::optional<CableEnd> from;
  std::optional<CableEnd> to;
};

// Two when both ends of a cable change, else one.
std::vector<Handling> HandlingsOf(const CableChange& change);

// What a step does, for the person in the machine room: "swap   leaf-1 port 3 and leaf-2 port 3 at
// their upper ends: spine-1 port 1 <-> spine-2 port 1".
std::string StepText(const CableChanges& cables, const TreeRanks& ranks, const SwitchNames& names);

// Why, in a sentence.
std::string ReasonText(const RepairStep& step, const SwitchNames& names);

// A note in a line. Of many switches the first few are named.
std::string NoteText(const RepairNote& note, const SwitchNames& names);

// What programs know a note by: "dead-switch".
const char* KindOf(const RepairNote& note);

// "3 repairs (2 sure, 1 likely)".
std::string CountText(const std::vector<RepairStep>& steps);

}  // namespace fabscope::internal
