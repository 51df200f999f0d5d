#include <algorithm>
#include <cstddef>
#include <deque>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "reference/reference_run.h"

namespace fabscope::internal::reference::detail {
namespace {

// Of a leaf: cables to hosts, then cables to switches. The greatest pair is the most leaf-like.
using LeafData = std::pair<int, int>;

struct Classification {
  std::map<int, std::vector<int>> classes;  // by distance, in the order in which they were reached
  std::map<int, int> distances;             // by switch
  int maxDistance = 0;
  int maxThresholdDistance = 0;
  std::vector<std::set<int>> ranks;
};

std::map<int, LeafData> CollectLeafData(Run& run) {
  std::map<int, LeafData> leaves;
  for (int node = 0; node < run.NodeCount(); ++node) {
    if (run.Node(node).type != 2) continue;
    LeafData data{0, 0};
    for (const Cable& cable : CountedCables(run, node)) {
      const PlainNode& remote = run.Node(cable.remoteNode);
      if (remote.type == 1 && remote.special) run.Note("special host makes no leaf");
      if (remote.type == 1 && !remote.special) ++data.first;
      if (remote.type == 2) ++data.second;
    }
    if (data.first > 0) leaves[node] = data;
  }
  return leaves;
}

// The most leaf-like switch, among equals the last; -1 when there is none.
int FirstLeaf(Run& run, const std::map<int, LeafData>& leaves) {
  int best = -1;
  for (const auto& [node, data] : leaves) {
    if (best >= 0 && data < leaves.at(best)) continue;
    if (best >= 0 && data == leaves.at(best)) run.Note("last of equal leaves comes first");
    if (best >= 0 && data.first == leaves.at(best).first && data.second > leaves.at(best).second) {
      run.Note("more switch links make the better leaf");
    }
    best = node;
  }
  return best;
}

void Search(Run& run, Classification& c, int leaf) {
  const int plane = run.Node(leaf).suitablePlane;
  std::deque<std::pair<int, int>> queue = {{leaf, 0}};
  while (!queue.empty()) {
    const auto [node, distance] = queue.front();
    queue.pop_front();
    if (c.distances.contains(node)) continue;
    c.distances[node] = distance;
    c.classes[distance].push_back(node);
    for (const Cable& cable : SwitchCables(run, node)) {
      const bool isOffPlane = !IsOnPlane(run.Node(cable.remoteNode), plane);
      if (isOffPlane && run.Node(node).multiAsic) {
        run.Note("search kept on the plane at a multi-ASIC switch");
        continue;
      }
      if (isOffPlane) run.Note("search leaves the plane at an ordinary switch");
      if (!c.distances.contains(cable.remoteNode)) {
        queue.emplace_back(cable.remoteNode, distance + 1);
      }
    }
  }
  c.maxDistance = c.classes.rbegin()->first;
}

int Threshold(Run& run, const Classification& c) {
  const std::size_t count = c.distances.size();
  if (count > 1000) {
    run.Note("threshold for more than 1000 switches");
    return run.Node(c.distances.begin()->first).numPorts / 2;
  }
  if (count > 100) {
    run.Note("threshold for 101 to 1000 switches");
    return 10;
  }
  if (count > 50) {
    run.Note("threshold for 51 to 100 switches");
    return 4;
  }
  if (count > 25) {
    run.Note("threshold for 26 to 50 switches");
    return 2;
  }
  if (count > 5) {
    run.Note("threshold for 6 to 25 switches");
    return 1;
  }
  run.Note("threshold for up to 5 switches");
  return 0;
}

void SetMaxThresholdDistance(Run& run, Classification& c) {
  const int threshold = Threshold(run, c);
  for (const auto& [distance, nodes] : c.classes) {
    if (static_cast<int>(nodes.size()) > threshold) c.maxThresholdDistance = distance;
  }
  if (c.maxThresholdDistance < c.maxDistance) {
    run.Note("greatest distance has too few switches");
  }
}

// Whether a neighbour of the switch lies at some known distance other than that one.
bool HasNeighbourBeside(Run& run, const Classification& c, int node, int distance) {
  for (const Cable& cable : SwitchCables(run, node)) {
    const auto known = c.distances.find(cable.remoteNode);
    if (known == c.distances.end()) {
      run.Note("neighbour without distance passed over");
    } else if (known->second != distance) {
      return true;
    }
  }
  return false;
}

bool AllNeighboursOnRank(Run& run, const Classification& c, int node, std::size_t rank) {
  return std::ranges::all_of(SwitchCables(run, node), [&](const Cable& cable) {
    return c.ranks[rank].contains(cable.remoteNode);
  });
}

void AddClass(Classification& c, int distance, std::size_t rank) {
  for (const int node : c.classes[distance]) c.ranks[rank].insert(node);
}

void SetTwoLevels(Classification& c) {
  c.ranks.resize(2);
  AddClass(c, 0, 1);
  AddClass(c, 2, 1);
  AddClass(c, 1, 0);
}

void SetThreeLevels(Run& run, Classification& c) {
  c.ranks.resize(3);
  AddClass(c, 0, 2);
  AddClass(c, 4, 2);
  AddClass(c, 1, 1);
  AddClass(c, 3, 1);
  for (const int node : c.classes[2]) {
    const bool isRoot = HasNeighbourBeside(run, c, node, 1);
    run.Note(isRoot ? "three levels: distance 2 is a root" : "three levels: distance 2 is a leaf");
    c.ranks[isRoot ? 0 : 2].insert(node);
  }
}

void SetFourLevels(Run& run, Classification& c) {
  c.ranks.resize(4);
  AddClass(c, 0, 3);
  AddClass(c, 6, 3);
  AddClass(c, 1, 2);
  AddClass(c, 5, 2);
  for (const int distance : {2, 4}) {
    for (const int node : c.classes[distance]) {
      const bool isUpper = HasNeighbourBeside(run, c, node, distance - 1);
      run.Note("four levels: distance " + std::to_string(distance) +
               (isUpper ? " is on rank 1" : " is a leaf"));
      c.ranks[isUpper ? 1 : 3].insert(node);
    }
  }
  for (const int node : c.classes[3]) {
    const bool isRoot = AllNeighboursOnRank(run, c, node, 1);
    run.Note(isRoot ? "four levels: distance 3 is a root" : "four levels: distance 3 is on rank 2");
    c.ranks[isRoot ? 0 : 2].insert(node);
  }
}

Classification Classify(Run& run, int leaf) {
  Classification c;
  Search(run, c, leaf);
  SetMaxThresholdDistance(run, c);
  if (c.maxDistance == 2) {
    run.Note("classification of two levels");
    SetTwoLevels(c);
  } else if (c.maxDistance == 4) {
    run.Note("classification of three levels");
    SetThreeLevels(run, c);
  } else if (c.maxDistance == 6) {
    run.Note("classification of four levels");
    SetFourLevels(run, c);
  } else {
    run.Note("classification of another height has no ranks");
  }
  return c;
}

bool AreEqual(Run& run, const Classification& a, const Classification& b) {
  if (a.ranks.empty() || b.ranks.empty()) {
    run.Note("classification without ranks equals nothing");
    return false;
  }
  if (a.ranks.size() != b.ranks.size()) {
    run.Note("classifications of different heights");
    return false;
  }
  if (a.ranks.front() != b.ranks.front()) {
    run.Note("classifications with different roots");
    return false;
  }
  if (a.ranks.back() != b.ranks.back()) {
    run.Note("classifications with equal roots and different leaves");
    return false;
  }
  run.Note(a.ranks == b.ranks ? "equal classifications"
                              : "equal classifications with different ranks in between");
  return true;
}

// How many of all classifications equal the last one, itself included.
int CountEqualsOfLast(Run& run, const std::vector<Classification>& all) {
  int count = 1;
  for (std::size_t i = 0; i + 1 < all.size(); ++i) {
    if (AreEqual(run, all.back(), all[i])) ++count;
  }
  return count;
}

// Whether the switch is far from the leaf of that classification; nothing when that does not know
// the switch.
std::optional<bool> IsFar(Run& run, const Classification& c, int node) {
  const auto known = c.distances.find(node);
  if (known == c.distances.end()) return std::nullopt;
  if (known->second >= c.maxThresholdDistance) return true;
  if (known->second == 4 && c.maxThresholdDistance == 6) {
    run.Note("distance 4 of 6 is far");
    return true;
  }
  run.Note("candidate near an earlier leaf");
  return false;
}

// The next leaf, far from all used before, or -1 with the reason.
int NextLeaf(Run& run, const std::vector<Classification>& all,
             const std::map<int, LeafData>& leaves, std::string& reason) {
  const Classification& last = all.back();
  const int distance = last.maxThresholdDistance;
  if (distance != 2 && distance != 4 && distance != 6) {
    run.Note("unexpected greatest distance");
    reason = "Wrong Classification. Unexpected maximal distance: " + std::to_string(distance);
    return -1;
  }
  const std::vector<int>& candidates = last.classes.at(distance);
  std::map<LeafData, std::vector<int>> byData;
  for (const int node : candidates) {
    if (leaves.contains(node)) {
      byData[leaves.at(node)].push_back(node);
    } else {
      run.Note("candidate without hosts");
    }
  }
  for (auto alike = byData.rbegin(); alike != byData.rend(); ++alike) {
    for (const int node : alike->second) {
      // All earlier ones are asked, the latest first, even when one has already said no: one that
      // does not know the candidate ends everything.
      bool agreed = true;
      for (std::size_t i = all.size() - 1; i-- > 0;) {
        const std::optional<bool> isFar = IsFar(run, all[i], node);
        if (!isFar) {
          run.Note(agreed ? "candidate that an earlier leaf did not reach"
                          : "candidate that an earlier leaf did not reach after one said no");
          reason =
              "Cannot find a next leaf to classify. Failed to find a distance to the Switch "
              "(GUID: " +
              Guid(run.Node(node).guid) + ")";
          return -1;
        }
        if (!*isFar) agreed = false;
      }
      if (agreed) {
        if (alike != byData.rbegin()) run.Note("next leaf is not of the most leaf-like");
        return node;
      }
    }
  }
  run.Note(byData.empty() ? "no candidate has hosts" : "no candidate is far from all");
  reason = "Failed to find next leaf to classify out of " + std::to_string(candidates.size()) +
           " possible nodes";
  return -1;
}

}  // namespace

std::optional<std::string> BuildByClassification(Run& run) {
  const std::string prefix = "Cannot build Fat-Tree topology. ";
  if (run.options.showGuid == 1) {
    run.Note("output format of system GUIDs");
    run.out += "#Output format: System GUID(/Switch ASIC) -- Node Name\n\n";
  } else if (run.options.showGuid == 2) {
    run.Note("output format of node GUIDs");
    run.out += "#Output format: Node GUID -- Node Name\n\n";
  }
  run.out += "-I- Detecting roots by distance classifications\n";

  const std::map<int, LeafData> leaves = CollectLeafData(run);
  const int first = FirstLeaf(run, leaves);
  if (first < 0) {
    run.Note("no leaf switch");
    return prefix + "Failed to find a leaf switch to classify";
  }
  std::vector<Classification> all = {Classify(run, first)};
  for (int tries = 0; tries < run.options.retries; ++tries) {
    std::string reason;
    const int next = NextLeaf(run, all, leaves, reason);
    if (next < 0) return prefix + reason;
    all.push_back(Classify(run, next));
    if (CountEqualsOfLast(run, all) == run.options.equal) {
      if (tries > 0) run.Note("agreed after more than one try");
      if (all.back().ranks.empty()) run.Note("classification without ranks accepted");
      run.ranks = all.back().ranks;
      return std::nullopt;
    }
  }
  run.Note(run.options.retries > 0 ? "too few equal classifications" : "no retries allowed");
  run.errors += prefix + "Failed to find " + std::to_string(run.options.equal) +
                " equal Classifications out of " + std::to_string(run.options.retries) + " retries";
  return run.errors;
}

}  // namespace fabscope::internal::reference::detail
