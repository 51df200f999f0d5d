#include "repair/evidence.h"

#include <algorithm>
#include <cstddef>
#include <map>
#include <optional>
#include <string_view>
#include <utility>

namespace fabscope::internal {
namespace {

std::uint64_t KeyOf(int group, int siblings) {
  return static_cast<std::uint64_t>(group) << 32U | static_cast<std::uint32_t>(siblings);
}

// How much each says, in ports that do not fit.
constexpr int notUnique = 3;
constexpr int rival = 2;

std::uint64_t PortKeyOf(int group, std::uint8_t port) {
  return static_cast<std::uint64_t>(group) << 8U | port;
}

// The groups other than its own in which a switch would cost least, and how much dearer they are.
struct NextGroups {
  NextGroups(const TreeGroups& tree, std::uint32_t number, Side side);

  int cost = Margin::plenty;  // there is none
  std::vector<int> groups;
};

NextGroups::NextGroups(const TreeGroups& tree, std::uint32_t number, Side side) {
  const int own = side == LineSide ? tree.GroupAbove(number) : tree.GroupBelow(number);
  if (own == Grouping::none) return;
  const auto upperRank = static_cast<std::size_t>(tree.ranks[number] - (side == LineSide ? 1 : 0));
  const Grouping& grouping = tree.groupings[upperRank];
  const RankPair& pair = tree.pairs[upperRank];
  const Side farSide = OtherSide(side);
  const std::uint32_t place = tree.place[number];
  const auto links = side == LineSide ? pair.OfLine(place) : pair.OfSpine(place);
  const bool isAllInside = std::all_of(links.begin(), links.end(), [&](const RankPair::Link& link) {
    return grouping.groupOf[farSide][link.far] == own;
  });
  if (isAllInside) return;
  std::map<int, std::int64_t> tally{{own, 0}};
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
  for (const auto& [group, count] : tally) {
    if (group == own) continue;
    const auto dearer =
        static_cast<int>(std::min<std::int64_t>(ownGain - gain(group), Margin::plenty));
    if (dearer > cost) continue;
    if (dearer < cost) groups.clear();
    cost = dearer;
    groups.push_back(group);
  }
}

}  // namespace

Evidence::Evidence(const TreeGroups& groups)
    : groups_(groups),
      seats_(groups),
      sides_(groups.pairs.size()),
      holders_(groups.pairs.size()),
      members_(groups.pairs.size()) {
  for (std::size_t rank = 0; rank < groups.pairs.size(); ++rank) {
    for (const Side side : {SpineSide, LineSide}) {
      OfSide& facts = sides_[rank][side];
      const auto& switches =
          side == SpineSide ? groups.pairs[rank].Spines() : groups.pairs[rank].Lines();
      const Grouping& grouping = groups.groupings[rank];
      std::size_t asked = 0;
      for (std::size_t i = 0; i < switches.size(); ++i) {
        const int group = grouping.groupOf[side][i];
        if (side == LineSide && group != Grouping::none) CountPorts(switches[i], side, group, 1);
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

// Calls `use` with each cable that a switch, as a member of a group, has in it, and its far end.
template <typename Use>
void Evidence::ForCablesInto(std::uint32_t number, Side side, int group, Use use) const {
  const int farRank = groups_.ranks[number] + (side == LineSide ? -1 : 1);
  for (const std::uint32_t i : groups_.graph.CablesOf(number)) {
    const std::uint32_t far = groups_.graph.Cables()[i].Other(number);
    if (groups_.ranks[far] == farRank && GroupOf(far, OtherSide(side)) == group) use(i, far);
  }
}

void Evidence::CountPorts(std::uint32_t number, Side side, int group, int times) {
  auto& holders = holders_[UpperRank(number, side)];
  ForCablesInto(number, side, group, [&](std::uint32_t i, std::uint32_t far) {
    const SwitchGraph::Cable& cable = groups_.graph.Cables()[i];
    holders[OtherSide(side)][PortKeyOf(group, cable.PortAt(far))][number] += times;
    holders[side][PortKeyOf(group, cable.PortAt(number))][far] += times;
  });
}

void Evidence::Move(std::uint32_t number, Side side, int from, int to) {
  CountPorts(number, side, from, -1);
  CountPorts(number, side, to, 1);
  if (Members& members = members_[UpperRank(number, side)][side]; !members.empty()) {
    members[static_cast<std::size_t>(from)].erase(number);
    members[static_cast<std::size_t>(to)].insert(number);
  }
  const int siblings = SiblingsOf(number, side);
  if (siblings == Grouping::none) return;
  auto& counts = sides_[UpperRank(number, side)][side].siblings;
  --counts[KeyOf(from, siblings)];
  ++counts[KeyOf(to, siblings)];
}

// Whether another member of the group has the port that the cable has at its far end. One that
// leaves for this switch does not count.
bool Evidence::HasRival(std::uint32_t cable, std::uint32_t number, Side side, int group,
                        std::uint32_t leaver) const {
  const std::size_t upper = UpperRank(number, side);
  const Side end = OtherSide(side);
  if (!seats_.HasOwnPorts(upper, end)) return false;
  const SwitchGraph::Cable& it = groups_.graph.Cables()[cable];
  const auto found = holders_[upper][end].find(PortKeyOf(group, it.PortAt(it.Other(number))));
  if (found == holders_[upper][end].end()) return false;
  return std::any_of(found->second.begin(), found->second.end(), [&](const auto& holder) {
    return holder.first != number && holder.first != leaver && holder.second > 0;
  });
}

// What the rest of its pod says of a switch in a group: the ports that they use, and that a group
// has one switch of each pod.
int Evidence::PodScoreOf(std::uint32_t number, Side side, int group, std::uint32_t leaver) const {
  int score = 0;
  ForCablesInto(number, side, group,
                [&](std::uint32_t i, std::uint32_t far) { score += seats_.FitOfSiblings(i, far); });
  const OfSide& facts = sides_[UpperRank(number, side)][side];
  if (!facts.areUnique) return score;
  const int siblings = SiblingsOf(number, side);
  const auto found = facts.siblings.find(KeyOf(group, siblings));
  if (found == facts.siblings.end()) return score;
  const bool isIn = GroupOf(number, side) == group;
  const bool isLeft = leaver != SwitchGraph::none && SiblingsOf(leaver, side) == siblings;
  const std::int64_t others = found->second - (isIn ? 1 : 0) - (isLeft ? 1 : 0);
  return others > 0 ? score - notUnique : score;
}

int Evidence::ScoreOf(std::uint32_t number, Side side, int group, std::uint32_t leaver) const {
  int score = PodScoreOf(number, side, group, leaver);
  // What its own cables say of the ports at their far ends would only confirm the group it is in.
  ForCablesInto(number, side, group, [&](std::uint32_t i, std::uint32_t) {
    score += seats_.Fit(i, number);
    if (HasRival(i, number, side, group, leaver)) score -= rival;
  });
  return score;
}

// Groups of a usual size are likelier.
int Evidence::SizeScoreOf(std::uint32_t number, Side side, int group) const {
  const std::size_t rank = UpperRank(number, side);
  const std::uint32_t size = groups_.groupings[rank].size[side][static_cast<std::size_t>(group)];
  const std::uint32_t others = size - (GroupOf(number, side) == group ? 1 : 0);
  return others < sides_[rank][side].usualSize ? 1 : 0;
}

int Evidence::ForStaying(std::uint32_t one, std::uint32_t other, Side side) const {
  const int group = GroupOf(one, side);
  const int otherGroup = GroupOf(other, side);
  return ScoreOf(one, side, group, SwitchGraph::none) - ScoreOf(one, side, otherGroup, other) +
         ScoreOf(other, side, otherGroup, SwitchGraph::none) - ScoreOf(other, side, group, one);
}

Margin Evidence::MarginOf(std::uint32_t number, Side side) const {
  Margin margin;
  const int own = GroupOf(number, side);
  if (own == Grouping::none) return margin;
  margin.pod = PodScoreOf(number, side, own, SwitchGraph::none);
  const NextGroups next(groups_, number, side);
  const auto scoreOf = [&](int group) {
    return ScoreOf(number, side, group, SwitchGraph::none) + SizeScoreOf(number, side, group);
  };
  std::optional<int> ownScore;
  for (const int group : next.groups) {
    if (!ownScore) ownScore = scoreOf(own);
    const int evidence = *ownScore - scoreOf(group);
    if (next.cost == margin.cost && evidence >= margin.evidence) continue;
    margin.cost = next.cost;
    margin.evidence = evidence;
    margin.group = group;
  }
  return margin;
}

Evidence::Members& Evidence::MembersOf(std::size_t upperRank, Side side) {
  Members& members = members_[upperRank][side];
  if (!members.empty()) return members;
  const RankPair& pair = groups_.pairs[upperRank];
  const Grouping& grouping = groups_.groupings[upperRank];
  const auto& switches = side == SpineSide ? pair.Spines() : pair.Lines();
  members.resize(grouping.Count());
  for (std::size_t i = 0; i < switches.size(); ++i) {
    const int group = grouping.groupOf[side][i];
    if (group != Grouping::none) members[static_cast<std::size_t>(group)].insert(switches[i]);
  }
  return members;
}

std::size_t Evidence::NameLikeness(std::uint32_t number, Side side, int group) {
  constexpr std::size_t enough = 8;
  const std::string_view name = groups_.graph.NodeOf(number).name;
  std::vector<std::size_t> shared;
  for (const std::uint32_t member :
       MembersOf(UpperRank(number, side), side)[static_cast<std::size_t>(group)]) {
    if (shared.size() == enough) break;
    if (member == number) continue;
    const std::string_view other = groups_.graph.NodeOf(member).name;
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
  explicit TieBreaker(TreeGroups& groups) : groups_(groups) {}

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
    Grouping& grouping = groups_.groupings[rank_];
    const std::uint64_t cost = grouping.cost;
    std::vector<int> before;
    for (const auto& [i, group] : moves) {
      before.push_back(grouping.groupOf[side][i]);
      Regroup(groups_.pairs[rank_], grouping, side, i, group);
    }
    const bool isDearer = grouping.cost > cost;
    for (std::size_t move = 0; move < moves.size(); ++move) {
      const auto& [i, group] = moves[move];
      if (isDearer) {
        Regroup(groups_.pairs[rank_], grouping, side, i, before[move]);
      } else {
        GetEvidence().Move(Switches(side)[i], side, before[move], group);
      }
    }
    isMoved_ = isMoved_ || !isDearer;
    return !isDearer;
  }
  void MoveSingle(Side side) {
    const std::vector<std::uint32_t>& switches = Switches(side);
    for (std::uint32_t i = 0; i < switches.size(); ++i) {
      if (NextGroups(groups_, switches[i], side).cost > 0) continue;
      const Margin margin = GetEvidence().MarginOf(switches[i], side);
      if (margin.evidence < 0) Move(side, {{i, margin.group}});
    }
  }
  // Two that could each be in the other's group change places where more speaks for that, or their
  // names do.
  void Exchange(Side side) {
    const std::vector<std::uint32_t>& switches = Switches(side);
    const std::vector<int>& groupOf = groups_.groupings[rank_].groupOf[side];
    std::map<std::pair<int, int>, std::set<std::uint32_t>> tied;  // from, to
    for (std::uint32_t i = 0; i < switches.size(); ++i) {
      if (NextGroups(groups_, switches[i], side).cost > 0) continue;
      const Margin margin = GetEvidence().MarginOf(switches[i], side);
      tied[{groupOf[i], margin.group}].insert(i);
    }
    const auto wins = [&](std::uint32_t i, int from, int to) {
      return static_cast<std::ptrdiff_t>(GetEvidence().NameLikeness(switches[i], side, to)) -
             static_cast<std::ptrdiff_t>(GetEvidence().NameLikeness(switches[i], side, from));
    };
    for (const auto& [way, members] : tied) {
      const auto back = tied.find({way.second, way.first});
      if (way.first > way.second || back == tied.end()) continue;
      for (const std::uint32_t one : members) {
        std::optional<std::uint32_t> best;
        std::pair<int, std::ptrdiff_t> least{0, 0};
        std::size_t asked = 0;
        for (const std::uint32_t other : back->second) {
          if (asked++ == mostPartners) break;
          const int staying = GetEvidence().ForStaying(switches[one], switches[other], side);
          if (staying > noEvidence) continue;
          const std::pair<int, std::ptrdiff_t> now{
              std::min(staying, 0),
              -wins(one, way.first, way.second) - wins(other, way.second, way.first)};
          if (now < least) least = now, best = other;
        }
        if (best && Move(side, {{one, way.second}, {*best, way.first}})) back->second.erase(*best);
      }
    }
  }

  // Gathered at the first tie; nothing has been moved before it.
  Evidence& GetEvidence() { return evidence_ ? *evidence_ : evidence_.emplace(groups_); }

  TreeGroups& groups_;
  std::optional<Evidence> evidence_;
  std::size_t rank_ = 0;
  bool isMoved_ = false;
};

}  // namespace

void DecideTies(TreeGroups& groups) {
  constexpr int rounds = 3;
  if (groups.AreProper()) return;
  for (int round = 0; round < rounds; ++round) {
    if (!TieBreaker(groups).Run()) break;
  }
}

}  // namespace fabscope::internal
