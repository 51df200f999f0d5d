#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "fabric/ib_node.h"
#include "formats/diagnostics.h"

namespace fabscope::internal {

// Where a switch stands, as a site's own list has it.
struct Location {
  std::string rack;
  std::string unit;
  std::vector<std::string> more;  // by column
};

// Where switches stand: by node GUID, or else by name.
struct Locations {
  std::vector<std::string> moreColumns;  // those that this program does not know, in their order
  std::map<std::uint64_t, Location> byGuid;
  std::map<std::string, Location, std::less<>> byName;

  // Null where the list has neither the GUID nor the name.
  const Location* Of(const IBNode& node) const;
};

// Reads a list in CSV: a header line, then a line for each switch, with "#" comments and blank
// lines. Columns stand in any order: guid, name or both, rack, and, where there is one, unit; all
// others are kept as they are. A field with a comma stands in double quotes. Of two lines about one
// switch the last holds. GUIDs and names that no fabric has are welcome: a list usually serves a
// whole site.
MaybeError LoadLocations(const std::string& path, Locations& locations, Warnings& warnings);

}  // namespace fabscope::internal
