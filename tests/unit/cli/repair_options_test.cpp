#include "cli/repair_options.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace fabscope::internal {
namespace {

using ::testing::Eq;
using ::testing::Optional;

class RepairOptionsTest : public ::testing::Test {
 protected:
  RepairOptionsTest() { arguments.operands = {"net.topo"}; }

  std::optional<std::string> Take(const std::string& name, const std::string& value) {
    for (const BoundOption& option : BindOptions(arguments)) {
      if (name == LongName(option.text)) return option.take(value);
    }
    return "no such option";
  }
  std::optional<std::string> Settle() { return SettleArguments(arguments); }

  RepairArguments arguments;
};

TEST_F(RepairOptionsTest, TheFabricIsTheOperand) {
  EXPECT_EQ(Settle(), std::nullopt);
  EXPECT_EQ(arguments.options.fabric, "net.topo");
  EXPECT_EQ(arguments.options.specialNodes->GetExpression(), "Aggregation Node");
}

TEST_F(RepairOptionsTest, HasNoneOfASearchByDistances) {
  EXPECT_EQ(Take("--retries", "1"), "no such option");
  EXPECT_EQ(Take("--equal", "1"), "no such option");
  EXPECT_EQ(Take("--roots", "auto"), "expected inferred, smdb or regex");
}

TEST_F(RepairOptionsTest, RootsMayBeNamed) {
  EXPECT_EQ(Take("--root-regex", "^spine"), std::nullopt);
  EXPECT_EQ(Take("--roots", "regex"), std::nullopt);
  EXPECT_EQ(Settle(), std::nullopt);
  EXPECT_EQ(arguments.options.roots, RootsFrom::Regex);
}

TEST_F(RepairOptionsTest, InferredRootsAreNotNamed) {
  EXPECT_EQ(Take("--roots", "inferred"), std::nullopt);
  EXPECT_EQ(Settle(), std::nullopt);
  EXPECT_EQ(Take("--ranks", "ranks.csv"), std::nullopt);
  EXPECT_THAT(Settle(), Optional(Eq("--roots inferred and --ranks contradict each other: allowed "
                                    "is --roots smdb")));
}

TEST_F(RepairOptionsTest, TheEndingTellsTheFormatOfWhatWillBe) {
  EXPECT_EQ(Take("--after", "after.topo"), std::nullopt);
  EXPECT_EQ(Settle(), std::nullopt);
  EXPECT_EQ(arguments.afterFormat, FabricFormat::TopologyDump);
  EXPECT_EQ(Take("--after", "after.txt"), std::nullopt);
  EXPECT_THAT(Settle(), Optional(Eq("--after after.txt does not tell the format by its ending: "
                                    "expected .json, .topo, .net, .dot, .gv or .graphml")));
}

TEST_F(RepairOptionsTest, NothingIsWrittenWhereAPlanIsVerified) {
  EXPECT_EQ(Take("--verify", "plan.json"), std::nullopt);
  EXPECT_EQ(Settle(), std::nullopt);
  EXPECT_EQ(Take("--csv", "out.csv"), std::nullopt);
  EXPECT_THAT(Settle(), Optional(Eq("--csv out.csv and --verify contradict each other: nothing is "
                                    "written where a plan is verified")));
}

TEST_F(RepairOptionsTest, NoInputIsOverwritten) {
  EXPECT_EQ(Take("--after", "./net.json"), std::nullopt);
  arguments.operands = {"net.json"};
  EXPECT_THAT(Settle(), Optional(Eq("--after ./net.json would overwrite the input net.json")));
}

TEST_F(RepairOptionsTest, PlanAndFabricAreNotBothStandardInput) {
  EXPECT_EQ(Take("--verify", "-"), std::nullopt);
  arguments.operands = {"-"};
  EXPECT_THAT(Settle(), Optional(Eq("standard input (-) can be read only once")));
}

TEST_F(RepairOptionsTest, GuidsAreShownAsInACheck) {
  EXPECT_EQ(Take("--show-guid", "node"), std::nullopt);
  EXPECT_EQ(arguments.options.showGuid, 2);
  EXPECT_EQ(Take("--show-guid", "both"), "expected none, system or node");
}

}  // namespace
}  // namespace fabscope::internal
