#include "fat_tree/merge_index.h"

#include <algorithm>

namespace fabscope::internal {

void MergeIndex::Add(std::size_t number, const UpHopBits& upSet, std::size_t most) {
  sets_[number] = &upSet;
  Grow(number, upSet, most);
}

void MergeIndex::Grow(std::size_t number, const UpHopBits& added, std::size_t most) {
  scores_[number] = static_cast<std::uint32_t>(most) + 1;
  limits_.Set(number, scores_[number]);
  added.ForEach(size_, [&](std::size_t index) {
    holders_[index].push_back(static_cast<std::uint32_t>(number));
  });
}

void MergeIndex::Remove(std::size_t number) {
  limits_.Set(number, 0);
  sets_[number]->ForEach(size_, [&](std::size_t index) {
    std::vector<std::uint32_t>& holders = holders_[index];
    *std::find(holders.begin(), holders.end(), number) = holders.back();
    holders.pop_back();
  });
}

std::size_t MergeIndex::FindTarget(std::size_t number, const UpHopBits& upSet) {
  asked_.clear();
  upSet.ForEach(size_, [this](std::size_t index) { asked_.emplace_back(holders_[index]); });
  std::size_t first = FindTargetOfAny(number, asked_.size());
  const auto mostLimit = static_cast<std::size_t>(limits_.Greatest());
  if (asked_.size() > mostLimit + 1) asked_.resize(mostLimit + 1);
  const std::size_t enough = asked_.size() + 1;
  std::uint32_t* scores = scores_.data();  // this is what takes the time
  for (const std::span<const std::uint32_t> holders : asked_) {
    for (const std::uint32_t holder : holders) {
      if (++scores[holder] == enough && holder != number && holder < first &&
          TakesIn(holder, upSet)) {
        first = holder;
      }
    }
  }
  for (const std::span<const std::uint32_t> holders : asked_) {
    for (const std::uint32_t holder : holders) --scores[holder];
  }
  return first;
}

bool MergeIndex::TakesIn(std::size_t number, const UpHopBits& upSet) const {
  const auto most = static_cast<std::size_t>(limits_.Get(number) - 1);
  return !upSet.HasMoreOutside(*sets_[number], size_, most);
}

// The first other set that may lack that many switches, whichever they are.
std::size_t MergeIndex::FindTargetOfAny(std::size_t number, std::size_t asked) {
  const std::int64_t own = limits_.Get(number);
  limits_.Set(number, 0);
  const std::size_t first = limits_.Find(static_cast<std::int64_t>(asked));
  limits_.Set(number, own);
  return first;
}

}  // namespace fabscope::internal
