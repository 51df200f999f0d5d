#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

#include "fat_tree/up_hop_histogram.h"
#include "support/stage_fixture.h"

namespace fabscope::internal {

using Indices = std::initializer_list<std::size_t>;

inline UpHopBits Bits(Indices indices) {
  UpHopBits bits;
  for (const std::size_t index : indices) bits.set(index);
  return bits;
}

inline UpHopCounts Counts(std::initializer_list<std::pair<std::size_t, std::int32_t>> entries) {
  UpHopCounts counts;
  for (const auto& [index, count] : entries) counts[index] = count;
  return counts;
}

// A set as filling leaves it and with its switches counted.
inline FTUpHopSet CountedSet(Indices indices, std::int32_t encountered) {
  FTUpHopSet set;
  set.encountered = encountered;
  set.upSet = Bits(indices);
  set.InitEncounteredMap(MaxUpperSwitches);
  return set;
}

inline std::vector<std::string> Keys(FTUpHopHistogram& histogram) {
  std::vector<std::string> keys;
  for (const auto& [key, set] : TestPeer::UpHopSets(histogram)) keys.push_back(key);
  return keys;
}

// The lower switches of each set in key order, "leaf0 leaf2" each.
inline std::vector<std::string> DownNodes(FTUpHopHistogram& histogram) {
  std::vector<std::string> sets;
  for (const auto& [key, set] : TestPeer::UpHopSets(histogram)) {
    std::string names;
    for (const IBNode* node : set.downNodes)
      names.append(names.empty() ? "" : " ").append(node->name);
    sets.push_back(names);
  }
  return sets;
}

// Pairs of ranks by their up-links alone: every lower switch is given as the list of the upper
// switches that it is cabled to. Switches are named by their place, "root0", "leaf3".
class UpHopTest : public StageTest {
 protected:
  using Cables = std::vector<std::vector<std::size_t>>;

  void AddSwitches(const std::string& name, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) fabric.Switch(name + std::to_string(i), 64);
  }

  // Cables lower switch l to the upper switches of the l-th list, in that order. At both ends a
  // cable takes the lowest free port.
  void AddCables(const std::string& lower, const std::string& upper, const Cables& cables) {
    for (std::size_t l = 0; l < cables.size(); ++l) {
      for (const std::size_t u : cables[l]) {
        fabric.Cable(lower + std::to_string(l), upper + std::to_string(u));
      }
    }
  }

  void AddRootsAndLeaves(std::size_t roots, const Cables& cables) {
    AddSwitches("root", roots);
    AddSwitches("leaf", cables.size());
    AddCables("leaf", "root", cables);
  }

  // Three ranks of which the upper two are as given: "edge0" hangs below all mids.
  void AddRootsAndMids(std::size_t roots, const Cables& cables) {
    AddSwitches("root", roots);
    AddSwitches("mid", cables.size());
    AddSwitches("edge", 1);
    AddCables("mid", "root", cables);
    for (std::size_t m = 0; m < cables.size(); ++m) {
      fabric.Cable("edge0", "mid" + std::to_string(m));
    }
  }

  // From its own side the port's cable counts no longer; from the far end it still does.
  void MakeFnmPort(const std::string& node, std::uint8_t num) {
    PortSpec fnm;
    fnm.num = num;
    fnm.fnm = true;
    fabric.Port(node, fnm);
  }

  void RankFromRoots(std::size_t count) {
    std::vector<std::string> names;
    for (std::size_t r = 0; r < count; ++r) names.push_back("root" + std::to_string(r));
    RankFrom(names);
  }
};

}  // namespace fabscope::internal
