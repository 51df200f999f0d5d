#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <vector>

#include "repairs/plain_cabling.h"
#include "repairs/plain_repair.h"

namespace fabscope::internal::plain {

// The cables between switches of a fabric and the free ports, as steps change them. Which port a
// cable is plugged into does not matter here.
struct StepState {
  // By pair, the lesser GUID first: cables. No pair has none.
  std::map<Pair, int> cables;
  std::map<std::uint64_t, int> freePorts;
};

StepState StateOf(const Fabric& fabric);

// Whether some sequence of fewer than `steps` steps ends where `isGoal` says so: every sequence of
// connecting, disconnecting, moving and swapping is tried. None when there are more than a million
// states.
std::optional<bool> LeadsInFewer(const Fabric& fabric, std::size_t steps,
                                 const std::function<bool(const StepState&)>& isGoal);

// Whether fewer than `steps` steps make any proper tree of the fabric's ranks.
std::optional<bool> HasCureInFewer(const Fabric& fabric, std::size_t steps);

}  // namespace fabscope::internal::plain
