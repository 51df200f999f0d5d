#include "repair/evidence.h"

#include <algorithm>
#include <cstddef>
#include <map>
#include <string>
#include <utility>

namespace fabscope {
namespace {

std::uint64_t KeyOf(int group, int siblings) {
  return static_cast<std::uint64_t>(group) << 32U | static_cast<std::uint32_t>(siblings);
}

}  // namespace

Evidence::Evidence(const TreeGroups& groups)
    : groups_(groups), seats_(groups), sides_(groups.pairs.size()) {
  for (std::size_t rank = 0; rank < groups.pairs.size(); ++rank) {
    for (const Side side : {SpineSide, LineSide}) {
      OfSide& facts = sides_[rank][side];
      const auto& switches =
          side == SpineSide ? groups.pairs[rank].Spines() : groups.pairs[rank].Lines();
      const Grouping& grouping = groups.groupings[rank];
      std::size_t asked = 0;
      for (std::size_t i = 0; i < switches.size(); ++i) {
        const int group = grouping.groupOf[side][i];
        const int siblings = SiblingsOf(switches[i], side);
        if (group == Grouping::none || siblings == Grouping::none) continue;
        ++facts.siblings[KeyOf(group, siblings)];
        ++asked;
      }
      std::size_t alone = 0;
      for (const auto& [key, count] : facts.siblings) alone += count == 1 ? 1 : 0;
      facts.areUnique = asked >= 4 && 5 * alone >= 4 * asked;
      std::map<std::uint32_t, std::uint32_t> sizes;
      for (const std::uint32_t size : grouping.size[side]) ++sizes[size];
      std::uint32_t most = 0;
      for (const auto& [size, times] : sizes) {
        if (times > most) most = times, facts.usualSize = size;
      }
    }
  }
}

// The pod of a line is the group that it is a spine of; that of a spine the group that it is a line
// of.
int Evidence::SiblingsOf(std::uint32_t number, Side side) const {
  return side == LineSide ? groups_.GroupBelow(number) : groups_.GroupAbove(number);
}

int Evidence::ScoreOf(std::uint32_t number, Side side, int group, int own) const {
  const int upper = groups_.ranks[number] - (side == LineSide ? 1 : 0);
  const auto rank = static_cast<std::size_t>(upper);
  int score = 0;
  for (const std::uint32_t i : groups_.graph.CablesOf(number)) {
    const SwitchGraph::Cable& cable = groups_.graph.Cables()[i];
    const std::uint32_t far = cable.Other(number);
    const int farRank = upper + (side == LineSide ? 0 : 1);
    if (groups_.ranks[far] != farRank) continue;
    const int farGroup = side == LineSide ? groups_.GroupBelow(far) : groups_.GroupAbove(far);
    if (farGroup != group) continue;
    score += seats_.Fit(i, number);
    // What its own cables in its own group say would only confirm that group.
    if (seats_.IsToldBySiblings(upper, OtherSide(side))) score += seats_.Fit(i, far);
  }
  const OfSide& facts = sides_[rank][side];
  if (facts.areUnique) {
    const auto found = facts.siblings.find(KeyOf(group, SiblingsOf(number, side)));
    const std::uint32_t mine = group == own ? 1 : 0;
    if (found != facts.siblings.end() && found->second > mine) score -= 3;
  }
  const std::uint32_t size = groups_.groupings[rank].size[side][static_cast<std::size_t>(group)];
  if (size - (group == own ? 1 : 0) < facts.usualSize) score += 1;
  return score;
}

Margin Evidence::MarginOf(std::uint32_t number, Side side) const {
  Margin margin;
  const int own = side == LineSide ? groups_.GroupAbove(number) : groups_.GroupBelow(number);
  if (own == Grouping::none) return margin;
  const auto rank = static_cast<std::size_t>(groups_.ranks[number] - (side == LineSide ? 1 : 0));
  const Grouping& grouping = groups_.groupings[rank];
  const RankPair& pair = groups_.pairs[rank];
  const Side farSide = OtherSide(side);
  const std::uint32_t place = groups_.place[number];
  const auto links = side == LineSide ? pair.OfLine(place) : pair.OfSpine(place);
  const bool isAllInside = std::all_of(links.begin(), links.end(), [&](const RankPair::Link& link) {
    return grouping.groupOf[farSide][link.far] == own;
  });
  if (isAllInside) return margin;
  std::map<int, std::int64_t> tally;
  for (const RankPair::Link& link : links) {
    const int group = grouping.groupOf[farSide][link.far];
    if (group == Grouping::none) continue;
    tally[group] += std::min(link.count, grouping.multiplicity[static_cast<std::size_t>(group)]);
  }
  const auto gain = [&](int group) {
    const auto i = static_cast<std::size_t>(group);
    return 2 * tally[group] - std::int64_t{grouping.multiplicity[i]} * grouping.size[farSide][i];
  };
  const std::int64_t ownGain = gain(own);
  const auto others = tally;
  int ownScore = 0;
  bool isScored = false;
  for (const auto& [group, count] : others) {
    if (group == own) continue;
    const int cost =
        static_cast<int>(std::min<std::int64_t>(ownGain - gain(group), Margin::plenty));
    if (cost > margin.cost) continue;
    if (!isScored) ownScore = ScoreOf(number, side, own, own), isScored = true;
    const int evidence = ownScore - ScoreOf(number, side, group, own);
    if (cost == margin.cost && evidence >= margin.evidence) continue;
    margin = {cost, evidence, group};
  }
  return margin;
}

std::size_t Evidence::NameLikeness(std::uint32_t number, Side side, int group) const {
  constexpr std::size_t enough = 8;
  const auto rank = static_cast<std::size_t>(groups_.ranks[number] - (side == LineSide ? 1 : 0));
  const RankPair& pair = groups_.pairs[rank];
  const auto& switches = side == SpineSide ? pair.Spines() : pair.Lines();
  const std::vector<int>& groupOf = groups_.groupings[rank].groupOf[side];
  const std::string& name = groups_.graph.NodeOf(number).name;
  std::vector<std::size_t> shared;
  for (std::size_t i = 0; i < switches.size() && shared.size() < enough; ++i) {
    if (groupOf[i] != group || switches[i] == number) continue;
    const std::string& other = groups_.graph.NodeOf(switches[i]).name;
    const auto [end, otherEnd] =
        std::mismatch(name.begin(), name.end(), other.begin(), other.end());
    shared.push_back(static_cast<std::size_t>(end - name.begin()));
  }
  if (shared.empty()) return 0;
  const auto middle = shared.begin() + static_cast<std::ptrdiff_t>(shared.size() / 2);
  std::nth_element(shared.begin(), middle, shared.end());
  return *middle;
}

namespace {

class TieBreaker {
 public:
  explicit TieBreaker(TreeGroups& groups) : groups_(groups), evidence_(groups) {}

  // Whether anything was moved.
  bool Run() {
    for (rank_ = 0; rank_ < groups_.pairs.size(); ++rank_) {
      if (groups_.groupings[rank_].cost == 0) continue;
      for (const Side side : {SpineSide, LineSide}) {
        MoveSingle(side);
        Exchange(side);
      }
    }
    return isMoved_;
  }

 private:
  const std::vector<std::uint32_t>& Switches(Side side) const {
    const RankPair& pair = groups_.pairs[rank_];
    return side == SpineSide ? pair.Spines() : pair.Lines();
  }
  // Answers whether it was done: it makes nothing dearer.
  bool Move(Side side, const std::vector<std::pair<std::uint32_t, int>>& moves) {
    Grouping trial = groups_.groupings[rank_];
    for (const auto& [i, group] : moves) trial.groupOf[side][i] = group;
    Recount(groups_.pairs[rank_], trial);
    if (trial.cost > groups_.groupings[rank_].cost) return false;
    groups_.groupings[rank_] = std::move(trial);
    isMoved_ = true;
    return true;
  }
  void MoveSingle(Side side) {
    const std::vector<std::uint32_t>& switches = Switches(side);
    for (std::uint32_t i = 0; i < switches.size(); ++i) {
      const Margin margin = evidence_.MarginOf(switches[i], side);
      if (margin.cost <= 0 && margin.evidence < 0) Move(side, {{i, margin.group}});
    }
  }
  // Two that could each be in the other's group change places where their names say so.
  void Exchange(Side side) {
    const std::vector<std::uint32_t>& switches = Switches(side);
    const std::vector<int>& groupOf = groups_.groupings[rank_].groupOf[side];
    std::map<std::pair<int, int>, std::vector<std::uint32_t>> tied;  // from, to
    for (std::uint32_t i = 0; i < switches.size(); ++i) {
      const Margin margin = evidence_.MarginOf(switches[i], side);
      if (margin.cost <= 0 && margin.evidence <= noEvidence) {
        tied[{groupOf[i], margin.group}].push_back(i);
      }
    }
    const auto wins = [&](std::uint32_t i, int from, int to) {
      return static_cast<std::ptrdiff_t>(evidence_.NameLikeness(switches[i], side, to)) -
             static_cast<std::ptrdiff_t>(evidence_.NameLikeness(switches[i], side, from));
    };
    for (const auto& [way, members] : tied) {
      const auto back = tied.find({way.second, way.first});
      if (way.first > way.second || back == tied.end()) continue;
      const std::size_t count = std::min(members.size(), back->second.size());
      for (std::size_t i = 0; i < count; ++i) {
        const std::uint32_t one = members[i];
        const std::uint32_t other = back->second[i];
        if (wins(one, way.first, way.second) + wins(other, way.second, way.first) <= 0) continue;
        Move(side, {{one, way.second}, {other, way.first}});
      }
    }
  }

  TreeGroups& groups_;
  Evidence evidence_;
  std::size_t rank_ = 0;
  bool isMoved_ = false;
};

}  // namespace

void DecideTies(TreeGroups& groups) {
  constexpr int rounds = 3;
  const bool isProper = std::all_of(groups.groupings.begin(), groups.groupings.end(),
                                    [](const Grouping& grouping) { return grouping.cost == 0; });
  if (isProper) return;
  for (int round = 0; round < rounds; ++round) {
    if (!TieBreaker(groups).Run()) break;
  }
}

}  // namespace fabscope
