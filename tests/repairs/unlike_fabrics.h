#pragma once

#include <vector>

#include "repairs/plain_optimum.h"

namespace fabscope::internal {

// Every way to cable so many switches, at most 8, with at most one cable between two of them, such
// that all hang together; of those that differ in the numbers of the switches only, one.
std::vector<plain::CableCounts> UnlikeCablings(int switches);

// Every choice of switches that have a host, at least one; of those that the cabling makes alike,
// one.
std::vector<plain::SwitchSet> UnlikeHosts(const plain::CableCounts& cables);

}  // namespace fabscope::internal
