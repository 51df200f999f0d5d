#include "repair/notes.h"

#include <gmock/gmock.h>

#include "repair/changes.h"
#include "repair/tree_groups.h"
#include "support/repair_fixture.h"

namespace fabscope::internal {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

// Groups of two spines and two leaves with a host each.
class NotesTest : public RepairTest {
 protected:
  void AddGroup(int number, bool hasBothSpines = true) {
    const std::string suffix = std::to_string(number);
    tree.Switch("spineA" + suffix);
    if (hasBothSpines) tree.Switch("spineB" + suffix);
    for (const char* leaf : {"leafA", "leafB"}) {
      const std::string name = leaf + suffix;
      tree.Switch(name).Host("host of " + name).Link(name, 16, "host of " + name, 1);
      const std::uint8_t spinePort = name[4] == 'A' ? 1 : 2;
      tree.Link("spineA" + suffix, spinePort, name, 1);
      if (hasBothSpines) tree.Link("spineB" + suffix, spinePort, name, 2);
    }
  }
  // With as many groups besides that have lost all their switches to others.
  std::vector<RepairNote> NotesWithEmptyGroups(std::size_t count, std::uint32_t multiplicity) {
    const SwitchGraph graph(tree.Build());
    std::vector<int> ranks;
    for (std::uint32_t i = 0; i < graph.Count(); ++i) ranks.push_back(graph.Hosts(i) == 0 ? 0 : 1);
    TreeGroups groups(graph, ranks);
    Grouping& grouping = groups.groupings.front();
    for (auto& sizes : grouping.size) sizes.resize(sizes.size() + count);
    grouping.multiplicity.resize(grouping.Count() + count, multiplicity);
    return FindNotes(groups, FindChanges(groups));
  }
};

TEST_F(NotesTest, GroupWithoutSwitchesIsNotUnusual) {
  for (int group = 0; group < 4; ++group) AddGroup(group);
  EXPECT_THAT(NotesWithEmptyGroups(1, 2), IsEmpty());
}

TEST_F(NotesTest, GroupsWithoutSwitchesDoNotSayHowLargeGroupsAre) {
  for (int group = 0; group < 3; ++group) AddGroup(group);
  AddGroup(3, false);
  const std::vector<RepairNote> notes = NotesWithEmptyGroups(4, 1);
  ASSERT_THAT(notes, SizeIs(1));
  EXPECT_EQ(notes[0].kind, RepairNote::Kind::DeadSwitch);
  EXPECT_THAT(notes[0].switches, ElementsAre(tree["leafA3"]->index, tree["leafB3"]->index));
  EXPECT_THAT(notes[0].ports, ElementsAre(2));
}

}  // namespace
}  // namespace fabscope::internal
