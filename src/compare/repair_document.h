#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "formats/diagnostics.h"
#include "repair/repair_plan.h"

namespace fabscope::internal {

// A plan of repairs as a file keeps it, for a day on which the fabric that it was made of is not at
// hand: switches are known by their GUID. docs/repair-plan.schema.json describes the file.

struct KeptEnd {
  std::uint64_t guid = 0;
  std::uint8_t port = 0;
  std::string name;  // as it was; empty when the file does not tell

  // A name may change, the cable's end stays.
  friend bool operator==(const KeptEnd& a, const KeptEnd& b) {
    return a.guid == b.guid && a.port == b.port;
  }
};

using KeptCable = std::array<KeptEnd, 2>;  // the upper end first

struct KeptChange {
  std::optional<KeptCable> before;
  std::optional<KeptCable> after;

  friend bool operator==(const KeptChange&, const KeptChange&) = default;
};

using KeptChanges = std::vector<KeptChange>;

struct KeptStep {
  std::uint32_t id = 0;  // rises from step to step
  RepairAction action{};
  RepairClass trust{};
  KeptChanges cables;  // at least one
  std::vector<KeptChanges> alternatives;
};

struct RepairDocument {
  std::string file;                     // as messages name it
  std::string fabric;                   // hash of the fabric that it was made of
  std::string status;                   // "clean", "repairs", "abstained" or "failed"
  std::string message;                  // what the status is due to
  std::vector<std::uint64_t> switches;  // of all ranks
  std::vector<KeptStep> steps;
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

}  // namespace fabscope::internal
