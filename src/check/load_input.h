#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "check/check.h"
#include "fabric/ib_fabric.h"
#include "formats/diagnostics.h"

namespace fabscope::internal {

// A fabric and what its side files say of it, as the options name them.
struct LoadedInput {
  MaybeError error;  // the fabric is null then
  std::unique_ptr<IBFabric> fabric;
  std::vector<std::string> warnings;  // oddities of the files, a line each
  // How many switches a name alone does not tell from another switch.
  std::size_t switchesOfSharedName = 0;
};

LoadedInput LoadInput(const CheckOptions& options);

}  // namespace fabscope::internal
