#include "synthetic/faults.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <set>

#include "support/speeds.h"

namespace fabscope::internal {
namespace {

using Ends = std::pair<std::pair<std::size_t, int>, std::pair<std::size_t, int>>;
using State = std::pair<std::uint32_t, unsigned>;  // speed, slow plane

Ends EndsOf(const PlannedCable& cable) {
  return {{cable.upper.node, cable.upper.port}, {cable.lower.node, cable.lower.port}};
}

std::pair<Ends, State> Whole(const PlannedCable& cable) {
  return {EndsOf(cable), {cable.speed, cable.slowPlane}};
}

// The cables that stand, with their speed.
std::set<std::pair<Ends, State>> Standing(const FabricPlan& plan) {
  std::set<std::pair<Ends, State>> cables;
  for (const PlannedCable& cable : plan.cables) {
    if (!cable.removed) cables.insert(Whole(cable));
  }
  return cables;
}

std::set<std::pair<std::size_t, std::uint16_t>> Flids(const FabricPlan& plan) {
  std::set<std::pair<std::size_t, std::uint16_t>> flids;
  for (std::size_t i = 0; i < plan.nodes.size(); ++i) {
    for (const std::uint16_t flid : plan.nodes[i].spec.flids) flids.insert({i, flid});
  }
  return flids;
}

// Trees with all ports in use, and with ports left over.
const std::vector<TreeShape>& Shapes() {
  static const std::vector<TreeShape> shapes = [] {
    std::vector<TreeShape> all{
        {{2, 5}, {1, 3}}, {{2, 2, 4}, {1, 2, 2}}, {{1, 2, 2, 3}, {1, 2, 2, 2}}};
    TreeShape roomy = all[1];
    roomy.radix = 12;
    all.push_back(roomy);
    return all;
  }();
  return shapes;
}

// With planes and FLIDs, so that there is room for every kind of fault.
FabricPlan PlanWithAll(TreeShape shape) {
  shape.planes = 2;
  FabricPlan plan = PlanTree(shape, hdr);
  EXPECT_EQ(plan.GiveFlids(), std::nullopt);
  return plan;
}

// Every fault of the kind that some seeds and shapes bring, together with the plan it was done to.
template <typename Check>
void ForEachFault(FaultKind kind, Check check) {
  for (const TreeShape& shape : Shapes()) {
    // All leaves of two levels are one group.
    if (kind == FaultKind::SharedFlid && shape.Levels() == 2) continue;
    for (std::uint64_t seed = 1; seed <= 20; ++seed) {
      const FabricPlan before = PlanWithAll(shape);
      FabricPlan after = before;
      Random random(seed);
      InjectedFault fault;
      ASSERT_EQ(FaultInjector(after, random).Inject(kind, fault), std::nullopt);
      EXPECT_EQ(fault.kind, kind);
      check(before, after, fault);
    }
  }
}

TEST(FaultsTest, EveryKindHasAName) {
  std::vector<std::string_view> names;
  for (const FaultKind kind : AllFaultKinds()) {
    names.push_back(FaultName(kind));
    EXPECT_EQ(FaultOfName(names.back()), kind);
  }
  EXPECT_EQ(names, (std::vector<std::string_view>{"missing-link", "swapped-cables", "moved-cable",
                                                  "same-rank-link", "root-link", "missing-host",
                                                  "slow-link", "dead-switch", "stray-host",
                                                  "asymmetric-aport", "shared-flid"}));
  EXPECT_EQ(FaultOfName("earthquake"), std::nullopt);
}

TEST(FaultsTest, BeforeAndAfterTellExactlyWhatChanged) {
  for (const FaultKind kind : AllFaultKinds()) {
    ForEachFault(kind,
                 [](const FabricPlan& before, const FabricPlan& after, const InjectedFault& fault) {
                   auto expected = Standing(before);
                   for (const PlannedCable& cable : fault.before) {
                     EXPECT_EQ(expected.erase(Whole(cable)), 1U) << FaultName(fault.kind);
                   }
                   for (const PlannedCable& cable : fault.after) expected.insert(Whole(cable));
                   EXPECT_EQ(Standing(after), expected) << FaultName(fault.kind);
                   auto flids = Flids(before);
                   for (const AddedFlid& added : fault.flids) {
                     EXPECT_TRUE(flids.insert({added.node, added.flid}).second);
                   }
                   EXPECT_EQ(Flids(after), flids) << FaultName(fault.kind);
                 });
  }
}

TEST(FaultsTest, AMissingLinkIsOneCableBetweenSwitches) {
  ForEachFault(FaultKind::MissingLink,
               [](const FabricPlan& plan, const FabricPlan&, const InjectedFault& fault) {
                 ASSERT_EQ(fault.before.size(), 1U);
                 EXPECT_TRUE(plan.IsSwitch(fault.before[0].lower.node));
                 EXPECT_TRUE(fault.after.empty());
               });
}

TEST(FaultsTest, SwappedCablesExchangeTheirUpperEndsOnOneRank) {
  ForEachFault(FaultKind::SwappedCables,
               [](const FabricPlan& plan, const FabricPlan&, const InjectedFault& fault) {
                 ASSERT_EQ(fault.before.size(), 2U);
                 ASSERT_EQ(fault.after.size(), 2U);
                 const auto& [a, b] = std::tie(fault.before[0], fault.before[1]);
                 EXPECT_NE(a.upper.node, b.upper.node);
                 EXPECT_NE(a.lower.node, b.lower.node);
                 EXPECT_EQ(plan.nodes[a.upper.node].rank, plan.nodes[b.upper.node].rank);
                 EXPECT_EQ(fault.after[0].upper, b.upper);
                 EXPECT_EQ(fault.after[0].lower, a.lower);
                 EXPECT_EQ(fault.after[1].upper, a.upper);
                 EXPECT_EQ(fault.after[1].lower, b.lower);
               });
}

TEST(FaultsTest, AMovedCableKeepsOneEndAndTheRankOfTheOther) {
  bool upperMoved = false;
  bool lowerMoved = false;
  ForEachFault(FaultKind::MovedCable,
               [&](const FabricPlan& plan, const FabricPlan&, const InjectedFault& fault) {
                 ASSERT_FALSE(fault.before.empty());
                 ASSERT_EQ(fault.after.size(), 1U);
                 const PlannedCable& was = fault.before[0];
                 const PlannedCable& is = fault.after[0];
                 const bool upper = is.lower == was.lower;
                 (upper ? upperMoved : lowerMoved) = true;
                 const PlannedEnd& from = upper ? was.upper : was.lower;
                 const PlannedEnd& to = upper ? is.upper : is.lower;
                 EXPECT_EQ(upper ? is.lower : is.upper, upper ? was.lower : was.upper);
                 EXPECT_NE(to.node, from.node);
                 EXPECT_EQ(plan.nodes[to.node].rank, plan.nodes[from.node].rank);
               });
  EXPECT_TRUE(upperMoved);
  EXPECT_TRUE(lowerMoved);
}

TEST(FaultsTest, SameRankLinksLieBelowTheRootsAndRootLinksOnThem) {
  const auto check = [](bool roots) {
    return [roots](const FabricPlan& plan, const FabricPlan&, const InjectedFault& fault) {
      ASSERT_EQ(fault.after.size(), 1U);
      const PlannedCable& cable = fault.after[0];
      EXPECT_NE(cable.upper.node, cable.lower.node);
      EXPECT_EQ(plan.nodes[cable.upper.node].rank, plan.nodes[cable.lower.node].rank);
      EXPECT_EQ(plan.nodes[cable.upper.node].rank == 0, roots);
    };
  };
  ForEachFault(FaultKind::SameRankLink, check(false));
  ForEachFault(FaultKind::RootLink, check(true));
}

TEST(FaultsTest, MissingHostsAndDeadSwitchesGoWithTheirCables) {
  for (const FaultKind kind : {FaultKind::MissingHost, FaultKind::DeadSwitch}) {
    ForEachFault(
        kind, [&](const FabricPlan& plan, const FabricPlan& after, const InjectedFault& fault) {
          ASSERT_EQ(fault.nodes.size(), 1U);
          EXPECT_EQ(plan.IsSwitch(fault.nodes[0]), kind == FaultKind::DeadSwitch);
          EXPECT_TRUE(after.nodes[fault.nodes[0]].removed);
          EXPECT_FALSE(fault.before.empty());
          EXPECT_TRUE(fault.after.empty());
          FabricBuilder builder;
          after.Fill(builder);
          EXPECT_EQ(builder.FindNode(plan.nodes[fault.nodes[0]].spec.guid), GuidIndex::None);
        });
  }
}

TEST(FaultsTest, ASlowLinkRunsAtTheNextLowerSpeed) {
  ForEachFault(FaultKind::SlowLink,
               [](const FabricPlan&, const FabricPlan&, const InjectedFault& fault) {
                 ASSERT_EQ(fault.before.size(), 1U);
                 ASSERT_EQ(fault.after.size(), 1U);
                 EXPECT_EQ(fault.before[0].speed, 0x400U);
                 EXPECT_EQ(fault.after[0].speed, 0x200U);
                 EXPECT_EQ(EndsOf(fault.after[0]), EndsOf(fault.before[0]));
               });
}

TEST(FaultsTest, AStrayHostSitsAboveTheLeaves) {
  ForEachFault(FaultKind::StrayHost,
               [](const FabricPlan& plan, const FabricPlan& after, const InjectedFault& fault) {
                 ASSERT_EQ(fault.nodes.size(), 1U);
                 EXPECT_EQ(after.nodes[fault.nodes[0]].spec.name, "stray-host1");
                 ASSERT_EQ(fault.after.size(), 1U);
                 EXPECT_LT(plan.nodes[fault.after[0].upper.node].rank, plan.levels - 1);
               });
}

TEST(FaultsTest, EverySpeedHasTheNextLowerOne) {
  std::vector<std::uint32_t> slower;
  for (const std::uint32_t speed :
       {0x1000000U, 0x800U, 0x400U, 0x20000U, 0x200U, 0x10000U, 0x100U, 0x4U, 0x2U, 0x1U, 0U}) {
    slower.push_back(SlowerSpeed(speed));
  }
  EXPECT_EQ(slower, (std::vector<std::uint32_t>{0x800, 0x400, 0x200, 0x100, 0x100, 0x4, 0x4, 0x2, 1,
                                                0, 0}));
}

TEST(FaultsTest, AnAsymmetricAPortIsACableThatIsSlowerOnOnePlane) {
  std::set<unsigned> planes;
  ForEachFault(FaultKind::AsymmetricAPort,
               [&](const FabricPlan& plan, const FabricPlan& after, const InjectedFault& fault) {
                 ASSERT_EQ(fault.after.size(), 1U);
                 const PlannedCable& cable = fault.after[0];
                 EXPECT_TRUE(plan.IsSwitch(cable.lower.node));
                 planes.insert(cable.slowPlane);
                 FabricBuilder builder;
                 after.Fill(builder);
                 const auto fabric = builder.Build();
                 int slow = 0;
                 for (const IBPort& port : fabric->GetPorts()) {
                   if (port.speed != 0x200U) continue;
                   ++slow;
                   EXPECT_EQ(port.GetAPort()->asymmetry, FabricPlan::AsymmetryMark);
                 }
                 EXPECT_EQ(slow, 2);
                 EXPECT_EQ(std::count_if(fabric->GetAPorts().begin(), fabric->GetAPorts().end(),
                                         [](const APort& aport) { return aport.asymmetry != 0; }),
                           2);
               });
  EXPECT_EQ(planes, (std::set<unsigned>{1, 2}));
}

TEST(FaultsTest, ASharedFlidIsOfTwoGroups) {
  ForEachFault(FaultKind::SharedFlid,
               [](const FabricPlan& plan, const FabricPlan&, const InjectedFault& fault) {
                 ASSERT_EQ(fault.flids.size(), 1U);
                 const AddedFlid& added = fault.flids[0];
                 EXPECT_NE(plan.nodes[added.owner].leafGroup, plan.nodes[added.node].leafGroup);
                 EXPECT_EQ(plan.nodes[added.node].rank, plan.levels - 1);
                 EXPECT_TRUE(Flids(plan).contains({added.owner, added.flid}));
               });
}

TEST(FaultsTest, NoTwoFaultsShareOneFlid) {
  FabricPlan plan = PlanWithAll({{1, 2, 4}, {1, 2, 2}});
  Random random(1);
  FaultInjector injector(plan, random);
  std::set<std::uint16_t> shared;
  InjectedFault fault;
  while (!injector.Inject(FaultKind::SharedFlid, fault)) {
    EXPECT_TRUE(shared.insert(fault.flids[0].flid).second);
  }
  EXPECT_EQ(shared, (std::set<std::uint16_t>{1, 2, 3, 4, 5, 6, 7, 8}));
}

TEST(FaultsTest, ALeafOfASharedFlidIsNotTakenAway) {
  FabricPlan plan = PlanWithAll({{1, 1, 2}, {1, 1, 1}});
  Random random(1);
  FaultInjector injector(plan, random);
  InjectedFault shared;
  ASSERT_EQ(injector.Inject(FaultKind::SharedFlid, shared), std::nullopt);
  InjectedFault dead;
  while (!injector.Inject(FaultKind::DeadSwitch, dead)) {
    EXPECT_NE(plan.nodes[dead.nodes.at(0)].rank, plan.levels - 1);
  }
}

TEST(FaultsTest, ACableIsPulledOnlyWhereNoPortIsFree) {
  const auto pulled = [](unsigned radix) {
    TreeShape shape = Shapes()[1];
    shape.radix = radix;
    FabricPlan plan = PlanTree(shape, hdr);
    Random random(1);
    InjectedFault fault;
    EXPECT_EQ(FaultInjector(plan, random).Inject(FaultKind::RootLink, fault), std::nullopt);
    return fault.before.size();
  };
  EXPECT_EQ(pulled(0), 2U);
  EXPECT_EQ(pulled(12), 0U);
}

TEST(FaultsTest, NoTwoFaultsTouchOneCable) {
  for (std::uint64_t seed = 1; seed <= 30; ++seed) {
    FabricPlan plan = PlanWithAll({{2, 4, 6}, {1, 3, 3}});
    Random random(seed);
    FaultInjector injector(plan, random);
    std::set<Ends> touched;
    for (int round = 0; round < 3; ++round) {
      for (const FaultKind kind : AllFaultKinds()) {
        InjectedFault fault;
        ASSERT_EQ(injector.Inject(kind, fault), std::nullopt);
        for (const PlannedCable& cable : fault.before) {
          EXPECT_TRUE(touched.insert(EndsOf(cable)).second) << FaultName(kind) << " " << seed;
        }
        // A cable that a fault made is touched too; one that only became slower has been counted.
        for (const PlannedCable& cable : fault.after) touched.insert(EndsOf(cable));
      }
    }
  }
}

TEST(FaultsTest, SayWhyThereIsNoPlaceForThem) {
  const auto problem = [](const TreeShape& shape, FaultKind kind, int count,
                          std::uint32_t speed = hdr) {
    FabricPlan plan = PlanTree(shape, speed);
    Random random(1);
    FaultInjector injector(plan, random);
    std::optional<std::string> answer;
    for (int i = 0; i < count; ++i) {
      InjectedFault fault;
      answer = injector.Inject(kind, fault);
    }
    return answer;
  };
  const TreeShape tiny{{1, 1}, {1, 1}};
  EXPECT_EQ(problem(tiny, FaultKind::MissingLink, 1), std::nullopt);
  EXPECT_EQ(problem(tiny, FaultKind::MissingLink, 2),
            "no cable between two switches is left to be taken away");
  EXPECT_EQ(problem(tiny, FaultKind::SwappedCables, 1),
            "no two cables of different switches are left to be swapped");
  EXPECT_EQ(problem(tiny, FaultKind::MovedCable, 1),
            "no cable is left that another switch of the rank has a port for");
  EXPECT_EQ(problem(tiny, FaultKind::SameRankLink, 1),
            "no two switches of one rank below the roots are left to be cabled together");
  EXPECT_EQ(problem(tiny, FaultKind::RootLink, 1), "no two roots are left to be cabled together");
  EXPECT_EQ(problem(tiny, FaultKind::MissingHost, 2), "no host is left to be taken away");
  EXPECT_EQ(problem(tiny, FaultKind::SlowLink, 1, 0x1),
            "no cable between two switches is left that could be slower");
  EXPECT_EQ(problem(tiny, FaultKind::DeadSwitch, 2),
            "no switch without another fault is left to be taken away");
  EXPECT_EQ(problem({{1}, {1}}, FaultKind::StrayHost, 1),
            "no switch above the leaves has a port for a host");
  EXPECT_EQ(problem(tiny, FaultKind::AsymmetricAPort, 1),
            "a fabric of one plane has no aggregated ports");
  const TreeShape twoPlanes{{1, 1}, {1, 1}, 1, 0, 2};
  EXPECT_EQ(problem(twoPlanes, FaultKind::AsymmetricAPort, 1), std::nullopt);
  EXPECT_EQ(problem(twoPlanes, FaultKind::AsymmetricAPort, 2),
            "no cable between two switches is left that could be slower");
  EXPECT_EQ(problem(tiny, FaultKind::SharedFlid, 1),
            "no FLID is left that a second group of leaves could have too");
}

TEST(FaultsTest, OneSeedDoesOneThing) {
  const auto cables = [](std::uint64_t seed) {
    FabricPlan plan = PlanWithAll({{2, 4, 6}, {1, 3, 3}});
    Random random(seed);
    FaultInjector injector(plan, random);
    for (const FaultKind kind : AllFaultKinds()) {
      InjectedFault fault;
      EXPECT_EQ(injector.Inject(kind, fault), std::nullopt);
    }
    return Standing(plan);
  };
  EXPECT_EQ(cables(5), cables(5));
  EXPECT_NE(cables(5), cables(6));
}

}  // namespace
}  // namespace fabscope::internal
