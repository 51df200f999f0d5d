#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "formats/diagnostics.h"
#include "repair/repair_plan.h"

namespace fabscope {

// A plan of repairs as a file keeps it, for a day on which the fabric that it was made of is not at
// hand: switches are known by their GUID. docs/repair-plan.schema.json describes the file.

struct PlannedEnd {
  std::uint64_t guid = 0;
  std::uint8_t port = 0;
  std::string name;  // as it was; empty when the file does not tell

  // A name may change, the cable's end stays.
  friend bool operator==(const PlannedEnd& a, const PlannedEnd& b) {
    return a.guid == b.guid && a.port == b.port;
  }
};

using PlannedCable = std::array<PlannedEnd, 2>;  // the upper end first

struct PlannedChange {
  std::optional<PlannedCable> before;
  std::optional<PlannedCable> after;

  friend bool operator==(const PlannedChange&, const PlannedChange&) = default;
};

using PlannedChanges = std::vector<PlannedChange>;

struct PlannedStep {
  std::uint32_t id = 0;  // rises from step to step
  RepairAction action{};
  RepairClass trust{};
  PlannedChanges cables;  // at least one
  std::vector<PlannedChanges> alternatives;
};

struct RepairDocument {
  std::string file;                     // as messages name it
  std::string fabric;                   // hash of the fabric that it was made of
  std::string status;                   // "clean", "repairs", "abstained" or "failed"
  std::string message;                  // what the status is due to
  std::vector<std::uint64_t> switches;  // of all ranks
  std::vector<PlannedStep> steps;
};

// The words of the file, in the order of the values.
inline constexpr std::array<const char*, 4> RepairActionNames{"swap", "move", "connect",
                                                              "disconnect"};
inline constexpr std::array<const char*, 3> RepairClassNames{"sure", "likely", "ask"};

inline const char* NameOf(RepairAction action) {
  return RepairActionNames.at(static_cast<std::size_t>(action));
}
inline const char* NameOf(RepairClass trust) {
  return RepairClassNames.at(static_cast<std::size_t>(trust));
}

// Reads a plan; "-" is standard input, and gzip is unpacked. Unknown and repeated keys, values of
// the wrong kind or out of range are errors, and so are a cable that leads to its own port, a step
// whose number does not rise, and one that repeats another. Of what is for people alone, such as
// reasons and notes, it only matters that it is well formed.
MaybeError LoadRepairDocument(const std::string& path, RepairDocument& plan);

}  // namespace fabscope
