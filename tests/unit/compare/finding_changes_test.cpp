#include "compare/finding_changes.h"

#include <algorithm>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "platform/reg_exp.h"
#include "support/test_fabric.h"

namespace fabscope::internal {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

// A fabric with roots, mids and leaves, and what was found of it.
struct Checked {
  TestFabric fabric;
  std::ostringstream out;
  std::unique_ptr<FTTopology> topology;
  FindingList findings;

  void Check() {
    topology = std::make_unique<FTTopology>(&fabric.Build(), &out, 70);
    topology->SetFindingSink([this](Finding&& finding) { findings.Add(std::move(finding)); });
    std::vector<FabricErrGeneral*> records;
    std::string message;
    regExp roots("^root");
    ASSERT_EQ(topology->Build(records, message, roots), 0) << message;
    ASSERT_EQ(topology->Validate(records, message), 0) << message;
  }
};

std::string Text(const Fault& fault) {
  std::string text = KindOf(*fault.finding);
  for (const Place& place : fault.places) {
    text.append(" ").append(place.node->name);
    if (place.port != 0) text.append(":").append(std::to_string(place.port));
  }
  if (fault.links != 0) text.append(" ").append(std::to_string(fault.links));
  return text;
}

std::vector<std::string> Texts(const FaultList& faults) {
  std::vector<std::string> texts;
  for (const Fault fault : faults) texts.push_back(Text(fault));
  return texts;
}

class FindingChangesTest : public ::testing::Test {
 protected:
  // Three roots and three leaves, without the cables that are named.
  static void AddTree(TestFabric& fabric, const std::vector<std::string>& without = {}) {
    for (const char* root : {"root0", "root1", "root2"}) fabric.Switch(root);
    for (const char* leaf : {"leaf0", "leaf1", "leaf2"}) fabric.Switch(leaf);
    for (std::uint8_t root = 0; root < 3; ++root) {
      for (std::uint8_t leaf = 0; leaf < 3; ++leaf) {
        const std::string up = "root" + std::to_string(root);
        const std::string down = "leaf" + std::to_string(leaf);
        const std::string cable = std::string(up).append(" ").append(down);
        if (std::find(without.begin(), without.end(), cable) != without.end()) continue;
        fabric.Link(up, static_cast<std::uint8_t>(leaf + 1), down,
                    static_cast<std::uint8_t>(root + 1));
      }
    }
  }

  void Compare() {
    was.Check();
    is.Check();
    const Counterparts nodes(was.fabric.Build(), is.fabric.Build());
    changes = CompareFindings({*was.topology, was.findings}, {*is.topology, is.findings}, nodes);
  }

  Checked was;
  Checked is;
  FindingChanges changes;
};

TEST_F(FindingChangesTest, TheSameFaultsAreNoChange) {
  AddTree(was.fabric, {"root1 leaf1"});
  AddTree(is.fabric, {"root1 leaf1"});
  Compare();
  EXPECT_FALSE(was.findings.empty());
  EXPECT_THAT(Texts(changes.cured), IsEmpty());
  EXPECT_THAT(Texts(changes.appeared), IsEmpty());
}

TEST_F(FindingChangesTest, EachSwitchOfAFindingIsAFaultOfItsOwn) {
  AddTree(was.fabric, {"root1 leaf1"});
  AddTree(is.fabric, {"root1 leaf1", "root2 leaf1", "root2 leaf2"});
  Compare();
  EXPECT_THAT(Texts(changes.cured), ElementsAre("uneven-links leaf1 2"));
  EXPECT_THAT(
      Texts(changes.appeared),
      UnorderedElementsAre("missing-link root2 leaf1", "missing-link root2 leaf2",
                           "uneven-links root2 1", "uneven-links leaf1 1", "uneven-links leaf2 2"));
}

TEST_F(FindingChangesTest, WhatIsMendedIsCured) {
  AddTree(was.fabric, {"root1 leaf1"});
  AddTree(is.fabric);
  Compare();
  EXPECT_THAT(Texts(changes.cured),
              UnorderedElementsAre("missing-link root1 leaf1", "uneven-links root1 2",
                                   "uneven-links leaf1 2"));
  EXPECT_THAT(Texts(changes.appeared), IsEmpty());
}

TEST_F(FindingChangesTest, TheEndsOfALinkMayChangePlaces) {
  for (Checked* checked : {&was, &is}) {
    const bool isTurned = checked == &is;
    checked->fabric.Switch("root0").Switch("root1");
    const std::string first = isTurned ? "leafB" : "leafA";
    const std::string second = isTurned ? "leafA" : "leafB";
    checked->fabric.SwitchOfGuid(isTurned ? 51 : 50, first);
    checked->fabric.SwitchOfGuid(isTurned ? 50 : 51, second);
    for (const char* leaf : {"leafA", "leafB"}) {
      checked->fabric.Cable("root0", leaf).Cable("root1", leaf);
    }
    checked->fabric.Link("leafA", 9, "leafB", 9);
  }
  Compare();
  ASSERT_EQ(was.findings.size(), 1U);
  EXPECT_THAT(Texts(changes.cured), IsEmpty());
  EXPECT_THAT(Texts(changes.appeared), IsEmpty());
}

// Two pods, of which one is full of faults, or the only one.
TEST_F(FindingChangesTest, NumbersOfGroupsDoNotMatter) {
  for (Checked* checked : {&was, &is}) {
    TestFabric& fabric = checked->fabric;
    if (checked == &is) {
      // Its set of up-links comes before that of the other pod.
      fabric.Switch("root0").Switch("root1");
      fabric.SwitchOfGuid(90, "other").Cable("root0", "other").Cable("root1", "other");
    }
    for (std::uint64_t guid = 100; const char* name : {"rootA", "rootB", "leafA", "leafB"}) {
      fabric.SwitchOfGuid(guid++, name);
    }
    fabric.Cable("rootA", "leafA").Cable("rootA", "leafB").Cable("rootB", "leafA");
    fabric.Cable("rootB", "leafB").Cable("rootB", "leafB");
  }
  Compare();
  EXPECT_NE(std::get<UnevenLinks>(was.findings[0]).group,
            std::get<UnevenLinks>(is.findings[0]).group);
  EXPECT_THAT(Texts(changes.cured), IsEmpty());
  EXPECT_THAT(Texts(changes.appeared), IsEmpty());
}

TEST_F(FindingChangesTest, FaultsOfAReplacedSwitchStay) {
  AddTree(was.fabric, {"root1 leaf1"});
  TestFabric& fabric = is.fabric;
  fabric.Switch("root0").Switch("root1").Switch("root2").Switch("leaf0");
  fabric.SwitchOfGuid(77, "leaf1").SwitchOfGuid(6, "leaf2");
  for (const char* leaf : {"leaf0", "leaf1", "leaf2"}) {
    fabric.Cable("root0", leaf).Cable("root2", leaf);
    if (leaf[4] != '1') fabric.Cable("root1", leaf);
  }
  Compare();
  EXPECT_FALSE(is.findings.empty());
  EXPECT_THAT(Texts(changes.cured), IsEmpty());
  EXPECT_THAT(Texts(changes.appeared), IsEmpty());
}

// A root, a mid and two leaves: one link goes up from the mid, two come from below.
class BlockingTest : public FindingChangesTest {
 protected:
  static void AddSwitches(TestFabric& fabric, const std::string& leafA, const std::string& leafB) {
    fabric.SwitchOfGuid(10, "root").SwitchOfGuid(11, "mid");
    fabric.SwitchOfGuid(leafA == "leafA" ? 20 : 21, leafA);
    fabric.SwitchOfGuid(leafA == "leafA" ? 21 : 20, leafB);
    fabric.Cable("root", "mid").Cable("mid", leafA).Cable("mid", leafB);
  }
};

TEST_F(BlockingTest, AGroupStaysTheSameInAnyOrderOfItsLines) {
  AddSwitches(was.fabric, "leafA", "leafB");
  AddSwitches(is.fabric, "leafB", "leafA");
  Compare();
  EXPECT_EQ(was.findings.size(), 1U);
  EXPECT_THAT(Texts(changes.cured), IsEmpty());
  EXPECT_THAT(Texts(changes.appeared), IsEmpty());
}

TEST_F(BlockingTest, AGroupIsKnownByTheLinesThatStayed) {
  AddSwitches(was.fabric, "leafA", "leafB");
  is.fabric.SwitchOfGuid(10, "root").SwitchOfGuid(11, "mid").SwitchOfGuid(21, "leafB");
  is.fabric.SwitchOfGuid(5, "leafC");
  is.fabric.Cable("root", "mid").Cable("mid", "leafB").Cable("mid", "leafC");
  Compare();
  EXPECT_EQ(is.findings.size(), 1U);
  EXPECT_THAT(Texts(changes.cured), IsEmpty());
  EXPECT_THAT(Texts(changes.appeared), IsEmpty());
}

TEST_F(BlockingTest, WorseIsAnotherFault) {
  AddSwitches(was.fabric, "leafA", "leafB");
  AddSwitches(is.fabric, "leafA", "leafB");
  is.fabric.Cable("mid", "leafA").Cable("mid", "leafB");
  Compare();
  EXPECT_THAT(Texts(changes.cured), ElementsAre("suspected-blocking leafA"));
  EXPECT_THAT(Texts(changes.appeared), ElementsAre("suspected-blocking leafA"));
}

TEST_F(FindingChangesTest, SharedFlidsAreKnownByTheirGroups) {
  for (Checked* checked : {&was, &is}) {
    TestFabric& fabric = checked->fabric;
    for (std::uint64_t guid = 1; const char* name : {"root0", "root1", "leaf0", "leaf1"}) {
      const bool isLeaf = name[0] == 'l';
      std::vector<std::uint16_t> flids;
      if (isLeaf) flids.push_back(7);
      if (isLeaf && checked == &is) flids.push_back(8);
      fabric.SwitchOfGuid(guid++, name, flids);
    }
    fabric.Cable("root0", "leaf0").Cable("root1", "leaf1");
  }
  Compare();
  EXPECT_THAT(Texts(changes.appeared), ElementsAre("shared-flid leaf0 leaf1"));
  EXPECT_EQ(std::get<SharedFlid>(*changes.appeared[0].finding).flid, 8);
}

}  // namespace
}  // namespace fabscope::internal
