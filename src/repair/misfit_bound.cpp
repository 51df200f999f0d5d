// A bound for the misfits of a pair of ranks.
//
// Let a line be cabled to two spines, and one of these to a next line, which is not cabled to the
// other spine:
//
//   other   spine
//     |    /  |
//     |   /   |
//     |  /    |
//    line    next
//
// In a proper tree these three cables put all four into one group, in which every spine is cabled
// to every line; but `other` is not to `next`. So between at least one of the four pairs of a spine
// and a line a cable must come or go. Such paths that have no pair in common each need a change of
// their own.

#include "repair/misfit_bound.h"

#include <algorithm>
#include <cstddef>
#include <set>

namespace fabscope::internal {
namespace {

class PathPacker {
 public:
  PathPacker(const NeighborLists& neighbors, const std::vector<int>& ranks, std::uint64_t wanted)
      : neighbors_(neighbors), ranks_(ranks), wanted_(wanted) {}

  bool Run() {
    for (std::uint32_t spine = 0; spine < ranks_.size() && found_ < wanted_; ++spine) {
      if (ranks_[spine] >= 0) LookBelow(spine);
    }
    return found_ >= wanted_;
  }

 private:
  // Of a spine and a line.
  static std::uint64_t PairOf(std::uint32_t spine, std::uint32_t line) {
    return std::uint64_t{spine} << 32U | line;
  }

  bool AreCabled(std::uint32_t spine, std::uint32_t line) const {
    const auto all = neighbors_.Of(spine);
    return std::binary_search(all.begin(), all.end(), line);
  }

  // The lines of a spine whose numbers are farthest apart are the least alike.
  void LookBelow(std::uint32_t spine) {
    constexpr std::size_t mostTries = 8;
    lines_.clear();
    for (const std::uint32_t other : neighbors_.Of(spine)) {
      if (ranks_[other] == ranks_[spine] + 1) lines_.push_back(other);
    }
    const std::size_t tries = std::min(mostTries, lines_.size() / 2);
    for (std::size_t i = 0; i < tries && found_ < wanted_; ++i) {
      const std::uint32_t one = lines_[i];
      const std::uint32_t other = lines_[lines_.size() - 1 - i];
      if (TakePath(spine, one, other) || TakePath(spine, other, one)) ++found_;
    }
  }

  bool TakePath(std::uint32_t spine, std::uint32_t line, std::uint32_t next) {
    for (const std::uint32_t other : neighbors_.Of(line)) {
      if (other == spine || ranks_[other] != ranks_[spine] || AreCabled(other, next)) continue;
      const auto path = {PairOf(other, line), PairOf(spine, line), PairOf(spine, next),
                         PairOf(other, next)};
      if (std::any_of(path.begin(), path.end(),
                      [&](std::uint64_t pair) { return taken_.contains(pair); })) {
        continue;
      }
      taken_.insert(path);
      return true;
    }
    return false;
  }

  const NeighborLists& neighbors_;
  const std::vector<int>& ranks_;
  const std::uint64_t wanted_;
  std::uint64_t found_ = 0;
  std::set<std::uint64_t> taken_;  // pairs
  std::vector<std::uint32_t> lines_;
};

}  // namespace

bool HasAtLeastMisfits(const NeighborLists& neighbors, const std::vector<int>& ranks,
                       std::uint64_t count) {
  return PathPacker(neighbors, ranks, count).Run();
}

}  // namespace fabscope::internal
