#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <type_traits>
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
  std::uint64_t group = 0;
  const IBNode* spine = nullptr;
  const IBNode* line = nullptr;
  bool isNeighborhood = false;
  EnFabricErrLevel_t level = EN_FABRIC_ERR_ERROR;
};

// A cable inside a rank or between groups: of its first end's group and of its second end's.
struct InvalidLink {
  std::uint64_t group1 = 0;
  std::uint64_t group2 = 0;
  FTLinkIssue link;
  bool isNeighborhood = false;
  EnFabricErrLevel_t level = EN_FABRIC_ERR_ERROR;
};

// Spines or lines of a group that differ in their number of links up or down.
struct UnevenLinks {
  struct Count {
    std::int32_t links = 0;
    std::vector<const IBNode*> nodes;
  };
  std::uint64_t group = 0;
  std::int32_t expected = 0;  // the greatest number there is
  std::vector<Count> others;  // all with fewer, the most first
  bool ofSpines = false;
  bool isUp = false;
  bool isNeighborhood = false;
  EnFabricErrLevel_t level = EN_FABRIC_ERR_ERROR;
};

// A group that more links enter from below than leave upwards.
struct SuspectedBlocking {
  std::uint64_t group = 0;
  std::uint64_t spineUplinks = 0;
  std::uint64_t internalLinks = 0;
  bool isNeighborhood = false;
  EnFabricErrLevel_t level = EN_FABRIC_ERR_WARNING;
};

// Plane ports of a group's switches whose aggregated port is asymmetric.
struct AsymmetricAPorts {
  std::uint64_t group = 0;
  // Inside the group all such ports; towards hosts the first of each aggregated port.
  std::vector<const IBPort*> ports;
  bool toHosts = false;
  bool isNeighborhood = false;
  EnFabricErrLevel_t level = EN_FABRIC_ERR_WARNING;
};

// A FLID that occurs in more than one neighborhood.
struct SharedFlid {
  std::uint16_t flid = 0;
  std::vector<std::uint64_t> groups;  // ascending
  bool isNeighborhood = true;
  EnFabricErrLevel_t level = EN_FABRIC_ERR_WARNING;
};

using Finding = std::variant<MissingLink, InvalidLink, UnevenLinks, SuspectedBlocking,
                             AsymmetricAPorts, SharedFlid>;
using FindingSink = std::function<void(Finding&& finding)>;

// By how much a finding raises the count of issues: 0 for those that are error records.
inline std::size_t IssuesOf(const Finding& finding) {
  return std::visit(
      [](const auto& found) -> std::size_t {
        using Kind = std::decay_t<decltype(found)>;
        if constexpr (std::is_same_v<Kind, MissingLink> || std::is_same_v<Kind, InvalidLink>) {
          return 0;
        } else if constexpr (std::is_same_v<Kind, UnevenLinks>) {
          return found.others.size() + 1;
        } else if constexpr (std::is_same_v<Kind, AsymmetricAPorts>) {
          return found.ports.size();
        } else {
          return 1;
        }
      },
      finding);
}

}  // namespace fabscope
