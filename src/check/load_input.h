#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "check/check.h"
#include "fabric/ib_fabric.h"
#include "formats/diagnostics.h"
#include "formats/locations.h"

namespace fabscope::internal {

// A fabric and what its side files say of it, as the options name them. Any number of checks may
// share the fabric.
struct LoadedInput {
  std::string name;  // of the fabric, as the user named it
  MaybeError error;  // the fabric is null then
  std::shared_ptr<const IBFabric> fabric;
  std::shared_ptr<const Locations> locations;  // null when none were given
  std::vector<std::string> warnings;           // oddities of the files, a line each
  // How many switches a name alone does not tell from another switch.
  std::size_t switchesOfSharedName = 0;
};

LoadedInput LoadInput(const CheckOptions& options);
// The same, but the fabric is a text, not packed; options.fabric is its name.
LoadedInput LoadInput(const CheckOptions& options, std::string text);

}  // namespace fabscope::internal
