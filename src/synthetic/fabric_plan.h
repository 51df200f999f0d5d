#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "fabric/fabric_builder.h"
#include "synthetic/tree_shape.h"

namespace fabscope {

// A node of a plan and its place in the tree that was meant.
struct PlannedNode {
  NodeSpec spec;
  int rank = -1;              // 0 the roots; -1 hosts
  std::size_t pod = 0;        // subtree below the roots; of roots 0
  std::size_t leafGroup = 0;  // leaves with the same parents; of other nodes 0
  bool removed = false;       // a fault took it away, with its cables
};

// One end of a cable: index into FabricPlan::nodes, port number.
struct PlannedEnd {
  std::size_t node = 0;
  std::uint8_t port = 0;

  friend bool operator==(const PlannedEnd&, const PlannedEnd&) = default;
};

struct PlannedCable {
  PlannedEnd upper;  // of a cable that was meant, the end nearer to the roots
  PlannedEnd lower;
  std::uint32_t speed = 0;
  bool removed = false;
};

// A fabric that does not stand yet: a perfect tree first, then what faults make of it. Nodes and
// cables keep their indices; what goes is marked as removed.
class FabricPlan {
 public:
  std::vector<PlannedNode> nodes;
  std::vector<PlannedCable> cables;
  int levels = 0;

  static constexpr std::size_t NoCable = static_cast<std::size_t>(-1);

  // The index of the cable at a port, or NoCable.
  std::size_t CableAt(const PlannedEnd& end) { return Slot(end); }
  // The indices of a node's cables, by port.
  std::vector<std::size_t> CablesOf(std::size_t node);
  // The lowest port of a switch without a cable; 0 if all have one.
  std::uint8_t FreePort(std::size_t node);
  // Both ends must be free. Answers the cable's index.
  std::size_t AddCable(const PlannedCable& cable);
  void RemoveCable(std::size_t index);
  void RemoveNode(std::size_t node);

  bool IsSwitch(std::size_t node) const { return nodes[node].spec.type == NodeTypeSwitch; }
  // Switches that still stand, by rank.
  std::vector<std::size_t> SwitchesOnRank(int rank) const;

  // Adds everything that is left to an empty builder: nodes by name with digits as numbers, then by
  // GUID, so that the model has the order that a dump of the fabric would give it.
  void Fill(FabricBuilder& builder) const;

 private:
  std::size_t& Slot(const PlannedEnd& end);

  // By node and port number: index of the cable, or NoCable. Grows as it is asked for.
  std::vector<std::vector<std::size_t>> cableAt_;
};

// The perfect tree of a shape without problem. Switches are named by what they are ("spine07",
// "pod03-leaf12", "pod03-agg05"), hosts "host0001", all numbers from 1 and as wide as the greatest.
// A switch's lower ports lead down.
FabricPlan PlanTree(const TreeShape& shape, std::uint32_t speed);

}  // namespace fabscope
