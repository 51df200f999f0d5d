#pragma once

#include <array>
#include <cstdint>
#include <unordered_map>
#include <vector>

#include "repair/seats.h"
#include "repair/tree_groups.h"

namespace fabscope {

// So much evidence is as good as none: sizes of groups say it.
constexpr int noEvidence = 1;

// How clearly a switch belongs to its group and to no other.
struct Margin {
  static constexpr int plenty = 1000;  // there is no other group

  int cost = plenty;           // by how much the next best group is dearer
  int evidence = plenty;       // how much more speaks for its group than for that one
  int group = Grouping::none;  // the next best
};

// What decides between groups that cost the same: the ports that cables use, that a group has one
// switch of each pod, and how large groups usually are.
class Evidence {
 public:
  explicit Evidence(const TreeGroups& groups);

  // Of a switch as a spine, or as a line. Names do not count.
  Margin MarginOf(std::uint32_t number, Side side) const;
  // How much the name of a switch is like those of a group: for ties that nothing else decides.
  std::size_t NameLikeness(std::uint32_t number, Side side, int group) const;

 private:
  struct OfSide {
    std::unordered_map<std::uint64_t, std::uint32_t> siblings;  // members of a group by their pod
    bool areUnique = false;  // a group usually has one of each pod
    std::uint32_t usualSize = 0;
  };

  int SiblingsOf(std::uint32_t number, Side side) const;
  int ScoreOf(std::uint32_t number, Side side, int group, int own) const;

  const TreeGroups& groups_;
  Seats seats_;
  std::vector<std::array<OfSide, 2>> sides_;  // by upper rank
};

// Moves switches whose groups cost the same to the group for which more speaks; where nothing does,
// to the one with names like theirs.
void DecideTies(TreeGroups& groups);

}  // namespace fabscope
