#include "repairs/repair_cases.h"

#include <algorithm>
#include <functional>
#include <numeric>
#include <utility>
#include <vector>

#include "fabric/fabric_builder.h"
#include "fabric/fabric_walk.h"
#include "reference/plain_model.h"
#include "reference/random_fabric.h"
#include "reference/random_source.h"
#include "synthetic/fabric_plan.h"
#include "synthetic/faults.h"

namespace fabscope::internal {
namespace {

using reference::RandomSource;

constexpr std::uint32_t hdr = 0x400;

// --- Trees with faults.

TreeShape AnyShape(RandomSource& random) {
  const auto number = [&](int least, int greatest) {
    return static_cast<unsigned>(random.Between(least, greatest));
  };
  if (random.Chance(25)) {
    const unsigned levels = number(2, 3);
    return RadixTree(levels, 2 * number(2, levels == 2 ? 6 : 3), 0, 0);
  }
  TreeShape shape;
  const int levels = random.Pick<int>({2, 2, 3, 3, 4});
  shape.children = {number(0, 4) + 1};
  shape.parents = {1};
  for (int level = 1; level < levels; ++level) {
    shape.children.push_back(number(levels == 2 ? 2 : 1, levels == 2 ? 12 : 4));
    shape.parents.push_back(number(1, levels == 2 ? 6 : 3));
  }
  shape.parallel = random.Chance(25) ? number(2, 3) : 1;
  const unsigned spare = random.Chance(30) ? 0 : number(1, 6);
  for (std::size_t level = 1; level <= shape.Levels(); ++level) {
    shape.radix = std::max(shape.radix, shape.PortsOnLevel(level) + spare);
  }
  return shape;
}

FabricPlan WithPortsAtRandom(const FabricPlan& plan, RandomSource& random) {
  FabricPlan other;
  other.nodes = plan.nodes;
  other.levels = plan.levels;
  std::vector<std::vector<std::uint8_t>> ports;
  for (std::size_t i = 0; i < plan.nodes.size(); ++i) {
    auto& ofNode = ports.emplace_back(plan.nodes[i].spec.numPorts);
    std::iota(ofNode.begin(), ofNode.end(), std::uint8_t{1});
    if (plan.IsSwitch(i)) random.Shuffle(ofNode);
  }
  for (PlannedCable cable : plan.cables) {
    cable.upper.port = ports[cable.upper.node][cable.upper.port - 1U];
    cable.lower.port = ports[cable.lower.node][cable.lower.port - 1U];
    other.AddCable(cable);
  }
  return other;
}

void RemoveSomeHosts(FabricPlan& plan, RandomSource& random) {
  const int percent = random.Pick<int>({20, 50, 90});
  for (const std::size_t leaf : plan.SwitchesOnRank(plan.levels - 1)) {
    if (!random.Chance(percent)) continue;
    for (const std::size_t cable : plan.CablesOf(leaf)) {
      const std::size_t below = plan.cables[cable].lower.node;
      if (!plan.IsSwitch(below) && random.Chance(90)) plan.RemoveNode(below);
    }
  }
}

TreeRanks RanksOfPlan(const FabricPlan& plan, const IBFabric& fabric) {
  TreeRanks ranks{std::vector<int>(fabric.GetNodes().size(), TreeRanks::none), 0};
  for (const PlannedNode& node : plan.nodes) {
    if (node.rank >= 0 && !node.removed) {
      ranks.ofNode[fabric.getNodeByGuid(node.spec.guid)->index] = node.rank;
    }
  }
  ranks.levels = plan.levels;
  return ranks;
}

bool HasAllRanks(const FabricPlan& plan) {
  for (int rank = 0; rank < plan.levels; ++rank) {
    if (plan.SwitchesOnRank(rank).empty()) return false;
  }
  return true;
}

RepairCase MakeTreeWithFaults(RandomSource& random, std::uint64_t seed) {
  FabricPlan plan = PlanTree(AnyShape(random), hdr);
  if (random.Chance(25)) plan = WithPortsAtRandom(plan, random);
  if (random.Chance(25)) RemoveSomeHosts(plan, random);
  Random chance(seed);
  FaultInjector injector(plan, chance);
  const int faults = random.Below(9);
  for (int i = 0; i < faults; ++i) {
    const auto kind = random.Pick<FaultKind>(
        {FaultKind::MissingLink, FaultKind::SwappedCables, FaultKind::SwappedCables,
         FaultKind::MovedCable, FaultKind::MovedCable, FaultKind::SameRankLink, FaultKind::RootLink,
         FaultKind::SlowLink, FaultKind::DeadSwitch, FaultKind::StrayHost});
    InjectedFault fault;
    static_cast<void>(injector.Inject(kind, fault));  // a tree may be too small for another one
  }
  FabricBuilder builder;
  plan.Fill(builder);
  RepairCase made{"tree with " + std::to_string(faults) + " faults", builder.Build(), {}};
  if (random.Chance(30) && HasAllRanks(plan)) made.known = RanksOfPlan(plan, *made.fabric);
  return made;
}

RepairCase MakeOddTree(std::uint64_t seed) {
  const reference::PlainCase what = reference::RandomCase(seed);
  return {what.kind, reference::ModelOf(what.fabric), {}};
}

// --- Graphs.

class GraphMaker {
 public:
  GraphMaker(RandomSource& random, int ports) : random_(random), ports_(ports) {}

  int AddSwitch() {
    NodeSpec node;
    node.guid = static_cast<std::uint64_t>(++switches_);
    node.name = "switch" + std::to_string(switches_);
    node.numPorts = static_cast<std::uint8_t>(ports_);
    static_cast<void>(builder_.AddNode(node));
    return switches_;
  }
  // At ports by chance; where one is taken, there is no cable.
  void Cable(int a, int b) {
    const PortRef from{static_cast<std::uint64_t>(a), AnyPort()};
    const PortRef to{static_cast<std::uint64_t>(b), AnyPort()};
    static_cast<void>(builder_.AddLink({from, to, hdr, !random_.Chance(2)}));
  }
  void AddHosts(int percent) {
    const int switches = switches_;
    for (int owner = 1; owner <= switches; ++owner) {
      for (int i = 0; i < 3; ++i) {
        if (random_.Chance(percent)) AddHost(owner);
      }
    }
  }
  std::unique_ptr<IBFabric> Build() { return builder_.Build(); }

 private:
  std::uint8_t AnyPort() { return static_cast<std::uint8_t>(random_.Between(1, ports_)); }
  void AddHost(int owner) {
    constexpr std::uint64_t firstHost = 0x1000;
    NodeSpec host;
    host.guid = firstHost + static_cast<std::uint64_t>(++hosts_);
    host.type = NodeTypeCA;
    host.name = "host" + std::to_string(hosts_);
    host.numPorts = 1;
    const std::uint64_t guid = host.guid;
    static_cast<void>(builder_.AddNode(host));
    const PortRef at{static_cast<std::uint64_t>(owner), AnyPort()};
    static_cast<void>(builder_.AddLink({at, {guid, 1}, hdr, true}));
  }

  RandomSource& random_;
  int ports_;
  int switches_ = 0;
  int hosts_ = 0;
  FabricBuilder builder_;
};

using Switches = std::vector<int>;

void AddRing(GraphMaker& graph, const Switches& ring, RandomSource&) {
  for (std::size_t i = 0; i < ring.size(); ++i) graph.Cable(ring[i], ring[(i + 1) % ring.size()]);
}

void AddChain(GraphMaker& graph, const Switches& chain, RandomSource&) {
  for (std::size_t i = 0; i + 1 < chain.size(); ++i) graph.Cable(chain[i], chain[i + 1]);
}

void AddStar(GraphMaker& graph, const Switches& star, RandomSource& random) {
  const int cables = random.Between(1, 2);
  for (std::size_t i = 1; i < star.size(); ++i) {
    for (int k = 0; k < cables; ++k) graph.Cable(star[0], star[i]);
  }
}

void AddClique(GraphMaker& graph, const Switches& clique, RandomSource&) {
  for (std::size_t i = 0; i < clique.size(); ++i) {
    for (std::size_t k = 0; k < i; ++k) graph.Cable(clique[k], clique[i]);
  }
}

void AddAnyCables(GraphMaker& graph, const Switches& switches, RandomSource& random) {
  const int cables = random.Below(4 * static_cast<int>(switches.size()) + 1);
  for (int i = 0; i < cables; ++i) {
    const int a = random.Pick(switches);
    const int b = random.Pick(switches);
    if (a != b || random.Chance(20)) graph.Cable(a, b);
  }
}

RepairCase MakeGraph(RandomSource& random) {
  struct Kind {
    const char* name;
    void (*add)(GraphMaker& graph, const Switches& switches, RandomSource& random);
  };
  const std::vector<Kind> kinds{{"ring", AddRing},       {"chain", AddChain},
                                {"star", AddStar},       {"clique", AddClique},
                                {"graph", AddAnyCables}, {"graph", AddAnyCables}};
  GraphMaker graph(random, random.Pick<int>({3, 6, 12, 24, 255}));
  RepairCase made;
  const int parts = random.Chance(25) ? 2 : 1;
  for (int part = 0; part < parts; ++part) {
    const Kind kind = random.Pick(kinds);
    Switches switches(static_cast<std::size_t>(random.Between(1, 9)));
    for (int& one : switches) one = graph.AddSwitch();
    kind.add(graph, switches, random);
    if (random.Chance(20)) AddAnyCables(graph, switches, random);
    made.kind += std::string(part == 0 ? "" : ", ") + kind.name;
  }
  graph.AddHosts(random.Pick<int>({0, 5, 30, 90}));
  made.fabric = graph.Build();
  if (!random.Chance(40)) return made;
  std::vector<std::uint32_t> roots;
  for (const IBNode* node : made.fabric->switches) {
    if (random.Chance(30)) roots.push_back(node->index);
  }
  if (!roots.empty()) made.known = RanksByDistance(*made.fabric, roots);
  return made;
}

}  // namespace

TreeRanks RanksByDistance(const IBFabric& fabric, const std::vector<std::uint32_t>& roots) {
  TreeRanks ranks{std::vector<int>(fabric.GetNodes().size(), TreeRanks::none), 0};
  std::vector<std::uint32_t> last = roots;
  for (const std::uint32_t root : roots) ranks.ofNode[root] = 0;
  while (!last.empty()) {
    ++ranks.levels;
    std::vector<std::uint32_t> next;
    for (const std::uint32_t index : last) {
      for (const IBPort& port : fabric.GetNodes()[index].ports) {
        const IBNode* far = GetRemoteSwitch(port);
        if (far == nullptr || ranks.ofNode[far->index] != TreeRanks::none) continue;
        ranks.ofNode[far->index] = ranks.levels;
        next.push_back(far->index);
      }
    }
    last = std::move(next);
  }
  return ranks;
}

RepairCase MakeRepairCase(std::uint64_t seed) {
  RandomSource random(seed);
  const int kind = random.Below(100);
  if (kind < 50) return MakeTreeWithFaults(random, seed);
  if (kind < 65) return MakeOddTree(seed);
  return MakeGraph(random);
}

}  // namespace fabscope::internal
