#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <set>
#include <vector>

#include "repair/seats.h"
#include "repair/tree_groups.h"

namespace fabscope::internal {

// So much evidence is as good as none: sizes of groups say it.
constexpr int noEvidence = 1;

// So many switches are asked whether another one could change places with them. No group has as
// many that could, unless somebody means it to.
constexpr std::size_t mostPartners = 16;

// How clearly a switch belongs to its group and to no other.
struct Margin {
  static constexpr int plenty = 1000;  // there is no other group

  int cost = plenty;           // by how much the next best group is dearer
  int evidence = plenty;       // how much more speaks for its group than for that one
  int group = Grouping::none;  // the next best
  int pod = 0;                 // what the rest of its pod says of its own; below 0: against it
};

// What decides between groups that cost the same: the ports that cables use, that a group has one
// switch of each pod, and how large groups usually are.
class Evidence {
 public:
  explicit Evidence(const TreeGroups& groups);

  // Of a switch as a spine, or as a line. Names do not count.
  Margin MarginOf(std::uint32_t number, Side side) const;
  // How much more speaks for two switches where they are than for each in the other's group.
  int ForStaying(std::uint32_t one, std::uint32_t other, Side side) const;
  // A switch has gone from one group to another.
  void Move(std::uint32_t number, Side side, int from, int to);
  // How much the name of a switch is like those of a group: for ties that nothing else decides.
  std::size_t NameLikeness(std::uint32_t number, Side side, int group);

 private:
  struct OfSide {
    std::map<std::uint64_t, std::int64_t> siblings;  // members of a group by their pod
    bool areUnique = false;                          // a group usually has one of each pod
    std::uint32_t usualSize = 0;
  };

  std::size_t UpperRank(std::uint32_t number, Side side) const {
    return static_cast<std::size_t>(groups_.ranks[number] - (side == LineSide ? 1 : 0));
  }
  int GroupOf(std::uint32_t number, Side side) const {
    return side == LineSide ? groups_.GroupAbove(number) : groups_.GroupBelow(number);
  }
  int SiblingsOf(std::uint32_t number, Side side) const;
  template <typename Use>
  void ForCablesInto(std::uint32_t number, Side side, int group, Use use) const;
  void CountPorts(std::uint32_t number, Side side, int group, int times);
  bool HasRival(std::uint32_t cable, std::uint32_t number, Side side, int group,
                std::uint32_t leaver) const;
  // `leaver`: a member of the group that would leave it for this switch, or SwitchGraph::none.
  int PodScoreOf(std::uint32_t number, Side side, int group, std::uint32_t leaver) const;
  int ScoreOf(std::uint32_t number, Side side, int group, std::uint32_t leaver) const;
  int SizeScoreOf(std::uint32_t number, Side side, int group) const;

  using Members = std::vector<std::set<std::uint32_t>>;  // by group, in model order
  Members& MembersOf(std::size_t upperRank, Side side);

  const TreeGroups& groups_;
  Seats seats_;
  std::vector<std::array<OfSide, 2>> sides_;  // by upper rank
  // By upper rank and end: by group and port, the switches at the other end and their cables.
  std::vector<std::array<std::map<std::uint64_t, std::map<std::uint32_t, int>>, 2>> holders_;
  std::vector<std::array<Members, 2>> members_;  // by upper rank, once they were asked for
};

// Moves switches whose groups cost the same to the group for which more speaks; where nothing does,
// to the one with names like theirs.
void DecideTies(TreeGroups& groups);

}  // namespace fabscope::internal
