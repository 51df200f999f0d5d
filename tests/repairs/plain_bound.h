#pragma once

#include <cstddef>

#include "repairs/plain_cabling.h"
#include "repairs/plain_repair.h"

namespace fabscope::internal::plain {

// Whether fewer than `steps` steps lead from a fabric's pairs of cabled switches to others, tried
// one after another. More than two steps of a small fabric are too many to try: then the answer is
// no.
bool CanDoInFewer(const Fabric& fabric, const Pairs& target, std::size_t steps);

}  // namespace fabscope::internal::plain
