#pragma once

#include <cstdint>
#include <optional>
#include <set>
#include <utility>
#include <vector>

#include "repair/repair_plan.h"
#include "repair/tree_groups.h"

namespace fabscope::internal {

// A cable of the graph, or none, and where it should be, if anywhere. Ends are switches of the
// graph.
struct CableTarget {
  struct End {
    std::uint32_t number = 0;  // the switch
    std::uint8_t port = 0;
  };
  std::uint32_t cable = SwitchGraph::none;
  std::optional<End> upper;  // both are set, or none of them
  std::optional<End> lower;
  RepairReason reason{};
  bool isForSeat = false;  // it joins the right switches, at a port that another cable should have
};

// What becomes of the cables that do not fit the groups, and which new ones there must be.
struct Changes {
  std::vector<CableTarget> targets;
  std::uint64_t extras = 0;  // cables that must go
  std::uint64_t lacks = 0;   // cables that lack
  // Groups that cannot be made whole, by the rank of their spines: a link lacks, and no port is
  // free for it. What would change them is left out.
  std::set<std::pair<int, int>> uncertain;

  // Whether more than a quarter of the cables must go: then there are no targets. Of so few changes
  // any share of a fabric may be.
  bool AreTooMany(const SwitchGraph& graph) const {
    constexpr std::uint64_t few = 16;
    return extras > few && 4 * extras > graph.Cables().size();
  }
};

Changes FindChanges(const TreeGroups& groups);

}  // namespace fabscope::internal
