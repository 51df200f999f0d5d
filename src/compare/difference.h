#pragma once

#include <optional>
#include <string>
#include <vector>

#include "compare/fabric_changes.h"
#include "compare/finding_changes.h"
#include "compare/plan_progress.h"

namespace fabscope::internal {

// All that is different between two dumps of a fabric. It points into the two fabrics and into what
// was found of them.
struct Difference {
  std::string oldName;  // as the user named them
  std::string newName;
  int showGuid = 0;  // how texts name switches
  const IBFabric& was;
  const IBFabric& is;
  FabricChanges fabric;
  std::optional<FindingChanges> findings;  // none when one of them could not be checked
  std::string message;                     // why not
  // What was done of a plan; none when there is no plan.
  std::optional<std::vector<StepProgress>> plan{};

  bool IsEmpty() const {
    return fabric.IsEmpty() &&
           (!findings || (findings->cured.empty() && findings->appeared.empty()));
  }
};

}  // namespace fabscope::internal
