#pragma once

#include <cstdint>
#include <string>

#include "fat_tree/finding_list.h"

namespace fabscope::internal {

// "1 cable", "3 cables".
std::string Counted(std::uint64_t count, const char* one, const char* more);

// How many there are of each kind: "3 missing links, 1 uneven count". Empty where there is none.
// Every output that counts findings in words has these.
std::string CountsByKind(const FindingList& findings);

}  // namespace fabscope::internal
