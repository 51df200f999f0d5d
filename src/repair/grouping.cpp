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
#include <compare>
#include <cstddef>
#include <iterator>
#include <map>
#include <numeric>
#include <utility>

namespace fabscope::internal {
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

std::strong_ordering CompareFarEnds(Links a, Links b) {
  return std::lexicographical_compare_three_way(
      a.begin(), a.end(), b.begin(), b.end(),
      [](const RankPair::Link& x, const RankPair::Link& y) { return x.far <=> y.far; });
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

  // Whether a switch has a link to another group than its own.
  bool LeavesGroup(Side side, std::uint32_t i) const {
    const std::vector<int>& farGroups = result_.groupOf[OtherSide(side)];
    const int own = result_.groupOf[side][i];
    const Links links = LinksOf(side, i);
    return std::any_of(links.begin(), links.end(), [&](const RankPair::Link& link) {
      return farGroups[link.far] != own && farGroups[link.far] != Grouping::none;
    });
  }

  // Switches of a side with the same far ends, the most frequent sets first.
  using SameLinks = std::vector<std::uint32_t>;
  std::vector<SameLinks> MostFrequentFirst(Side side) const;
  void FormCenters(Side side);
  int Join(Side side, std::uint32_t i, std::vector<std::uint32_t>& farSize);
  void GatherRest();
  void CountSizes();
  void FindMultiplicities();
  std::vector<std::uint32_t> LinesByGroup(std::vector<std::uint32_t>& first) const;
  bool Choose(Side side);
  bool MergeGroups();
  void DropEmptyGroups();

  const RankPair& pair_;
  Grouping result_;
  std::vector<std::uint32_t> tally_;  // by group; 0 but for those in seen_
  std::vector<int> seen_;
};

std::vector<Grouper::SameLinks> Grouper::MostFrequentFirst(Side side) const {
  // Sorted by a hash, which is quick; whoever makes sets of one hash has them compared.
  struct Entry {
    std::uint64_t hash;
    std::uint32_t number;
  };
  std::vector<Entry> entries;
  entries.reserve(CountOf(side));
  for (std::uint32_t i = 0; i < CountOf(side); ++i) {
    if (const Links links = LinksOf(side, i); !links.empty()) entries.push_back({HashOf(links), i});
  }
  std::sort(entries.begin(), entries.end(), [](const Entry& a, const Entry& b) {
    return a.hash != b.hash ? a.hash < b.hash : a.number < b.number;
  });
  const auto compare = [&](const Entry& a, const Entry& b) {
    return CompareFarEnds(LinksOf(side, a.number), LinksOf(side, b.number));
  };
  std::vector<SameLinks> sets;
  for (auto first = entries.begin(); first != entries.end();) {
    const auto last = std::find_if(first, entries.end(),
                                   [&](const Entry& entry) { return entry.hash != first->hash; });
    const bool areSame =
        std::all_of(first, last, [&](const Entry& entry) { return compare(*first, entry) == 0; });
    if (!areSame) {
      std::stable_sort(first, last,
                       [&](const Entry& a, const Entry& b) { return compare(a, b) < 0; });
    }
    for (auto entry = first; entry != last; ++entry) {
      const bool isNew = entry == first || (!areSame && compare(*std::prev(entry), *entry) != 0);
      if (isNew) sets.emplace_back();
      sets.back().push_back(entry->number);
    }
    first = last;
  }
  std::sort(sets.begin(), sets.end(), [](const SameLinks& x, const SameLinks& y) {
    return x.size() != y.size() ? x.size() > y.size() : x.front() < y.front();
  });
  return sets;
}

void Grouper::FormCenters(Side side) {
  std::vector<std::uint32_t> farSize;  // by group
  for (const SameLinks& set : MostFrequentFirst(side)) {
    // What is right for one of them is right for all, also where it has just become a center.
    const int group = Join(side, set.front(), farSize);
    for (const std::uint32_t i : set) result_.groupOf[side][i] = group;
  }
}

// The group that a switch joins, or of which it is the center.
int Grouper::Join(Side side, std::uint32_t i, std::vector<std::uint32_t>& farSize) {
  const Links links = LinksOf(side, i);
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
  if (best != Grouping::none || std::size_t{2} * taken >= links.size()) return best;
  best = AddGroup();
  farSize.push_back(0);
  for (const RankPair::Link& link : links) {
    int& farGroup = result_.groupOf[OtherSide(side)][link.far];
    if (farGroup != Grouping::none) continue;
    farGroup = best;
    ++farSize.back();
  }
  return best;
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
  std::vector<std::uint64_t> all(std::max(pair_.MostCables(), 1U) + 1);
  std::vector<std::uint64_t> times(all.size());
  std::vector<bool> agrees(result_.Count());
  std::vector<std::uint32_t> first;  // by group: its place in lines
  const std::vector<std::uint32_t> lines = LinesByGroup(first);
  for (std::size_t group = 0; group < result_.Count(); ++group) {
    std::uint64_t linked = 0;
    for (std::uint32_t i = first[group]; i < first[group + 1]; ++i) {
      for (const RankPair::Link& link : pair_.OfLine(lines[i])) {
        if (result_.groupOf[SpineSide][link.far] != static_cast<int>(group)) continue;
        ++times[link.count];
        ++linked;
      }
    }
    const std::uint64_t pairs =
        std::uint64_t{result_.size[SpineSide][group]} * result_.size[LineSide][group];
    std::uint64_t below = pairs - linked;
    std::uint32_t median = 0;
    for (std::uint32_t count = 1; count < times.size(); ++count) {
      all[count] += times[count];
      if (times[count] == 0 || 2 * below > pairs) continue;
      median = count;
      below += times[count];
    }
    median = std::max(median, 1U);
    agrees[group] = 3 * times[median] >= 2 * pairs;
    result_.multiplicity[group] = median;
    std::fill(times.begin(), times.end(), 0);
  }
  const auto most = std::max_element(all.begin(), all.end());
  const auto usual = *most == 0 ? 1U : static_cast<std::uint32_t>(most - all.begin());
  for (std::size_t group = 0; group < result_.Count(); ++group) {
    if (!agrees[group]) result_.multiplicity[group] = usual;
  }
}

// The lines that have a group, group by group.
std::vector<std::uint32_t> Grouper::LinesByGroup(std::vector<std::uint32_t>& first) const {
  const std::vector<int>& groupOf = result_.groupOf[LineSide];
  first.assign(result_.Count() + 1, 0);
  for (const int group : groupOf) {
    if (group != Grouping::none) ++first[static_cast<std::size_t>(group) + 1];
  }
  std::partial_sum(first.begin(), first.end(), first.begin());
  std::vector<std::uint32_t> lines(first.back());
  std::vector<std::uint32_t> next(first.begin(), first.end() - 1);
  for (std::uint32_t line = 0; line < groupOf.size(); ++line) {
    if (groupOf[line] == Grouping::none) continue;
    lines[next[static_cast<std::size_t>(groupOf[line])]++] = line;
  }
  return lines;
}

bool Grouper::Choose(Side side) {
  bool isMoved = false;
  const Side far = OtherSide(side);
  for (std::uint32_t i = 0; i < CountOf(side); ++i) {
    if (!LeavesGroup(side, i)) continue;
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

void Regroup(const RankPair& pair, Grouping& grouping, Side side, std::uint32_t i, int group) {
  const Side far = OtherSide(side);
  const auto kept = [&](int of) {
    std::uint64_t cables = 0;
    for (const RankPair::Link& link : side == SpineSide ? pair.OfSpine(i) : pair.OfLine(i)) {
      if (grouping.groupOf[far][link.far] != of) continue;
      cables += std::min(link.count, grouping.multiplicity[static_cast<std::size_t>(of)]);
    }
    return cables;
  };
  const auto wanted = [&](int of) {
    const auto place = static_cast<std::size_t>(of);
    return std::uint64_t{grouping.multiplicity[place]} * grouping.size[far][place];
  };
  // What is kept neither goes nor lacks any more.
  int& own = grouping.groupOf[side][i];
  grouping.cost += 2 * kept(own) + wanted(group);
  grouping.cost -= 2 * kept(group) + wanted(own);
  --grouping.size[side][static_cast<std::size_t>(own)];
  ++grouping.size[side][static_cast<std::size_t>(group)];
  own = group;
}

Grouping FindGroups(const RankPair& pair) {
  Grouping best = Grouper(pair).Run(LineSide);
  if (best.cost == 0) return best;
  Grouping other = Grouper(pair).Run(SpineSide);
  return other.cost < best.cost ? std::move(other) : std::move(best);
}

}  // namespace fabscope::internal
