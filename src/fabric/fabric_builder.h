#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "fabric/guid_index.h"
#include "fabric/ib_fabric.h"
#include "fabric/port_set.h"

namespace fabscope::internal {

// What a node is made from. Absent values follow another: the system GUID the node GUID, the
// display name the name, the planes the suitable plane.
struct NodeSpec {
  std::uint64_t guid = 0;
  std::uint8_t type = NodeTypeSwitch;
  std::string name;
  std::optional<std::string_view> keptName;  // in place of the name: what KeepName has answered
  std::uint8_t numPorts = 0;
  std::optional<std::uint64_t> systemGuid;
  std::optional<std::string> displayName;
  std::uint8_t smdbRank = 255;
  bool special = false;
  bool multiAsic = false;
  std::string asic;
  std::int32_t planesNumber = 1;
  std::int32_t suitablePlane = 1;
  std::optional<std::vector<std::int32_t>> planes;
  std::vector<std::uint16_t> flids;
};

// A port of a node that is known by its GUID.
struct PortRef {
  std::uint64_t guid = 0;
  std::uint8_t num = 0;
};

// A port of a node that is known by its place in the model.
struct PortPlace {
  std::uint32_t node = 0;
  std::uint8_t num = 0;
};

// A cable. Speed (a code as in IBPort) and symmetry hold for both of its ends.
struct LinkSpec {
  PortRef a;
  PortRef b;
  std::uint32_t speed = 0;
  bool symmetric = true;
};

// Attributes of one port, as in IBPort; each one given overrides what a link or the default says.
struct PortSpec {
  std::uint8_t num = 0;
  std::optional<std::uint32_t> state;
  std::optional<std::uint32_t> speed;
  std::optional<bool> symmetric;
  std::optional<bool> fnm;
  std::optional<bool> fnm1;
  std::optional<bool> inSubFabric;
  std::optional<std::int32_t> planeMultiplicity;
  std::optional<std::int32_t> group;
};

// The only way to fill a fabric. Nodes are added first, in model order; then links, port
// attributes, aggregated ports and what side files say, in any order; Build() ends it.
//
// Every Add operation either takes the whole thing or changes nothing and answers what is wrong
// with it, in words fit for a message ("port 9 of node 0x... does not exist: it has 8 ports").
class FabricBuilder {
 public:
  // Nothing when all went well.
  using Problem = std::optional<std::string>;

  FabricBuilder() = default;
  ~FabricBuilder() = default;
  FabricBuilder(FabricBuilder&&) = default;
  FabricBuilder& operator=(FabricBuilder&&) = default;
  FabricBuilder(const FabricBuilder&) = delete;
  FabricBuilder& operator=(const FabricBuilder&) = delete;

  // Room for that many at once; more find room as they come.
  void ReserveNodes(std::size_t count);
  void ReserveLinks(std::size_t count);

  // Keeps the name of a node that will be added, for those who know it before they know the model's
  // order. It ends in a zero for functions of C.
  std::string_view KeepName(std::string_view name) { return names_.Keep(name); }
  // A GUID is not 0 and belongs to one node.
  [[nodiscard]] Problem AddNode(const NodeSpec& spec);
  // A node with that GUID will be added or looked up soon, which is then quicker.
  void ExpectNode(std::uint64_t guid) const { indexByGuid_.Expect(guid); }
  // The same for a link of the node at that place.
  void ExpectLink(std::uint32_t node) const { __builtin_prefetch(&portsBefore_[node]); }
  // Both nodes are known, both ports exist, are different and have no link yet.
  [[nodiscard]] Problem AddLink(const LinkSpec& spec);
  // The same between nodes whose places the caller has looked up already.
  [[nodiscard]] Problem AddLink(const PortPlace& a, const PortPlace& b, std::uint32_t speed,
                                bool symmetric) {
    return TryLink(a, b, speed, symmetric) ? std::nullopt : WhyNoLink(a, b);
  }
  // The same for those who need not know why it cannot be.
  [[nodiscard]] bool TryLink(const PortPlace& a, const PortPlace& b, std::uint32_t speed,
                             bool symmetric) {
    if (!HasPort(a) || !HasPort(b)) return false;
    const std::size_t placeA = PlaceOf(a);
    const std::size_t placeB = PlaceOf(b);
    if (placeA == placeB || linked_.Has(placeA) || linked_.Has(placeB)) return false;
    linked_.Insert(placeA);
    linked_.Insert(placeB);
    links_.push_back({a.node, b.node, speed, a.num, b.num, symmetric});
    return true;
  }
  // The node is known, the port exists and has no attributes yet.
  [[nodiscard]] Problem SetPort(std::uint64_t guid, const PortSpec& spec);
  // All ports exist and are in no other aggregated port, nor twice in this one.
  [[nodiscard]] Problem AddAPort(std::span<const PortRef> ports, std::uint64_t asymmetry);

  // The place of the node with that GUID, or GuidIndex::None.
  std::uint32_t FindNode(std::uint64_t guid) const { return indexByGuid_.Find(guid); }
  // Whether there is a switch with that GUID.
  bool IsSwitch(std::uint64_t guid) const;
  // Whether the port exists: a number from 1 to the node's port count.
  bool HasPort(const PortPlace& port) const {
    return port.num != 0 && PlaceOf(port) < portsBefore_[port.node + std::size_t{1}];
  }
  // What is wrong with a port that does not.
  std::string NoPortText(const PortPlace& port) const;
  bool HasLink(const PortPlace& port) const { return HasPort(port) && linked_.Has(PlaceOf(port)); }

  // What side files say of switches. The GUID must be a switch's. Without a rank it has 255.
  void ClearRanks();
  void SetRank(std::uint64_t guid, std::uint8_t rank);
  void AddFlid(std::uint64_t guid, std::uint16_t flid);

  // When the fabric was discovered, in the words of its file.
  void SetDate(std::string date) { date_ = std::move(date); }

  // The fabric with everything that was added. The builder is empty afterwards.
  std::unique_ptr<IBFabric> Build();

 private:
  struct Link {
    std::uint32_t nodeA;
    std::uint32_t nodeB;
    std::uint32_t speed;
    std::uint8_t portA;
    std::uint8_t portB;
    bool symmetric;
  };
  struct PortAttributes {
    std::uint32_t node;
    PortSpec spec;
  };
  struct AggregatedPort {
    std::vector<PortPlace> members;
    std::uint64_t asymmetry;
  };

  Problem WhyNoLink(const PortPlace& a, const PortPlace& b) const;
  Problem Locate(const PortRef& port, PortPlace& place) const;
  PortRef Name(const PortPlace& port) const { return {nodes_[port.node].guid, port.num}; }
  std::size_t PlaceOf(const PortPlace& port) const {
    return portsBefore_[port.node] + port.num - std::size_t{1};
  }
  // Puts a port into one of the sets that are empty until there is one; false when it is there.
  bool Mark(const PortPlace& port, PortSet& ports) const;
  NodeExtras& ExtrasOf(IBNode& node);
  PortExtras& ExtrasOf(IBPort& port);
  // Answers by node where the first of its ports stands.
  std::vector<std::size_t> LayOutPorts(IBFabric& fabric) const;
  void ConnectLinks(IBFabric& fabric, const std::vector<std::size_t>& firstPorts) const;
  void ApplyPortAttributes(IBFabric& fabric);
  void AttachAPorts(IBFabric& fabric);

  std::vector<IBNode> nodes_;
  TextArena names_;
  std::string date_;
  std::deque<NodeExtras> extras_;
  GuidIndex indexByGuid_;
  // By node, and behind the last one: how many ports all before it can have.
  std::vector<std::size_t> portsBefore_{0};
  PortSet linked_;  // ports that have a link
  PortSet needed_;  // others that need an object; empty until there is one
  std::vector<Link> links_;
  std::vector<PortAttributes> attributes_;
  std::vector<AggregatedPort> aports_;
  // As `needed_`: ports that have attributes; that are in an aggregated port.
  PortSet withAttributes_;
  PortSet inAPort_;
};

}  // namespace fabscope::internal
