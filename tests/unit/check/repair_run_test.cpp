#include "check/repair_run.h"

#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>

#include "support/folder_test.h"
#include "support/repair_fixture.h"

namespace fabscope::internal {
namespace {

class RepairRunTest : public FolderTest {
 protected:
  RepairResult Run(const std::string& file) {
    CheckOptions options;
    options.fabric = file;
    return RunRepair(options);
  }
  RepairResult RunOnText(const std::string& text) {
    const std::string file = folder / "fabric.json";
    std::ofstream(file) << text;
    return Run(file);
  }
  static std::string Dump(const std::string& name) {
    return std::string(FABSCOPE_TEST_DATA) + "/" + name;
  }
};

TEST_F(RepairRunTest, NothingIsToBeDoneInACleanTree) {
  const RepairResult result = Run(Dump("tree-32h.topo"));
  EXPECT_TRUE(result.IsDone()) << result.message;
  EXPECT_EQ(result.proven.plan.status, RepairStatus::Clean);
  EXPECT_EQ(result.proven.plan.ranks.levels, 3);
  EXPECT_STREQ(result.method, "inferred");
  EXPECT_EQ(&result.Repaired(), result.fabric.get());
  EXPECT_EQ(result.After().findings.RecordsCount(), 0U);
  EXPECT_EQ(result.After().issues, 0U);
}

TEST_F(RepairRunTest, ChecksTheFabricAsItIsFromTheRootsOfThePlan) {
  const RepairResult result = Run(Dump("tree-32h-intra.topo"));
  EXPECT_TRUE(result.IsDone()) << result.message;
  EXPECT_EQ(result.before.findings.RecordsCount(), 1U);
  EXPECT_EQ(result.before.findings.size(), 1U);
}

TEST_F(RepairRunTest, NamedRootsAreTaken) {
  CheckOptions options;
  options.fabric = Dump("tree-32h.topo");
  options.roots = RootsFrom::Regex;
  options.rootRegex = std::make_shared<regExp>("^root");
  const RepairResult result = RunRepair(options);
  EXPECT_TRUE(result.IsDone()) << result.message;
  EXPECT_STREQ(result.method, "regex");
  EXPECT_EQ(result.proven.plan.ranks.levels, 3);
}

TEST_F(RepairRunTest, NamedRootsThatAreNotThereFail) {
  CheckOptions options;
  options.fabric = Dump("tree-32h.topo");
  options.roots = RootsFrom::Smdb;
  const RepairResult result = RunRepair(options);
  EXPECT_FALSE(result.IsDone());
  EXPECT_STREQ(result.method, "smdb");
  EXPECT_EQ(result.message,
            "Cannot build Fat-Tree topology. Failed to fill tree's ranks by SMDB: No root was "
            "provided for creating topology");
  EXPECT_EQ(result.advice,
            "no switch has rank 0: give the subnet manager's ranks with --ranks FILE, or let the "
            "roots be found by themselves");
}

TEST_F(RepairRunTest, AFabricWithoutATreeFails) {
  const RepairResult result = RunOnText(R"({"format":"fabscope-fabric","version":1,"nodes":[
      {"guid":"0x1","type":"ca","name":"host","numPorts":1}]})");
  EXPECT_FALSE(result.IsDone());
  EXPECT_EQ(result.message, "no switch of the fabric has a place in a tree");
}

TEST_F(RepairRunTest, WhatCannotBeProvenIsNotProposed) {
  const RepairResult result = Run(Dump("tangle.json"));
  EXPECT_TRUE(result.IsDone()) << result.message;
  EXPECT_EQ(result.proven.plan.status, RepairStatus::Abstained);
  EXPECT_THAT(result.proven.plan.message,
              ::testing::StartsWith("with them the fabric would still be no tree: "));
  EXPECT_TRUE(result.proven.plan.steps.empty());
  EXPECT_EQ(&result.Repaired(), result.fabric.get());
}

TEST_F(RepairRunTest, EachLevelOfRanksHasASwitch) {
  const RepairResult result = Run(Dump("tangle.json"));
  const TreeRanks& ranks = result.proven.plan.ranks;
  for (int level = 0; level < ranks.levels; ++level) {
    EXPECT_THAT(ranks.ofNode, ::testing::Contains(level));
  }
}

TEST_F(RepairRunTest, WhatCannotBeReadIsToldWithItsPlace) {
  const RepairResult result = RunOnText("{");
  ASSERT_TRUE(result.inputError);
  EXPECT_FALSE(result.IsDone());
  EXPECT_EQ(result.inputError->line, 1U);
}

class ProvenPlanTest : public RepairTest {};

TEST_F(ProvenPlanTest, AStepThatCannotBeDoneIsNoProof) {
  AddTwoLevelTree(tree, 2, 2, 1);
  RepairPlan plan;
  plan.ranks = Ranks({"root", "leaf"});
  plan.steps.push_back(
      Step(RepairAction::Disconnect, RepairReason::TooMany, Unplug("root0:4", "leaf0:4")));
  const ProvenPlan proven = ProvePlan(tree.Build(), std::move(plan), 70);
  EXPECT_EQ(proven.problem, "they cannot be done one after another");
  EXPECT_EQ(proven.repaired, nullptr);
}

TEST_F(ProvenPlanTest, ATreeThatFallsApartIsNoProof) {
  tree.Switch("root").Switch("leaf").Host("h");
  tree.Link("root", 1, "leaf", 1).Link("leaf", 2, "h", 1);
  RepairPlan plan;
  plan.ranks = Ranks({"root", "leaf"});
  plan.steps.push_back(
      Step(RepairAction::Disconnect, RepairReason::TooMany, Unplug("root:1", "leaf:1")));
  const ProvenPlan proven = ProvePlan(tree.Build(), std::move(plan), 70);
  EXPECT_EQ(proven.problem,
            "with them the fabric would still be no tree: Cannot validate Fat-Tree topology. "
            "Cannot calculate Up/Down links. "
            "It is not a Fat-Tree topology");
}

TEST_F(ProvenPlanTest, APlanThatLeavesALeafAloneIsNoProof) {
  AddTwoLevelTree(tree, 2, 3, 1);
  RepairPlan plan;
  plan.ranks = Ranks({"root", "leaf"});
  for (const char* root : {"root0", "root1"}) {
    const RepairCable cable = CableBetween(root, "leaf2");
    plan.steps.push_back(
        Step(RepairAction::Disconnect, RepairReason::TooMany, {{cable, std::nullopt}}));
  }
  const ProvenPlan proven = ProvePlan(tree.Build(), std::move(plan), 70);
  EXPECT_EQ(proven.problem, "");
  EXPECT_FALSE(proven.isProven);
  EXPECT_EQ(proven.plan.steps.front().trust, RepairClass::Likely);
}

// Two trees side by side; the check looks at that of the roots given.
TEST_F(ProvenPlanTest, WhatTheCheckDoesNotLookAtIsNotProven) {
  AddTwoLevelTree(tree, 2, 3, 1);
  tree.Switch("other").Switch("beside").Cable("other", "beside").Cable("other", "beside");
  RepairPlan plan;
  plan.ranks = Ranks({"root", "leaf"});
  const RepairCable cable = CableBetween("other", "beside");
  plan.steps.push_back(
      Step(RepairAction::Disconnect, RepairReason::TooMany, {{cable, std::nullopt}}));
  const ProvenPlan proven = ProvePlan(tree.Build(), std::move(plan), 70);
  EXPECT_TRUE(proven.isProven);
  EXPECT_EQ(proven.plan.steps.front().trust, RepairClass::Likely);
}

// Two links lack.
class HalfRepairedTest : public ProvenPlanTest {
 protected:
  HalfRepairedTest() {
    AddTwoLevelTree(tree, 3, 3, 1);
    std::vector<CableChanges> lost;
    for (const RepairCable& cable :
         {CableBetween("root0", "leaf0"), CableBetween("root1", "leaf2")}) {
      links.push_back({{std::nullopt, cable}});
      lost.push_back({{cable, std::nullopt}});
    }
    damaged = Changed(lost);
  }

  RepairClass TrustAfterConnecting(std::size_t count) {
    RepairPlan plan;
    plan.ranks = Ranks({"root", "leaf"});
    for (std::size_t i = 0; i < count; ++i) {
      plan.steps.push_back(Step(RepairAction::Connect, RepairReason::LinkLacking, links[i]));
    }
    return ProvePlan(*damaged, std::move(plan), 70).plan.steps.front().trust;
  }

  std::vector<CableChanges> links;
  std::unique_ptr<IBFabric> damaged;
};

TEST_F(HalfRepairedTest, NoStepIsSureWhileTheCheckStillFindsSomething) {
  EXPECT_EQ(TrustAfterConnecting(1), RepairClass::Likely);
}

TEST_F(HalfRepairedTest, ASureStepStaysSureWhenTheCheckFindsNothingMore) {
  EXPECT_EQ(TrustAfterConnecting(2), RepairClass::Sure);
}

}  // namespace
}  // namespace fabscope::internal
