#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "check/check.h"

namespace fabscope::internal {

// A tree that was validated, as the tree plugin of Slurm takes it: leaves with hosts,
// above them the groups that the check has found, above all of them one root.
struct SlurmTopology {
  struct Switch {
    std::string name;
    std::vector<std::string> groups;    // that it stands for: "neighborhood-0"; none for a leaf
    std::vector<std::string> hosts;     // of a leaf
    std::vector<std::string> switches;  // right below any other
  };

  std::vector<Switch> switches;  // each behind those below it; empty when no host is on the tree
  std::size_t hosts = 0;
  std::vector<std::string> losses;  // what of the fabric Slurm is not told, a line each
};

SlurmTopology MakeSlurmTopology(const FTTopology& tree);

// Writes that of a check as the file topology.conf of Slurm.
void WriteSlurmTopology(const CheckResult& result, const SlurmTopology& topology,
                        std::ostream& stream);

}  // namespace fabscope::internal
