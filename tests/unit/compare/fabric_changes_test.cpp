#include "compare/fabric_changes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "support/test_fabric.h"

namespace fabscope::internal {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

std::string Text(const IBPort* port) {
  return std::string(port->node->name) + ":" + std::to_string(port->num);
}
std::string Text(const Cable& cable) { return Text(cable.end1) + " " + Text(cable.end2); }

// Two switches on two roots, and a host, before and after.
class FabricChangesTest : public ::testing::Test {
 protected:
  FabricChangesTest() {
    for (TestFabric* fabric : {&was, &is}) {
      fabric->Switch("root1").Switch("root2").Switch("leaf1").Switch("leaf2").Host("host", 2);
    }
  }

  void Compare() {
    const Counterparts nodes(was.Build(), is.Build());
    changes = CompareFabrics(was.Build(), is.Build(), nodes);
  }
  std::vector<std::string> Went() const { return Texts(changes.cablesWent); }
  std::vector<std::string> Came() const { return Texts(changes.cablesCame); }
  std::vector<std::string> Moved() const {
    std::vector<std::string> texts;
    for (const MovedCable& move : changes.moved) {
      texts.push_back(Text(move.kept) + " from " + Text(move.was) + " to " + Text(move.is));
    }
    return texts;
  }
  static std::vector<std::string> Texts(const std::vector<Cable>& cables) {
    std::vector<std::string> texts;
    for (const Cable& cable : cables) texts.push_back(Text(cable));
    return texts;
  }

  TestFabric was;
  TestFabric is;
  FabricChanges changes;
};

TEST_F(FabricChangesTest, EqualFabricsHaveNone) {
  for (TestFabric* fabric : {&was, &is}) fabric->Link("root1", 1, "leaf1", 1);
  Compare();
  EXPECT_TRUE(changes.IsEmpty());
}

TEST_F(FabricChangesTest, ACableIsKnownByItsEndsWhicheverComesFirst) {
  was.Link("root1", 1, "leaf1", 1);
  is.Link("leaf1", 1, "root1", 1);
  Compare();
  EXPECT_TRUE(changes.IsEmpty());
}

TEST_F(FabricChangesTest, CablesGoAndCome) {
  was.Link("root1", 1, "leaf1", 1);
  is.Link("root2", 2, "leaf2", 2);
  Compare();
  EXPECT_THAT(Went(), ElementsAre("root1:1 leaf1:1"));
  EXPECT_THAT(Came(), ElementsAre("root2:2 leaf2:2"));
  EXPECT_THAT(Moved(), IsEmpty());
  EXPECT_FALSE(changes.IsEmpty());
}

TEST_F(FabricChangesTest, ACableOfWhichOneEndStayedHasMoved) {
  was.Link("root1", 1, "leaf1", 1).Link("root2", 1, "leaf2", 1);
  is.Link("root1", 1, "leaf1", 5).Link("root1", 7, "leaf2", 1);
  Compare();
  EXPECT_THAT(Moved(),
              ElementsAre("root1:1 from leaf1:1 to leaf1:5", "leaf2:1 from root2:1 to root1:7"));
  EXPECT_THAT(Went(), IsEmpty());
  EXPECT_THAT(Came(), IsEmpty());
}

TEST_F(FabricChangesTest, SwappedCablesAreTwoMoves) {
  was.Link("root1", 1, "leaf1", 1).Link("root2", 1, "leaf2", 1);
  is.Link("root1", 1, "leaf2", 1).Link("root2", 1, "leaf1", 1);
  Compare();
  EXPECT_THAT(Moved(),
              ElementsAre("root1:1 from leaf1:1 to leaf2:1", "root2:1 from leaf2:1 to leaf1:1"));
}

TEST_F(FabricChangesTest, ACableIsPartOfOneMoveOnly) {
  was.Link("root1", 1, "leaf1", 1);
  is.Link("root1", 1, "leaf2", 1).Link("root2", 1, "leaf1", 1);
  Compare();
  EXPECT_THAT(Moved(), ElementsAre("root1:1 from leaf1:1 to leaf2:1"));
  EXPECT_THAT(Came(), ElementsAre("root2:1 leaf1:1"));
}

TEST_F(FabricChangesTest, OfAHostItIsTheHostsEndThatStayed) {
  was.Link("leaf1", 3, "host", 1);
  is.Link("leaf1", 3, "leaf2", 3).Link("leaf2", 9, "host", 1);
  Compare();
  EXPECT_THAT(Moved(), ElementsAre("host:1 from leaf1:3 to leaf2:9"));
  EXPECT_THAT(Came(), ElementsAre("leaf1:3 leaf2:3"));
}

TEST_F(FabricChangesTest, AHostMayMoveToItsOtherPort) {
  was.Link("leaf1", 3, "host", 1);
  is.Link("leaf1", 3, "host", 2);
  Compare();
  EXPECT_THAT(Moved(), ElementsAre("leaf1:3 from host:1 to host:2"));
}

TEST_F(FabricChangesTest, SpeedsChangeAtEitherEnd) {
  was.Link("root1", 1, "leaf1", 1, true, 0x400).Link("root2", 1, "leaf2", 1, true, 0x400);
  is.Link("root1", 1, "leaf1", 1, true, 0x200).Link("root2", 1, "leaf2", 1, true, 0x400);
  Compare();
  ASSERT_EQ(changes.speeds.size(), 1U);
  EXPECT_EQ(Text(changes.speeds[0].is), "root1:1 leaf1:1");
  EXPECT_EQ(changes.speeds[0].was.end2->speed, 0x400U);
  EXPECT_EQ(changes.speeds[0].is.end2->speed, 0x200U);
  EXPECT_THAT(Moved(), IsEmpty());
}

TEST_F(FabricChangesTest, NodesThatGoOrComeTakeTheirCablesWithThem) {
  was.Switch("lost").Link("lost", 1, "root1", 1).Link("lost", 2, "root2", 1);
  is.SwitchOfGuid(60, "found").Link("found", 4, "root1", 9);
  Compare();
  ASSERT_EQ(changes.nodesWent.size(), 1U);
  EXPECT_EQ(changes.nodesWent[0].node->name, "lost");
  EXPECT_EQ(changes.nodesWent[0].cables, 2U);
  ASSERT_EQ(changes.nodesCame.size(), 1U);
  EXPECT_EQ(changes.nodesCame[0].node->name, "found");
  EXPECT_EQ(changes.nodesCame[0].cables, 1U);
  EXPECT_THAT(Went(), IsEmpty());
  EXPECT_THAT(Came(), IsEmpty());
}

TEST_F(FabricChangesTest, AHostOfASwitchThatWentHasMoved) {
  was.Switch("lost").Link("lost", 1, "host", 1);
  is.Link("leaf2", 8, "host", 1);
  Compare();
  EXPECT_THAT(Moved(), ElementsAre("host:1 from lost:1 to leaf2:8"));
}

TEST_F(FabricChangesTest, AReplacedSwitchKeepsItsCables) {
  was.Switch("mid").Link("mid", 1, "root1", 1).Link("mid", 2, "leaf1", 1);
  is.SwitchOfGuid(99, "mid").Link("mid", 1, "root1", 1).Link("mid", 3, "leaf1", 1);
  Compare();
  ASSERT_EQ(changes.replaced.size(), 1U);
  EXPECT_EQ(changes.replaced[0].is->guid, 99U);
  EXPECT_THAT(changes.nodesWent, IsEmpty());
  EXPECT_THAT(changes.nodesCame, IsEmpty());
  EXPECT_THAT(Moved(), ElementsAre("leaf1:1 from mid:2 to mid:3"));
}

TEST_F(FabricChangesTest, ANewNameIsAChangeOfItsOwn) {
  was.Switch("old");
  is.Switch("new");
  Compare();
  ASSERT_EQ(changes.renamed.size(), 1U);
  EXPECT_EQ(changes.renamed[0].was->name, "old");
  EXPECT_EQ(changes.renamed[0].is->name, "new");
  EXPECT_THAT(changes.nodesWent, IsEmpty());
}

}  // namespace
}  // namespace fabscope::internal
