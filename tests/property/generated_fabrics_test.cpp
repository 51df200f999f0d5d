// Generated fabrics: what is clean by construction checks clean, however the roots are found, and
// the same order gives the same fabric.

#include <gtest/gtest.h>
#include <memory>
#include <sstream>
#include <vector>

#include "fat_tree/topology.h"
#include "formats/fabric_document.h"
#include "platform/reg_exp.h"
#include "synthetic/fabric_plan.h"
#include "synthetic/faults.h"
#include "synthetic/truth.h"

namespace fabscope::internal {
namespace {

constexpr std::uint32_t hdr = 0x400;

std::unique_ptr<IBFabric> BuildPlan(const FabricPlan& plan) {
  FabricBuilder builder;
  plan.Fill(builder);
  return builder.Build();
}

enum class Roots { Automatic, GivenRanks, ByName };

// Nothing was found, and every switch of one plane is on the rank that was meant.
void ExpectClean(const FabricPlan& plan, Roots roots, unsigned plane) {
  const auto fabric = BuildPlan(plan);
  std::ostringstream output;
  std::vector<FabricErrGeneral*> errors;
  std::string message;
  FTTopology topology(fabric.get(), &output, 70);
  regExp spines(plan.planes == 1 ? "^spine" : "^spine.*/U" + std::to_string(plane) + "$");
  if (roots == Roots::Automatic) {
    ASSERT_EQ(topology.Build(errors, message, 10, 2), 0) << message;
  } else if (roots == Roots::GivenRanks) {
    ASSERT_EQ(topology.Build(errors, message), 0) << message;
  } else {
    ASSERT_EQ(topology.Build(errors, message, spines), 0) << message;
  }
  ASSERT_EQ(topology.Validate(errors, message), 0) << message;
  EXPECT_TRUE(errors.empty());
  EXPECT_EQ(topology.GetIssuesCount(), 0U) << output.str();
  for (std::size_t i = 0; i < plan.nodes.size(); ++i) {
    if (!plan.IsSwitch(i)) continue;
    const NodeSpec spec = plan.NodeOnPlane(i, plane);
    EXPECT_EQ(topology.GetNodeRank(fabric->getNodeByGuid(spec.guid)), plan.nodes[i].rank)
        << spec.name;
  }
}

std::vector<TreeShape> Shapes() {
  const std::vector<TreeShape> plain{
      {{2, 5}, {1, 3}},       {{3, 8}, {1, 4}},       {{3, 2, 4}, {1, 2, 3}},
      {{4, 4, 8}, {1, 4, 4}}, {{2, 3, 5}, {1, 3, 3}}, {{2, 2, 2, 3}, {1, 2, 2, 2}},
      RadixTree(2, 8, 0, 0),  RadixTree(3, 8, 5, 2),  RadixTree(3, 8, 0, 0, 2),
      RadixTree(4, 4, 0, 0),
  };
  std::vector<TreeShape> shapes;
  for (const TreeShape& shape : plain) {
    for (const unsigned planes : {1U, 2U, 4U}) {
      for (const unsigned parallel : {1U, 3U}) {
        TreeShape& variant = shapes.emplace_back(shape);
        variant.planes = planes;
        variant.parallel *= parallel;
      }
    }
  }
  return shapes;
}

TEST(GeneratedFabricsTest, CheckCleanWithAutomaticRoots) {
  for (const TreeShape& shape : Shapes()) {
    FabricPlan plan = PlanTree(shape, hdr);
    ASSERT_EQ(plan.GiveFlids(), std::nullopt);
    // The last one of equal leaves is asked first, which is on the last plane.
    ExpectClean(plan, Roots::Automatic, shape.planes);
  }
}

TEST(GeneratedFabricsTest, CheckCleanWithTheirOwnRanks) {
  for (const TreeShape& shape : Shapes()) {
    FabricPlan plan = PlanTree(shape, hdr);
    plan.GiveRanks();
    ExpectClean(plan, Roots::GivenRanks, 1);
  }
}

TEST(GeneratedFabricsTest, CheckCleanOnEveryPlaneByTheNamesOfItsRoots) {
  for (const TreeShape& shape : Shapes()) {
    const FabricPlan plan = PlanTree(shape, hdr);
    for (unsigned plane = 1; plane <= shape.planes; ++plane) {
      ExpectClean(plan, Roots::ByName, plane);
    }
  }
}

// What `fabscope generate` writes: fabric and truth.
std::string Generate(const TreeShape& shape, std::uint64_t seed) {
  FabricPlan plan = PlanTree(shape, hdr);
  plan.GiveRanks();
  EXPECT_EQ(plan.GiveFlids(), std::nullopt);
  Random random(seed);
  FaultInjector injector(plan, random);
  std::vector<InjectedFault> faults;
  for (const FaultKind kind : AllFaultKinds()) {
    EXPECT_EQ(injector.Inject(kind, faults.emplace_back()), std::nullopt);
  }
  return FabricDocumentText(*BuildPlan(plan)) + TruthText(plan, seed, faults);
}

TEST(GeneratedFabricsTest, AreTheSameBytesForTheSameOrderAndOthersForAnotherSeed) {
  const TreeShape shape{{4, 4, 4}, {1, 4, 4}, 1, 0, 2};
  for (std::uint64_t seed = 0; seed < 10; ++seed) {
    EXPECT_EQ(Generate(shape, seed), Generate(shape, seed));
    EXPECT_NE(Generate(shape, seed), Generate(shape, seed + 1));
  }
}

}  // namespace
}  // namespace fabscope::internal
