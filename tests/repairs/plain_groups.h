#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <vector>

#include "repairs/plain_cabling.h"
#include "repairs/plain_repair.h"

namespace fabscope::internal::plain {

// Switches of two neighboring ranks that cables between these ranks connect.
struct Group {
  std::set<std::uint64_t> spines;
  std::set<std::uint64_t> lines;
  bool isProper = false;  // every spine has the same number of cables to every line
};

// All groups that have a cable. Ranks are those of the fabric's switches.
std::vector<Group> GroupsOf(const Fabric& fabric, const Cabling& cabling);

// Cables between switches that join no neighboring ranks. Those of two switches outside the tree
// are nobody's business.
Pairs StrayPairs(const Fabric& fabric, const Cabling& cabling);

// A proper tree has proper groups only, and no other cable.
bool IsProperTree(const Fabric& fabric, const Cabling& cabling);

std::map<std::uint64_t, int> RanksOf(const Fabric& fabric);

}  // namespace fabscope::internal::plain
