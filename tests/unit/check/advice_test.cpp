#include "check/advice.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/stage_fixture.h"
#include "support/test_peer.h"

namespace fabscope::internal {
namespace {

// Advice on a fabric that a test describes, whose tree could not be built.
class AdviceTest : public StageTest {
 protected:
  std::string Advice() {
    CheckOptions options;
    options.roots = roots;
    options.retries = retries;
    options.equalClassifications = equal;
    if (roots == RootsFrom::Search) {
      EXPECT_NE(Topology().Build(errors, message, retries, equal), 0);
    }
    return AdviceOnBuilding(Topology(), options);
  }

  RootsFrom roots = RootsFrom::Search;
  int retries = 10;
  int equal = 2;
};

TEST_F(AdviceTest, WithoutHostsSuspectsTheDumpAndNamesTheRarestSwitches) {
  AddTwoLevelTree(fabric, 2, 5, 0);
  EXPECT_EQ(Advice(),
            "no switch leads to a host: is this a dump without channel adapters? If so, name the "
            "roots with --root-regex ERE, for example --root-regex '^root[0-9]+$' (switches are "
            "named leaf<N>, root<N>)");
}

TEST_F(AdviceTest, SwitchesThatAreAllNamedAlikeAreNotToldApartByAnExpression) {
  for (const char* name : {"s1", "s2", "s3", "s4"}) fabric.Switch(name);
  fabric.Cable("s1", "s2").Cable("s2", "s3").Cable("s3", "s4");
  fabric.Host("h").Cable("s1", "h");
  EXPECT_EQ(Advice(),
            "from leaf s1 the farthest switch, s4, is 3 hops away, but trees of 2, 3 and 4 levels "
            "have 2, 4 and 6; for other trees, try --roots inferred, or tell the switches apart "
            "with --node-name-map FILE and name the roots with --root-regex ERE");
  roots = RootsFrom::Inferred;
  EXPECT_EQ(Advice(),
            "the cables do not look like a tree: tell the switches apart with --node-name-map FILE "
            "and name the roots with --root-regex ERE, or give the subnet manager's ranks with "
            "--ranks FILE");
}

TEST_F(AdviceTest, SwitchesThatShareTheirNameAreToldWithTheirGuids) {
  fabric.SwitchOfGuid(0x66, "s1").Switch("s2").Switch("s3").Cable("s1", "s2").Cable("s2", "s3");
  fabric.Host("h").Cable("s1", "h");
  fabric.SwitchOfGuid(0x77, "s1").Cable("s3", "s1");
  EXPECT_THAT(Advice(),
              ::testing::StartsWith("from leaf s1 (0x0000000000000066) the farthest switch, s1 "
                                    "(0x0000000000000077), is 3 hops away, but"));
}

TEST_F(AdviceTest, OneSwitchIsNothingToCheck) {
  fabric.Switch("only").Host("h").Cable("only", "h");
  for (const RootsFrom method : {RootsFrom::Search, RootsFrom::Smdb, RootsFrom::Inferred}) {
    roots = method;
    EXPECT_EQ(Advice(), "only one switch, nothing to check");
  }
  EXPECT_EQ(AdviceOnSize(fabric.Build()), "only one switch, nothing to check");
}

TEST_F(AdviceTest, NoSwitchIsNothingToCheck) {
  fabric.Host("h");
  EXPECT_EQ(AdviceOnSize(fabric.Build()), "no switch, nothing to check");
}

TEST_F(AdviceTest, TwoSwitchesAreSomethingToCheck) {
  fabric.Switch("a").Switch("b");
  EXPECT_EQ(AdviceOnSize(fabric.Build()), "");
}

TEST_F(AdviceTest, LeavesThatDoNotAgreeLeadToTheSwitchesFarthestFromHosts) {
  AddThreeLevelTree(fabric, 2, 2, 2, 4, 2);
  retries = 0;
  EXPECT_EQ(Advice(),
            "the leaves do not agree on the roots: name the roots with --root-regex ERE, for "
            "example --root-regex '^root[0-9]+$' (switches are named leaf<N>.<N>, mid<N>.<N>, "
            "root<N>)");
}

TEST_F(AdviceTest, AnotherHeightIsToldWithTheLeafThatSawIt) {
  for (const char* name : {"a1", "b1", "c1", "d1"}) fabric.Switch(name);
  fabric.Cable("a1", "b1").Cable("b1", "c1").Cable("c1", "d1");
  fabric.Host("h").Cable("a1", "h");
  EXPECT_EQ(Advice(),
            "from leaf a1 the farthest switch, d1, is 3 hops away, but trees of 2, 3 and 4 levels "
            "have 2, 4 and 6; for other trees, name the roots with --root-regex ERE, for example "
            "--root-regex '^d[0-9]+$' (switches are named a<N>, b<N>, c<N>, d<N>)");
}

TEST_F(AdviceTest, ALaterLeafMayBeTheOneThatSeesAnotherHeight) {
  AddTwoLevelTree(fabric, 2, 3, 2);
  // leaf2 has most hosts and is two hops from all; from the others "far" is three hops away.
  fabric.Host("more").Cable("leaf2", "more");
  fabric.Switch("far").Cable("leaf2", "far");
  EXPECT_EQ(Advice(),
            "from leaf leaf0 the farthest switch, far, is 3 hops away, but trees of 2, 3 and 4 "
            "levels have 2, 4 and 6; for other trees, name the roots with --root-regex ERE, for "
            "example --root-regex '^root[0-9]+$' (switches are named far, leaf<N>, root<N>)");
}

TEST_F(AdviceTest, TooFewLeavesFarAwayAreToldWithTheLeafThatSawThem) {
  AddTwoLevelTree(fabric, 4, 2, 1);
  EXPECT_EQ(Advice(),
            "from leaf leaf1 too few switches are 2 hops away to tell the height of the tree: name "
            "the roots with --root-regex ERE, for example --root-regex '^root[0-9]+$' (switches "
            "are named leaf<N>, root<N>)");
}

TEST_F(AdviceTest, ALeafWithoutHostsIsNoExampleOfARoot) {
  AddTwoLevelTree(fabric, 2, 4, 1);
  fabric.Switch("leaf9").Cable("leaf9", "root0");
  retries = 0;
  EXPECT_EQ(Advice(),
            "the leaves do not agree on the roots: name the roots with --root-regex ERE, for "
            "example --root-regex '^root[0-9]+$' (switches are named leaf<N>, root<N>)");
}

TEST_F(AdviceTest, WithoutHostsNamesOfLeavesAreNoExample) {
  AddTwoLevelTree(fabric, 3, 2, 0);
  for (const char* name : {"Edge 1", "EDGE-2"}) fabric.Switch(name);
  EXPECT_EQ(Advice(),
            "no switch leads to a host: is this a dump without channel adapters? If so, name the "
            "roots with --root-regex ERE, for example --root-regex '^root[0-9]+$' (switches are "
            "named EDGE-<N>, Edge <N>, leaf<N>, root<N>)");
}

TEST_F(AdviceTest, NamesOfOneFormMakeNoExample) {
  for (const char* name : {"sw1", "sw2", "sw3"}) fabric.Switch(name);
  fabric.Cable("sw1", "sw2").Cable("sw2", "sw3");
  EXPECT_EQ(Advice(),
            "no switch leads to a host: is this a dump without channel adapters? If so, try "
            "--roots inferred, or tell the switches apart with --node-name-map FILE and name the "
            "roots with --root-regex ERE");
}

TEST_F(AdviceTest, NamesAreQuotedForExpressionAndShell) {
  fabric.Switch("it's (1)").Switch("leaf");
  roots = RootsFrom::Regex;
  EXPECT_EQ(Advice(),
            R"(no switch name matches: name the roots with --root-regex ERE, for example )"
            R"(--root-regex '^it'\''s \([0-9]+\)$' (switches are named it's (<N>), leaf))");
}

TEST_F(AdviceTest, ShowsFiveFormsAtMost) {
  for (const char* name : {"a", "b", "c", "d", "e", "f"}) fabric.Switch(name);
  roots = RootsFrom::Regex;
  EXPECT_EQ(Advice(),
            "no switch name matches: name the roots with --root-regex ERE, for example "
            "--root-regex '^a$' (switches are named a, b, c, d, e, ...)");
}

TEST_F(AdviceTest, RanksWithoutRootsLackAFile) {
  fabric.Switch("a").Switch("b");
  roots = RootsFrom::Smdb;
  EXPECT_EQ(Advice(),
            "no switch has rank 0: give the subnet manager's ranks with --ranks FILE, or let the "
            "roots be found by themselves");
}

TEST_F(AdviceTest, CablesThatSayNothingLeaveTheNames) {
  fabric.Switch("a").Switch("b");
  roots = RootsFrom::Inferred;
  EXPECT_EQ(Advice(),
            "the cables do not look like a tree: name the roots with --root-regex ERE, for example "
            "--root-regex '^a$' (switches are named a, b)");
}

TEST_F(AdviceTest, HostsBehindSpecialNodesAndDeadLinksDoNotCount) {
  fabric.Switch("root1").Switch("leaf1").Switch("leaf2").Cable("root1", "leaf1");
  fabric.Cable("root1", "leaf2");
  NodeSpec engine;
  engine.type = NodeTypeCA;
  engine.name = "engine";
  engine.numPorts = 1;
  engine.special = true;
  fabric.Node(engine);
  fabric.Host("h").Link("root1", 9, "engine", 1).Link("leaf1", 9, "h", 1, false);
  EXPECT_EQ(Advice(),
            "no switch leads to a host: is this a dump without channel adapters? If so, name the "
            "roots with --root-regex ERE, for example --root-regex '^root[0-9]+$' (switches are "
            "named leaf<N>, root<N>)");
}

// Advice on a tree that was built, from the roots that a test names.
class TreeAdviceTest : public StageTest {
 protected:
  std::string Advice(const std::vector<std::string>& roots, RootsFrom from = RootsFrom::Search) {
    RankFrom(roots);
    return AdviceOnTree(Topology(), from);
  }
};

constexpr const char* example =
    "name the roots with --root-regex ERE, for example --root-regex '^root[0-9]+$' (switches are "
    "named leaf<N>.<N>, mid<N>.<N>, root<N>)";

TEST_F(TreeAdviceTest, NothingIsDoubtedInACleanTree) {
  AddThreeLevelTree(fabric, 2, 2, 2, 1, 1);
  EXPECT_EQ(Advice({"root0", "root1"}), "");
}

TEST_F(TreeAdviceTest, ARootThatLeadsToHostsIsDoubted) {
  AddThreeLevelTree(fabric, 2, 2, 2, 1, 1);
  EXPECT_EQ(
      Advice({"root0", "root1", "leaf0.1"}),
      std::string("leaf0.1 is a root but leads to hosts: if the roots are wrong, ") + example);
}

TEST_F(TreeAdviceTest, ARootWithACableToALowRankIsDoubted) {
  AddThreeLevelTree(fabric, 2, 2, 2, 1, 1);
  fabric.Cable("root1", "leaf0.1");
  TestPeer::SetRanks(Topology(),
                     {Nodes({"root0", "root1"}), Nodes({"mid0.0", "mid0.1", "mid1.0", "mid1.1"}),
                      Nodes({"leaf0.0", "leaf0.1", "leaf1.0", "leaf1.1"})});
  EXPECT_EQ(AdviceOnTree(Topology(), RootsFrom::Search),
            std::string("root1 is a root but has a cable to a switch of a rank below the next: if "
                        "the roots are wrong, ") +
                example);
}

TEST_F(TreeAdviceTest, AMiddleSwitchWithNothingBelowIsDoubted) {
  AddThreeLevelTree(fabric, 2, 2, 2, 1, 1);
  fabric.Switch("root2").Cable("root2", "root0");
  EXPECT_EQ(Advice({"root0", "root1"}),
            std::string("root2 is on rank 1 but has no cable to a switch of a rank below: if the "
                        "roots are wrong, ") +
                example);
}

TEST_F(TreeAdviceTest, ASwitchOfASharedNameIsToldByItsGuid) {
  AddThreeLevelTree(fabric, 2, 2, 2, 1, 1);
  fabric.SwitchOfGuid(0x77, "leaf0.1").Host("host").Cable("leaf0.1", "host");
  fabric.Cable("leaf0.1", "mid0.0");
  EXPECT_EQ(Advice({"root0", "root1", "leaf0.1"}),
            std::string("leaf0.1 (0x0000000000000077) is a root but leads to hosts: if the roots "
                        "are wrong, ") +
                example);
}

TEST_F(TreeAdviceTest, ASwitchOutsideTheTreeOfASharedNameIsToldByItsGuid) {
  fabric.SwitchOfGuid(0x77, "alone").SwitchOfGuid(0x88, "alone");
  AddTwoLevelTree(fabric, 2, 3, 1);
  EXPECT_EQ(Advice({"root0", "root1"}),
            "2 of 7 switches have no rank and were not checked, the first is alone "
            "(0x0000000000000077)");
}

TEST_F(TreeAdviceTest, OneSwitchRaisesNoDoubt) {
  fabric.Switch("only").Host("h").Cable("only", "h");
  EXPECT_EQ(Advice({"only"}, RootsFrom::Inferred), "");
}

TEST_F(TreeAdviceTest, InferredRootsAreDoubtedAlike) {
  AddThreeLevelTree(fabric, 2, 2, 2, 1, 1);
  EXPECT_EQ(
      Advice({"root0", "root1", "leaf0.1"}, RootsFrom::Inferred),
      std::string("leaf0.1 is a root but leads to hosts: if the roots are wrong, ") + example);
}

TEST_F(TreeAdviceTest, RootsThatTheUserNamedAreNotDoubted) {
  AddThreeLevelTree(fabric, 2, 2, 2, 1, 1);
  EXPECT_EQ(Advice({"root0", "root1", "leaf0.1"}, RootsFrom::Smdb), "");
  EXPECT_EQ(Advice({"root0", "root1", "leaf0.1"}, RootsFrom::Regex), "");
}

TEST_F(TreeAdviceTest, SwitchesThatAreNotPartOfTheTreeAreCounted) {
  fabric.Switch("alone");
  AddTwoLevelTree(fabric, 2, 3, 1);
  fabric.Switch("other1").Switch("other2").Cable("other1", "other2");
  EXPECT_EQ(Advice({"root0", "root1"}, RootsFrom::Regex),
            "3 of 8 switches have no rank and were not checked, the first is alone");
}

TEST_F(TreeAdviceTest, SwitchesOfOtherPlanesAreNotMissed) {
  AddTwoLevelTree(fabric, 2, 3, 1);
  for (const int plane : {1, 2}) {
    NodeSpec spec;
    spec.name = "alone" + std::to_string(plane);
    spec.suitablePlane = plane;
    fabric.Node(spec);
  }
  EXPECT_EQ(Advice({"root0", "root1"}),
            "1 of 6 switches have no rank and were not checked, the first is alone1");
}

TEST_F(TreeAdviceTest, WithoutRootsSwitchesOfAnyPlaneAreMissed) {
  AddTwoLevelTree(fabric, 2, 3, 1);
  TestPeer::SetRanks(Topology(), {{}, Nodes({"leaf0", "leaf1", "leaf2"})});
  EXPECT_EQ(AdviceOnTree(Topology(), RootsFrom::Regex),
            "2 of 5 switches have no rank and were not checked, the first is root0");
}

TEST_F(TreeAdviceTest, ATreeWithoutRanksIsLeftToTheStage) {
  AddTwoLevelTree(fabric, 2, 3, 1);
  EXPECT_EQ(AdviceOnTree(Topology(), RootsFrom::Search), "");
}

}  // namespace
}  // namespace fabscope::internal
