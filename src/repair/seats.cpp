#include "repair/seats.h"

#include <algorithm>

namespace fabscope {
namespace {

std::uint32_t EndOf(const TreeGroups& groups, const SwitchGraph::Cable& cable, Side end) {
  return end == SpineSide ? groups.UpperOf(cable) : groups.LowerOf(cable);
}

}  // namespace

Seats::Seats(const TreeGroups& groups) : groups_(groups) {
  const std::size_t pairCount = groups.pairs.size();
  counts_.resize(pairCount);
  best_.resize(pairCount);
  strength_.resize(pairCount);
  cablesOfPair_.resize(pairCount);
  const auto& cables = groups.graph.Cables();
  for (std::uint32_t i = 0; i < cables.size(); ++i) {
    if (!groups.IsInsideGroup(cables[i])) continue;
    cablesOfPair_[static_cast<std::size_t>(groups.ranks[groups.UpperOf(cables[i])])].push_back(i);
  }
  for (std::size_t rank = 0; rank < pairCount; ++rank) {
    for (const Side end : {SpineSide, LineSide}) {
      double best = -1;
      for (const Table table : {Own, OfSiblings}) {
        Fill(rank, end, table);
        const double strength = Measure(rank, end, table);
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
std::size_t Seats::KeyOf(Side end, Table table, std::uint32_t farEnd) const {
  if (table == Own) return farEnd;
  const int group = end == SpineSide ? groups_.GroupBelow(farEnd) : groups_.GroupAbove(farEnd);
  return group == Grouping::none ? groups_.graph.Count() : static_cast<std::size_t>(group);
}

void Seats::Fill(std::size_t upperRank, Side end, Table table) {
  std::vector<Counts>& all = counts_[upperRank][end][table];
  all.resize(groups_.graph.Count() + std::size_t{1});
  for (const std::uint32_t i : cablesOfPair_[upperRank]) {
    const SwitchGraph::Cable& cable = groups_.graph.Cables()[i];
    const std::uint32_t nearEnd = EndOf(groups_, cable, end);
    const std::size_t key = KeyOf(end, table, cable.Other(nearEnd));
    if (key == groups_.graph.Count()) continue;
    const std::uint8_t port = cable.PortAt(nearEnd);
    Counts& counts = all[key];
    const auto known = std::find_if(counts.begin(), counts.end(),
                                    [&](const Count& count) { return count.port == port; });
    if (known == counts.end()) {
      counts.push_back({port, 1});
    } else {
      ++known->times;
    }
  }
  for (Counts& counts : all) {
    std::sort(counts.begin(), counts.end(), [](const Count& a, const Count& b) {
      return a.times != b.times ? a.times > b.times : a.port < b.port;
    });
  }
}

// `isCounted`: the cable that asks is itself among those counted.
int Seats::FitIn(const Counts& counts, std::uint8_t port, bool isCounted,
                 std::uint32_t multiplicity) const {
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
  if (all == 0) return 0;
  if (2 * mine * multiplicity > all || (mine == most && mine > 1)) return 1;
  return mine == 0 || 4 * mine * multiplicity < all ? -1 : 0;
}

double Seats::Measure(std::size_t upperRank, Side end, Table table) const {
  std::uint64_t fits = 0;
  std::uint64_t asked = 0;
  for (const std::uint32_t i : cablesOfPair_[upperRank]) {
    const SwitchGraph::Cable& cable = groups_.graph.Cables()[i];
    const std::uint32_t nearEnd = EndOf(groups_, cable, end);
    const std::size_t key = KeyOf(end, table, cable.Other(nearEnd));
    const auto group = static_cast<std::size_t>(groups_.GroupBelow(groups_.UpperOf(cable)));
    const std::uint32_t multiplicity = groups_.groupings[upperRank].multiplicity[group];
    const int fit =
        FitIn(counts_[upperRank][end][table][key], cable.PortAt(nearEnd), true, multiplicity);
    if (fit == 0) continue;
    ++asked;
    fits += fit > 0 ? 1 : 0;
  }
  // What few cables say is no scheme.
  if (2 * asked < cablesOfPair_[upperRank].size() || asked < 4) return 0;
  return static_cast<double>(fits) / static_cast<double>(asked);
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
  const std::size_t key = KeyOf(end, table, farEnd);
  const bool isCounted =
      except != SwitchGraph::none && groups_.IsInsideGroup(groups_.graph.Cables()[except]);
  const int group = groups_.GroupBelow(isUpper ? nearEnd : farEnd);
  const std::uint32_t multiplicity =
      group == Grouping::none
          ? 1
          : groups_.groupings[rank].multiplicity[static_cast<std::size_t>(group)];
  return FitIn(counts_[rank][end][table][key], port, isCounted, multiplicity);
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
  const Counts& counts = counts_[rank][end][table][KeyOf(end, table, farEnd)];
  for (const Count& count : counts) {
    if (count.times >= atLeast && 2 * count.times >= counts.front().times) {
      ports.push_back(count.port);
    }
  }
  return ports;
}

}  // namespace fabscope
