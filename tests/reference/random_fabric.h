#pragma once

#include <cstdint>
#include <string>

#include "reference/plain_fabric.h"

namespace fabscope::internal::reference {

// A fabric and what is asked of it.
struct PlainCase {
  PlainFabric fabric;
  PlainOptions options;
  std::string kind;  // for messages: what sort of fabric it is
};

// Kinds of fabrics, mixed by the seed: proper trees of 2, 3 and 4 ranks, the same with faults,
// several planes, groups that nearly coincide, uneven groups, sizes around the thresholds of
// distance classes, several fabrics in one, random graphs, next to nothing. A few seeds give more
// than 1000 switches; the two below a rank of exactly the most switches that the stage can group
// and one more.
//
// The same seed gives the same case on every machine.
PlainCase RandomCase(std::uint64_t seed);

inline constexpr std::uint64_t FullRankSeed = 2048;
inline constexpr std::uint64_t OverfullRankSeed = 2049;

// A clean tree of 2 to 4 ranks with at most single cables between two switches, and up to
// `mostFaults` faults; roots given by rank, on one plane.
PlainCase RandomTreeCase(std::uint64_t seed, int mostFaults);

}  // namespace fabscope::internal::reference
