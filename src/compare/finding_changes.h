#pragma once

#include <cstddef>
#include <vector>

#include "compare/counterparts.h"
#include "compare/faults.h"

namespace fabscope::internal {

struct FindingChanges {
  FaultList cured;     // as they were, in the order of the old report
  FaultList appeared;  // as they are, in the order of the new report
};

// Faults are the same when they are of one kind and at the same places with the same counts of
// links. The numbers of groups do not matter, since they change when other groups come or go: two
// groups are the same when the first by GUID of their lines that are in both fabrics is. Both lists
// of findings must have all error records. What comes of it reads both checked fabrics.
FindingChanges CompareFindings(const CheckedFabric& was, const CheckedFabric& is,
                               const Counterparts& nodes);

// A finding none of whose faults is left.
struct GoneFinding {
  std::size_t place;  // among the findings as they were
  // Its faults in the list of those as they were: the first, and the one behind the last.
  std::size_t firstFault;
  std::size_t endFault;
};

// In the order of the old report. `faults` are all of the fabric as it was. Nothing is known to be
// gone when not all error records of the fabric as it is are listed.
std::vector<GoneFinding> FindGone(const CheckedFabric& was, const FaultList& faults,
                                  const CheckedFabric& is, const Counterparts& nodes);

}  // namespace fabscope::internal
