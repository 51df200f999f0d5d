// From groups to hands: which cable goes where.
//
// What is wrong between two switches is told by the groups: cables too many (extras) and cables too
// few (lacks). An extra and a lack that share a switch are one cable whose other end is in the
// wrong place. Of several that could be matched the ports decide: the end that stays should be
// where the lack wants it. A leaf whose port 7 always leads to spine 1 and now leads to spine 3
// keeps its end.
//
// Where the scheme of ports is strong, a cable that joins the right switches at a wrong port
// belongs to the damage when a lack wants its port: then it moves, too, and everything is back in
// its seat.
//
// An end that comes new to a switch takes the port of the scheme, else one that another cable
// leaves, else the lowest free one.

#include "repair/changes.h"

#include <algorithm>
#include <bitset>
#include <map>
#include <set>
#include <tuple>
#include <utility>

#include "repair/seats.h"

namespace fabscope::internal {
namespace {

struct Lack {
  std::uint32_t spine = 0;
  std::uint32_t line = 0;
  RepairReason reason{};
};

class ChangeFinder {
 public:
  explicit ChangeFinder(const TreeGroups& groups)
      : groups_(groups),
        seats_(groups),
        isExtra_(groups.graph.Cables().size()),
        inUse_(groups.graph.Count()) {}

  Changes Find() {
    FindMisplaced();
    if (changes_.AreTooMany(groups_.graph)) return std::move(changes_);
    for (int round = 0;; ++round) {
      if (round < mostRounds) TakeSeats();
      Match();
      if (!GiveBackSeats()) break;
      ForgetSeats();
    }
    PlugIn();
    if (!changes_.uncertain.empty()) LeaveOutUncertain();
    return std::move(changes_);
  }

 private:
  static constexpr int mostRounds = 6;

  void FindMisplaced() {
    FindExtrasBetween();
    for (std::size_t rank = 0; rank < groups_.pairs.size(); ++rank) {
      if (groups_.groupings[rank].cost != 0) CompareGroups(rank);
    }
    changes_.extras = extras_.size();
    changes_.lacks = lacks_.size();
  }
  void ForgetSeats() {
    while (extras_.size() > changes_.extras) {
      isExtra_[extras_.back().first] = false;
      extras_.pop_back();
    }
    lacks_.resize(changes_.lacks);
    forSeats_.clear();
  }
  const SwitchGraph::Cable& Cable(std::uint32_t i) const { return groups_.graph.Cables()[i]; }
  bool IsExtra(std::uint32_t cable) const { return isExtra_[cable]; }
  void AddExtra(std::uint32_t cable, RepairReason reason) {
    isExtra_[cable] = true;
    extras_.emplace_back(cable, reason);
  }

  void FindExtrasBetween();
  void CompareGroups(std::size_t rank);
  void ComparePair(std::uint32_t spine, std::uint32_t line, std::uint32_t multiplicity);
  void TakeSeats();
  bool GiveBackSeats();
  void TakeSeat(const Lack& lack);
  std::uint32_t CableAt(std::uint32_t number, std::uint8_t port) const;
  void Match();
  // `lacksOf`: by extra.
  void MakeRoom(const std::vector<std::vector<std::size_t>>& lacksOf);
  // How well the end of an extra that stays suits a lack: 0 not at all.
  int Suitability(std::uint32_t cable, const Lack& lack) const;
  struct Plug {
    std::size_t target;
    std::uint32_t number;  // where it goes
    std::uint32_t far;
    bool isUpper;
  };
  void PlugIn();
  std::vector<Plug> FindPlugs();
  void LeaveOutUncertain();
  std::vector<std::pair<int, int>> GroupsOf(const CableTarget& target) const;
  void LookAtPorts(std::uint32_t number);
  std::uint8_t TakeSeatPort(std::uint32_t number, std::uint32_t far);
  // One that another cable leaves, else the lowest free one; 0 if there is none.
  std::uint8_t TakeFreePort(std::uint32_t number);

  static constexpr std::size_t nobody = ~std::size_t{0};

  const TreeGroups& groups_;
  Seats seats_;
  Changes changes_;
  std::vector<std::pair<std::uint32_t, RepairReason>> extras_;
  std::vector<bool> isExtra_;                      // by cable
  std::map<std::size_t, std::uint32_t> forSeats_;  // cables that must leave a seat, by their lack
  std::set<std::uint32_t> seated_;                 // those that must not
  std::vector<Lack> lacks_;
  std::vector<std::size_t> lackOfExtra_;
  std::vector<std::size_t> extraOfLack_;
  // By switch, of those that are touched: ports in use once the extras are gone.
  std::vector<std::optional<std::bitset<256>>> inUse_;
};

void ChangeFinder::FindExtrasBetween() {
  const auto& cables = groups_.graph.Cables();
  for (std::uint32_t i = 0; i < cables.size(); ++i) {
    if (groups_.IsInsideGroup(cables[i])) continue;
    const int a = groups_.ranks[cables[i].a];
    const int b = groups_.ranks[cables[i].b];
    if (a == TreeRanks::none || b == TreeRanks::none) continue;
    AddExtra(i, a == b                              ? RepairReason::SameRank
                : groups_.JoinsNeighbors(cables[i]) ? RepairReason::WrongGroup
                                                    : RepairReason::SkipsRank);
  }
}

void ChangeFinder::CompareGroups(std::size_t rank) {
  const Grouping& grouping = groups_.groupings[rank];
  const RankPair& pair = groups_.pairs[rank];
  std::vector<std::vector<std::uint32_t>> spinesOf(grouping.Count());
  for (std::uint32_t i = 0; i < pair.Spines().size(); ++i) {
    const int group = grouping.groupOf[SpineSide][i];
    if (group != Grouping::none) spinesOf[static_cast<std::size_t>(group)].push_back(i);
  }
  std::vector<std::uint32_t> count(pair.Spines().size());
  for (std::uint32_t i = 0; i < pair.Lines().size(); ++i) {
    const int group = grouping.groupOf[LineSide][i];
    if (group == Grouping::none) continue;
    const auto place = static_cast<std::size_t>(group);
    for (const RankPair::Link& link : pair.OfLine(i)) count[link.far] = link.count;
    for (const std::uint32_t spine : spinesOf[place]) {
      if (count[spine] == grouping.multiplicity[place]) continue;
      ComparePair(pair.Spines()[spine], pair.Lines()[i], grouping.multiplicity[place]);
    }
    for (const RankPair::Link& link : pair.OfLine(i)) count[link.far] = 0;
  }
}

void ChangeFinder::ComparePair(std::uint32_t spine, std::uint32_t line,
                               std::uint32_t multiplicity) {
  std::vector<std::pair<int, std::uint32_t>> cables;  // the worst seated first
  for (const std::uint32_t i : groups_.graph.CablesOf(line)) {
    if (Cable(i).Other(line) != spine) continue;
    cables.emplace_back(seats_.Fit(i, spine) + seats_.Fit(i, line), i);
  }
  std::sort(cables.begin(), cables.end());
  for (std::size_t i = 0; i + multiplicity < cables.size(); ++i) {
    AddExtra(cables[i].second, RepairReason::TooMany);
  }
  for (std::size_t i = cables.size(); i < multiplicity; ++i) {
    lacks_.push_back({spine, line, RepairReason::LinkLacking});
  }
}

std::uint32_t ChangeFinder::CableAt(std::uint32_t number, std::uint8_t port) const {
  for (const std::uint32_t i : groups_.graph.CablesOf(number)) {
    if (Cable(i).PortAt(number) == port) return i;
  }
  return SwitchGraph::none;
}

void ChangeFinder::TakeSeats() {
  const std::size_t most = 4 * lacks_.size() + 16;
  for (std::size_t i = 0; i < lacks_.size() && lacks_.size() < most; ++i) {
    const Lack lack = lacks_[i];
    TakeSeat(lack);
  }
}

// When the seat of a lack, at both of its ends, is taken by cables that fit badly there, they must
// leave it.
void ChangeFinder::TakeSeat(const Lack& lack) {
  const int rank = groups_.ranks[lack.spine];
  for (const auto& [near, far, end] : {std::tuple(lack.line, lack.spine, LineSide),
                                       std::tuple(lack.spine, lack.line, SpineSide)}) {
    if (!seats_.IsStrong(rank, end)) continue;
    const std::vector<std::uint8_t> ports = seats_.Expected(near, far, 2);
    if (ports.size() != 1) continue;
    const std::uint32_t holder = CableAt(near, ports.front());
    if (holder == SwitchGraph::none || IsExtra(holder)) continue;
    const SwitchGraph::Cable& cable = Cable(holder);
    if (!groups_.IsInsideGroup(cable) || seats_.Fit(holder, near) >= 0) continue;
    if (seated_.contains(holder)) continue;
    if (groups_.UpperOf(cable) != (end == LineSide ? cable.Other(near) : near)) continue;
    AddExtra(holder, RepairReason::WrongSpine);
    forSeats_[lacks_.size()] = holder;
    lacks_.push_back({groups_.UpperOf(cable), groups_.LowerOf(cable), RepairReason::WrongSpine});
  }
}

// A cable that would leave a seat only to lack where it was stays: the ports are not by the scheme
// there, and nothing is won. Answers whether there were such.
bool ChangeFinder::GiveBackSeats() {
  bool isAny = false;
  for (const auto& [lack, cable] : forSeats_) {
    if (extraOfLack_[lack] == nobody) isAny |= seated_.insert(cable).second;
  }
  return isAny;
}

int ChangeFinder::Suitability(std::uint32_t cable, const Lack& lack) const {
  const SwitchGraph::Cable& it = Cable(cable);
  int best = 0;
  for (const std::uint32_t stay : {it.a, it.b}) {
    if (stay != lack.spine && stay != lack.line) continue;
    const std::uint32_t far = stay == lack.spine ? lack.line : lack.spine;
    // A cable between the two switches of the lack is none too many.
    if (it.Other(stay) == far) continue;
    const Side end = stay == lack.spine ? SpineSide : LineSide;
    const int rank = groups_.ranks[lack.spine];
    const int fit = seats_.Fit(stay, it.PortAt(stay), far, SwitchGraph::none);
    const int leaves = -seats_.Fit(cable, it.Other(stay));
    int score = 20 + 8 * fit + leaves;
    if (fit < 0 && seats_.IsStrong(rank, end)) continue;
    // The scheme moves ends between switches of one rank.
    if (groups_.ranks[it.Other(stay)] == groups_.ranks[far]) score += 4;
    best = std::max(best, score);
  }
  return best;
}

// The best pairs first; then, what is left over is made room for.
void ChangeFinder::Match() {
  lackOfExtra_.assign(extras_.size(), nobody);
  extraOfLack_.assign(lacks_.size(), nobody);
  std::vector<std::vector<std::size_t>> lacksAt(groups_.graph.Count());
  for (std::size_t i = 0; i < lacks_.size(); ++i) {
    lacksAt[lacks_[i].spine].push_back(i);
    lacksAt[lacks_[i].line].push_back(i);
  }
  struct Pair {
    int score;
    std::size_t extra;
    std::size_t lack;
  };
  std::vector<Pair> pairs;
  std::vector<std::vector<std::size_t>> lacksOf(extras_.size());
  for (std::size_t i = 0; i < extras_.size(); ++i) {
    const SwitchGraph::Cable& cable = Cable(extras_[i].first);
    for (const std::uint32_t end : {cable.a, cable.b}) {
      for (const std::size_t lack : lacksAt[end]) {
        const int score = Suitability(extras_[i].first, lacks_[lack]);
        if (score == 0) continue;
        pairs.push_back({score, i, lack});
        lacksOf[i].push_back(lack);
      }
    }
  }
  std::sort(pairs.begin(), pairs.end(), [](const Pair& a, const Pair& b) {
    return std::tie(b.score, a.extra, a.lack) < std::tie(a.score, b.extra, b.lack);
  });
  for (const Pair& pair : pairs) {
    if (lackOfExtra_[pair.extra] != nobody || extraOfLack_[pair.lack] != nobody) continue;
    lackOfExtra_[pair.extra] = pair.lack;
    extraOfLack_[pair.lack] = pair.extra;
  }
  MakeRoom(lacksOf);
}

// Augmenting paths: an extra without a lack may take one whose extra finds another. What a search
// without success has visited leads to no free lack later, either.
void ChangeFinder::MakeRoom(const std::vector<std::vector<std::size_t>>& lacksOf) {
  std::vector<bool> isVisited(lacks_.size());
  std::vector<std::size_t> visited;
  const auto augment = [&](std::size_t start) {
    std::vector<std::pair<std::size_t, std::size_t>> open{{start, 0}};  // extra, next lack to try
    std::vector<std::size_t> via;
    visited.clear();
    while (!open.empty()) {
      auto& [extra, next] = open.back();
      if (next == lacksOf[extra].size()) {
        open.pop_back();
        if (!via.empty()) via.pop_back();
        continue;
      }
      const std::size_t lack = lacksOf[extra][next++];
      if (isVisited[lack]) continue;
      isVisited[lack] = true;
      visited.push_back(lack);
      via.push_back(lack);
      if (extraOfLack_[lack] != nobody) {
        open.emplace_back(extraOfLack_[lack], 0);
        continue;
      }
      for (std::size_t i = 0; i < open.size(); ++i) {
        lackOfExtra_[open[i].first] = via[i];
        extraOfLack_[via[i]] = open[i].first;
      }
      for (const std::size_t i : visited) isVisited[i] = false;
      return;
    }
  };
  for (std::size_t i = 0; i < extras_.size(); ++i) {
    if (lackOfExtra_[i] == nobody && !lacksOf[i].empty()) augment(i);
  }
}

void ChangeFinder::LookAtPorts(std::uint32_t number) {
  if (inUse_[number]) return;
  std::bitset<256>& inUse = inUse_[number].emplace();
  for (const IBPort& port : groups_.graph.NodeOf(number).ports) {
    // At the last two kinds a cable would not count.
    const bool isSpoiled = port.fnm || port.fnm1 || !port.symmetric;
    if (port.remotePort != nullptr || isSpoiled) inUse.set(port.num);
  }
}

std::uint8_t ChangeFinder::TakeSeatPort(std::uint32_t number, std::uint32_t far) {
  std::bitset<256>& inUse = *inUse_[number];
  for (const std::uint8_t port : seats_.Expected(number, far)) {
    if (port > groups_.graph.NodeOf(number).numPorts || inUse.test(port)) continue;
    inUse.set(port);
    return port;
  }
  return 0;
}

std::uint8_t ChangeFinder::TakeFreePort(std::uint32_t number) {
  std::bitset<256>& inUse = *inUse_[number];
  for (const std::uint32_t i : groups_.graph.CablesOf(number)) {
    const std::uint8_t port = Cable(i).PortAt(number);
    if (!IsExtra(i) || inUse.test(port)) continue;
    inUse.set(port);
    return port;
  }
  for (unsigned port = 1; port <= groups_.graph.NodeOf(number).numPorts; ++port) {
    if (inUse.test(port)) continue;
    inUse.set(port);
    return static_cast<std::uint8_t>(port);
  }
  return 0;
}

void ChangeFinder::PlugIn() {
  for (const auto& [cable, reason] : extras_) {
    for (const std::uint32_t end : {Cable(cable).a, Cable(cable).b}) {
      LookAtPorts(end);
      inUse_[end]->reset(Cable(cable).PortAt(end));
    }
  }
  for (const Lack& lack : lacks_) LookAtPorts(lack.spine), LookAtPorts(lack.line);
  const std::vector<Plug> plugs = FindPlugs();
  std::vector<CableTarget>& targets = changes_.targets;
  // Seats first, so that nobody without one takes another's.
  for (const bool bySeat : {true, false}) {
    for (const Plug& plug : plugs) {
      auto& end = plug.isUpper ? targets[plug.target].upper : targets[plug.target].lower;
      if (end) continue;
      const std::uint8_t port =
          bySeat ? TakeSeatPort(plug.number, plug.far) : TakeFreePort(plug.number);
      if (port != 0) end = CableTarget::End{plug.number, port};
    }
  }
  for (const Plug& plug : plugs) {
    CableTarget& target = targets[plug.target];
    if (target.upper && target.lower) continue;
    const std::uint32_t spine = plug.isUpper ? plug.number : plug.far;
    changes_.uncertain.emplace(groups_.ranks[spine], groups_.GroupBelow(spine));
    target.upper = target.lower = std::nullopt;
  }
  std::erase_if(targets, [](const CableTarget& target) {
    return target.cable == SwitchGraph::none && !target.upper;
  });
}

// Makes the targets, with the ends that stay, and tells which plugs still need a port.
std::vector<ChangeFinder::Plug> ChangeFinder::FindPlugs() {
  std::vector<Plug> plugs;
  std::vector<CableTarget>& targets = changes_.targets;
  std::set<std::uint32_t> forSeats;
  for (const auto& [lack, cable] : forSeats_) forSeats.insert(cable);
  const auto add = [&](const Lack& lack, std::size_t target, bool atSpine) {
    plugs.push_back(
        {target, atSpine ? lack.spine : lack.line, atSpine ? lack.line : lack.spine, atSpine});
  };
  for (std::size_t i = 0; i < extras_.size(); ++i) {
    const auto& [number, reason] = extras_[i];
    targets.push_back({number, {}, {}, reason, forSeats.contains(number)});
    if (lackOfExtra_[i] == nobody) continue;
    const SwitchGraph::Cable& cable = Cable(number);
    const Lack& lack = lacks_[lackOfExtra_[i]];
    const bool staysAtLine = lack.line == cable.a || lack.line == cable.b;
    const std::uint32_t stay = staysAtLine ? lack.line : lack.spine;
    // Ends that stay keep their ports.
    inUse_[stay]->set(cable.PortAt(stay));
    const CableTarget::End end{stay, cable.PortAt(stay)};
    (staysAtLine ? targets.back().lower : targets.back().upper) = end;
    if (reason == RepairReason::TooMany) targets.back().reason = RepairReason::WrongSpine;
    add(lack, i, staysAtLine);
  }
  for (std::size_t i = 0; i < lacks_.size(); ++i) {
    if (extraOfLack_[i] != nobody) continue;
    targets.push_back({SwitchGraph::none, {}, {}, RepairReason::LinkLacking, false});
    add(lacks_[i], targets.size() - 1, true);
    add(lacks_[i], targets.size() - 1, false);
  }
  return plugs;
}

// The groups that a change takes part in.
std::vector<std::pair<int, int>> ChangeFinder::GroupsOf(const CableTarget& target) const {
  std::vector<std::pair<int, int>> found;
  const auto add = [&](std::uint32_t upper, std::uint32_t lower) {
    if (groups_.ranks[lower] - groups_.ranks[upper] != 1) return;
    found.emplace_back(groups_.ranks[upper], groups_.GroupBelow(upper));
    found.emplace_back(groups_.ranks[upper], groups_.GroupAbove(lower));
  };
  if (target.cable != SwitchGraph::none) {
    add(groups_.UpperOf(Cable(target.cable)), groups_.LowerOf(Cable(target.cable)));
  }
  if (target.upper) add(target.upper->number, target.lower->number);
  return found;
}

// What touches an uncertain group is left out, and makes the other groups that it touches
// uncertain; so does what needs a port that would have become free by that.
void ChangeFinder::LeaveOutUncertain() {
  std::vector<CableTarget>& targets = changes_.targets;
  std::map<std::pair<int, int>, std::vector<std::size_t>> ofGroup;
  std::map<std::pair<std::uint32_t, std::uint8_t>, std::vector<std::size_t>> takers;  // of a port
  for (std::size_t i = 0; i < targets.size(); ++i) {
    for (const auto& group : GroupsOf(targets[i])) ofGroup[group].push_back(i);
    for (const auto& end : {targets[i].upper, targets[i].lower}) {
      if (end) takers[{end->number, end->port}].push_back(i);
    }
  }
  std::vector<bool> isOut(targets.size());
  std::vector<std::size_t> open;
  const auto leaveOut = [&](const std::vector<std::size_t>& those) {
    for (const std::size_t i : those) {
      if (!isOut[i]) open.push_back(i);
      isOut[i] = true;
    }
  };
  for (const auto& group : changes_.uncertain) leaveOut(ofGroup[group]);
  while (!open.empty()) {
    const CableTarget& target = targets[open.back()];
    open.pop_back();
    for (const auto& group : GroupsOf(target)) {
      if (changes_.uncertain.insert(group).second) leaveOut(ofGroup[group]);
    }
    if (target.cable == SwitchGraph::none) continue;
    const SwitchGraph::Cable& cable = Cable(target.cable);
    if (!groups_.JoinsNeighbors(cable)) continue;
    leaveOut(takers[{cable.a, cable.portA}]);
    leaveOut(takers[{cable.b, cable.portB}]);
  }
  std::vector<CableTarget> kept;
  for (std::size_t i = 0; i < targets.size(); ++i) {
    CableTarget target = targets[i];
    if (isOut[i]) {
      if (target.cable == SwitchGraph::none) continue;
      if (groups_.JoinsNeighbors(Cable(target.cable))) continue;
      // What is wrong in any tree goes all the same.
      target.upper = target.lower = std::nullopt;
    }
    kept.push_back(target);
  }
  targets = std::move(kept);
}

}  // namespace

Changes FindChanges(const TreeGroups& groups) { return ChangeFinder(groups).Find(); }

}  // namespace fabscope::internal
