#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "repairs/plain_optimum.h"

namespace fabscope::internal {

// How inferred ranks compare with all others, over several fabrics.
struct RanksScore {
  std::uint64_t fabrics = 0;
  // Where the misfits that are counted are more than such ranks need.
  std::uint64_t countedMore = 0;
  // Where another tree has fewer misfits and is otherwise no worse.
  std::uint64_t beaten = 0;
  int mostMore = 0;
  int mostBeaten = 0;

  std::string Text() const;
};

// Infers the ranks of a fabric that hangs together, and compares them with all other trees. `hosts`
// are numbers by switch. The seed decides in which order the switches stand in the model. Answers
// what is wrong, which is nothing where
//   - there are no misfits exactly in a proper tree, and the count never tells too few,
//   - the ranks make a proper tree where any that are otherwise no worse do.
std::string TryInferredRanks(const plain::CableCounts& cables, const std::vector<int>& hosts,
                             plain::AllTrees& trees, std::uint64_t seed, RanksScore& score);

// The same for every unlike fabric of so many switches (see unlike_fabrics.h), with at most one
// host at each.
std::string TryAllSmallFabrics(int switches, RanksScore& score);

// For a fabric of 3 to 6 switches by the seed, with up to 3 cables between two of them and up to 3
// hosts at each.
std::string TryRandomFabric(std::uint64_t seed, RanksScore& score);

}  // namespace fabscope::internal
