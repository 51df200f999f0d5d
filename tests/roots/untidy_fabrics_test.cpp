// Fabrics as they really are. None of what they have of their own hides the roots from the default
// run.

#include <gtest/gtest.h>

#include "roots/tree_run.h"
#include "synthetic/tree_shape.h"

namespace fabscope::internal {
namespace {

constexpr std::uint32_t hdr = 0x400;
constexpr unsigned cablePorts = 14;  // as many as any switch of the trees needs
constexpr std::uint64_t addedGuids = 0x0300000000000000;

class UntidyFabricsTest : public ::testing::TestWithParam<int> {
 protected:
  UntidyFabricsTest() : plan(PlanTree(ShapeOf(GetParam(), 1), hdr)) {}

  static TreeShape ShapeOf(int levels, unsigned parallel) {
    TreeShape shape;
    if (levels == 2) shape = {.children = {4, 8}, .parents = {1, 4}};
    if (levels == 3) shape = {.children = {4, 4, 4}, .parents = {1, 3, 4}};
    if (levels == 4) shape = {.children = {3, 3, 3, 4}, .parents = {1, 2, 3, 3}};
    shape.parallel = parallel;
    shape.radix = cablePorts + 3;
    return shape;
  }

  std::size_t Add(const std::string& name, std::uint8_t type, std::uint8_t ports) {
    PlannedNode node;
    node.spec.guid = addedGuids + plan.nodes.size();
    node.spec.type = type;
    node.spec.name = name;
    node.spec.numPorts = ports;
    plan.nodes.push_back(node);
    return plan.nodes.size() - 1;
  }
  void Cable(PlannedEnd upper, PlannedEnd lower) { plan.AddCable({upper, lower, hdr}); }
  void AddHost(std::size_t sw) {
    const std::size_t host = Add("stray" + std::to_string(plan.nodes.size()), NodeTypeCA, 1);
    Cable({sw, plan.FreePort(sw)}, {host, 1});
  }
  // The index'th switch of a rank.
  std::size_t SwitchOn(int rank, std::size_t index) const {
    return plan.SwitchesOnRank(rank).at(index);
  }
  int LeafRank() const { return GetParam() - 1; }

  void ExpectTrueTree() const {
    const TreeRun run = RunByDefault(plan);
    EXPECT_EQ(run.message, "");
    EXPECT_EQ(run.ranks, TrueRanks(plan));
  }

  FabricPlan plan;
};

INSTANTIATE_TEST_SUITE_P(Levels, UntidyFabricsTest, ::testing::Values(2, 3, 4));

TEST_P(UntidyFabricsTest, AnAggregationEngineOnTheLastPortOfEverySwitch) {
  const std::size_t nodes = plan.nodes.size();
  for (std::size_t sw = 0; sw < nodes; ++sw) {
    if (!plan.IsSwitch(sw)) continue;
    const std::size_t engine = Add("Aggregation Node", NodeTypeCA, 1);
    plan.nodes[engine].spec.special = true;
    Cable({sw, plan.nodes[sw].spec.numPorts}, {engine, 1});
  }
  ExpectTrueTree();
}

TEST_P(UntidyFabricsTest, AFewHostsOnSwitchesThatAreNoLeaves) {
  for (int rank = 0; rank < LeafRank(); ++rank) {
    AddHost(SwitchOn(rank, 0));
    AddHost(SwitchOn(rank, 0));
    AddHost(SwitchOn(rank, 2));
  }
  ExpectTrueTree();
}

TEST_P(UntidyFabricsTest, LeavesOfDifferentFillingSomeOfThemEmpty) {
  std::size_t number = 0;
  for (const std::size_t leaf : plan.SwitchesOnRank(LeafRank())) {
    std::size_t kept = number++ % 4;
    for (const std::size_t cable : plan.CablesOf(leaf)) {
      const std::size_t lower = plan.cables[cable].lower.node;
      if (!plan.IsSwitch(lower) && kept-- == 0) break;
      if (!plan.IsSwitch(lower)) plan.RemoveNode(lower);
    }
  }
  ExpectTrueTree();
}

TEST_P(UntidyFabricsTest, LeavesWithoutHostsButOnePair) {
  const std::vector<std::size_t> leaves = plan.SwitchesOnRank(LeafRank());
  for (const std::size_t leaf : leaves) {
    if (leaf == leaves.front() || leaf == leaves.back()) continue;
    for (const std::size_t cable : plan.CablesOf(leaf)) {
      const std::size_t lower = plan.cables[cable].lower.node;
      if (!plan.IsSwitch(lower)) plan.RemoveNode(lower);
    }
  }
  ExpectTrueTree();
}

// A director holds the chips of two ranks; all bear its name and its system's GUID.
TEST_P(UntidyFabricsTest, DirectorsOfManyChipsOfOneName) {
  for (PlannedNode& node : plan.nodes) {
    if (node.rank < 0 || node.rank > 1) continue;
    node.spec.name = "director";
    node.spec.systemGuid = addedGuids;
  }
  ExpectTrueTree();
}

TEST_P(UntidyFabricsTest, SystemsOfTwoChipsOfOneName) {
  for (int rank = 0; rank < GetParam(); ++rank) {
    const std::vector<std::size_t> chips = plan.SwitchesOnRank(rank);
    for (std::size_t i = 0; i + 1 < chips.size(); i += 2) {
      NodeSpec& first = plan.nodes[chips[i]].spec;
      NodeSpec& second = plan.nodes[chips[i + 1]].spec;
      first.systemGuid = second.systemGuid = first.guid;
      second.name = first.name;
    }
  }
  ExpectTrueTree();
}

TEST_P(UntidyFabricsTest, ParallelCablesWithOneMissingHereAndThere) {
  plan = PlanTree(ShapeOf(GetParam(), 2), hdr);
  for (int rank = 1; rank < GetParam(); ++rank) {
    for (const std::size_t sw : {SwitchOn(rank, 0), SwitchOn(rank, 3)}) {
      plan.RemoveCable(plan.CablesOf(sw).back());
    }
  }
  ExpectTrueTree();
}

TEST_P(UntidyFabricsTest, CablesFromASwitchToItself) {
  // For roots of four levels see below.
  for (int rank = GetParam() == 4 ? 1 : 0; rank < GetParam(); ++rank) {
    const std::size_t sw = SwitchOn(rank, 1);
    const std::uint8_t last = plan.nodes[sw].spec.numPorts;
    Cable({sw, last}, {sw, static_cast<std::uint8_t>(last - 1)});
  }
  ExpectTrueTree();
}

TEST_P(UntidyFabricsTest, SwitchesWithoutCables) {
  Add("aardvark", NodeTypeSwitch, 36);  // the first in model order
  Add("zebra", NodeTypeSwitch, 36);     // the last
  ExpectTrueTree();
}

TEST_P(UntidyFabricsTest, ASwitchWithHostsButWithoutUplinks) {
  const std::size_t lonely = Add("lonely", NodeTypeSwitch, 36);
  AddHost(lonely);
  AddHost(lonely);
  ExpectTrueTree();
}

// The search starts at the leaf with most hosts, so it is the fabric with the fuller leaves that is
// found; the switches of the other have no rank.
TEST_P(UntidyFabricsTest, AnotherFabricWithFewerHostsOnItsLeaves) {
  const RankNames expected = TrueRanks(plan);
  const FabricPlan other = PlanTree({.children = {2, 3, 3}, .parents = {1, 2, 2}}, hdr);
  const std::size_t first = plan.nodes.size();
  for (PlannedNode node : other.nodes) {
    node.spec.guid += addedGuids;
    node.spec.name += "-b";
    node.rank = -1;
    plan.nodes.push_back(node);
  }
  for (PlannedCable cable : other.cables) {
    cable.upper.node += first;
    cable.lower.node += first;
    plan.AddCable(cable);
  }
  const TreeRun run = RunByDefault(plan);
  EXPECT_EQ(run.message, "");
  EXPECT_EQ(run.ranks, expected);
}

// All of it together, as in a machine room of some years.
TEST_P(UntidyFabricsTest, EverythingAtOnce) {
  const std::size_t nodes = plan.nodes.size();
  for (std::size_t sw = 0; sw < nodes; ++sw) {
    if (!plan.IsSwitch(sw)) continue;
    plan.nodes[sw].spec.name = sw % 2 == 0 ? "chassis one" : "chassis two";
    const std::size_t engine = Add("Aggregation Node", NodeTypeCA, 1);
    plan.nodes[engine].spec.special = true;
    Cable({sw, plan.nodes[sw].spec.numPorts}, {engine, 1});
  }
  for (int rank = 0; rank < LeafRank(); ++rank) AddHost(SwitchOn(rank, 1));
  const std::size_t leaf = SwitchOn(LeafRank(), 0);
  const std::uint8_t port = plan.FreePort(leaf);
  Cable({leaf, port}, {leaf, static_cast<std::uint8_t>(port + 1)});
  for (const std::size_t emptied : {SwitchOn(LeafRank(), 1), SwitchOn(LeafRank(), 5)}) {
    for (const std::size_t cable : plan.CablesOf(emptied)) {
      const std::size_t lower = plan.cables[cable].lower.node;
      if (!plan.IsSwitch(lower) && lower < nodes) plan.RemoveNode(lower);
    }
  }
  Add("spare", NodeTypeSwitch, 36);
  ExpectTrueTree();
}

// At the third hop of four levels roots are told from rank 2 by their cables: those of a root lead
// to rank 1 alone.
TEST(FourLevelFabricsTest, ARootWithACableToItselfIsTakenForRankTwo) {
  FabricPlan plan = PlanTree({.children = {3, 3, 3, 4}, .parents = {1, 2, 3, 3}, .radix = 17}, hdr);
  const std::size_t root = plan.SwitchesOnRank(0).at(1);
  plan.AddCable({{root, 16}, {root, 17}, hdr});
  RankNames expected = TrueRanks(plan);
  expected[2].insert(expected[0].extract("spine02"));
  EXPECT_EQ(RunByDefault(plan).ranks, expected);
}

}  // namespace
}  // namespace fabscope::internal
