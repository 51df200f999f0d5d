#pragma once

#include <cstdint>
#include <map>
#include <utility>
#include <vector>

namespace fabscope::internal::plain {

// A bit for each switch, by number.
using SwitchSet = std::uint32_t;

// How many cables join each two switches: symmetric, nothing for a switch and itself.
using CableCounts = std::vector<std::vector<int>>;

// What the cheapest trees of a fabric cost, by trial of everything: for fabrics of at most 8
// switches or so.
class Optimum {
 public:
  explicit Optimum(CableCounts cables) : cables_(std::move(cables)) {}

  int Switches() const { return static_cast<int>(cables_.size()); }

  // The fewest cables that must come or go until a tree of these ranks is proper; -1 is outside.
  int LeastMisfits(const std::vector<int>& ranks);

 private:
  int Cables(SwitchSet from, SwitchSet to) const;
  int CostOfGroup(SwitchSet spines, SwitchSet lines) const;
  int LeastBetween(SwitchSet spines, SwitchSet lines);

  CableCounts cables_;
  std::map<std::pair<SwitchSet, SwitchSet>, int> between_;
};

// What is wrong with a tree, each a reason to prefer another.
struct Blemishes {
  int misfits = 0;
  int levels = 0;
  int hostsOnSpines = 0;  // above the last rank
  int leavesWithoutHosts = 0;
  int barrenSpines = 0;  // switches above the last rank that have no cable to a lower one
};

// Every tree that can be made of a fabric's switches: each has one of the ranks from 0 to the last,
// and no rank is empty.
class AllTrees {
 public:
  explicit AllTrees(CableCounts cables);

  // What is wrong with one of them. `hosts` are numbers by switch.
  Blemishes BlemishesOf(const std::vector<int>& ranks, const std::vector<int>& hosts);
  // The fewest misfits of those that are otherwise no worse.
  int LeastMisfits(const Blemishes& known, const std::vector<int>& hosts) const;

 private:
  struct Shape {
    int levels = 0;
    int barrenSpines = 0;
    SwitchSet leaves = 0;

    friend auto operator<=>(const Shape&, const Shape&) = default;
  };

  static Blemishes OfShape(const Shape& shape, const std::vector<int>& hosts);
  Shape ShapeOf(const std::vector<int>& ranks) const;
  void Try(std::vector<int>& ranks, std::size_t next);

  CableCounts cables_;
  Optimum optimum_;
  std::map<Shape, int> leastMisfits_;
};

}  // namespace fabscope::internal::plain
