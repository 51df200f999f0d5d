#pragma once

#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "check/check.h"

namespace fabscope::internal {

// What building gave. A tree that was not built has a topology, too, for those who look for the
// cause.
struct BuiltTree {
  std::unique_ptr<FTTopology> topology;
  bool isBuilt = false;
  std::string output;   // what the stage wrote
  std::string message;  // why it was not built
  RootsUsed roots;      // all but the doubt
};

// Builds the tree of a fabric from the roots that the options ask for. Fabric and stream must
// outlive it; the stream is empty before and after.
BuiltTree BuildTree(const IBFabric& fabric, const CheckOptions& options,
                    std::ostringstream& stream);

}  // namespace fabscope::internal
