#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "reference/plain_fabric.h"
#include "reference/random_source.h"

namespace fabscope::internal::reference {

// One end of a cable: index of the node and port number.
struct CableEnd {
  int node = -1;
  int num = 0;
};

// A plain fabric while it is made up. Nodes are known by index, in the order in which they were
// added; Finish() may put them into another one.
class FabricSketch {
 public:
  explicit FabricSketch(RandomSource& source) : random(source) {}

  int AddNode(int type, const std::string& name);
  int AddSwitch(const std::string& name) { return AddNode(2, name); }
  int AddHost(const std::string& name) { return AddNode(1, name); }

  // A cable at free ports of both; false when one of them has none left. A node may be cabled to
  // itself.
  bool Cable(int a, int b);
  // Takes the cable of that port away; both ports stay with what else they are.
  void Cut(CableEnd end);
  // One end of every cable between two switches, or of every cable at all.
  std::vector<CableEnd> SwitchCables() const;
  std::vector<CableEnd> Cables() const;
  std::vector<CableEnd> CablesOf(int node) const;

  PlainNode& Node(int index) { return fabric_.nodes[static_cast<std::size_t>(index)]; }
  const PlainNode& Node(int index) const { return fabric_.nodes[static_cast<std::size_t>(index)]; }
  PlainPort& Port(CableEnd end) { return Node(end.node).ports[end.num]; }
  CableEnd FarEnd(CableEnd end) const;
  int NodeCount() const { return static_cast<int>(fabric_.nodes.size()); }
  std::vector<int> NodesOfType(int type) const;
  // A new aggregated port with that mark, to be named by its ports.
  int AddAPort(std::uint64_t asymmetry);

  // Gives every node its port count and GUIDs, and all nodes a random order if wanted.
  PlainFabric Finish(bool shuffled);

  RandomSource& random;
  bool scatterPorts = false;  // cables take random free ports instead of the lowest
  std::uint32_t speed = 0x400;
  int mixedSpeeds = 0;  // percentage of cables with some other speed

 private:
  // The number of a port without a cable, or 0.
  int FreePort(int node, int butNot);

  PlainFabric fabric_;
};

}  // namespace fabscope::internal::reference
