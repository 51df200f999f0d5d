#pragma once

#include <cstdint>
#include <string>

#include "repairs/repair_cases.h"

namespace fabscope::internal {

// Plans that say that no fewer steps will do, and what all shorter sequences of steps lead to.
struct StepsScore {
  std::uint64_t plans = 0;
  std::uint64_t ofSeveralSteps = 0;
  std::uint64_t tooLong = 0;      // too many sequences to try
  std::uint64_t otherGroups = 0;  // a shorter one makes a proper tree, of other groups

  std::string Text() const;
};

// Looks for the repairs of a fabric. Answers what is wrong with a plan that says that no fewer
// steps will do: a shorter sequence that joins the same switches as it does.
std::string TryFewerSteps(const RepairCase& what, StepsScore& score);

}  // namespace fabscope::internal
