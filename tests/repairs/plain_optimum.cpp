#include "repairs/plain_optimum.h"

#include <algorithm>
#include <bit>
#include <cstdlib>

namespace fabscope::internal::plain {
namespace {

SwitchSet Only(int one) { return SwitchSet{1} << static_cast<unsigned>(one); }
bool Has(SwitchSet set, int one) { return (set & Only(one)) != 0; }

// Calls `use` with every subset, the empty one and the whole included.
template <typename Use>
void ForEachSubset(SwitchSet whole, Use use) {
  for (SwitchSet part = whole;; part = (part - 1) & whole) {
    use(part);
    if (part == 0) return;
  }
}

int CountAt(const CableCounts& cables, int a, int b) {
  return cables[static_cast<std::size_t>(a)][static_cast<std::size_t>(b)];
}

int RankAt(const std::vector<int>& ranks, int a) { return ranks[static_cast<std::size_t>(a)]; }

}  // namespace

// --- Given ranks.

int Optimum::Cables(SwitchSet from, SwitchSet to) const {
  int count = 0;
  for (int a = 0; a < Switches(); ++a) {
    for (int b = 0; b < Switches(); ++b) {
      if (Has(from, a) && Has(to, b)) count += CountAt(cables_, a, b);
    }
  }
  return count;
}

// What must come and go between them so that each two have the same number of cables.
int Optimum::CostOfGroup(SwitchSet spines, SwitchSet lines) const {
  int most = 0;
  for (const auto& row : cables_) most = std::max(most, *std::max_element(row.begin(), row.end()));
  int least = Cables(spines, lines);
  for (int each = 1; each <= most; ++each) {
    int cost = 0;
    for (int a = 0; a < Switches(); ++a) {
      for (int b = 0; b < Switches(); ++b) {
        if (Has(spines, a) && Has(lines, b)) cost += std::abs(CountAt(cables_, a, b) - each);
      }
    }
    least = std::min(least, cost);
  }
  return least;
}

// The first spine has some group; what is left of both sides falls into groups of its own.
int Optimum::LeastBetween(SwitchSet spines, SwitchSet lines) {
  if (spines == 0 || lines == 0) return 0;
  const auto known = between_.find({spines, lines});
  if (known != between_.end()) return known->second;
  int least = Cables(spines, lines);
  const SwitchSet first = Only(std::countr_zero(spines));
  ForEachSubset(spines & ~first, [&](SwitchSet others) {
    const SwitchSet group = first | others;
    ForEachSubset(lines, [&](SwitchSet own) {
      const int cost = CostOfGroup(group, own) + Cables(group, lines & ~own) +
                       Cables(spines & ~group, own) + LeastBetween(spines & ~group, lines & ~own);
      least = std::min(least, cost);
    });
  });
  return between_[{spines, lines}] = least;
}

int Optimum::LeastMisfits(const std::vector<int>& ranks) {
  int misfits = 0;
  std::map<int, SwitchSet> onRank;
  for (int a = 0; a < Switches(); ++a) {
    if (RankAt(ranks, a) < 0) continue;
    onRank[RankAt(ranks, a)] |= Only(a);
    for (int b = 0; b < a; ++b) {
      const bool joinsNeighbors = std::abs(RankAt(ranks, a) - RankAt(ranks, b)) == 1;
      if (RankAt(ranks, b) >= 0 && !joinsNeighbors) misfits += CountAt(cables_, a, b);
    }
  }
  for (const auto& [rank, spines] : onRank) {
    const auto below = onRank.find(rank + 1);
    if (below != onRank.end()) misfits += LeastBetween(spines, below->second);
  }
  return misfits;
}

// --- Any ranks.

AllTrees::AllTrees(CableCounts cables) : cables_(std::move(cables)), optimum_(cables_) {
  std::vector<int> ranks(cables_.size());
  Try(ranks, 0);
}

void AllTrees::Try(std::vector<int>& ranks, std::size_t next) {
  if (next < ranks.size()) {
    for (std::size_t rank = 0; rank < ranks.size(); ++rank) {
      ranks[next] = static_cast<int>(rank);
      Try(ranks, next + 1);
    }
    return;
  }
  const int last = *std::max_element(ranks.begin(), ranks.end());
  for (int rank = 0; rank < last; ++rank) {
    if (std::find(ranks.begin(), ranks.end(), rank) == ranks.end()) return;
  }
  const int misfits = optimum_.LeastMisfits(ranks);
  const auto [known, isNew] = leastMisfits_.emplace(ShapeOf(ranks), misfits);
  known->second = std::min(known->second, misfits);
}

Blemishes AllTrees::OfShape(const Shape& shape, const std::vector<int>& hosts) {
  Blemishes found{0, shape.levels, 0, 0, shape.barrenSpines};
  for (std::size_t a = 0; a < hosts.size(); ++a) {
    const bool isLeaf = Has(shape.leaves, static_cast<int>(a));
    if (!isLeaf) found.hostsOnSpines += hosts[a];
    if (isLeaf && hosts[a] == 0) ++found.leavesWithoutHosts;
  }
  return found;
}

AllTrees::Shape AllTrees::ShapeOf(const std::vector<int>& ranks) const {
  const int last = *std::max_element(ranks.begin(), ranks.end());
  Shape shape{last + 1, 0, 0};
  for (int a = 0; a < optimum_.Switches(); ++a) {
    if (RankAt(ranks, a) == last) {
      shape.leaves |= Only(a);
      continue;
    }
    bool isBarren = true;
    for (int b = 0; b < optimum_.Switches(); ++b) {
      if (CountAt(cables_, a, b) > 0 && RankAt(ranks, b) > RankAt(ranks, a)) isBarren = false;
    }
    if (isBarren) ++shape.barrenSpines;
  }
  return shape;
}

Blemishes AllTrees::BlemishesOf(const std::vector<int>& ranks, const std::vector<int>& hosts) {
  Blemishes found = OfShape(ShapeOf(ranks), hosts);
  found.misfits = optimum_.LeastMisfits(ranks);
  return found;
}

int AllTrees::LeastMisfits(const Blemishes& known, const std::vector<int>& hosts) const {
  int least = known.misfits;
  for (const auto& [shape, misfits] : leastMisfits_) {
    const Blemishes other = OfShape(shape, hosts);
    const bool isWorse = other.levels > known.levels || other.barrenSpines > known.barrenSpines ||
                         other.hostsOnSpines > known.hostsOnSpines ||
                         other.leavesWithoutHosts > known.leavesWithoutHosts;
    if (!isWorse) least = std::min(least, misfits);
  }
  return least;
}

}  // namespace fabscope::internal::plain
