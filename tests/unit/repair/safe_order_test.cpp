#include "repair/safe_order.h"

#include <gmock/gmock.h>

#include "support/repair_fixture.h"

namespace fabscope::internal {
namespace {

using ::testing::ElementsAre;

// Leaves with a host and one cable each, so that to move it cuts them off for a while. The cable of
// leaf 3 is at port 3 of its spine.
class SafeOrderTest : public RepairTest {
 protected:
  SafeOrderTest() { tree.Switch("spine1").Switch("spine2"); }

  void AddLeaves(const std::vector<std::uint8_t>& numbers, const std::string& spine) {
    for (const std::uint8_t number : numbers) {
      const std::string leaf = "leaf" + std::to_string(number);
      const std::string host = "host" + std::to_string(number);
      tree.Switch(leaf).Host(host).Link(leaf, 16, host, 1).Link(spine, number, leaf, 1);
    }
  }
  RepairStep Rehang(int number, const std::string& from, const std::string& to) {
    const std::string end = std::to_string(number);
    return Step(RepairAction::Move, RepairReason::WrongGroup,
                Move(from + ":" + end, to + ":" + end, "leaf" + end + ":1"));
  }
  std::vector<std::size_t> OrderOf(const std::vector<RepairStep>& steps,
                                   std::vector<std::vector<std::size_t>> waitsFor = {}) {
    std::vector<const RepairStep*> pointers;
    pointers.reserve(steps.size());
    for (const RepairStep& step : steps) pointers.push_back(&step);
    waitsFor.resize(steps.size());
    return FindSafeOrder(SwitchGraph(tree.Build()), pointers, waitsFor);
  }
};

TEST_F(SafeOrderTest, TakesTheOnlyOrderThatLeavesNoLeafAlone) {
  AddLeaves({1, 2, 3}, "spine1");
  AddLeaves({4, 5}, "spine2");
  EXPECT_THAT(OrderOf({Rehang(4, "spine2", "spine1"), Rehang(1, "spine1", "spine2")}),
              ElementsAre(1, 0));
}

TEST_F(SafeOrderTest, LetsAStepWaitEvenIfThatLeavesALeafAlone) {
  AddLeaves({1, 2, 3}, "spine1");
  AddLeaves({4, 5}, "spine2");
  EXPECT_THAT(OrderOf({Rehang(4, "spine2", "spine1"), Rehang(1, "spine1", "spine2")}, {{}, {0}}),
              ElementsAre(0, 1));
}

TEST_F(SafeOrderTest, KeepsTheOrderWhereEveryOneLeavesALeafAlone) {
  AddLeaves({1, 2}, "spine1");
  AddLeaves({3, 4}, "spine2");
  EXPECT_THAT(OrderOf({Rehang(3, "spine2", "spine1"), Rehang(1, "spine1", "spine2")}),
              ElementsAre(0, 1));
}

// Leaf 6 is alone at first and may stay so when it moves.
TEST_F(SafeOrderTest, DoesNotMindWhoIsAloneBefore) {
  tree.Switch("spine3").Switch("spine4");
  AddLeaves({1, 2, 3}, "spine1");
  AddLeaves({4, 5}, "spine2");
  AddLeaves({6}, "spine3");
  EXPECT_THAT(OrderOf({Rehang(6, "spine3", "spine4"), Rehang(4, "spine2", "spine1"),
                       Rehang(1, "spine1", "spine2"), Rehang(2, "spine1", "spine4")},
                      {{}, {}, {0}, {2}}),
              ElementsAre(0, 2, 1, 3));
}

// Leaf 5 is alone in the end.
TEST_F(SafeOrderTest, DoesNotMindWhoIsAloneAfterwards) {
  AddLeaves({1, 2, 3}, "spine1");
  AddLeaves({4, 5}, "spine2");
  tree.Switch("spine3");
  AddLeaves({6, 7}, "spine3");
  EXPECT_THAT(OrderOf({Rehang(6, "spine3", "spine1"), Rehang(4, "spine2", "spine1"),
                       Rehang(1, "spine1", "spine3")}),
              ElementsAre(1, 2, 0));
}

}  // namespace
}  // namespace fabscope::internal
