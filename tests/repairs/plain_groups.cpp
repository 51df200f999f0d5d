#include "repairs/plain_groups.h"

#include <algorithm>
#include <cstdlib>

namespace fabscope::internal::plain {
namespace {

// Takes all that is connected with the spine out of the pairs.
Group TakeGroup(std::uint64_t spine, Pairs& spineToLine) {
  Group group;
  group.spines.insert(spine);
  std::map<Pair, int> counts;
  bool grows = true;
  while (grows) {
    grows = false;
    for (auto pair = spineToLine.begin(); pair != spineToLine.end();) {
      if (!group.spines.contains(pair->first) && !group.lines.contains(pair->second)) {
        ++pair;
        continue;
      }
      group.spines.insert(pair->first);
      group.lines.insert(pair->second);
      ++counts[*pair];
      pair = spineToLine.erase(pair);
      grows = true;
    }
  }
  const int first = counts.begin()->second;
  const bool isEven = std::all_of(counts.begin(), counts.end(),
                                  [&](const auto& count) { return count.second == first; });
  group.isProper = isEven && counts.size() == group.spines.size() * group.lines.size();
  return group;
}

}  // namespace

std::map<std::uint64_t, int> RanksOf(const Fabric& fabric) {
  std::map<std::uint64_t, int> ranks;
  for (const Switch& node : fabric.switches) ranks[node.guid] = node.rank;
  return ranks;
}

std::vector<Group> GroupsOf(const Fabric& fabric, const Cabling& cabling) {
  const auto ranks = RanksOf(fabric);
  std::map<int, Pairs> spineToLine;  // by the rank of the spine
  for (const auto& [end, far] : cabling.Cables()) {
    const int rank = ranks.at(end.guid);
    if (rank >= 0 && ranks.at(far.guid) == rank + 1) {
      spineToLine[rank].insert({end.guid, far.guid});
    }
  }
  std::vector<Group> groups;
  for (auto& [rank, pairs] : spineToLine) {
    while (!pairs.empty()) groups.push_back(TakeGroup(pairs.begin()->first, pairs));
  }
  return groups;
}

Pairs StrayPairs(const Fabric& fabric, const Cabling& cabling) {
  const auto ranks = RanksOf(fabric);
  Pairs strays;
  for (const Pair& pair : cabling.PairsJoined()) {
    const int a = ranks.at(pair.first);
    const int b = ranks.at(pair.second);
    // Cables to switches outside the tree are told by a note.
    if (a < 0 || b < 0) continue;
    if (std::abs(a - b) != 1) strays.insert(pair);
  }
  return strays;
}

bool IsProperTree(const Fabric& fabric, const Cabling& cabling) {
  const std::vector<Group> groups = GroupsOf(fabric, cabling);
  return StrayPairs(fabric, cabling).empty() &&
         std::all_of(groups.begin(), groups.end(),
                     [](const Group& group) { return group.isProper; });
}

}  // namespace fabscope::internal::plain
