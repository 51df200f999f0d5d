#include "fat_tree/ranked_switches.h"

#include <utility>

namespace fabscope::internal {

RankedSwitches::RankedSwitches(std::vector<NodeSet> switchesByRank)
    : sets_(std::move(switchesByRank)) {
  // From the leaves up, so that the first rank of a switch is written last.
  for (std::size_t rank = sets_.size(); rank-- > 0;) {
    const auto number = static_cast<std::int32_t>(rank);
    for (const IBNode* node : sets_[rank]) {
      if (node != nullptr) {
        ranks_.Set(*node, number);
      } else {
        nullRank_ = number;
      }
    }
  }
}

}  // namespace fabscope::internal
