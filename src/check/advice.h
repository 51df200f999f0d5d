#pragma once

#include <string>

#include "check/check.h"

namespace fabscope::internal {

// What the user can do about a tree that could not be built: one line that fits the cause, with
// examples from this fabric's own names.
std::string AdviceOnBuilding(FTTopology& topology, const CheckOptions& options);

// That there is nothing to check, where there are not two switches; empty otherwise.
std::string AdviceOnSize(const IBFabric& fabric);

// What makes one doubt a tree that was built: roots that nobody has named and that do not look like
// roots, or switches that are not part of it. Empty when nothing does. Real faults look alike, so
// this is for people, never a finding.
std::string AdviceOnTree(const FTTopology& topology, RootsFrom method);

// How to tell switches apart that share a name; empty when names or GUIDs do.
std::string AdviceOnNames(const CheckResult& result, const CheckOptions& options);

}  // namespace fabscope::internal
