#include "check/advice.h"

#include <gtest/gtest.h>

#include "support/stage_fixture.h"

namespace fabscope {
namespace {

// Advice on a fabric that a test describes, whose tree could not be built.
class AdviceTest : public StageTest {
 protected:
  std::string Advice() {
    CheckOptions options;
    options.roots = roots;
    options.retries = retries;
    options.equalClassifications = equal;
    if (roots == RootsFrom::Auto) {
      EXPECT_NE(Topology().Build(errors, message, retries, equal), 0);
    }
    return AdviceOnBuilding(Topology(), options);
  }

  RootsFrom roots = RootsFrom::Auto;
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

TEST_F(AdviceTest, NamesOfOneFormMakeNoExample) {
  for (const char* name : {"sw1", "sw2", "sw3"}) fabric.Switch(name);
  fabric.Cable("sw1", "sw2").Cable("sw2", "sw3");
  EXPECT_EQ(Advice(),
            "no switch leads to a host: is this a dump without channel adapters? If so, name the "
            "roots with --root-regex ERE, or give the subnet manager's ranks with --ranks FILE");
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
  fabric.Switch("a");
  roots = RootsFrom::Smdb;
  EXPECT_EQ(Advice(),
            "no switch has rank 0: give the subnet manager's ranks with --ranks FILE, or let the "
            "roots be found by themselves");
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

}  // namespace
}  // namespace fabscope
