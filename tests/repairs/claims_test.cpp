// What is said of inferred ranks and of the fewest steps, held against a search of everything; and
// what the order of nodes decides, which is nothing.

#include <cstddef>
#include <cstdint>
#include <gtest/gtest.h>
#include <string>
#include <utility>
#include <vector>

#include "fabric/fabric_builder.h"
#include "reference/fabric_sketch.h"
#include "reference/plain_model.h"
#include "reference/random_source.h"
#include "repair/find_repairs.h"
#include "repairs/plain_optimum.h"
#include "repairs/plain_steps.h"
#include "repairs/rank_trial.h"
#include "repairs/step_trial.h"
#include "repairs/unlike_fabrics.h"

namespace fabscope::internal {
namespace {

// --- The search of everything.

TEST(LeastMisfits, AreThoseOfTheCheapestGroups) {
  // Spines 0 and 1, leaves 2 and 3; a leaf lacks a cable.
  plain::Optimum square({{0, 0, 1, 1}, {0, 0, 1, 0}, {1, 1, 0, 0}, {1, 0, 0, 0}});
  EXPECT_EQ(square.LeastMisfits({0, 0, 1, 1}), 1);
  EXPECT_EQ(square.LeastMisfits({0, 0, -1, 1}), 0);
  EXPECT_EQ(square.LeastMisfits({0, 0, 0, 1}), 2);
  // Three cables to one leaf and one to the other: the one goes, and the other is in no group.
  plain::Optimum uneven({{0, 3, 1}, {3, 0, 0}, {1, 0, 0}});
  EXPECT_EQ(uneven.LeastMisfits({0, 1, 1}), 1);
  EXPECT_EQ(uneven.LeastMisfits({1, 0, 1}), 1);
}

TEST(AllTrees, KnowTheBestThatIsOtherwiseNoWorse) {
  // A chain of 3; hosts at its ends.
  const std::vector<int> hosts{2, 0, 3};
  plain::AllTrees chain({{0, 1, 0}, {1, 0, 1}, {0, 1, 0}});
  const plain::Blemishes upsideDown = chain.BlemishesOf({0, 1, 0}, hosts);
  EXPECT_EQ(upsideDown.misfits, 0);
  EXPECT_EQ(upsideDown.hostsOnSpines, 5);
  EXPECT_EQ(upsideDown.leavesWithoutHosts, 1);
  const plain::Blemishes flat = chain.BlemishesOf({0, 0, 1}, hosts);
  EXPECT_EQ(flat.misfits, 1);
  EXPECT_EQ(flat.barrenSpines, 1);
  EXPECT_EQ(chain.LeastMisfits(flat, hosts), 0);
  const plain::Blemishes onlyLeaves = chain.BlemishesOf({0, 0, 0}, hosts);
  EXPECT_EQ(onlyLeaves.misfits, 2);
  EXPECT_EQ(chain.LeastMisfits(onlyLeaves, hosts), 2);
}

TEST(UnlikeFabrics, AreAsManyAsThereAre) {
  std::vector<std::size_t> cablings;
  for (int switches = 1; switches <= 6; ++switches) {
    cablings.push_back(UnlikeCablings(switches).size());
  }
  EXPECT_EQ(cablings, (std::vector<std::size_t>{1, 1, 2, 6, 21, 112}));
  EXPECT_EQ(UnlikeHosts({{0, 1, 0}, {1, 0, 1}, {0, 1, 0}}).size(), 5U);
}

// --- Inferred ranks.

class InferredRanksTest : public testing::TestWithParam<int> {};

TEST_P(InferredRanksTest, AreHardlyEverBeaten) {
  RanksScore score;
  EXPECT_EQ(TryAllSmallFabrics(GetParam(), score), "");
  RecordProperty("score", score.Text());
  const bool areAllBest = GetParam() <= 4;
  EXPECT_LE(100 * score.beaten, areAllBest ? 0 : 2 * score.fabrics) << score.Text();
  EXPECT_LE(100 * score.countedMore, areAllBest ? 0 : 8 * score.fabrics) << score.Text();
}

INSTANTIATE_TEST_SUITE_P(Switches, InferredRanksTest, testing::Range(2, 7));

TEST(InferredRanksTest, AreHardlyEverBeatenWithParallelCables) {
  RanksScore score;
  for (std::uint64_t seed = 0; seed < 500; ++seed) EXPECT_EQ(TryRandomFabric(seed, score), "");
  EXPECT_LE(100 * score.beaten, 4 * score.fabrics) << score.Text();
}

// --- The fewest steps.

// Two pods of three spines and four leaves each.
class TwoPods {
 public:
  TwoPods() {
    for (int spine = 0; spine < spines; ++spine) {
      for (int leaf = 0; leaf < leavesOfPod; ++leaf) {
        cables_.emplace_back(spine, spines + spine / spinesOfPod * leavesOfPod + leaf);
      }
    }
  }

  std::size_t Cables() const { return cables_.size(); }
  void Swap(std::size_t one, std::size_t other) {
    std::swap(cables_[one].second, cables_[other].second);
  }
  RepairCase Case() const {
    reference::RandomSource random(1);
    reference::FabricSketch sketch(random);
    for (int i = 0; i < spines + 2 * leavesOfPod; ++i) sketch.AddSwitch("s" + std::to_string(i));
    for (const auto& [spine, leaf] : cables_) sketch.Cable(spine, leaf);
    for (int leaf = spines; leaf < spines + 2 * leavesOfPod; ++leaf) {
      for (int i = 0; i < 2; ++i) {
        sketch.Cable(leaf, sketch.AddHost("h" + std::to_string(2 * leaf + i)));
      }
    }
    return {"two pods", reference::ModelOf(sketch.Finish(false)), {}};
  }

 private:
  static constexpr int spinesOfPod = 3;
  static constexpr int spines = 2 * spinesOfPod;
  static constexpr int leavesOfPod = 4;
  std::vector<std::pair<int, int>> cables_;
};

TEST(FewestStepsTest, AreNeverTooManyAfterTwoSwaps) {
  StepsScore score;
  const std::size_t cables = TwoPods().Cables();
  const std::size_t all = cables * cables * cables * cables;
  for (std::size_t number = 0; number < all; number += 1009) {
    std::size_t digits = number;
    const auto next = [&] {
      const std::size_t digit = digits % cables;
      digits /= cables;
      return digit;
    };
    TwoPods pods;
    for (int i = 0; i < 2; ++i) {
      const std::size_t one = next();
      const std::size_t other = next();
      pods.Swap(one, other);
    }
    ASSERT_EQ(TryFewerSteps(pods.Case(), score), "") << "number " << number;
  }
  EXPECT_GT(score.ofSeveralSteps, 50U) << score.Text();
  EXPECT_EQ(score.otherGroups, 0U) << score.Text();
  EXPECT_EQ(score.tooLong, 0U) << score.Text();
}

TEST(FewestStepsTest, AreHardlyEverTooManyInRandomFabrics) {
  constexpr std::size_t mostSwitches = 8;
  StepsScore score;
  for (std::uint64_t seed = 0; seed < 20'000; ++seed) {
    const RepairCase what = MakeRepairCase(seed);
    if (what.fabric->switches.size() > mostSwitches) continue;
    ASSERT_EQ(TryFewerSteps(what, score), "") << "seed " << seed;
  }
  EXPECT_GT(score.ofSeveralSteps, 20U) << score.Text();
  EXPECT_LE(100 * score.otherGroups, 2 * score.ofSeveralSteps) << score.Text();
}

// --- The order of nodes.

// The same fabric with its nodes in another order.
std::unique_ptr<IBFabric> Shuffled(const IBFabric& fabric, std::uint64_t seed) {
  reference::RandomSource random(seed);
  std::vector<const IBNode*> nodes;
  for (const IBNode& node : fabric.GetNodes()) nodes.push_back(&node);
  random.Shuffle(nodes);
  FabricBuilder builder;
  for (const IBNode* node : nodes) {
    NodeSpec spec;
    spec.guid = node->guid;
    spec.type = node->nodeType;
    spec.name = node->name;
    spec.numPorts = node->numPorts;
    EXPECT_FALSE(builder.AddNode(spec));
  }
  for (const IBPort& port : fabric.GetPorts()) {
    const IBPort* far = port.remotePort;
    if (far == nullptr) continue;
    const PortRef here{port.node->guid, port.num};
    const PortRef there{far->node->guid, far->num};
    if (std::pair(here.guid, here.num) > std::pair(there.guid, there.num)) continue;
    EXPECT_FALSE(builder.AddLink({here, there, port.speed, port.symmetric}));
  }
  return builder.Build();
}

using CableKey = std::set<std::pair<std::uint64_t, int>>;  // both ends, by GUID and port
using ChangeKey = std::pair<CableKey, CableKey>;

std::vector<std::set<ChangeKey>> StepsOf(const IBFabric& fabric) {
  const auto key = [&](const std::optional<RepairCable>& cable) {
    CableKey ends;
    if (!cable) return ends;
    for (const CableEnd& end : {cable->upper, cable->lower}) {
      ends.insert({fabric.GetNodes()[end.node].guid, end.port});
    }
    return ends;
  };
  std::vector<std::set<ChangeKey>> steps;
  for (const RepairStep& step : FindRepairs(fabric).steps) {
    std::set<ChangeKey>& changes = steps.emplace_back();
    for (const CableChange& change : step.cables) {
      changes.insert({key(change.before), key(change.after)});
    }
  }
  return steps;
}

TEST(PlansTest, DependOnNoOrderOfNodes) {
  int withSteps = 0;
  for (std::uint64_t seed = 0; seed < 2000; ++seed) {
    const RepairCase what = MakeRepairCase(seed);
    // Other fabrics have ports with marks that a copy would need.
    if (!what.kind.starts_with("tree with")) continue;
    const auto steps = StepsOf(*what.fabric);
    if (!steps.empty()) ++withSteps;
    EXPECT_EQ(StepsOf(*Shuffled(*what.fabric, seed)), steps) << "seed " << seed;
  }
  EXPECT_GT(withSteps, 500);
}

}  // namespace
}  // namespace fabscope::internal
