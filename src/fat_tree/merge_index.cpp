#include "fat_tree/merge_index.h"

#include <algorithm>

namespace fabscope {

void MergeIndex::Add(std::size_t number, const UpHopBits& upSet, std::size_t most) {
  limits_.Set(number, static_cast<std::int64_t>(most) + 1);
  upSet.ForEach(size_, [&](std::size_t index) {
    holders_[index].push_back(static_cast<std::uint32_t>(number));
  });
}

void MergeIndex::Remove(std::size_t number, const UpHopBits& upSet) {
  limits_.Set(number, 0);
  upSet.ForEach(size_, [&](std::size_t index) {
    std::vector<std::uint32_t>& holders = holders_[index];
    *std::find(holders.begin(), holders.end(), number) = holders.back();
    holders.pop_back();
  });
}

std::size_t MergeIndex::FindTarget(std::size_t number, const UpHopBits& upSet) {
  std::size_t asked = 0;
  upSet.ForEach(size_, [&](std::size_t index) {
    ++asked;
    for (const std::uint32_t holder : holders_[index]) {
      if (shared_[holder]++ == 0) sharing_.push_back(holder);
    }
  });
  std::size_t first = FindTargetOfAny(number, asked);
  for (const std::uint32_t holder : sharing_) {
    const std::size_t lacks = asked - shared_[holder];
    shared_[holder] = 0;
    if (holder >= first || holder == number) continue;
    if (limits_.Get(holder) > static_cast<std::int64_t>(lacks)) first = holder;
  }
  sharing_.clear();
  return first;
}

// The first other set that may lack that many switches, whichever they are.
std::size_t MergeIndex::FindTargetOfAny(std::size_t number, std::size_t asked) {
  const std::int64_t own = limits_.Get(number);
  limits_.Set(number, 0);
  const std::size_t first = limits_.Find(static_cast<std::int64_t>(asked));
  limits_.Set(number, own);
  return first;
}

}  // namespace fabscope
