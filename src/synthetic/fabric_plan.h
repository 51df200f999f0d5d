#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "fabric/fabric_builder.h"
#include "synthetic/tree_shape.h"

namespace fabscope::internal {

// A node of a plan and its place in the tree that was meant. On a fabric of several planes a switch
// is a system with a chip for each plane.
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

// A cable between two switches, or a switch and a host; on a fabric of several planes it has a link
// on each of them.
struct PlannedCable {
  PlannedEnd upper;  // of a cable that was meant, the end nearer to the roots
  PlannedEnd lower;
  std::uint32_t speed = 0;
  bool removed = false;
  unsigned slowPlane = 0;  // the plane, from 1, whose link runs at the next lower speed; 0: none
};

// A link as the fabric will have it.
struct PlannedLink {
  PortRef upper;
  PortRef lower;
  std::uint32_t speed = 0;
};

// The next lower speed; 0 if there is none.
std::uint32_t SlowerSpeed(std::uint32_t speed);

// A fabric that does not stand yet: a perfect tree first, then what faults make of it. Nodes and
// cables keep their indices; what goes is marked as removed.
//
// All planes are cabled alike, so the plan tells only one. Filled in, a switch system of several
// planes is that many chips ("leaf03/U1", "leaf03/U2", ...), each a node of the multi-ASIC family
// on its plane; no cable leads from plane to plane. The ports of one number of all chips of a
// system work as one aggregated port, and so do the ports that a host has for one cable: of port n
// on P planes these are (n - 1) * P + 1 to n * P.
class FabricPlan {
 public:
  std::vector<PlannedNode> nodes;
  std::vector<PlannedCable> cables;
  int levels = 0;
  unsigned planes = 1;

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

  // Gives every switch its rank, as a subnet manager that knows its fabric would.
  void GiveRanks();
  // Gives the leaves of each group two FLIDs of the group's own. Answers why that cannot be.
  [[nodiscard]] std::optional<std::string> GiveFlids();

  // Adds everything that is left to an empty builder: nodes by name with digits as numbers, then by
  // GUID, so that the model has the order that a dump of the fabric would give it.
  void Fill(FabricBuilder& builder) const;

  // What a node and a cable are on a plane (from 1). Hosts are the same on all.
  NodeSpec NodeOnPlane(std::size_t node, unsigned plane) const;
  PortRef PortOnPlane(const PlannedEnd& end, unsigned plane) const;
  PlannedLink LinkOnPlane(const PlannedCable& cable, unsigned plane) const;

  // What the aggregated ports of a cable are marked with whose planes differ.
  static constexpr std::uint64_t AsymmetryMark = 1;

 private:
  std::vector<NodeSpec> AllNodes() const;
  void AggregatePorts(FabricBuilder& builder, const PlannedCable& cable) const;
  std::size_t& Slot(const PlannedEnd& end);

  // By node and port number: index of the cable, or NoCable. Grows as it is asked for.
  std::vector<std::vector<std::size_t>> cableAt_;
};

// The perfect tree of a shape without problem. Switches are named by what they are ("spine07",
// "pod03-leaf12", "pod03-agg05"), hosts "host0001", all numbers from 1 and as wide as the greatest.
// A switch's lower ports lead down.
FabricPlan PlanTree(const TreeShape& shape, std::uint32_t speed);

}  // namespace fabscope::internal
