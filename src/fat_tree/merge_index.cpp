#include "fat_tree/merge_index.h"

#include <algorithm>

namespace fabscope {

void MergeIndex::Add(std::size_t number, const UpHopBits& upSet, std::size_t most) {
  scores_[number] = static_cast<std::uint32_t>(most) + 1;
  limits_.Set(number, scores_[number]);
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
  asked_.clear();
  upSet.ForEach(size_, [this](std::size_t index) { asked_.emplace_back(holders_[index]); });
  const std::size_t asked = asked_.size();
  std::uint32_t* scores = scores_.data();  // this is what takes the time
  std::size_t first = FindTargetOfAny(number, asked);
  for (const std::span<const std::uint32_t> holders : asked_) {
    for (const std::uint32_t holder : holders) {
      if (++scores[holder] > asked && holder < first && holder != number) first = holder;
    }
  }
  for (const std::span<const std::uint32_t> holders : asked_) {
    for (const std::uint32_t holder : holders) --scores[holder];
  }
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
