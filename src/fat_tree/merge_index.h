#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "fat_tree/first_greater.h"
#include "fat_tree/up_hop_bits.h"

namespace fabscope {

// Finds, among many sets of upper switches, the first that may take another set in: one that lacks
// few of its switches. The merge rule asks for that with thousands of sets, and asking one after
// another takes seconds.
//
// A set that holds none of the asked switches lacks them all, so only how many it may lack counts;
// of the others, each switch knows which sets hold it. These are few: an upper switch has at most
// 255 ports.
//
// Sets are known by number, counted from 0.
class MergeIndex {
 public:
  static constexpr std::size_t None = FirstGreater::None;

  // For sets of which the indices below `size` are looked at.
  MergeIndex(std::size_t setCount, std::size_t size)
      : size_(size), holders_(size), limits_(setCount), scores_(setCount) {}

  // Adds switches that the set does not have. From now on it is asked for sets of which it lacks at
  // most `most`.
  void Add(std::size_t number, const UpHopBits& upSet, std::size_t most);
  // Takes the set out, which has these switches.
  void Remove(std::size_t number, const UpHopBits& upSet);

  // The first set but `number` itself that lacks at most as many switches of `upSet` as it was
  // added with; or None.
  std::size_t FindTarget(std::size_t number, const UpHopBits& upSet);

 private:
  std::size_t FindTargetOfAny(std::size_t number, std::size_t asked);

  std::size_t size_;
  std::vector<std::vector<std::uint32_t>> holders_;  // sets by index of the upper switch, unordered
  FirstGreater limits_;                              // by set: one more than it may lack, 0 none
  // The same, and while a target is searched one more for each asked switch that the set has. One
  // that reaches more than the switches asked for lacks few enough.
  std::vector<std::uint32_t> scores_;
  std::vector<std::span<const std::uint32_t>> asked_;  // likewise: these switches' holders
};

}  // namespace fabscope
