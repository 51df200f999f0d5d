#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "fabric/ib_node.h"

namespace fabscope::internal {

// The host that an adapter's description begins with ("node17" of "node17 mlx5_0"); nothing where
// that word cannot be the name of a host.
std::optional<std::string> SlurmHostName(std::string_view description);

// Names as Slurm's host lists have them, sorted, with numbers in ranges where the ranges give the
// names back to the letter: "host[1-4,7],node[001-064]".
std::string SlurmHostList(const std::vector<std::string>& names);

// Names under which Slurm knows switches. It takes each but once, and letters, digits, '-' and '_'
// mean nothing else there: whatever stands between them becomes one '_', and switches that then
// share a name have their GUID behind it.
class SlurmSwitchNames {
 public:
  // For those switches, and no other than these names.
  SlurmSwitchNames(const std::vector<const IBNode*>& switches, std::set<std::string> taken);

  const std::string& Of(const IBNode& node) const { return names_.at(&node); }
  // Those that have another name in the fabric.
  std::vector<const IBNode*> GetRenamed() const;

 private:
  std::map<const IBNode*, std::string> names_;
};

}  // namespace fabscope::internal
