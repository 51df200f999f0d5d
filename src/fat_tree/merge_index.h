#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "fat_tree/containers/first_greater.h"
#include "fat_tree/containers/up_hop_bits.h"

namespace fabscope::internal {

// Finds, among many sets of upper switches, the first that may take another set in: one that lacks
// few of its switches. The merge rule asks for that with thousands of sets, and asking one after
// another takes seconds.
//
// A set that holds none of the asked switches lacks them all, so only how many it may lack counts;
// of the others, each switch knows which sets hold it. These are few: an upper switch has at most
// 255 ports. And not all of the asked switches need be looked at: where no set may lack more than
// m, one that takes the asked ones in holds at least two of any m + 2 of them. What holds so many
// is compared as a whole.
//
// Sets are known by number, counted from 0.
class MergeIndex {
 public:
  static constexpr std::size_t None = FirstGreater::None;

  // For sets of which the indices below `size` are looked at.
  MergeIndex(std::size_t setCount, std::size_t size)
      : size_(size), sets_(setCount), holders_(size), limits_(setCount), scores_(setCount) {}

  // Adds a set, which stays where it is until it is removed. It takes in what has at most `most`
  // switches that it lacks.
  void Add(std::size_t number, const UpHopBits& upSet, std::size_t most);
  // To be told when the set was given switches that it did not have.
  void Grow(std::size_t number, const UpHopBits& added, std::size_t most);
  void Remove(std::size_t number);

  // The first set but `number` itself that takes `upSet` in; or None.
  std::size_t FindTarget(std::size_t number, const UpHopBits& upSet);

 private:
  bool TakesIn(std::size_t number, const UpHopBits& upSet) const;
  std::size_t FindTargetOfAny(std::size_t number, std::size_t asked);

  std::size_t size_;
  std::vector<const UpHopBits*> sets_;
  std::vector<std::vector<std::uint32_t>> holders_;  // sets by index of the upper switch, unordered
  FirstGreater limits_;                              // by set: one more than it may lack, 0 none
  // The same, and while a target is searched one more for each switch looked at that the set has.
  std::vector<std::uint32_t> scores_;
  std::vector<std::span<const std::uint32_t>> asked_;  // likewise: the asked switches' holders
};

}  // namespace fabscope::internal
