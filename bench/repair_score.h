#pragma once

#include <bitset>
#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "fabric/ib_fabric.h"
#include "labelled_fabric.h"
#include "repair/repair_plan.h"

namespace fabscope::internal {

// What can be said of one fabric after its repairs are held against its faults.
enum Mark : std::size_t {
  // Ranks of all switches that still have a cable of those that were meant.
  RanksOfPlan,    // as the repairs take them
  RanksInferred,  // before any repair
  RanksSearched,  // by the search for roots
  // The roots alone.
  RootsInferred,
  RootsSearched,
  PairsRight,    // after the steps the same pairs of switches are cabled as were meant
  PortsRight,    // on the same ports, too
  Proven,        // the check then finds no cable wrong
  ToldSure,      // every step is sure
  WrongSure,     // a sure step makes a pair that was not meant, or parts one that was
  ToldLikely,    // some step is likely, none worse
  ToldAsk,       // some step is one of several
  Abstained,     // no repair is told, though something is wrong
  ToldClean,     // nothing is told to be wrong
  Needless,      // there are steps where every cable is as it was meant
  NoteLacking,   // a dead switch is not told by its neighbors' empty ports
  CannotBeDone,  // some step finds its cable gone or its port taken
  MarkCount
};
using Marks = std::bitset<MarkCount>;

struct Judged {
  std::unique_ptr<IBFabric> fabric;
  RepairPlan plan;
  Marks marks;
};

// With `ranksOnly` no repair is looked for, and only the ranks inferred and searched are judged.
Judged Judge(const LabelledFabric& made, bool ranksOnly);

// What did not come out right; empty when all did.
std::vector<std::string> FailuresOf(Marks marks, bool ranksOnly);

}  // namespace fabscope::internal
