#pragma once

#include <cstdint>
#include <optional>
#include <set>
#include <string>

#include "reference/plain_fabric.h"

namespace fabscope::internal::reference {

// A second reading of what `check` promises, written as plainly as possible: integer indices, sets,
// maps and strings, no shortcut and no care for speed. Random fabrics go through both, and every
// difference is a fault of one of them.

struct ReferenceResult {
  int exitStatus = 0;
  std::string report;              // standard output of `check --dump -`
  std::optional<std::string> csv;  // absent: the tree was not built, no file is written
  std::string dump;                // empty unless validated
  std::string message;             // what follows "fabscope: " when not built or not validated
  std::set<std::string> reached;   // of AllRules(): those that this run went through
};

// The regular expression of the options must be one that compiles.
ReferenceResult ReferenceCheck(const PlainFabric& fabric, const PlainOptions& options);

// Every rule that some fabric and some options can reach, by a short name.
const std::set<std::string>& AllRules();

}  // namespace fabscope::internal::reference
