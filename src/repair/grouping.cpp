// Groups of a pair of ranks, found again behind wrong cables.
//
// In a proper tree two lines of one group have exactly the same spines, and two lines of different
// groups have none in common. Wrong cables blur that: a leaf {a1,a2,a3,b4} has three spines of pod
// A and one of pod B. What is looked for is the grouping that the fewest changes make proper, where
// a cable that goes and a cable that comes count one each: bicluster editing. That is hard in
// general and easy here, since wrong cables are few.
//
//   1. Lines whose set of spines occurs most often are the centers; a line joins the center that
//      shares at least half of what either has. Or the same with the sides exchanged.
//   2. Lines choose the group with most of their cables, less what that group would lack: a line
//      with c of its cables to a group of n spines costs n + degree - 2c there. Then spines choose,
//      then lines again, until nobody moves. No move makes the whole dearer, so it ends.
//   3. Two groups become one where that is cheaper.
//
// Ties stay where they are; what decides them stands in evidence.cpp.

#include "repair/grouping.h"

#include <algorithm>
#include <cstddef>
#include <map>
#include <numeric>
#include <unordered_map>
#include <utility>

namespace fabscope {
namespace {

using Links = std::span<const RankPair::Link>;

std::uint64_t HashOf(Links links) {
  std::uint64_t hash = links.size();
  for (const RankPair::Link& link : links) {
    hash = (hash ^ (link.far + 1)) * 0x9e3779b97f4a7c15U;
    hash ^= hash >> 29U;
  }
  return hash;
}

bool HaveSameFarEnds(Links a, Links b) {
  return std::equal(
      a.begin(), a.end(), b.begin(), b.end(),
      [](const RankPair::Link& x, const RankPair::Link& y) { return x.far == y.far; });
}

class Grouper {
 public:
  explicit Grouper(const RankPair& pair) : pair_(pair) {
    result_.groupOf[SpineSide].assign(pair.Spines().size(), Grouping::none);
    result_.groupOf[LineSide].assign(pair.Lines().size(), Grouping::none);
  }

  // Centers from the switches of that side.
  Grouping Run(Side side) {
    FormCenters(side);
    GatherRest();
    for (int round = 0; round < mostRounds; ++round) {
      CountSizes();
      FindMultiplicities();
      bool isMoved = Choose(side);
      isMoved |= Choose(OtherSide(side));
      if (!isMoved && !MergeGroups()) break;
    }
    DropEmptyGroups();
    FindMultiplicities();
    Recount(pair_, result_);
    return std::move(result_);
  }

 private:
  static constexpr int mostRounds = 12;

  Links LinksOf(Side side, std::uint32_t i) const {
    return side == SpineSide ? pair_.OfSpine(i) : pair_.OfLine(i);
  }
  std::uint32_t CountOf(Side side) const {
    return static_cast<std::uint32_t>(result_.groupOf[side].size());
  }
  int AddGroup() {
    result_.multiplicity.push_back(1);
    tally_.push_back(0);
    return static_cast<int>(result_.multiplicity.size()) - 1;
  }

  // How many links of a switch lead to each group: to groups in seen_, with the counts in tally_.
  // `isWeighted`: cables, as far as the group's multiplicity wants them.
  void Tally(Side side, std::uint32_t i, bool isWeighted) {
    for (const int group : seen_) tally_[static_cast<std::size_t>(group)] = 0;
    seen_.clear();
    const std::vector<int>& farGroups = result_.groupOf[OtherSide(side)];
    for (const RankPair::Link& link : LinksOf(side, i)) {
      const int group = farGroups[link.far];
      if (group == Grouping::none) continue;
      std::uint32_t& count = tally_[static_cast<std::size_t>(group)];
      if (count == 0) seen_.push_back(group);
      const std::uint32_t multiplicity = result_.multiplicity[static_cast<std::size_t>(group)];
      count += isWeighted ? std::min(link.count, multiplicity) : 1;
    }
  }

  // Switches of a side, those of the most frequent set of far ends first.
  std::vector<std::uint32_t> MostFrequentFirst(Side side) const;
  void FormCenters(Side side);
  void GatherRest();
  void CountSizes();
  void FindMultiplicities();
  bool Choose(Side side);
  bool MergeGroups();
  void DropEmptyGroups();

  const RankPair& pair_;
  Grouping result_;
  std::vector<std::uint32_t> tally_;  // by group; 0 but for those in seen_
  std::vector<int> seen_;
};

std::vector<std::uint32_t> Grouper::MostFrequentFirst(Side side) const {
  const std::uint32_t count = CountOf(side);
  // Sets get a number each; sets of one hash are compared.
  std::unordered_map<std::uint64_t, std::vector<std::uint32_t>> byHash;
  std::vector<std::uint32_t> firstOfSet;
  std::vector<std::uint32_t> frequency;
  std::vector<std::uint32_t> setOf(count);
  for (std::uint32_t i = 0; i < count; ++i) {
    const Links links = LinksOf(side, i);
    std::vector<std::uint32_t>& sets = byHash[HashOf(links)];
    const auto known = std::find_if(sets.begin(), sets.end(), [&](std::uint32_t set) {
      return HaveSameFarEnds(LinksOf(side, firstOfSet[set]), links);
    });
    if (known != sets.end()) {
      setOf[i] = *known;
    } else {
      setOf[i] = static_cast<std::uint32_t>(firstOfSet.size());
      sets.push_back(setOf[i]);
      firstOfSet.push_back(i);
      frequency.push_back(0);
    }
    ++frequency[setOf[i]];
  }
  std::vector<std::uint32_t> order(count);
  std::iota(order.begin(), order.end(), 0U);
  std::stable_sort(order.begin(), order.end(), [&](std::uint32_t x, std::uint32_t y) {
    if (frequency[setOf[x]] != frequency[setOf[y]]) {
      return frequency[setOf[x]] > frequency[setOf[y]];
    }
    return setOf[x] < setOf[y];
  });
  return order;
}

void Grouper::FormCenters(Side side) {
  const Side far = OtherSide(side);
  std::vector<std::uint32_t> farSize;  // by group
  for (const std::uint32_t i : MostFrequentFirst(side)) {
    const Links links = LinksOf(side, i);
    if (links.empty()) continue;
    Tally(side, i, false);
    int best = Grouping::none;
    double bestLikeness = 0.5;
    std::uint32_t taken = 0;
    for (const int group : seen_) {
      const auto place = static_cast<std::size_t>(group);
      const double shared = tally_[place];
      const double all = static_cast<double>(links.size() + farSize[place]) - shared;
      taken += tally_[place];
      if (shared / all < bestLikeness || (best != Grouping::none && shared / all == bestLikeness)) {
        continue;
      }
      best = group;
      bestLikeness = shared / all;
    }
    if (best == Grouping::none && std::size_t{2} * taken < links.size()) {
      best = AddGroup();
      farSize.push_back(0);
      for (const RankPair::Link& link : links) {
        if (result_.groupOf[far][link.far] != Grouping::none) continue;
        result_.groupOf[far][link.far] = best;
        ++farSize.back();
      }
    }
    result_.groupOf[side][i] = best;
  }
}

// Switches that are like nobody form groups of those that hang together.
void Grouper::GatherRest() {
  std::vector<std::pair<Side, std::uint32_t>> open;
  for (std::uint32_t line = 0; line < CountOf(LineSide); ++line) {
    if (result_.groupOf[LineSide][line] != Grouping::none) continue;
    const Links links = pair_.OfLine(line);
    const auto isFree = [&](const RankPair::Link& link) {
      return result_.groupOf[SpineSide][link.far] == Grouping::none;
    };
    if (links.empty() || !std::all_of(links.begin(), links.end(), isFree)) continue;
    const int group = AddGroup();
    result_.groupOf[LineSide][line] = group;
    open.emplace_back(LineSide, line);
    while (!open.empty()) {
      const auto [side, i] = open.back();
      open.pop_back();
      for (const RankPair::Link& link : LinksOf(side, i)) {
        int& farGroup = result_.groupOf[OtherSide(side)][link.far];
        if (farGroup != Grouping::none) continue;
        farGroup = group;
        open.emplace_back(OtherSide(side), link.far);
      }
    }
  }
}

void Grouper::CountSizes() {
  for (const Side side : {SpineSide, LineSide}) {
    result_.size[side].assign(result_.Count(), 0);
    for (const int group : result_.groupOf[side]) {
      if (group != Grouping::none) ++result_.size[side][static_cast<std::size_t>(group)];
    }
  }
}

// The median over all pairs of a spine and a line; what is most frequent in all groups where a
// group does not agree with itself.
void Grouper::FindMultiplicities() {
  std::vector<std::map<std::uint32_t, std::uint64_t>> counts(result_.Count());
  std::map<std::uint32_t, std::uint64_t> all;
  for (std::uint32_t line = 0; line < CountOf(LineSide); ++line) {
    const int group = result_.groupOf[LineSide][line];
    if (group == Grouping::none) continue;
    for (const RankPair::Link& link : pair_.OfLine(line)) {
      if (result_.groupOf[SpineSide][link.far] != group) continue;
      ++counts[static_cast<std::size_t>(group)][link.count];
      ++all[link.count];
    }
  }
  std::uint32_t usual = 1;
  std::uint64_t most = 0;
  for (const auto& [count, times] : all) {
    if (times > most) most = times, usual = count;
  }
  for (std::size_t group = 0; group < result_.Count(); ++group) {
    const std::uint64_t pairs =
        std::uint64_t{result_.size[SpineSide][group]} * result_.size[LineSide][group];
    std::uint64_t linked = 0;
    for (const auto& [count, times] : counts[group]) linked += times;
    std::uint64_t below = pairs - linked;
    std::uint32_t median = 0;
    for (const auto& [count, times] : counts[group]) {
      if (2 * below > pairs) break;
      median = count;
      below += times;
    }
    median = std::max(median, 1U);
    const std::uint64_t ofMedian = counts[group].contains(median) ? counts[group][median] : 0;
    if (3 * ofMedian < 2 * pairs) median = usual;
    result_.multiplicity[group] = median;
  }
}

bool Grouper::Choose(Side side) {
  bool isMoved = false;
  const Side far = OtherSide(side);
  for (std::uint32_t i = 0; i < CountOf(side); ++i) {
    Tally(side, i, true);
    int& group = result_.groupOf[side][i];
    const auto gain = [&](int candidate) {
      const auto place = static_cast<std::size_t>(candidate);
      return 2 * static_cast<std::int64_t>(tally_[place]) -
             std::int64_t{result_.multiplicity[place]} * result_.size[far][place];
    };
    int best = group;
    if (best != Grouping::none && tally_[static_cast<std::size_t>(best)] == 0)
      best = Grouping::none;
    for (const int candidate : seen_) {
      if (best == Grouping::none || gain(candidate) > gain(best)) best = candidate;
    }
    if (best == group || best == Grouping::none) continue;
    if (group != Grouping::none) --result_.size[side][static_cast<std::size_t>(group)];
    ++result_.size[side][static_cast<std::size_t>(best)];
    group = best;
    isMoved = true;
  }
  return isMoved;
}

// Two groups that have more than half of the cables between them that one group would want.
bool Grouper::MergeGroups() {
  std::map<std::pair<int, int>, std::uint64_t> cables;
  for (std::uint32_t line = 0; line < CountOf(LineSide); ++line) {
    const int group = result_.groupOf[LineSide][line];
    if (group == Grouping::none) continue;
    for (const RankPair::Link& link : pair_.OfLine(line)) {
      const int other = result_.groupOf[SpineSide][link.far];
      if (other == Grouping::none || other == group) continue;
      cables[std::minmax(group, other)] += std::min(
          link.count, result_.multiplicity[static_cast<std::size_t>(std::min(group, other))]);
    }
  }
  for (const auto& [groups, count] : cables) {
    const auto x = static_cast<std::size_t>(groups.first);
    const auto y = static_cast<std::size_t>(groups.second);
    const auto& size = result_.size;
    const std::uint64_t wanted = std::uint64_t{result_.multiplicity[x]} *
                                 (std::uint64_t{size[SpineSide][x]} * size[LineSide][y] +
                                  std::uint64_t{size[SpineSide][y]} * size[LineSide][x]);
    if (2 * count <= wanted) continue;
    for (std::vector<int>& side : result_.groupOf) {
      for (int& group : side) {
        if (group == groups.second) group = groups.first;
      }
    }
    return true;
  }
  return false;
}

void Grouper::DropEmptyGroups() {
  CountSizes();
  std::vector<int> renamed(result_.Count(), Grouping::none);
  int count = 0;
  for (std::size_t group = 0; group < result_.Count(); ++group) {
    if (result_.size[SpineSide][group] != 0 && result_.size[LineSide][group] != 0) {
      renamed[group] = count++;
    }
  }
  for (std::vector<int>& side : result_.groupOf) {
    for (int& group : side) {
      if (group != Grouping::none) group = renamed[static_cast<std::size_t>(group)];
    }
  }
  result_.multiplicity.assign(static_cast<std::size_t>(count), 1);
  CountSizes();
}

}  // namespace

void Recount(const RankPair& pair, Grouping& grouping) {
  for (const Side side : {SpineSide, LineSide}) {
    grouping.size[side].assign(grouping.Count(), 0);
    for (const int group : grouping.groupOf[side]) {
      if (group != Grouping::none) ++grouping.size[side][static_cast<std::size_t>(group)];
    }
  }
  std::vector<std::uint64_t> lacking(grouping.Count());
  for (std::size_t group = 0; group < grouping.Count(); ++group) {
    lacking[group] = std::uint64_t{grouping.multiplicity[group]} * grouping.size[SpineSide][group] *
                     grouping.size[LineSide][group];
  }
  grouping.cost = 0;
  for (std::uint32_t line = 0; line < pair.Lines().size(); ++line) {
    const int group = grouping.groupOf[LineSide][line];
    for (const RankPair::Link& link : pair.OfLine(line)) {
      std::uint32_t kept = 0;
      if (group != Grouping::none && grouping.groupOf[SpineSide][link.far] == group) {
        kept = std::min(link.count, grouping.multiplicity[static_cast<std::size_t>(group)]);
        lacking[static_cast<std::size_t>(group)] -= kept;
      }
      grouping.cost += link.count - kept;
    }
  }
  for (const std::uint64_t lack : lacking) grouping.cost += lack;
}

Grouping FindGroups(const RankPair& pair) {
  Grouping best = Grouper(pair).Run(LineSide);
  if (best.cost == 0) return best;
  Grouping other = Grouper(pair).Run(SpineSide);
  return other.cost < best.cost ? std::move(other) : std::move(best);
}

}  // namespace fabscope
