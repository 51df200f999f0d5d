#include "reports/finding_kinds.h"

namespace fabscope {
namespace {

template <typename Kind>
std::vector<std::uint64_t> Groups(const Kind& found) {
  return {found.group};
}

std::vector<std::uint64_t> Groups(const InvalidLink& found) {
  if (found.group1 == found.group2) return {found.group1};
  return {found.group1, found.group2};
}

std::vector<std::uint64_t> Groups(const SharedFlid& found) { return found.groups; }

}  // namespace

std::vector<std::uint64_t> GroupsOf(const Finding& finding) {
  return std::visit([](const auto& found) { return Groups(found); }, finding);
}

EnFabricErrLevel_t LevelOf(const Finding& finding) {
  return std::visit([](const auto& found) { return found.level; }, finding);
}

bool IsOfNeighborhoods(const Finding& finding) {
  return std::visit([](const auto& found) { return found.isNeighborhood; }, finding);
}

}  // namespace fabscope
