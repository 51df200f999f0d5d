#pragma once

#include <set>
#include <string>
#include <vector>

#include "synthetic/fabric_plan.h"

namespace fabscope::internal {

// The names of a tree's switches, by rank. A name stands once for each switch that bears it.
using RankNames = std::vector<std::multiset<std::string>>;

// What one run over a plan found.
struct TreeRun {
  std::string message;  // why the tree was not built; empty when it was
  RankNames ranks;
  // Everything printed behind the line that tells how the roots were found, with the dump and the
  // error records. Groups are numbered from 0.
  std::string report;
};

// The roots found by themselves, with the options' defaults.
TreeRun RunByDefault(const FabricPlan& plan);
// The roots taken from the ranks that the plan's nodes were meant to have.
TreeRun RunWithTrueRanks(const FabricPlan& plan);

// The ranks that the plan's switches were meant to have, without those that are gone.
RankNames TrueRanks(const FabricPlan& plan);

}  // namespace fabscope::internal
