#pragma once

#include <map>
#include <string>
#include <vector>

#include "fat_tree/topology.h"

namespace fabscope::internal {

// The hosts of a tree, each once, by the switch that it stands under; switches are in model order,
// the hosts of one in that of their names.
struct SlurmHosts {
  std::map<const IBNode*, std::vector<std::string>> bySwitch;
  std::size_t count = 0;
  std::vector<std::string> losses;  // what Slurm is not told of the hosts and leaves, a line each
};

SlurmHosts PlaceSlurmHosts(const FTTopology& topology);

}  // namespace fabscope::internal
