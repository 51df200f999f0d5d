#include "reference/fabric_sketch.h"

#include <algorithm>
#include <numeric>

namespace fabscope::internal::reference {
namespace {

constexpr int mostPorts = 255;

bool IsCabled(const PlainNode& node, int num) {
  const auto found = node.ports.find(num);
  return found != node.ports.end() && found->second.remoteNode >= 0;
}

int HighestPort(const PlainNode& node) {
  return node.ports.empty() ? 0 : node.ports.rbegin()->first;
}

}  // namespace

int FabricSketch::AddNode(int type, const std::string& name) {
  PlainNode& node = fabric_.nodes.emplace_back();
  node.type = type;
  node.name = name;
  node.displayName = name;
  return NodeCount() - 1;
}

int FabricSketch::FreePort(int node, int butNot) {
  const auto isFree = [&](int num) { return num != butNot && !IsCabled(Node(node), num); };
  int first = 1;
  if (scatterPorts) {
    first = random.Between(1, std::min(HighestPort(Node(node)) + 3, mostPorts));
  }
  for (int num = first; num <= mostPorts; ++num) {
    if (isFree(num)) return num;
  }
  for (int num = 1; num < first; ++num) {
    if (isFree(num)) return num;
  }
  return 0;
}

bool FabricSketch::Cable(int a, int b) {
  const int aPort = FreePort(a, 0);
  const int bPort = FreePort(b, a == b ? aPort : 0);
  if (aPort == 0 || bPort == 0) return false;
  std::uint32_t cableSpeed = speed;
  if (mixedSpeeds > 0 && random.Chance(mixedSpeeds)) {
    cableSpeed = random.Pick<std::uint32_t>({0, 0x1, 0x2, 0x4, 0x100, 0x200, 0x400, 0x800, 0x10000,
                                             0x20000, 0x1000000, 0x3, 0x80000000});
  }
  PlainPort& aEnd = Port({a, aPort});
  PlainPort& bEnd = Port({b, bPort});
  aEnd.remoteNode = b;
  aEnd.remotePort = bPort;
  bEnd.remoteNode = a;
  bEnd.remotePort = aPort;
  for (PlainPort* end : {&aEnd, &bEnd}) {
    end->state = 4;
    end->speed = cableSpeed;
  }
  return true;
}

CableEnd FabricSketch::FarEnd(CableEnd end) const {
  const PlainPort& port = Node(end.node).ports.at(end.num);
  return {port.remoteNode, port.remotePort};
}

void FabricSketch::Cut(CableEnd end) {
  for (const CableEnd side : {end, FarEnd(end)}) {
    PlainPort& port = Port(side);
    port.remoteNode = -1;
    port.remotePort = 0;
    port.state = 1;
  }
}

std::vector<CableEnd> FabricSketch::CablesOf(int node) const {
  std::vector<CableEnd> ends;
  for (const auto& [num, port] : Node(node).ports) {
    if (port.remoteNode >= 0) ends.push_back({node, num});
  }
  return ends;
}

std::vector<CableEnd> FabricSketch::Cables() const {
  std::vector<CableEnd> ends;
  for (int node = 0; node < NodeCount(); ++node) {
    for (const CableEnd end : CablesOf(node)) {
      const CableEnd far = FarEnd(end);
      if (std::pair(far.node, far.num) < std::pair(end.node, end.num)) continue;
      ends.push_back(end);
    }
  }
  return ends;
}

std::vector<CableEnd> FabricSketch::SwitchCables() const {
  std::vector<CableEnd> ends;
  for (const CableEnd end : Cables()) {
    if (Node(end.node).type == 2 && Node(FarEnd(end).node).type == 2) ends.push_back(end);
  }
  return ends;
}

std::vector<int> FabricSketch::NodesOfType(int type) const {
  std::vector<int> nodes;
  for (int node = 0; node < NodeCount(); ++node) {
    if (Node(node).type == type) nodes.push_back(node);
  }
  return nodes;
}

int FabricSketch::AddAPort(std::uint64_t asymmetry) {
  fabric_.aportAsymmetry.push_back(asymmetry);
  return static_cast<int>(fabric_.aportAsymmetry.size()) - 1;
}

PlainFabric FabricSketch::Finish(bool shuffled) {
  const auto firstGuid =
      random.Pick<std::uint64_t>({0x1, 0x2c90000, 0xe41d2d0300000000, 0xffffffffff000000});
  std::vector<int> order(fabric_.nodes.size());
  std::iota(order.begin(), order.end(), 0);
  if (shuffled) random.Shuffle(order);

  PlainFabric finished;
  finished.aportAsymmetry = fabric_.aportAsymmetry;
  std::vector<int> placeOf(order.size());
  for (std::size_t place = 0; place < order.size(); ++place) {
    placeOf[static_cast<std::size_t>(order[place])] = static_cast<int>(place);
    PlainNode& node = finished.nodes.emplace_back(Node(order[place]));
    node.guid = firstGuid + static_cast<std::uint64_t>(order[place]);
    // Set by those who make systems of several chips, as a number from 1.
    node.systemGuid = node.systemGuid == 0 ? node.guid : firstGuid + 0x100000 + node.systemGuid;
    if (node.numPorts == 0) {
      const int spare = random.Chance(1) ? mostPorts : random.Below(4);
      node.numPorts = std::min(HighestPort(node) + spare, mostPorts);
    }
  }
  for (PlainNode& node : finished.nodes) {
    for (auto& [num, port] : node.ports) {
      if (port.remoteNode >= 0) {
        port.remoteNode = placeOf[static_cast<std::size_t>(port.remoteNode)];
      }
    }
  }
  return finished;
}

}  // namespace fabscope::internal::reference
