#pragma once

#include <array>
#include <cstdint>
#include <variant>
#include <vector>

#include "fat_tree/findings.h"

namespace fabscope {

// What programs know the kinds of findings by, in the order of the variant.
inline constexpr std::array<const char*, std::variant_size_v<Finding>> FindingKinds{
    "missing-link",       "invalid-link",      "uneven-links",
    "suspected-blocking", "asymmetric-aports", "shared-flid"};

inline const char* KindOf(const Finding& finding) { return FindingKinds.at(finding.index()); }

// The numbers of the groups that a finding is about, each once; of a link in the order of its ends.
std::vector<std::uint64_t> GroupsOf(const Finding& finding);

EnFabricErrLevel_t LevelOf(const Finding& finding);

// Whether these number neighborhoods.
bool IsOfNeighborhoods(const Finding& finding);

}  // namespace fabscope
