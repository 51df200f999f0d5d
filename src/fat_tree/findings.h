#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <variant>
#include <vector>

#include "fabric/fabric_err_general.h"
#include "fabric/ib_node.h"
#include "fat_tree/link_errors.h"

namespace fabscope {

// What the checks find, as data for programs: the twins of the error records and of the report's
// lines, which tell the same in words. A topology hands each over when its record or line is made
// (FTTopology::SetFindingSink), so the order is theirs.
//
// Groups are named by their number; `isNeighborhood` says which of the two kinds of groups it
// numbers. Nodes and ports belong to the fabric.

// A spine and a line of one group without a cable between them.
struct MissingLink {
  std::uint64_t group;
  const IBNode* spine;
  const IBNode* line;
  bool isNeighborhood;
  EnFabricErrLevel_t level = EN_FABRIC_ERR_ERROR;
};

// A cable inside a rank or between groups: of its first end's group and of its second end's.
struct InvalidLink {
  std::uint64_t group1;
  std::uint64_t group2;
  FTLinkIssue link;
  bool isNeighborhood;
  EnFabricErrLevel_t level = EN_FABRIC_ERR_ERROR;
};

// Spines or lines of a group that differ in their number of links up or down.
struct UnevenLinks {
  // The switches that have one of the lesser numbers of links.
  struct Count {
    std::int32_t links;
    std::vector<const IBNode*> nodes;
  };
  std::uint64_t group;
  std::int32_t expected;      // the greatest number there is
  std::vector<Count> others;  // all with fewer, the most first
  bool ofSpines;
  bool isUp;
  bool isNeighborhood;
  EnFabricErrLevel_t level = EN_FABRIC_ERR_ERROR;
};

// A group that more links enter from below than leave upwards.
struct SuspectedBlocking {
  std::uint64_t group;
  std::uint64_t spineUplinks;
  std::uint64_t internalLinks;
  bool isNeighborhood;
  EnFabricErrLevel_t level = EN_FABRIC_ERR_WARNING;
};

// Plane ports of a group's switches whose aggregated port is asymmetric.
struct AsymmetricAPorts {
  std::uint64_t group;
  // Inside the group all such ports; towards hosts the first of each aggregated port.
  std::vector<const IBPort*> ports;
  bool toHosts;
  bool isNeighborhood;
  EnFabricErrLevel_t level = EN_FABRIC_ERR_WARNING;
};

// A FLID that occurs in more than one neighborhood.
struct SharedFlid {
  static constexpr bool isNeighborhood = true;
  std::uint16_t flid;
  std::vector<std::uint64_t> groups;  // ascending
  EnFabricErrLevel_t level = EN_FABRIC_ERR_WARNING;
};

using Finding = std::variant<MissingLink, InvalidLink, UnevenLinks, SuspectedBlocking,
                             AsymmetricAPorts, SharedFlid>;
using FindingSink = std::function<void(Finding&& finding)>;

// By how much a finding raises the count of issues: 0 for those that are error records.
std::size_t IssuesOf(const Finding& finding);

}  // namespace fabscope
