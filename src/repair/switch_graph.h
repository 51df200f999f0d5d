#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "fabric/ib_fabric.h"
#include "fat_tree/tree_links.h"

namespace fabscope::internal {

// The switches of a fabric and the cables between them in compact arrays: ranks and groups are
// found by going over all cables many times. Switches are numbered from 0 by their GUIDs, so that
// the order of nodes decides nothing, not even ties.
//
// Only cables that count for the tree are here (see GetLinkedNode); those from a switch to itself
// stand apart.
class SwitchGraph {
 public:
  struct Cable {
    std::uint32_t a = 0;
    std::uint32_t b = 0;
    std::uint8_t portA = 0;
    std::uint8_t portB = 0;

    std::uint32_t Other(std::uint32_t end) const { return a == end ? b : a; }
    std::uint8_t PortAt(std::uint32_t end) const { return a == end ? portA : portB; }
  };

  static constexpr std::uint32_t none = ~std::uint32_t{0};

  explicit SwitchGraph(const IBFabric& fabric) : SwitchGraph(fabric, TreeLinks(fabric)) {}
  // The same for those who have read the links already; they are not needed afterwards.
  SwitchGraph(const IBFabric& fabric, const TreeLinks& links);

  std::uint32_t Count() const { return static_cast<std::uint32_t>(nodes_.size()); }
  const IBNode& NodeOf(std::uint32_t number) const { return *nodes_[number]; }
  // The number of a switch by IBNode::index; none for other nodes.
  std::uint32_t NumberOf(std::uint32_t index) const { return numberOf_[index]; }
  // How many of its ports lead to hosts.
  std::uint32_t Hosts(std::uint32_t number) const { return hosts_[number]; }

  const std::vector<Cable>& Cables() const { return cables_; }
  const std::vector<Cable>& Loops() const { return loops_; }
  // The cables of a switch, as places in Cables().
  std::span<const std::uint32_t> CablesOf(std::uint32_t number) const {
    return {incident_.data() + first_[number], incident_.data() + first_[number + 1]};
  }
  // The switches at their other ends, in the same order.
  std::span<const std::uint32_t> FarEndsOf(std::uint32_t number) const {
    return {farEnds_.data() + first_[number], farEnds_.data() + first_[number + 1]};
  }

 private:
  std::vector<const IBNode*> nodes_;
  std::vector<std::uint32_t> numberOf_;
  std::vector<std::uint32_t> hosts_;
  std::vector<Cable> cables_;
  std::vector<Cable> loops_;
  std::vector<std::uint32_t> first_;
  std::vector<std::uint32_t> incident_;
  std::vector<std::uint32_t> farEnds_;
};

}  // namespace fabscope::internal
