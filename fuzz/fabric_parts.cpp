#include "fuzz/fabric_parts.h"

#include <array>
#include <cstddef>
#include <utility>

#include "fuzz/require.h"

namespace fabscope::internal::fuzz {
namespace {

constexpr std::uint64_t firstGuid = 0x100;

class TreeMaker {
 public:
  TreeMaker(FuzzedDataProvider& bytes, const MakeName& makeName)
      : bytes_(bytes), makeName_(makeName) {}

  FabricParts Make() {
    PlantSwitches();
    for (std::size_t level = 0; level + 1 < levels_.size(); ++level) JoinLevels(level);
    AddHosts();
    while (bytes_.remaining_bytes() > 0) Change();
    return std::move(parts_);
  }

 private:
  using Indices = std::vector<std::size_t>;

  std::size_t Below(std::size_t limit) {
    return bytes_.ConsumeIntegralInRange<std::size_t>(0, limit - 1);
  }
  bool OneOf(std::size_t count) { return Below(count) == 0; }

  void PlantSwitches();
  void JoinLevels(std::size_t level);
  void AddHosts();
  std::size_t AddNode(std::uint8_t type);
  void Change();
  void ChangeNode(NodeSpec& node);
  void ChangePort(const PortRef& port);
  void Join(std::size_t a, std::size_t b);

  PortRef AnyPort();
  std::uint32_t AnySpeed();
  void AddLink(const LinkSpec& link);

  FuzzedDataProvider& bytes_;
  const MakeName& makeName_;
  FabricParts parts_;
  FabricBuilder taken_;                 // refuses what does not go together with the parts
  std::vector<std::uint8_t> nextPort_;  // by node: from here on ports are free of the tree's cables
  std::vector<Indices> levels_;
  std::uint32_t speed_ = 0;
};

std::size_t TreeMaker::AddNode(std::uint8_t type) {
  NodeSpec node;
  node.guid = firstGuid + parts_.nodes.size();
  node.type = type;
  node.name = makeName_(bytes_);
  node.numPorts = OneOf(16) ? bytes_.ConsumeIntegral<std::uint8_t>() : std::uint8_t{24};
  Require(!taken_.AddNode(node), "a node of a new GUID is taken");
  parts_.nodes.push_back(std::move(node));
  nextPort_.push_back(1);
  return parts_.nodes.size() - 1;
}

void TreeMaker::PlantSwitches() {
  speed_ = AnySpeed();
  const bool haveRanks = bytes_.ConsumeBool();
  levels_.resize(1 + Below(4));
  // In an order of its own, so that ranks do not follow the model.
  const bool isUpsideDown = bytes_.ConsumeBool();
  for (std::size_t i = 0; i < levels_.size(); ++i) {
    const std::size_t level = isUpsideDown ? levels_.size() - 1 - i : i;
    for (std::size_t count = 1 + Below(6); count != 0; --count) {
      levels_[level].push_back(AddNode(NodeTypeSwitch));
      if (haveRanks) parts_.nodes.back().smdbRank = static_cast<std::uint8_t>(level);
    }
  }
}

void TreeMaker::JoinLevels(std::size_t level) {
  const std::size_t pods = 1 + Below(3);
  const bool choosePairs = OneOf(4);
  const std::size_t parallel = 1 + (OneOf(4) ? Below(3) : 0);
  for (std::size_t upper = 0; upper < levels_[level].size(); ++upper) {
    for (std::size_t lower = 0; lower < levels_[level + 1].size(); ++lower) {
      const bool joined = choosePairs ? bytes_.ConsumeBool() : upper % pods == lower % pods;
      for (std::size_t i = 0; joined && i < parallel; ++i) {
        Join(levels_[level][upper], levels_[level + 1][lower]);
      }
    }
  }
}

void TreeMaker::AddHosts() {
  const std::size_t hosts = Below(4);
  for (const std::size_t leaf : levels_.back()) {
    for (std::size_t i = 0; i < hosts; ++i) Join(leaf, AddNode(NodeTypeCA));
  }
}

void TreeMaker::Join(std::size_t a, std::size_t b) {
  AddLink({{parts_.nodes[a].guid, nextPort_[a]++},
           {parts_.nodes[b].guid, nextPort_[b]++},
           speed_,
           true});
}

void TreeMaker::AddLink(const LinkSpec& link) {
  if (!taken_.AddLink(link)) parts_.links.push_back(link);
}

PortRef TreeMaker::AnyPort() {
  const NodeSpec& node = parts_.nodes[Below(parts_.nodes.size())];
  return {node.guid, static_cast<std::uint8_t>(1 + Below(OneOf(8) ? 255 : 12))};
}

std::uint32_t TreeMaker::AnySpeed() {
  constexpr std::array<std::uint32_t, 12> speeds{0x400, 0x1,     0x2,     0x4,       0x100, 0x200,
                                                 0x800, 0x10000, 0x20000, 0x1000000, 0,     0x8};
  return OneOf(16) ? bytes_.ConsumeIntegral<std::uint32_t>() : speeds[Below(speeds.size())];
}

void TreeMaker::Change() {
  switch (Below(8)) {
    case 0:
      // A cable less. The builder that refuses does not need to know.
      if (parts_.links.empty()) return;
      std::swap(parts_.links[Below(parts_.links.size())], parts_.links.back());
      parts_.links.pop_back();
      return;
    case 1:
    case 2:
      AddLink({AnyPort(), AnyPort(), AnySpeed(), !OneOf(8)});
      return;
    case 3:
      AddNode(bytes_.ConsumeIntegralInRange(NodeTypeCA, NodeTypeRouter));
      return;
    case 4: {
      FabricParts::AggregatedPort aport;
      for (std::size_t count = Below(4); count != 0; --count) aport.ports.push_back(AnyPort());
      aport.asymmetry = OneOf(2) ? 0 : bytes_.ConsumeIntegral<std::uint64_t>();
      if (!taken_.AddAPort(aport.ports, aport.asymmetry)) parts_.aports.push_back(std::move(aport));
      return;
    }
    case 5:
      ChangePort(AnyPort());
      return;
    default:
      ChangeNode(parts_.nodes[Below(parts_.nodes.size())]);
  }
}

void TreeMaker::ChangePort(const PortRef& ref) {
  FabricParts::Port port;
  port.guid = ref.guid;
  port.spec.num = ref.num;
  switch (Below(8)) {
    case 0:
      port.spec.state = bytes_.ConsumeIntegralInRange<std::uint32_t>(0, 5);
      break;
    case 1:
      port.spec.speed = AnySpeed();
      break;
    case 2:
      port.spec.symmetric = bytes_.ConsumeBool();
      break;
    case 3:
      port.spec.fnm = bytes_.ConsumeBool();
      port.spec.group = bytes_.ConsumeIntegralInRange(0, 2);
      break;
    case 4:
      port.spec.fnm1 = bytes_.ConsumeBool();
      break;
    case 5:
      port.spec.inSubFabric = bytes_.ConsumeBool();
      break;
    case 6:
      port.spec.group = bytes_.ConsumeIntegral<std::int32_t>();
      break;
    default:
      port.spec.planeMultiplicity = bytes_.ConsumeIntegralInRange(-1, 4);
      port.spec.group = bytes_.ConsumeIntegralInRange(0, 2);
  }
  if (!taken_.SetPort(port.guid, port.spec)) parts_.ports.push_back(std::move(port));
}

void TreeMaker::ChangeNode(NodeSpec& node) {
  switch (Below(10)) {
    case 0:
      node.systemGuid = bytes_.ConsumeIntegralInRange<std::uint64_t>(0, firstGuid);
      return;
    case 1:
      node.displayName = makeName_(bytes_);
      return;
    case 2:
      node.smdbRank = bytes_.ConsumeIntegralInRange<std::uint8_t>(0, 5);
      return;
    case 3:
      node.special = !node.special;
      return;
    case 4:
      node.multiAsic = !node.multiAsic;
      return;
    case 5:
      node.asic = makeName_(bytes_);
      return;
    case 6:
      node.planesNumber = bytes_.ConsumeIntegralInRange(-1, 4);
      return;
    case 7:
      node.suitablePlane = bytes_.ConsumeIntegralInRange(0, 3);
      return;
    case 8:
      node.planes.emplace();
      for (std::size_t count = Below(4); count != 0; --count) {
        node.planes->push_back(bytes_.ConsumeIntegralInRange(0, 3));
      }
      return;
    default:
      node.flids.push_back(bytes_.ConsumeIntegralInRange<std::uint16_t>(0, 5));
  }
}

}  // namespace

std::unique_ptr<IBFabric> BuildFabric(const FabricParts& parts) {
  FabricBuilder builder;
  for (const NodeSpec& node : parts.nodes) Require(!builder.AddNode(node), "a node is taken");
  for (const LinkSpec& link : parts.links) Require(!builder.AddLink(link), "a link is taken");
  for (const auto& [guid, spec] : parts.ports) {
    Require(!builder.SetPort(guid, spec), "a port is taken");
  }
  for (const auto& [ports, asymmetry] : parts.aports) {
    Require(!builder.AddAPort(ports, asymmetry), "an aggregated port is taken");
  }
  return builder.Build();
}

FabricParts MakeTree(FuzzedDataProvider& bytes, const MakeName& makeName) {
  return TreeMaker(bytes, makeName).Make();
}

}  // namespace fabscope::internal::fuzz
