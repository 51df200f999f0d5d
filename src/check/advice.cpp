// Why no tree was found, in the user's terms. The stage's message says what failed; the cause is
// looked for anew here, in the fabric:
//
// - no switch leads to a host, so there is no leaf to start from;
// - a leaf sees switches at a distance that no tree of 2, 3 or 4 levels has;
// - neither, and still the leaves do not agree on the roots.
//
// The cure is nearly always to name the roots.
//
// A tree that was built may still be a wrong one: leaves near a wrong cable agree on the same
// mistake. What it then looks like is known, too: a leaf among the roots leads to hosts, a middle
// switch among them reaches too far down, and a root in the middle of the tree has nothing below.

#include "check/advice.h"

#include <algorithm>
#include <cstddef>
#include <vector>

#include "check/root_names.h"
#include "fabric/guid.h"

namespace fabscope::internal {
namespace {

// The switch's name, and its GUID where another switch has the same name.
std::string NameOf(const IBFabric& fabric, const IBNode& node) {
  const bool isShared =
      std::any_of(fabric.switches.begin(), fabric.switches.end(),
                  [&](const IBNode* other) { return other != &node && other->name == node.name; });
  const std::string name(node.name);
  return isShared ? name + " (" + GuidText(node.guid) + ")" : name;
}

// What one leaf saw that no tree looks like, in words; empty when the leaves merely disagree. The
// search for roots is done again as the stage did it.
std::string StrangeSight(FTTopology& topology, const CheckOptions& options) {
  FTClassificationHandler handler;
  const IBFabric& fabric = topology.GetFabric();
  const IBNode* leaf = topology.GetFirstLeaf();
  for (int tries = 0; leaf != nullptr && tries <= options.retries; ++tries) {
    const std::string from = "from leaf " + NameOf(fabric, *leaf);
    FTClassification* seen = handler.GetNewClassification(topology);
    seen->Classify(*leaf);
    const int distance = seen->GetMaxDistance();
    if (distance != 2 && distance != 4 && distance != 6) {
      return from + " the farthest switch, " + NameOf(fabric, *seen->GetFarthestNode()) + ", is " +
             std::to_string(distance) +
             " hops away, but trees of 2, 3 and 4 levels have 2, 4 and 6; for other trees, ";
    }
    const int common = seen->GetMaxThresholdDistance();
    if (common != 2 && common != 4 && common != 6) {
      return from + " too few switches are " + std::to_string(distance) +
             " hops away to tell the height of the tree: ";
    }
    leaf = seen->GetLeafToClassify(handler.GetClassifications());
  }
  return {};
}

std::string AdviceOnAutomaticRoots(FTTopology& topology, const CheckOptions& options) {
  const IBFabric& fabric = topology.GetFabric();
  const std::string cure = NameTheRoots(fabric, topology.GetTreeLinks(), options.roots);
  if (topology.GetFirstLeaf() == nullptr) {
    return "no switch leads to a host: is this a dump without channel adapters? If so, " + cure;
  }
  const std::string strange = StrangeSight(topology, options);
  if (!strange.empty()) return strange + cure;
  return "the leaves do not agree on the roots: " + cure;
}

// The ranks of a tree that was built, and what looks wrong with them.
class RankDoubts {
 public:
  explicit RankDoubts(const FTTopology& topology)
      : fabric_(topology.GetFabric()),
        ranks_(topology.GetRankedSwitches()),
        links_(topology.GetTreeLinks()) {}

  // The first doubt in words; empty when there is none.
  std::string Tell() const {
    const std::vector<NodeSet>& sets = ranks_.Sets();
    for (const IBNode* root : sets.front()) {
      if (links_.HostCables(*root) != 0) return Name(*root) + " is a root but leads to hosts";
      if (ReachesBeyond(*root, 1)) {
        return Name(*root) + " is a root but has a cable to a switch of a rank below the next";
      }
    }
    for (std::size_t rank = 1; rank + 1 < sets.size(); ++rank) {
      for (const IBNode* node : sets[rank]) {
        if (ReachesBeyond(*node, static_cast<int>(rank))) continue;
        return Name(*node) + " is on rank " + std::to_string(rank) +
               " but has no cable to a switch of a rank below";
      }
    }
    return {};
  }

 private:
  std::string Name(const IBNode& node) const { return NameOf(fabric_, node); }
  bool ReachesBeyond(const IBNode& node, int rank) const {
    const auto links = links_.Of(node);
    return std::any_of(links.begin(), links.end(),
                       [&](const TreeLink& link) { return ranks_.RankOf(link.remote) > rank; });
  }

  const IBFabric& fabric_;
  const RankedSwitches& ranks_;
  const TreeLinks& links_;
};

}  // namespace

std::string AdviceOnBuilding(FTTopology& topology, const CheckOptions& options) {
  const IBFabric& fabric = topology.GetFabric();
  if (fabric.switches.size() < 2) return AdviceOnSize(fabric);
  switch (options.roots) {
    case RootsFrom::Smdb:
      return "no switch has rank 0: give the subnet manager's ranks with --ranks FILE, or let the "
             "roots be found by themselves";
    case RootsFrom::Regex:
      return "no switch name matches: " +
             NameTheRoots(fabric, topology.GetTreeLinks(), options.roots);
    case RootsFrom::Inferred:
      return "the cables do not look like a tree: " +
             NameTheRoots(fabric, topology.GetTreeLinks(), options.roots);
    case RootsFrom::Auto:
    case RootsFrom::Search:
      break;
  }
  return AdviceOnAutomaticRoots(topology, options);
}

std::string AdviceOnSize(const IBFabric& fabric) {
  if (fabric.switches.size() > 1) return {};
  return fabric.switches.empty() ? "no switch, nothing to check"
                                 : "only one switch, nothing to check";
}

std::string AdviceOnTree(const FTTopology& topology, RootsFrom method) {
  const IBFabric& fabric = topology.GetFabric();
  if (topology.GetRanks().empty() || fabric.switches.size() < 2) return {};
  const bool isNamed = method == RootsFrom::Smdb || method == RootsFrom::Regex;
  const std::string doubt = isNamed ? std::string() : RankDoubts(topology).Tell();
  if (!doubt.empty())
    return doubt + ": if the roots are wrong, " +
           NameTheRoots(fabric, topology.GetTreeLinks(), method);

  // Every plane is a tree of its own, and only that of the roots is checked.
  const NodeSet& roots = topology.GetRanks().front();
  const auto isOfTree = [&](const IBNode* node) {
    return roots.empty() || node->isVortaSwitch() ||
           node->isOnSamePlane((*roots.begin())->getSuitablePlane());
  };
  const auto isLeftOut = [&](const IBNode* node) {
    return topology.GetNodeRank(node) < 0 && isOfTree(node);
  };
  const auto first = std::find_if(fabric.switches.begin(), fabric.switches.end(), isLeftOut);
  if (first == fabric.switches.end()) return {};
  const auto count = std::count_if(first, fabric.switches.end(), isLeftOut);
  const auto all = std::count_if(fabric.switches.begin(), fabric.switches.end(), isOfTree);
  return std::to_string(count) + " of " + std::to_string(all) +
         " switches have no rank and were not checked, the first is " + NameOf(fabric, **first);
}

std::string AdviceOnNames(const CheckResult& result, const CheckOptions& options) {
  if (result.switchesOfSharedName == 0 || options.showGuid != 0) return {};
  return std::to_string(result.switchesOfSharedName) +
         " switches share their name with another switch: --show-guid node shows which is meant, "
         "--node-name-map FILE gives them names of their own";
}

}  // namespace fabscope::internal
