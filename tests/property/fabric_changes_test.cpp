// What is told to have changed is all that has changed: applied to the cables of the old fabric,
// the changes give those of the new one.

#include "compare/fabric_changes.h"

#include <gtest/gtest.h>
#include <memory>
#include <set>
#include <string>

#include "fabric/fabric_walk.h"
#include "synthetic/fabric_plan.h"
#include "synthetic/faults.h"

namespace fabscope::internal {
namespace {

constexpr std::uint32_t hdr = 0x400;

// A tree with some faults of each kind, most of which a seed chooses.
std::unique_ptr<IBFabric> Faulty(std::uint64_t seed) {
  FabricPlan plan = PlanTree({{4, 4, 4}, {1, 4, 4}, 1, 0, 2}, hdr);
  Random random(seed);
  FaultInjector injector(plan, random);
  for (std::size_t i = 0; i < 5; ++i) {
    const FaultKind kind = AllFaultKinds()[(seed * 5 + i) % AllFaultKinds().size()];
    InjectedFault fault;
    if (kind == FaultKind::SharedFlid) continue;  // these have no FLIDs
    EXPECT_EQ(injector.Inject(kind, fault), std::nullopt);
  }
  FabricBuilder builder;
  plan.Fill(builder);
  return builder.Build();
}

std::string End(const IBPort& port) {
  return std::to_string(port.node->guid) + ":" + std::to_string(port.num) + "@" +
         std::to_string(port.speed);
}

using Cables = std::multiset<std::string>;

std::string Name(const IBPort& end1, const IBPort& end2) {
  return std::min(End(end1), End(end2)) + " " + std::max(End(end1), End(end2));
}

Cables CablesOf(const IBFabric& fabric) {
  Cables cables;
  for (const IBPort& port : fabric.GetPorts()) {
    if (port.remotePort != nullptr && IsFirstEnd(port)) {
      cables.insert(Name(port, *port.remotePort));
    }
  }
  return cables;
}

void TakeOut(Cables& cables, const std::string& cable) {
  const auto found = cables.find(cable);
  ASSERT_NE(found, cables.end()) << cable;
  cables.erase(found);
}

// All cables of nodes that went or came, but for those that are told as moved already.
void ForEachCableOf(const std::vector<NodeAndCables>& nodes, const auto& visit) {
  std::set<std::string> told;
  for (const NodeAndCables& change : nodes) {
    std::size_t cables = 0;
    for (const IBPort& port : change.node->ports) {
      if (port.remotePort == nullptr) continue;
      ++cables;
      const std::string name = Name(port, *port.remotePort);
      if (told.insert(name).second) visit(name);
    }
    EXPECT_EQ(change.cables, cables);
  }
}

TEST(FabricChanges, AppliedToTheOldFabricGiveTheNewOne) {
  for (std::uint64_t seed = 0; seed < 200; ++seed) {
    const auto was = Faulty(seed);
    const auto is = Faulty(seed + 1);
    const FabricChanges changes = CompareFabrics(*was, *is, Counterparts(*was, *is));
    Cables before = CablesOf(*was);
    Cables after = CablesOf(*is);
    std::set<std::string> movedFrom;
    std::set<std::string> movedTo;
    for (const MovedCable& move : changes.moved) {
      movedFrom.insert(Name(*move.was, *move.was->remotePort));
      movedTo.insert(Name(*move.kept, *move.is));
      EXPECT_EQ(move.was->remotePort->num, move.kept->num);
    }
    EXPECT_EQ(movedFrom.size(), changes.moved.size());
    EXPECT_EQ(movedTo.size(), changes.moved.size());
    for (const std::string& cable : movedFrom) TakeOut(before, cable);
    for (const std::string& cable : movedTo) TakeOut(after, cable);
    for (const Cable& cable : changes.cablesWent) TakeOut(before, Name(*cable.end1, *cable.end2));
    for (const Cable& cable : changes.cablesCame) TakeOut(after, Name(*cable.end1, *cable.end2));
    for (const SpeedChange& change : changes.speeds) {
      TakeOut(before, Name(*change.was.end1, *change.was.end2));
      TakeOut(after, Name(*change.is.end1, *change.is.end2));
    }
    ForEachCableOf(changes.nodesWent, [&](const std::string& cable) {
      if (!movedFrom.contains(cable)) TakeOut(before, cable);
    });
    ForEachCableOf(changes.nodesCame, [&](const std::string& cable) {
      if (!movedTo.contains(cable)) TakeOut(after, cable);
    });
    EXPECT_EQ(before, after) << "seed " << seed;
    EXPECT_FALSE(changes.IsEmpty());
  }
}

// Switches and hosts of the same names in the same places, and cables anywhere.
std::unique_ptr<IBFabric> Shuffled(std::uint64_t seed) {
  Random random(seed);
  FabricBuilder builder;
  std::vector<PortRef> ports;
  for (std::uint64_t guid = 1; guid <= 8; ++guid) {
    NodeSpec node;
    node.guid = guid;
    node.type = guid <= 5 ? NodeTypeSwitch : NodeTypeCA;
    node.name = "n" + std::to_string(guid);
    node.numPorts = guid <= 5 ? 4 : 2;
    for (std::uint8_t num = 1; num <= node.numPorts; ++num) ports.push_back({guid, num});
    EXPECT_EQ(builder.AddNode(node), std::nullopt);
  }
  random.Shuffle(ports);
  for (std::size_t i = 0; i + 1 < ports.size(); i += 2) {
    EXPECT_EQ(builder.AddLink({ports[i], ports[i + 1], hdr}), std::nullopt);
  }
  return builder.Build();
}

// Names of what a list holds, the same for both directions.
template <typename Changes, typename NameOf>
Cables NamesOf(const Changes& changes, NameOf nameOf) {
  Cables names;
  for (const auto& change : changes) names.insert(nameOf(change));
  return names;
}

std::string NameOfNode(const NodeAndCables& change) {
  return std::to_string(change.node->guid) + " " + std::to_string(change.cables);
}
std::string NameOfCable(const Cable& cable) { return Name(*cable.end1, *cable.end2); }
std::string MoveThere(const MovedCable& move) {
  return End(*move.was->remotePort) + " from " + End(*move.was) + " to " + End(*move.is);
}
std::string MoveBack(const MovedCable& move) {
  return End(*move.kept) + " from " + End(*move.is) + " to " + End(*move.was);
}

void ExpectMirrorImages(const FabricChanges& there, const FabricChanges& back) {
  EXPECT_EQ(NamesOf(there.nodesWent, NameOfNode), NamesOf(back.nodesCame, NameOfNode));
  EXPECT_EQ(NamesOf(there.nodesCame, NameOfNode), NamesOf(back.nodesWent, NameOfNode));
  EXPECT_EQ(NamesOf(there.cablesWent, NameOfCable), NamesOf(back.cablesCame, NameOfCable));
  EXPECT_EQ(NamesOf(there.cablesCame, NameOfCable), NamesOf(back.cablesWent, NameOfCable));
  EXPECT_EQ(NamesOf(there.moved, MoveThere), NamesOf(back.moved, MoveBack));
  const auto was = [](const SpeedChange& change) { return NameOfCable(change.was); };
  const auto is = [](const SpeedChange& change) { return NameOfCable(change.is); };
  EXPECT_EQ(NamesOf(there.speeds, was), NamesOf(back.speeds, is));
  EXPECT_EQ(NamesOf(there.speeds, is), NamesOf(back.speeds, was));
  EXPECT_EQ(there.replaced.size(), back.replaced.size());
  EXPECT_EQ(there.renamed.size(), back.renamed.size());
}

TEST(FabricChanges, TheOtherWayRoundAllIsItsMirrorImage) {
  for (std::uint64_t seed = 0; seed < 400; ++seed) {
    SCOPED_TRACE(seed);
    const auto was = Faulty(seed);
    const auto is = Faulty(seed % 2 == 0 ? seed + 1 : seed + 5);
    ExpectMirrorImages(CompareFabrics(*was, *is, Counterparts(*was, *is)),
                       CompareFabrics(*is, *was, Counterparts(*is, *was)));
    EXPECT_TRUE(CompareFabrics(*is, *is, Counterparts(*is, *is)).IsEmpty());
  }
}

// Cables of one of them stand in any order, so many ports want the same cable.
TEST(FabricChanges, TheOtherWayRoundAllIsItsMirrorImageWhateverTheCables) {
  for (std::uint64_t seed = 0; seed < 400; ++seed) {
    SCOPED_TRACE(seed);
    const auto was = Shuffled(seed);
    const auto is = Shuffled(seed + 1000);
    ExpectMirrorImages(CompareFabrics(*was, *is, Counterparts(*was, *is)),
                       CompareFabrics(*is, *was, Counterparts(*is, *was)));
  }
}

}  // namespace
}  // namespace fabscope::internal
