#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <utility>
#include <vector>

#include "repair/tree_groups.h"

namespace fabscope::internal {

// Which ports cables usually use. Most fabrics are cabled by a scheme: every spine has a line at
// the same port, and every line has a spine at the same port; higher up all switches of one pod are
// at the same port of their roots. The scheme is read from the cables themselves, for each pair of
// ranks and each end, and used as far as the cables follow it.
class Seats {
 public:
  explicit Seats(const TreeGroups& groups);

  // How a cable's port at a switch fits what other cables say: 1 it does, -1 it does not, 0 no
  // scheme or nothing to compare with.
  int Fit(std::uint32_t cable, std::uint32_t end) const;
  // The same for a port that a cable between `near` (whose port it is) and `far` would have.
  // `except` is a cable that does not count, or SwitchGraph::none.
  int Fit(std::uint32_t nearEnd, std::uint8_t port, std::uint32_t farEnd,
          std::uint32_t except) const;
  // The ports that a cable between the two should have at `nearEnd`, the likeliest first; those
  // that at least so many cables speak for.
  std::vector<std::uint8_t> Expected(std::uint32_t nearEnd, std::uint32_t farEnd,
                                     std::uint32_t atLeast = 1) const;
  // How a cable's port at `end` fits what the siblings of the switch at its other end use, whatever
  // that switch's own cables say.
  int FitOfSiblings(std::uint32_t cable, std::uint32_t end) const;
  // Whether most switches have one port at all of that end's.
  bool HasOwnPorts(std::size_t upperRank, Side end) const {
    return strength_[upperRank][end][Own] >= usable;
  }
  // Whether most cables of that pair of ranks follow the scheme at that end.
  bool IsStrong(int upperRank, Side end) const {
    const auto rank = static_cast<std::size_t>(upperRank);
    return strength_[rank][end][best_[rank][end]] >= strong;
  }

 private:
  static constexpr double usable = 0.6;
  static constexpr double strong = 0.7;
  enum Table : std::size_t { Own = 0, OfSiblings = 1 };
  struct Count {
    std::uint8_t port = 0;
    std::uint32_t times = 0;
  };
  using Counts = std::span<const Count>;  // most frequent first

  // The ports at one end by the switch at the other: by that switch, or by all its siblings.
  struct CountsByKey {
    std::vector<std::uint32_t> first;  // by key
    std::vector<Count> counts;

    Counts Of(std::uint32_t key) const {
      if (key == noKey) return {};
      return {counts.data() + first[key], counts.data() + first[key + 1]};
    }
  };
  static constexpr std::uint32_t noKey = ~std::uint32_t{0};

  std::uint32_t KeyOf(Side end, Table table, std::uint32_t farEnd) const;
  std::uint32_t KeyCount(std::size_t upperRank, Side end, Table table) const;
  static int FitOf(std::uint32_t mine, std::uint32_t most, std::uint32_t all,
                   std::uint32_t multiplicity);
  int FitIn(Table table, std::uint32_t nearEnd, std::uint8_t port, std::uint32_t farEnd,
            std::uint32_t except) const;
  static int FitIn(Counts counts, std::uint8_t port, bool isCounted, std::uint32_t multiplicity);
  // A cable inside a group, and how many of them two switches of that group have.
  struct InnerCable {
    std::array<std::uint32_t, 2> ends;  // by side
    std::array<std::uint8_t, 2> ports;  // likewise
    std::uint32_t multiplicity;
  };
  using InnerCables = std::vector<InnerCable>;
  struct Seat {
    std::uint8_t port = 0;
    std::uint32_t multiplicity = 0;
  };
  struct SeatsByKey {
    std::vector<std::uint32_t> first;  // by key
    std::vector<Seat> seats;
  };
  SeatsByKey Collect(std::size_t upperRank, Side end, Table table, const InnerCables& cables) const;
  // Answers which share of the cables follows the table.
  double Fill(std::size_t upperRank, Side end, Table table, const InnerCables& cables);

  const TreeGroups& groups_;
  std::vector<std::array<std::array<CountsByKey, 2>, 2>> counts_;  // by upper rank, end and table
  std::vector<std::array<Table, 2>> best_;
  std::vector<std::array<std::array<double, 2>, 2>> strength_;  // by upper rank, end and table
};

}  // namespace fabscope::internal
