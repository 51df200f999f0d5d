#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "fabric/ib_fabric.h"
#include "repair/repair_plan.h"

namespace fabscope::internal {

// A fabric whose repairs are looked for.
struct RepairCase {
  std::string kind;  // for messages
  std::unique_ptr<IBFabric> fabric;
  std::optional<TreeRanks> known;
};

// By the seed: trees with faults of all kinds, with and without spare ports, with trunks, with
// ports numbered at random, with leaves that have no hosts; trees of another maker, with planes,
// half of whose ports do not count; and graphs that are no tree at all: rings, stars, cliques,
// chains, two of these side by side, cables at random. In some the ranks are known, right or wrong.
RepairCase MakeRepairCase(std::uint64_t seed);

// The ranks that distance from some switches gives; these are the roots.
TreeRanks RanksByDistance(const IBFabric& fabric, const std::vector<std::uint32_t>& roots);

}  // namespace fabscope::internal
