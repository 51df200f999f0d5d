// Heights from all cables at once.
//
// One leaf's view of the fabric is spoiled by one wrong cable near it: a leaf up-link in another
// pod makes that pod's leaves two hops away, where roots should be. But the wrong cable still ends
// one rank higher. So all leaves are looked at together, and every switch gets its height, the
// number of hops to the nearest leaf, which a swapped or moved cable does not change:
//
//   leaves 0, the switches that they are cabled to 1, what those are cabled to beyond 2, ...
//
//   1. Leaves are the switches with many hosts. Where leaves have few hosts, a stray host makes a
//      spine look like a leaf; then the switches that are cabled like it decide.
//   2. Heights are peeled upwards. A switch with much fewer cables down than its peers waits: one
//      cable from a leaf to a root makes no middle switch of the root.
//   3. What is left over goes where it fits: a switch most of whose cables are wrong at its height;
//      a leaf without hosts, which looks like a root from below but is cabled like the leaves
//      beside it; a pod without hosts, which hangs down from the roots like a second tree upside
//      down.
//   4. Where several heights are possible, the tree wins that the fewest changes make proper. Of
//      equals the one with fewer levels wins.

#include "repair/switch_heights.h"

#include <algorithm>
#include <functional>
#include <set>
#include <tuple>
#include <utility>

#include "repair/misfit_bound.h"
#include "repair/misfits.h"
#include "repair/neighbor_likeness.h"
#include "repair/neighbor_lists.h"

namespace fabscope::internal {
namespace {

constexpr int unknown = UnknownHeight;

// What a tree costs, in quarters of a cable: wrong and lacking cables, switches that do not look
// like their height, and levels.
struct Price {
  std::uint64_t changes = 0;
  std::uint64_t emptyLeaves = 0;  // without hosts

  // Leaves without hosts are no fault of a tree. But the first ones are not taken for such lightly;
  // where there are several, one more is nothing special.
  std::uint64_t WithEmptyLeaves() const {
    return changes + 5 * std::min<std::uint64_t>(emptyLeaves, 3) + emptyLeaves;
  }

  friend bool operator<(const Price& a, const Price& b) {
    return std::tie(a.changes, a.emptyLeaves) < std::tie(b.changes, b.emptyLeaves);
  }
};

// Which of the switches with hosts may be no leaves.
enum class Doubt {
  None,
  OfThoseBetweenLeaves,
  OfThoseUnlikeTheirTwins,
  OfThoseWithFewHosts,
  OfNoneAndNobodyWaits
};

// How much of their neighbors switches share that look alike.
constexpr double like = 0.8;
constexpr double ratherLike = 0.6;

constexpr std::uint64_t levelPrice = 8;
constexpr int mostLevels = 6;

std::vector<int> RanksOf(const Heights& heights) {
  const int top = *std::max_element(heights.begin(), heights.end());
  std::vector<int> ranks(heights.size(), TreeRanks::none);
  for (std::size_t i = 0; i < heights.size(); ++i) {
    if (heights[i] != unknown) ranks[i] = top - heights[i];
  }
  return ranks;
}

// What a tree costs in which everything is right.
std::uint64_t CheapestWith(int top) { return levelPrice * static_cast<std::uint64_t>(top); }

class HeightFinder {
 public:
  explicit HeightFinder(const TreeReading& reading)
      : reading_(reading),
        graph_(reading.graph),
        neighbors_(graph_),
        isLeaf_(graph_.Count()),
        common_(graph_.Count()) {}

  Heights Find() {
    FindFullCount();
    Heights bestHeights(graph_.Count(), unknown);
    if (full_ == 0) return bestHeights;
    Price best;
    bool isFound = false;
    for (const Doubt doubt : {Doubt::None, Doubt::OfThoseBetweenLeaves,
                              Doubt::OfThoseUnlikeTheirTwins, Doubt::OfNoneAndNobodyWaits}) {
      FindLeaves(doubt);
      if (std::find(isLeaf_.begin(), isLeaf_.end(), true) == isLeaf_.end()) continue;
      Peel(doubt != Doubt::OfNoneAndNobodyWaits);
      const Heights fromLeaves = heights_;
      Settle();
      JoinTwins();
      Fold();
      JoinTwins();
      if (!IsConvincing(PriceOf(heights_))) PeelDown(fromLeaves);
      const Price price = MoveSuspects();
      if (isFound && !(price < best)) continue;
      isFound = true;
      best = price;
      bestHeights = heights_;
      if (IsConvincing(best)) break;
    }
    return bestHeights;
  }

 private:
  // Whether other readings need not be tried: little is wrong in a tree that is not tiny.
  bool IsConvincing(const Price& price) const {
    const std::uint64_t wrong = price.changes - CheapestWith(Top());
    return wrong == 0 || (graph_.Cables().size() > 1000 && 16 * wrong < graph_.Cables().size());
  }
  int Top() const { return *std::max_element(heights_.begin(), heights_.end()); }
  std::uint32_t Degree(std::uint32_t i) const {
    return static_cast<std::uint32_t>(graph_.CablesOf(i).size());
  }
  bool IsFull(std::uint32_t i) const { return 2 * graph_.Hosts(i) > full_; }
  template <typename Visit>
  void ForEachNeighbor(std::uint32_t i, Visit visit) const {
    for (const std::uint32_t other : graph_.FarEndsOf(i)) visit(other);
  }
  void FindFullCount();
  void FindLeaves(Doubt doubt);
  void DropThoseBetweenLeaves();
  bool IsLeafByTwins(std::uint32_t i);
  void Peel(bool canWait);
  void PeelDown(const Heights& fromLeaves);
  Heights HeightsBelow(const Heights& fromLeaves, int top) const;
  void Settle();
  void Fold();
  std::vector<bool> FindWaysUp(int top) const;
  void JoinTwins();
  std::vector<std::uint32_t> FindSuspects(const Misfits& misfits) const;
  Price MoveSuspects();
  Price PriceOf(const Heights& heights, Misfits* misfits = nullptr);
  Price WorkOutPrice(const Heights& heights, Misfits& misfits) const;
  bool IsDearer(const Heights& heights, const Price& price) const;

  const TreeReading& reading_;
  const SwitchGraph& graph_;
  const NeighborLists neighbors_;
  std::uint32_t full_ = 0;  // what leaves have, hosts
  std::vector<bool> isLeaf_;
  Heights heights_;
  std::vector<std::uint32_t> common_;  // by switch: neighbors in common; 0 between uses
  // What was asked for last is often asked for again.
  Heights priced_;
  Price price_;
  Misfits misfits_;
};

// Nine of ten switches with hosts have no more.
void HeightFinder::FindFullCount() {
  std::vector<std::uint32_t> counts;
  for (std::uint32_t i = 0; i < graph_.Count(); ++i) {
    if (graph_.Hosts(i) != 0) counts.push_back(graph_.Hosts(i));
  }
  if (counts.empty()) return;
  const auto place = counts.begin() + static_cast<std::ptrdiff_t>((counts.size() - 1) * 9 / 10);
  std::nth_element(counts.begin(), place, counts.end());
  full_ = *place;
}

// Whether of the switches that share most neighbors with it at least half have hosts like leaves.
bool HeightFinder::IsLeafByTwins(std::uint32_t i) {
  std::vector<std::uint32_t> touched;
  for (const std::uint32_t neighbor : neighbors_.Of(i)) {
    for (const std::uint32_t twin : neighbors_.Of(neighbor)) {
      if (twin == i) continue;
      if (common_[twin]++ == 0) touched.push_back(twin);
    }
  }
  std::uint32_t most = 2;
  std::uint32_t twins = 0;
  std::uint32_t fullTwins = 0;
  for (const std::uint32_t twin : touched) {
    if (common_[twin] > most) most = common_[twin], twins = fullTwins = 0;
    if (common_[twin] == most) ++twins, fullTwins += IsFull(twin) ? 1 : 0;
    common_[twin] = 0;
  }
  return 2 * fullTwins >= twins;
}

void HeightFinder::FindLeaves(Doubt doubt) {
  isLeaf_.assign(graph_.Count(), false);
  std::uint32_t mostHosts = 0;
  for (std::uint32_t i = 0; i < graph_.Count(); ++i) {
    mostHosts = std::max(mostHosts, graph_.Hosts(i));
  }
  for (std::uint32_t i = 0; i < graph_.Count(); ++i) {
    isLeaf_[i] = IsFull(i) && (doubt != Doubt::OfThoseUnlikeTheirTwins || IsLeafByTwins(i)) &&
                 (doubt != Doubt::OfThoseWithFewHosts || 2 * graph_.Hosts(i) > mostHosts);
  }
  if (doubt == Doubt::OfThoseBetweenLeaves) DropThoseBetweenLeaves();
}

// A spine with hosts has leaves around it. The one with most of them goes first; then leaves around
// it have fewer themselves.
void HeightFinder::DropThoseBetweenLeaves() {
  std::vector<std::uint32_t> around(graph_.Count());
  std::set<std::pair<std::uint32_t, std::uint32_t>, std::greater<>> most;
  for (std::uint32_t i = 0; i < graph_.Count(); ++i) {
    if (!isLeaf_[i]) continue;
    for (const std::uint32_t other : neighbors_.Of(i)) around[i] += isLeaf_[other] ? 1 : 0;
    if (around[i] >= 2) most.emplace(around[i], i);
  }
  while (!most.empty()) {
    const std::uint32_t i = most.begin()->second;
    most.erase(most.begin());
    isLeaf_[i] = false;
    for (const std::uint32_t other : neighbors_.Of(i)) {
      if (most.erase({around[other], other}) == 0) continue;
      if (--around[other] >= 2) most.emplace(around[other], other);
    }
  }
}

void HeightFinder::Peel(bool canWait) {
  heights_.assign(graph_.Count(), unknown);
  std::vector<std::uint32_t> below;
  for (std::uint32_t i = 0; i < graph_.Count(); ++i) {
    if (!isLeaf_[i]) continue;
    heights_[i] = 0;
    below.push_back(i);
  }
  std::vector<std::uint32_t> waiting;
  std::vector<bool> hasWaited(graph_.Count());
  for (int height = 1; !below.empty() || !waiting.empty(); ++height) {
    std::vector<std::uint32_t> candidates = std::move(waiting);
    waiting.clear();
    std::vector<std::uint32_t> fresh;
    for (const std::uint32_t i : below) {
      ForEachNeighbor(i, [&](std::uint32_t other) {
        if (heights_[other] == unknown && common_[other]++ == 0) fresh.push_back(other);
      });
    }
    std::vector<std::uint32_t> counts;
    counts.reserve(fresh.size());
    for (const std::uint32_t i : fresh) counts.push_back(common_[i]);
    std::uint32_t median = 0;
    if (!counts.empty()) {
      const auto middle = counts.begin() + static_cast<std::ptrdiff_t>(counts.size() / 2);
      std::nth_element(counts.begin(), middle, counts.end());
      median = *middle;
    }
    below.clear();
    for (const std::uint32_t i : candidates) {
      if (heights_[i] == unknown && common_[i] == 0) {
        heights_[i] = height;
        below.push_back(i);
      }
    }
    for (const std::uint32_t i : fresh) {
      if (canWait && 2 * common_[i] < median && !hasWaited[i]) {
        hasWaited[i] = true;
        waiting.push_back(i);
      } else {
        heights_[i] = height;
        below.push_back(i);
      }
      common_[i] = 0;
    }
  }
}

// Heights from the roots downwards. A pod without hosts hangs below the roots like all others, but
// its heights from the leaves go on upwards. Roots are those on some height that lead down as much
// as their peers; each height is tried, and the cheapest tree taken.
void HeightFinder::PeelDown(const Heights& fromLeaves) {
  Price best = PriceOf(heights_);
  Heights bestHeights = heights_;
  const int highest = *std::max_element(fromLeaves.begin(), fromLeaves.end());
  for (int top = 1; top <= std::min(highest, mostLevels - 1); ++top) {
    heights_ = HeightsBelow(fromLeaves, top);
    Settle();
    JoinTwins();
    const Price price = PriceOf(heights_);
    if (price < best) best = price, bestHeights = heights_;
  }
  heights_ = std::move(bestHeights);
}

Heights HeightFinder::HeightsBelow(const Heights& fromLeaves, int top) const {
  const auto leadsDown = [&](std::uint32_t i) {
    std::size_t count = 0;
    ForEachNeighbor(i, [&](std::uint32_t other) { count += fromLeaves[other] == top - 1 ? 1 : 0; });
    return count;
  };
  std::vector<std::size_t> counts;
  for (std::uint32_t i = 0; i < graph_.Count(); ++i) {
    if (fromLeaves[i] == top) counts.push_back(leadsDown(i));
  }
  const auto middle = counts.begin() + static_cast<std::ptrdiff_t>(counts.size() / 2);
  std::nth_element(counts.begin(), middle, counts.end());
  Heights down(graph_.Count(), unknown);
  std::vector<std::uint32_t> reached;
  for (std::uint32_t i = 0; i < graph_.Count(); ++i) {
    if (fromLeaves[i] != top || 2 * leadsDown(i) <= *middle) continue;
    down[i] = top;
    reached.push_back(i);
  }
  for (std::size_t next = 0; next < reached.size(); ++next) {
    const std::uint32_t i = reached[next];
    if (down[i] == 0) continue;
    ForEachNeighbor(i, [&](std::uint32_t other) {
      if (down[other] != unknown) return;
      down[other] = down[i] - 1;
      reached.push_back(other);
    });
  }
  for (std::uint32_t i = 0; i < graph_.Count(); ++i) {
    if (down[i] == unknown) down[i] = std::min(fromLeaves[i], top);
  }
  return down;
}

// Moves switches to the height at which fewest of their cables join heights that are not neighbors,
// the worst switch first.
void HeightFinder::Settle() {
  const int top = Top();
  std::vector<std::uint32_t> counts(static_cast<std::size_t>(top) + 3);  // by height plus one
  std::vector<int> touched;
  const auto good = [&](int height) {
    const auto place = static_cast<std::size_t>(height) + 1;
    return counts[place - 1] + counts[place + 1];
  };
  // The lowest of the best heights; its own where no other is better.
  const auto best = [&](std::uint32_t i) {
    for (const int height : touched) counts[static_cast<std::size_t>(height) + 1] = 0;
    touched.clear();
    ForEachNeighbor(i, [&](std::uint32_t other) {
      if (heights_[other] == unknown) return;
      if (counts[static_cast<std::size_t>(heights_[other]) + 1]++ == 0) {
        touched.push_back(heights_[other]);
      }
    });
    const int own = heights_[i];
    int bestHeight = own;
    const auto consider = [&](int height) {
      if (height < 0 || height > top) return;
      const bool isLower = bestHeight != own && height < bestHeight;
      if (good(height) > good(bestHeight) || (isLower && good(height) == good(bestHeight))) {
        bestHeight = height;
      }
    };
    for (const int height : touched) consider(height - 1), consider(height + 1);
    return std::pair(bestHeight, good(bestHeight) - good(own));
  };
  const std::uint32_t mostMoves = graph_.Count() / 2 + 1;
  std::vector<std::uint32_t> gains(graph_.Count());
  std::set<std::pair<std::int64_t, std::uint32_t>> worst;  // by gain, the largest first
  const auto note = [&](std::uint32_t i) {
    if (heights_[i] == unknown || isLeaf_[i]) return;
    if (gains[i] > 0) worst.erase({-std::int64_t{gains[i]}, i});
    gains[i] = best(i).second;
    if (gains[i] > 0) worst.emplace(-std::int64_t{gains[i]}, i);
  };
  for (std::uint32_t i = 0; i < graph_.Count(); ++i) note(i);
  for (std::uint32_t moves = 0; !worst.empty() && moves < mostMoves; ++moves) {
    const std::uint32_t i = worst.begin()->second;
    worst.erase(worst.begin());
    gains[i] = 0;
    heights_[i] = best(i).first;
    ForEachNeighbor(i, note);
  }
}

// A tree that is higher than it must be: what stands above a height is mirrored down where that
// makes the tree no dearer. Either all of it, or what leads up to the top, which leaves alone the
// roots beside a pod without hosts.
void HeightFinder::Fold() {
  const int top = Top();
  Price best = PriceOf(heights_);
  Heights bestHeights = heights_;
  const std::vector<bool> leadsUp = FindWaysUp(top);
  const int first = (top + 1) / 2;
  // What is higher than any tree has creases without end.
  for (int crease = first; crease > 0 && crease < std::min(top, first + mostLevels); ++crease) {
    for (const bool all : {true, false}) {
      Heights folded = heights_;
      for (std::uint32_t i = 0; i < graph_.Count(); ++i) {
        if (folded[i] > crease && (all || leadsUp[i])) folded[i] = 2 * crease - folded[i];
      }
      if (!all && std::equal(folded.begin(), folded.end(), bestHeights.begin())) continue;
      if (IsDearer(folded, best)) continue;
      const Price price = PriceOf(folded);
      if (price < best) best = price, bestHeights = std::move(folded);
    }
  }
  heights_ = std::move(bestHeights);
}

// By switch: whether a way that always leads upwards ends at the top.
std::vector<bool> HeightFinder::FindWaysUp(int top) const {
  std::vector<bool> leadsUp(graph_.Count());
  std::vector<std::uint32_t> open;
  for (std::uint32_t i = 0; i < graph_.Count(); ++i) {
    if (heights_[i] == top) leadsUp[i] = true, open.push_back(i);
  }
  while (!open.empty()) {
    const std::uint32_t i = open.back();
    open.pop_back();
    ForEachNeighbor(i, [&](std::uint32_t other) {
      if (leadsUp[other] || heights_[other] != heights_[i] - 1) return;
      leadsUp[other] = true;
      open.push_back(other);
    });
  }
  return leadsUp;
}

// Leaves without hosts.
void HeightFinder::JoinTwins() {
  std::vector<std::pair<std::uint32_t, int>> moves;
  NeighborLikeness likeness(graph_, neighbors_, heights_);
  for (std::uint32_t i = 0; i < graph_.Count(); ++i) {
    if (heights_[i] < 2 || graph_.Hosts(i) > full_ / 2) continue;
    const double below = likeness.ToThoseBelow(i, ratherLike);
    if (below < ratherLike) continue;
    if (below >= like || below >= likeness.To(i, heights_[i], 0))
      moves.emplace_back(i, heights_[i] - 2);
  }
  if (moves.empty()) return;
  const Heights before = heights_;
  for (const auto& [i, height] : moves) heights_[i] = height;
  Settle();
  const Price was = PriceOf(before);
  const Price is = PriceOf(heights_);
  const int topBefore = *std::max_element(before.begin(), before.end());
  const bool isWorse = Top() < topBefore ? was < is : was.WithEmptyLeaves() < is.WithEmptyLeaves();
  if (isWorse) heights_ = before;
}

Price HeightFinder::PriceOf(const Heights& heights, Misfits* misfits) {
  if (heights != priced_) {
    price_ = WorkOutPrice(heights, misfits_);
    priced_ = heights;
  }
  if (misfits != nullptr) *misfits = misfits_;
  return price_;
}

// Whether it is certain that these heights cost more; false says nothing.
bool HeightFinder::IsDearer(const Heights& heights, const Price& price) const {
  const std::uint64_t levels = CheapestWith(*std::max_element(heights.begin(), heights.end()));
  return levels > price.changes ||
         HasAtLeastMisfits(neighbors_, RanksOf(heights), (price.changes - levels) / 4 + 1);
}

Price HeightFinder::WorkOutPrice(const Heights& heights, Misfits& misfits) const {
  const int top = *std::max_element(heights.begin(), heights.end());
  const std::vector<int> ranks = RanksOf(heights);
  std::vector<bool> hasBelow(graph_.Count());
  std::vector<bool> hasAbove(graph_.Count());
  for (const SwitchGraph::Cable& cable : graph_.Cables()) {
    if (heights[cable.a] == heights[cable.b]) continue;
    const bool isAUpper = heights[cable.a] > heights[cable.b];
    hasBelow[isAUpper ? cable.a : cable.b] = true;
    hasAbove[isAUpper ? cable.b : cable.a] = true;
  }
  misfits = ranks == reading_.ranks ? reading_.misfits : FindMisfits(graph_, ranks);
  Price price{4 * misfits.cables + CheapestWith(top), 0};
  std::vector<std::uint64_t> strays(static_cast<std::size_t>(top) + 1);
  std::vector<std::uint32_t> withHosts(strays.size());
  std::vector<std::uint32_t> onHeight(strays.size());
  for (std::uint32_t i = 0; i < graph_.Count(); ++i) {
    if (heights[i] == unknown) continue;
    const auto height = static_cast<std::size_t>(heights[i]);
    const std::uint32_t hosts = graph_.Hosts(i);
    if (height == 0) {
      price.emptyLeaves += hosts == 0 ? 1 : 0;
      continue;
    }
    ++onHeight[height];
    if (!hasBelow[i]) price.changes += 8;
    if (!hasAbove[i] && heights[i] != top) price.changes += 2;
    if (hosts == 0) continue;
    ++withHosts[height];
    strays[height] += std::uint64_t{4} * std::min(hosts, full_) + (hosts >= full_ ? 7 : 0);
  }
  for (std::size_t height = 1; height < strays.size(); ++height) {
    // Where most of a height have hosts, that is how the tree was meant.
    const bool isMeant = 2 * withHosts[height] > onHeight[height];
    price.changes += isMeant ? std::min<std::uint64_t>(strays[height], 8) : strays[height];
  }
  return price;
}

// Switches with many wrong cables, the worst first.
std::vector<std::uint32_t> HeightFinder::FindSuspects(const Misfits& misfits) const {
  std::vector<std::pair<double, std::uint32_t>> suspects;  // by badness, negative
  for (std::uint32_t i = 0; i < graph_.Count(); ++i) {
    if (heights_[i] == unknown || Degree(i) == 0) continue;
    const bool isStrange = heights_[i] > 0 && graph_.Hosts(i) > 0;
    if (misfits.ofSwitch[i] < (isStrange ? 1U : 2U)) continue;
    const double badness = static_cast<double>(misfits.ofSwitch[i]) / Degree(i);
    if (badness >= 0.3) suspects.emplace_back(-badness, i);
  }
  std::sort(suspects.begin(), suspects.end());
  std::vector<std::uint32_t> worstFirst;
  worstFirst.reserve(suspects.size());
  for (const auto& [badness, i] : suspects) worstFirst.push_back(i);
  return worstFirst;
}

// Tries suspects at other heights, and keeps what makes the tree cheaper. Then others are suspect.
Price HeightFinder::MoveSuspects() {
  constexpr std::uint64_t mostWork = 3'000'000;
  std::uint64_t work = 0;
  const std::uint64_t workOfOne = 8 * graph_.Cables().size() + graph_.Count();
  Misfits misfits;
  Price best = PriceOf(heights_, &misfits);
  std::vector<std::uint32_t> suspects = FindSuspects(misfits);
  std::size_t next = 0;
  std::uint32_t moved = SwitchGraph::none;
  int top = Top();
  while (next < suspects.size() && work < mostWork) {
    const std::uint32_t suspect = suspects[next++];
    if (suspect == moved) continue;
    const int was = heights_[suspect];
    int bestHeight = was;
    std::set<int> candidates;
    ForEachNeighbor(suspect, [&](std::uint32_t other) {
      candidates.insert({heights_[other] - 1, heights_[other] + 1});
    });
    for (const int height : candidates) {
      if (height < 0 || height > top || height == was) continue;
      heights_[suspect] = height;
      Misfits now;
      const Price price = PriceOf(heights_, &now);
      work += workOfOne;
      if (price.WithEmptyLeaves() >= best.WithEmptyLeaves()) continue;
      best = price;
      bestHeight = height;
      misfits = std::move(now);
    }
    heights_[suspect] = bestHeight;
    if (bestHeight == was) continue;
    moved = suspect;
    top = Top();
    suspects = FindSuspects(misfits);
    next = 0;
  }
  return best;
}

}  // namespace

Heights FindHeights(const TreeReading& reading) { return HeightFinder(reading).Find(); }

}  // namespace fabscope::internal
