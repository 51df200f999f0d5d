// A tree is proper when all lines of a group have the same cables to the same spines. So it is
// enough to compare each line with one that has a spine in common with it.

#include "repair/proper_tree.h"

#include <algorithm>
#include <cstdint>
#include <span>
#include <vector>

namespace fabscope::internal {
namespace {

// The spines of a line, one for each cable, ascending.
using Spines = std::span<const std::uint32_t>;

bool HasEachAsOften(Spines spines) {
  const auto first = static_cast<std::size_t>(
      std::upper_bound(spines.begin(), spines.end(), spines.front()) - spines.begin());
  if (spines.size() % first != 0) return false;
  for (std::size_t i = 0; i < spines.size(); i += first) {
    if (spines[i] != spines[i + first - 1]) return false;
    if (i != 0 && spines[i] == spines[i - 1]) return false;
  }
  return true;
}

// The lines of a tree, one after the other.
class LineComparer {
 public:
  explicit LineComparer(const FTTopology& topology)
      : ranks_(topology.GetRankedSwitches()),
        links_(topology.GetTreeLinks()),
        lineOf_(topology.GetFabric().GetNodes().size(), none) {}

  // Whether all cables of a line lead to neighboring ranks, and those upwards fit what was seen.
  bool Fits(const IBNode& line, int rank) {
    std::vector<std::uint32_t>& spines = spinesOf_.emplace_back();
    for (const TreeLink& link : links_.Of(line)) {
      const int far = ranks_.RankOf(link.remote);
      if (far < 0 || far == rank + 1 || link.remote == line.index) continue;
      if (far != rank - 1) return false;
      spines.push_back(link.remote);
    }
    if (spines.empty()) return true;
    if (!std::is_sorted(spines.begin(), spines.end())) std::sort(spines.begin(), spines.end());
    const std::uint32_t known = lineOf_[spines.front()];
    if (known == none) return HasEachAsOften(spines) && TakeSpines(spines);
    const bool isSame = spines == spinesOf_[known];
    spinesOf_.pop_back();
    return isSame;
  }

 private:
  static constexpr std::uint32_t none = ~std::uint32_t{0};

  // The line is the first of its group; then no other group has one of its spines.
  bool TakeSpines(Spines spines) {
    for (const std::uint32_t spine : spines) {
      std::uint32_t& line = lineOf_[spine];
      const auto own = static_cast<std::uint32_t>(spinesOf_.size() - 1);
      if (line != none && line != own) return false;
      line = own;
    }
    return true;
  }

  const RankedSwitches& ranks_;
  const TreeLinks& links_;
  std::vector<std::vector<std::uint32_t>> spinesOf_;  // of the first line of each group
  std::vector<std::uint32_t> lineOf_;  // by IBNode::index of a spine: its place in spinesOf_
};

}  // namespace

bool IsProperTree(const FTTopology& topology) {
  if (topology.GetTreeLinks().HasOneSided()) return false;
  LineComparer comparer(topology);
  const std::vector<NodeSet>& ranks = topology.GetRanks();
  for (std::size_t rank = 0; rank < ranks.size(); ++rank) {
    for (const IBNode* line : ranks[rank]) {
      if (!comparer.Fits(*line, static_cast<int>(rank))) return false;
    }
  }
  return true;
}

}  // namespace fabscope::internal
