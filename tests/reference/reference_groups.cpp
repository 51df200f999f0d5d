#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "reference/reference_run.h"

namespace fabscope::internal::reference::detail {
namespace {

struct LinkIssue {
  int node1 = 0;
  int port1 = 0;
  int rank1 = 0;
  int node2 = 0;
  int port2 = 0;
  int rank2 = 0;
};

// Lower switches and the upper switches that they reach.
struct UpHopSet {
  std::set<int> ups;
  std::vector<int> downs;    // in the order in which they joined
  std::map<int, int> reach;  // by upper switch: how many of the lower ones reach it
  bool hasAbsorbed = false;
};

// All that is known about one pair of ranks while its groups are made. The key of a set is its
// upper switches as a binary number, the last switch of the rank first; sets keep the key that
// they began with.
struct RankPair {
  int upper = 0;
  std::map<std::string, UpHopSet> sets;
  std::set<std::pair<int, int>> connected;  // (upper, lower)
  std::vector<LinkIssue> issues;
};

std::string Key(const std::set<int>& upperRank, const std::set<int>& ups) {
  std::string digits;
  for (const int node : upperRank) digits += ups.contains(node) ? '1' : '0';
  digits += '0';  // for the place above the last switch, which nobody has
  return {digits.rbegin(), digits.rend()};
}

// False when a link between those two is known already, of this pair of ranks or of an earlier one.
bool AddIllegalLink(Run& run, RankPair& pair, const LinkIssue& issue) {
  const std::pair<int, int> nodes = std::minmax({issue.node1, issue.node2});
  if (!run.faultyPairs.insert(nodes).second) return false;
  pair.issues.push_back(issue);
  return true;
}

void AddLinksBetweenRoots(Run& run, RankPair& pair, int root) {
  for (const Cable& cable : SwitchCables(run, root)) {
    if (RankOf(run, cable.remoteNode) != 0) continue;
    const bool isNew =
        AddIllegalLink(run, pair, {root, cable.port, 0, cable.remoteNode, cable.remotePort, 0});
    run.Note(isNew ? "link between roots" : "link between roots known already");
    if (root == cable.remoteNode) run.Note("root cabled to itself");
  }
}

// The upper switches that a lower switch reaches, noting the links that should not be.
std::set<int> UpHops(Run& run, RankPair& pair, int lower) {
  std::set<int> ups;
  for (const Cable& cable : SwitchCables(run, lower)) {
    const int rank = RankOf(run, cable.remoteNode);
    if (rank == pair.upper + 1) {
      const bool isNew = AddIllegalLink(
          run, pair, {lower, cable.port, rank, cable.remoteNode, cable.remotePort, rank});
      run.Note(isNew ? "link inside the lower rank" : "link inside the lower rank known already");
      if (lower == cable.remoteNode) run.Note("lower switch cabled to itself");
    } else if (rank == pair.upper) {
      if (rank == 0) AddLinksBetweenRoots(run, pair, cable.remoteNode);
      if (!ups.insert(cable.remoteNode).second) run.Note("parallel cables make one up-hop");
      pair.connected.insert({cable.remoteNode, lower});
    } else if (rank == -1) {
      run.Note("link to a switch without rank ignored");
    } else if (rank != pair.upper + 2) {
      run.Note("link over more than one rank ignored");
    }
  }
  return ups;
}

void FillSets(Run& run, RankPair& pair, const std::set<int>& upperRank,
              const std::set<int>& lowerRank) {
  for (const int lower : lowerRank) {
    const std::set<int> ups = UpHops(run, pair, lower);
    if (ups.empty()) run.Note("lower switch without up-link");
    UpHopSet& set = pair.sets[Key(upperRank, ups)];
    if (!set.downs.empty()) run.Note("lower switches with the same up-hops share a set");
    set.ups = ups;
    set.downs.push_back(lower);
    for (const int up : ups) ++set.reach[up];
  }
}

// Only what the candidate has beyond the target counts, as a percentage of the target's size.
bool Accepts(Run& run, const UpHopSet& target, const UpHopSet& candidate) {
  int extra = 0;
  for (const int up : candidate.ups) {
    if (!target.ups.contains(up)) ++extra;
  }
  const int size = static_cast<int>(target.ups.size());
  const int ratio = size == 0 ? 0 : extra * 100 / size;
  const int limit = 100 - run.options.mergePercent;
  if (limit == ratio) run.Note("merge refused just at the limit");
  if (limit <= ratio) return false;
  run.Note(extra == 0 ? "merge of a part" : "merge with extra spines");
  if (candidate.ups.empty()) run.Note("merge of a set without upper switches");
  if (extra > 0 && candidate.ups.size() == static_cast<std::size_t>(extra)) {
    run.Note("merge of disjoint sets");
  }
  return true;
}

void Merge(UpHopSet& target, const UpHopSet& candidate) {
  target.ups.insert(candidate.ups.begin(), candidate.ups.end());
  target.downs.insert(target.downs.end(), candidate.downs.begin(), candidate.downs.end());
  for (const auto& [up, count] : candidate.reach) target.reach[up] += count;
  target.hasAbsorbed = true;
}

void MergeSets(Run& run, RankPair& pair) {
  auto candidate = pair.sets.begin();
  while (candidate != pair.sets.end()) {
    auto target = pair.sets.begin();
    while (target != pair.sets.end() &&
           (target == candidate || !Accepts(run, target->second, candidate->second))) {
      ++target;
    }
    if (target == pair.sets.end()) {
      if (pair.sets.size() > 1) run.Note("set that no other accepts");
      ++candidate;
      continue;
    }
    run.Note(target->first < candidate->first ? "merge into an earlier set"
                                              : "merge into a later set");
    if (candidate->second.hasAbsorbed) run.Note("set that has absorbed others is merged itself");
    Merge(target->second, candidate->second);
    candidate = pair.sets.erase(candidate);
  }
}

void AddCrossLinks(Run& run, RankPair& pair, int upper, const std::vector<int>& downs) {
  int cables = 0;
  for (const int lower : downs) {
    int cablesOfLower = 0;
    for (const Cable& cable : SwitchCables(run, lower)) {
      if (cable.remoteNode != upper) continue;
      pair.issues.push_back(
          {upper, cable.remotePort, pair.upper, lower, cable.port, pair.upper + 1});
      ++cablesOfLower;
    }
    if (cablesOfLower > 1) run.Note("each parallel cable is a cross link");
    cables += cablesOfLower;
  }
  if (cables > 1) run.Note("several cross links to one upper switch");
}

void TakeOutCrossLinks(Run& run, RankPair& pair, UpHopSet& set) {
  for (const auto& entry : pair.sets) {
    const UpHopSet& other = entry.second;
    if (&other == &set) continue;
    std::set<int> shared;
    for (const int up : set.ups) {
      if (other.ups.contains(up)) shared.insert(up);
    }
    for (const int up : shared) {
      const int own = set.reach.at(up);
      const int others = other.reach.at(up);
      if (others > 2 * own) {
        run.Note("cross link taken out");
        set.ups.erase(up);
        set.reach.erase(up);
        AddCrossLinks(run, pair, up, set.downs);
        if (set.ups.empty()) run.Note("set left without upper switches by cross links");
      } else {
        run.Note(others == 2 * own ? "shared switch kept at exactly twice" : "shared switch kept");
      }
    }
  }
}

const Group* FindGroup(Run& run, const std::vector<Group>& groups, int node, int rank) {
  for (const Group& group : groups) {
    if (group.spines.contains(node) || group.lines.contains(node)) return &group;
  }
  run.Note("faulty link to a switch in no group");
  run.errors += "The provided switch ( GUID: " + Guid(run.Node(node).guid) +
                " ) is not associated with any neighborhood on the rank: " + std::to_string(rank);
  return nullptr;
}

std::string InvalidLinkText(Run& run, const LinkIssue& issue, std::uint64_t id1, std::uint64_t id2,
                            bool areNeighborhoods) {
  const std::string end1 =
      "(" + NodeRecord(run, issue.node1) + " port: " + std::to_string(issue.port1) + ")";
  const std::string end2 =
      "(" + NodeRecord(run, issue.node2) + " port: " + std::to_string(issue.port2) + ")";
  const std::string kind = areNeighborhoods ? "neighborhood" : "connectivity group";
  if (id1 == id2) {
    run.Note("invalid link inside a " + kind);
    return (areNeighborhoods ? "Neighborhood " : "Connectivity group ") + std::to_string(id1) +
           " : invalid link between switches " + end1 + " and " + end2;
  }
  run.Note("invalid link between two " + kind + "s");
  return "Invalid link between " + kind + " " + std::to_string(id1) + " " + end1 + " and " +
         (areNeighborhoods ? "neighborhood " : "group ") + std::to_string(id2) + " " + end2;
}

bool ReportInvalidLinks(Run& run, const RankPair& pair, const std::vector<Group>& groups) {
  const bool areNeighborhoods = AreNeighborhoods(run, static_cast<std::size_t>(pair.upper));
  for (const LinkIssue& issue : pair.issues) {
    const Group* const group1 = FindGroup(run, groups, issue.node1, pair.upper);
    if (group1 == nullptr) return false;
    const Group* const group2 = FindGroup(run, groups, issue.node2, pair.upper);
    if (group2 == nullptr) return false;
    const bool areRoots = issue.rank1 == 0 && issue.rank2 == 0;
    run.Note(areRoots ? "invalid link of the mild level" : "invalid link of the full level");
    run.records.push_back({false, areRoots ? 2 : 3,
                           InvalidLinkText(run, issue, group1->id, group2->id, areNeighborhoods)});
  }
  return true;
}

void ReportMissingLinks(Run& run, const RankPair& pair, const Group& group) {
  const bool isNeighborhood = AreNeighborhoods(run, group.rank);
  for (const int spine : group.spines) {
    for (const int line : group.lines) {
      if (pair.connected.contains({spine, line})) continue;
      run.Note(isNeighborhood ? "missing link in a neighborhood"
                              : "missing link in a connectivity group");
      run.records.push_back({true, 3,
                             (isNeighborhood ? "Neighborhood " : "Connectivity group ") +
                                 std::to_string(group.id) + ": missing link between switches (" +
                                 NodeRecord(run, spine) + ") and (" + NodeRecord(run, line) + ")"});
    }
  }
}

std::vector<Group> GroupsOfSets(Run& run, const RankPair& pair) {
  const auto rank = static_cast<std::size_t>(pair.upper);
  std::set<int> spines;
  std::vector<Group> groups;
  for (const auto& entry : pair.sets) {
    const UpHopSet& set = entry.second;
    Group group;
    group.id = AreNeighborhoods(run, rank) ? run.neighborhoodCount++ : run.groupCount++;
    group.rank = rank;
    group.spines = set.ups;
    group.lines.insert(set.downs.begin(), set.downs.end());
    if (group.spines.empty()) run.Note("group without spines");
    for (const int spine : group.spines) {
      if (!spines.insert(spine).second) run.Note("spine of two groups");
    }
    groups.push_back(group);
  }
  if (groups.size() > 1) {
    run.Note(AreNeighborhoods(run, rank) ? "several neighborhoods" : "several connectivity groups");
  }
  if (spines.size() < run.ranks[rank].size()) run.Note("upper switch in no group");
  return groups;
}

}  // namespace

bool MakeGroups(Run& run, std::size_t rank) {
  const std::set<int>& upperRank = run.ranks[rank];
  const std::set<int>& lowerRank = run.ranks[rank + 1];
  if (upperRank.empty()) run.Note("rank without switches");
  if (upperRank.size() > 2048) {
    run.Note("more than 2048 upper switches");
    run.errors += "Bit-set is too short to story " + std::to_string(upperRank.size()) + "bits";
    return false;
  }
  if (upperRank.size() == 2048) run.Note("exactly 2048 upper switches");

  RankPair pair;
  pair.upper = static_cast<int>(rank);
  FillSets(run, pair, upperRank, lowerRank);
  MergeSets(run, pair);
  for (auto& entry : pair.sets) TakeOutCrossLinks(run, pair, entry.second);

  const std::vector<Group> groups = GroupsOfSets(run, pair);
  if (!ReportInvalidLinks(run, pair, groups)) return false;
  for (const Group& group : groups) ReportMissingLinks(run, pair, group);
  run.groups[rank] = groups;
  return true;
}

}  // namespace fabscope::internal::reference::detail
