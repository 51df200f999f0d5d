#include "repair/seats.h"

#include <algorithm>
#include <cstdlib>
#include <numeric>

namespace fabscope::internal {

Seats::Seats(const TreeGroups& groups) : groups_(groups) {
  const std::size_t pairCount = groups.pairs.size();
  counts_.resize(pairCount);
  best_.resize(pairCount);
  strength_.resize(pairCount);
  std::vector<InnerCables> cables(pairCount);  // by upper rank
  for (const SwitchGraph::Cable& cable : groups.graph.Cables()) {
    if (!groups.IsInsideGroup(cable)) continue;
    const std::uint32_t upper = groups.UpperOf(cable);
    const std::uint32_t lower = cable.Other(upper);
    const auto rank = static_cast<std::size_t>(groups.ranks[upper]);
    const auto group = static_cast<std::size_t>(groups.GroupBelow(upper));
    cables[rank].push_back({{upper, lower},
                            {cable.PortAt(upper), cable.PortAt(lower)},
                            groups.groupings[rank].multiplicity[group]});
  }
  for (std::size_t rank = 0; rank < pairCount; ++rank) {
    for (const Side end : {SpineSide, LineSide}) {
      double best = -1;
      for (const Table table : {Own, OfSiblings}) {
        const double strength = Fill(rank, end, table, cables[rank]);
        strength_[rank][end][table] = strength;
        if (strength <= best) continue;
        best = strength;
        best_[rank][end] = table;
      }
    }
  }
}

// Siblings of a line are the lines with the same lines below; of a spine, those with the same
// spines above. Leaves and roots have none.
std::uint32_t Seats::KeyOf(Side end, Table table, std::uint32_t farEnd) const {
  if (table == Own) return groups_.place[farEnd];
  const int group = end == SpineSide ? groups_.GroupBelow(farEnd) : groups_.GroupAbove(farEnd);
  return group == Grouping::none ? noKey : static_cast<std::uint32_t>(group);
}

std::uint32_t Seats::KeyCount(std::size_t upperRank, Side end, Table table) const {
  const auto ofRank = [&](std::size_t rank) {
    return rank < groups_.groupings.size() ? groups_.groupings[rank].Count() : 0;
  };
  const RankPair& pair = groups_.pairs[upperRank];
  const std::size_t count = table == Own ? (end == SpineSide ? pair.Lines() : pair.Spines()).size()
                            : end == SpineSide ? ofRank(upperRank + 1)
                                               : ofRank(upperRank - 1);
  return static_cast<std::uint32_t>(count);
}

Seats::SeatsByKey Seats::Collect(std::size_t upperRank, Side end, Table table,
                                 const InnerCables& cables) const {
  std::vector<std::uint32_t> keys(cables.size());
  SeatsByKey sorted;
  sorted.first.assign(KeyCount(upperRank, end, table) + std::size_t{1}, 0);
  for (std::size_t i = 0; i < cables.size(); ++i) {
    keys[i] = KeyOf(end, table, cables[i].ends[OtherSide(end)]);
    if (keys[i] != noKey) ++sorted.first[keys[i] + 1];
  }
  std::partial_sum(sorted.first.begin(), sorted.first.end(), sorted.first.begin());
  sorted.seats.resize(sorted.first.back());
  std::vector<std::uint32_t> next(sorted.first.begin(), sorted.first.end() - 1);
  for (std::size_t i = 0; i < cables.size(); ++i) {
    if (keys[i] == noKey) continue;
    sorted.seats[next[keys[i]]++] = {cables[i].ports[end], cables[i].multiplicity};
  }
  return sorted;
}

double Seats::Fill(std::size_t upperRank, Side end, Table table, const InnerCables& cables) {
  const SeatsByKey sorted = Collect(upperRank, end, table, cables);
  CountsByKey& result = counts_[upperRank][end][table];
  result.first.push_back(0);
  std::array<std::uint32_t, 256> times{};  // by port
  std::uint64_t fits = 0;
  std::uint64_t asked = 0;
  for (std::size_t key = 0; key + 1 < sorted.first.size(); ++key) {
    const std::span<const Seat> seats(sorted.seats.data() + sorted.first[key],
                                      sorted.seats.data() + sorted.first[key + 1]);
    for (const Seat& seat : seats) {
      if (times[seat.port]++ == 0) result.counts.push_back({seat.port, 0});
    }
    const std::span<Count> counts(result.counts.data() + result.first[key],
                                  result.counts.data() + result.counts.size());
    for (Count& count : counts) count.times = times[count.port];
    std::sort(counts.begin(), counts.end(), [](const Count& a, const Count& b) {
      return a.times != b.times ? a.times > b.times : a.port < b.port;
    });
    result.first.push_back(static_cast<std::uint32_t>(result.counts.size()));
    for (const Seat& seat : seats) {
      const std::uint32_t mine = times[seat.port] - 1;
      const std::uint32_t second = counts.size() > 1 ? counts[1].times : 0;
      const std::uint32_t others = mine + 1 == counts[0].times ? second : counts[0].times;
      const int fit = FitOf(mine, std::max(mine, others),
                            static_cast<std::uint32_t>(seats.size() - 1), seat.multiplicity);
      asked += fit != 0 ? 1 : 0;
      fits += fit > 0 ? 1 : 0;
    }
    for (const Count& count : counts) times[count.port] = 0;
  }
  // What few cables say is no scheme.
  if (2 * asked < cables.size() || asked < 4) return 0;
  return static_cast<double>(fits) / static_cast<double>(asked);
}

// Of so many cables, how many have this port, and how many the one that most have.
int Seats::FitOf(std::uint32_t mine, std::uint32_t most, std::uint32_t all,
                 std::uint32_t multiplicity) {
  if (all == 0) return 0;
  if (2 * mine * multiplicity > all || (mine == most && mine > 1)) return 1;
  return mine == 0 || 4 * mine * multiplicity < all ? -1 : 0;
}

// `isCounted`: the cable that asks is itself among those counted.
int Seats::FitIn(Counts counts, std::uint8_t port, bool isCounted, std::uint32_t multiplicity) {
  std::uint32_t all = 0;
  std::uint32_t mine = 0;
  std::uint32_t most = 0;
  for (const Count& count : counts) {
    const bool isMine = count.port == port;
    const std::uint32_t times = count.times - (isMine && isCounted ? 1 : 0);
    all += times;
    if (isMine) mine = times;
    most = std::max(most, times);
  }
  return FitOf(mine, most, all, multiplicity);
}

int Seats::Fit(std::uint32_t cable, std::uint32_t end) const {
  const SwitchGraph::Cable& it = groups_.graph.Cables()[cable];
  return Fit(end, it.PortAt(end), it.Other(end), cable);
}

int Seats::FitOfSiblings(std::uint32_t cable, std::uint32_t end) const {
  const SwitchGraph::Cable& it = groups_.graph.Cables()[cable];
  return FitIn(OfSiblings, end, it.PortAt(end), it.Other(end), cable);
}

int Seats::Fit(std::uint32_t nearEnd, std::uint8_t port, std::uint32_t farEnd,
               std::uint32_t except) const {
  const int upperRank = std::min(groups_.ranks[nearEnd], groups_.ranks[farEnd]);
  if (std::abs(groups_.ranks[nearEnd] - groups_.ranks[farEnd]) != 1 || upperRank < 0) return 0;
  const Side end = groups_.ranks[nearEnd] == upperRank ? SpineSide : LineSide;
  return FitIn(best_[static_cast<std::size_t>(upperRank)][end], nearEnd, port, farEnd, except);
}

int Seats::FitIn(Table table, std::uint32_t nearEnd, std::uint8_t port, std::uint32_t farEnd,
                 std::uint32_t except) const {
  const bool isUpper = groups_.ranks[nearEnd] < groups_.ranks[farEnd];
  const auto rank =
      static_cast<std::size_t>(isUpper ? groups_.ranks[nearEnd] : groups_.ranks[farEnd]);
  const Side end = isUpper ? SpineSide : LineSide;
  if (strength_[rank][end][table] < usable) return 0;
  const bool isCounted =
      except != SwitchGraph::none && groups_.IsInsideGroup(groups_.graph.Cables()[except]);
  const int group = groups_.GroupBelow(isUpper ? nearEnd : farEnd);
  const std::uint32_t multiplicity =
      group == Grouping::none
          ? 1
          : groups_.groupings[rank].multiplicity[static_cast<std::size_t>(group)];
  const Counts counts = counts_[rank][end][table].Of(KeyOf(end, table, farEnd));
  return FitIn(counts, port, isCounted, multiplicity);
}

std::vector<std::uint8_t> Seats::Expected(std::uint32_t nearEnd, std::uint32_t farEnd,
                                          std::uint32_t atLeast) const {
  const bool isUpper = groups_.ranks[nearEnd] < groups_.ranks[farEnd];
  const int upperRank = isUpper ? groups_.ranks[nearEnd] : groups_.ranks[farEnd];
  const Side end = isUpper ? SpineSide : LineSide;
  const auto rank = static_cast<std::size_t>(upperRank);
  std::vector<std::uint8_t> ports;
  const Table table = best_[rank][end];
  if (strength_[rank][end][table] < usable) return ports;
  const Counts counts = counts_[rank][end][table].Of(KeyOf(end, table, farEnd));
  for (const Count& count : counts) {
    if (count.times >= atLeast && 2 * count.times >= counts.front().times) {
      ports.push_back(count.port);
    }
  }
  return ports;
}

}  // namespace fabscope::internal
