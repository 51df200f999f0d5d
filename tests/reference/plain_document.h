#pragma once

#include <cstdint>
#include <string>

#include "reference/plain_fabric.h"

namespace fabscope::internal::reference {

// The fabric as a fabric document. There are many ways to write the same fabric (attributes that
// equal their default may stand or not, links may come before nodes, speeds by name or number, at
// the link or at its ports); the seed chooses among them.
std::string DocumentOf(const PlainFabric& fabric, std::uint64_t seed);

}  // namespace fabscope::internal::reference
