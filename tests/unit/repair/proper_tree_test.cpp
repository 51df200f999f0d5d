#include "repair/proper_tree.h"

#include <gtest/gtest.h>

#include "support/stage_fixture.h"

namespace fabscope::internal {
namespace {

class ProperTreeTest : public StageTest {
 protected:
  void AddRoots(const std::vector<std::string>& names) {
    for (const std::string& name : names) fabric.Switch(name);
  }
  void AddLeaf(const std::string& name, const std::vector<std::string>& roots) {
    fabric.Switch(name);
    for (const std::string& root : roots) fabric.Cable(root, name);
  }
  bool IsProperFrom(const std::vector<std::string>& roots) {
    RankFrom(roots);
    return IsProperTree(Topology());
  }
};

TEST_F(ProperTreeTest, OneIsACleanTree) {
  AddThreeLevelTree(fabric, 3, 4, 2, 2, 1);
  EXPECT_TRUE(IsProperFrom({"root0", "root1", "root2", "root3"}));
}

TEST_F(ProperTreeTest, OneIsATreeOfGroupsOfTheirOwn) {
  AddRoots({"a", "b", "c"});
  AddLeaf("leaf1", {"a", "b"});
  AddLeaf("leaf2", {"b", "a"});
  AddLeaf("leaf3", {"c"});
  EXPECT_TRUE(IsProperFrom({"a", "b", "c"}));
}

TEST_F(ProperTreeTest, NoneLacksACable) {
  AddRoots({"a", "b"});
  AddLeaf("leaf1", {"a", "b"});
  AddLeaf("leaf2", {"a"});
  EXPECT_FALSE(IsProperFrom({"a", "b"}));
}

TEST_F(ProperTreeTest, NoneHasALineBetweenTwoGroups) {
  AddRoots({"a", "b", "c"});
  AddLeaf("leaf1", {"a"});
  AddLeaf("leaf2", {"b", "c"});
  AddLeaf("leaf3", {"c", "a"});
  EXPECT_FALSE(IsProperFrom({"a", "b", "c"}));
}

TEST_F(ProperTreeTest, ParallelCablesMustBeAsManyEverywhereInAGroup) {
  AddRoots({"a", "b"});
  AddLeaf("leaf1", {"a", "a", "b", "b"});
  AddLeaf("leaf2", {"b", "a", "b", "a"});
  EXPECT_TRUE(IsProperFrom({"a", "b"}));
}

TEST_F(ProperTreeTest, NoneHasMoreCablesToOneSpineThanToAnother) {
  AddRoots({"a", "b"});
  AddLeaf("leaf1", {"a", "a", "b"});
  AddLeaf("leaf2", {"a", "a", "b"});
  EXPECT_FALSE(IsProperFrom({"a", "b"}));
}

TEST_F(ProperTreeTest, NoneHasALineWithMoreCablesThanAnother) {
  AddRoots({"a", "b"});
  AddLeaf("leaf1", {"a", "b"});
  AddLeaf("leaf2", {"a", "a", "b", "b"});
  EXPECT_FALSE(IsProperFrom({"a", "b"}));
}

TEST_F(ProperTreeTest, NoneHasACableInsideARank) {
  AddRoots({"a", "b"});
  AddLeaf("leaf1", {"a", "b"});
  AddLeaf("leaf2", {"a", "b"});
  fabric.Cable("leaf1", "leaf2");
  EXPECT_FALSE(IsProperFrom({"a", "b"}));
}

TEST_F(ProperTreeTest, ACableFromASwitchToItselfIsNoMisfit) {
  AddRoots({"a"});
  AddLeaf("leaf", {"a"});
  fabric.Link("leaf", 8, "leaf", 9);
  EXPECT_TRUE(IsProperFrom({"a"}));
}

TEST_F(ProperTreeTest, SwitchesOutsideTheTreeDoNotCount) {
  AddRoots({"a", "elsewhere"});
  AddLeaf("leaf", {"a"});
  fabric.Host("host").Cable("elsewhere", "host");
  EXPECT_TRUE(IsProperFrom({"a"}));
}

TEST_F(ProperTreeTest, NothingIsSaidWhereACableCountsAtOneEndOnly) {
  AddRoots({"a"});
  AddLeaf("leaf", {"a"});
  PortSpec spoiled;
  spoiled.num = 1;
  spoiled.fnm = true;
  fabric.Port("leaf", spoiled);
  EXPECT_FALSE(IsProperFrom({"a"}));
}

}  // namespace
}  // namespace fabscope::internal
