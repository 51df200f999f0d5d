#include "reports/work_order.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "support/test_fabric.h"

namespace fabscope::internal {
namespace {

using ::testing::ElementsAre;

// Switches of these names, and a plan that connects some of them.
class WorkOrderTest : public ::testing::Test {
 protected:
  WorkOrderTest() {
    for (const char* name : {"leaf1", "leaf2", "leaf3", "leaf10", "spine1", "spine2"}) {
      fabric.Switch(name);
    }
    built = &fabric.Build();
  }

  void Connect(const char* lower, const char* upper) {
    RepairStep step;
    step.action = RepairAction::Connect;
    step.reason = RepairReason::LinkLacking;
    step.cables = {{std::nullopt, RepairCable{End(upper), End(lower)}}};
    plan.steps.push_back(step);
  }
  void Put(const char* name, const char* rack, const char* unit) {
    locations.byName[name] = {rack, unit, {}};
  }
  std::vector<std::size_t> Order(const Locations* places) {
    return OrderOfWalk({*built, plan, places});
  }

  CableEnd End(const char* name) { return {fabric[name]->index, ++port}; }

  TestFabric fabric;
  const IBFabric* built = nullptr;
  RepairPlan plan;
  Locations locations;
  std::uint8_t port = 0;
};

TEST_F(WorkOrderTest, GoesAlongTheNamesWithDigitsAsNumbers) {
  Connect("leaf10", "spine1");
  Connect("leaf2", "spine2");
  EXPECT_THAT(Order(nullptr), ElementsAre(1, 0));
}

TEST_F(WorkOrderTest, GoesAlongTheRacksAndThenTheUnits) {
  Put("leaf1", "R10", "1");
  Put("leaf2", "R2", "20");
  Put("leaf3", "R2", "3");
  Connect("leaf1", "leaf1");
  Connect("leaf2", "leaf2");
  Connect("leaf3", "leaf3");
  EXPECT_THAT(Order(&locations), ElementsAre(2, 1, 0));
}

TEST_F(WorkOrderTest, WhatNobodyHasAPlaceForComesLast) {
  Put("leaf3", "R1", "1");
  Connect("leaf1", "leaf2");
  Connect("leaf3", "leaf3");
  EXPECT_THAT(Order(&locations), ElementsAre(1, 0));
}

TEST_F(WorkOrderTest, StepsAtOneSwitchStayInTheOrderOfThePlan) {
  Connect("leaf3", "spine1");
  Connect("leaf1", "spine1");
  Connect("leaf2", "spine2");
  EXPECT_THAT(Order(nullptr), ElementsAre(2, 0, 1));
}

// Having walked to leaf3 for the first step, one does not go back for leaf1 before leaf10.
TEST_F(WorkOrderTest, WhatBecomesPossibleBehindOneIsDoneOnTheNextRound) {
  Connect("leaf3", "spine1");
  Connect("leaf1", "spine1");
  Connect("leaf10", "spine2");
  EXPECT_THAT(Order(nullptr), ElementsAre(0, 2, 1));
}

}  // namespace
}  // namespace fabscope::internal
