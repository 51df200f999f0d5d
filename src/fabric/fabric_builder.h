#pragma once

#include <bitset>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <unordered_set>
#include <vector>

#include "fabric/ib_fabric.h"

namespace fabscope {

// What a node is made from. Absent values follow another: the system GUID the node GUID, the
// display name the name, the planes the suitable plane.
struct NodeSpec {
  std::uint64_t guid = 0;
  std::uint32_t type = NodeTypeSwitch;
  std::string name;
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

struct PortRef {
  std::uint64_t guid = 0;
  std::uint8_t num = 0;
};

// A cable. Speed and symmetry hold for both of its ends.
struct LinkSpec {
  PortRef a;
  PortRef b;
  std::uint32_t speed = 0;
  bool symmetric = true;
};

// Attributes of one port; each one given overrides what a link or the default says.
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
  using Problem = std::optional<std::string>;

  void ReserveNodes(std::size_t count);
  void ReserveLinks(std::size_t count);

  // A GUID is not 0 and belongs to one node.
  [[nodiscard]] Problem AddNode(NodeSpec spec);
  // Both nodes are known, both ports exist, are different and have no link yet.
  [[nodiscard]] Problem AddLink(const LinkSpec& spec);
  // The node is known, the port exists and has no attributes yet.
  [[nodiscard]] Problem SetPort(std::uint64_t guid, const PortSpec& spec);
  // All ports exist and are in no other aggregated port, nor twice in this one.
  [[nodiscard]] Problem AddAPort(std::span<const PortRef> ports, std::uint64_t asymmetry);

  bool HasNode(std::uint64_t guid) const { return indexByGuid_.contains(guid); }
  bool IsSwitch(std::uint64_t guid) const;
  std::size_t GetNodeCount() const { return nodes_.size(); }
  // Whether the port exists: a number from 1 to the node's port count. The node must be known.
  Problem CheckPort(const PortRef& port) const;
  bool HasLink(const PortRef& port) const;

  // What side files say of switches. The GUID must be a switch's.
  void ClearRanks();
  void SetRank(std::uint64_t guid, std::uint8_t rank);
  void AddFlid(std::uint64_t guid, std::uint16_t flid);

  // The fabric with everything that was added. The builder is empty afterwards.
  std::unique_ptr<IBFabric> Build();

 private:
  using PortSet = std::bitset<256>;
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
    std::vector<std::pair<std::uint32_t, std::uint8_t>> members;
    std::uint64_t asymmetry;
  };

  Problem Locate(const PortRef& port, std::uint32_t& node) const;
  void LayOutPorts(IBFabric& fabric) const;
  void ConnectLinks(IBFabric& fabric) const;
  void ApplyPortAttributes(IBFabric& fabric) const;
  void AttachAPorts(IBFabric& fabric) const;

  std::vector<IBNode> nodes_;
  std::unordered_map<std::uint64_t, std::uint32_t> indexByGuid_;
  std::vector<PortSet> linked_;  // by node: ports that have a link
  std::vector<PortSet> needed_;  // by node: ports that need an object
  std::vector<Link> links_;
  std::vector<PortAttributes> attributes_;
  std::vector<AggregatedPort> aports_;
  // Keys are node index * 256 + port number.
  std::unordered_set<std::uint64_t> withAttributes_;
  std::unordered_set<std::uint64_t> inAPort_;
};

}  // namespace fabscope
