// Which roots a tree is built from. What is inferred, and how well a tree fits, the tests say
// themselves: this program has its own InferRanks, CountMisfits and IsProperTree.

#include "check/build_tree.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>
#include <set>

#include "repair/inferred_ranks.h"
#include "repair/proper_tree.h"
#include "support/stage_fixture.h"

namespace fabscope::internal {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

struct Inference {
  std::set<std::string> roots;  // empty: there is no tree
  int levels = 2;
  int askedFor = 0;
};

Inference inference;
// By the number of switches on each rank.
std::map<std::vector<int>, std::uint64_t> misfits;

class BuildTreeTest : public StageTest {
 protected:
  BuildTreeTest() {
    inference = {};
    misfits = {};
    options.retries = 5;
    AddTwoLevelTree(fabric, 2, 4, 1);
  }

  BuiltTree Build() { return BuildTree(fabric.Build(), options, stream); }

  static std::vector<std::vector<std::string>> RanksOf(const BuiltTree& tree) {
    std::vector<std::vector<std::string>> ranks;
    for (const NodeSet& rank : tree.topology->GetRanks()) {
      ranks.emplace_back();
      for (const IBNode* node : rank) ranks.back().emplace_back(node->name);
    }
    return ranks;
  }
  static void ExpectInferred(const BuiltTree& tree) {
    EXPECT_TRUE(tree.isBuilt);
    EXPECT_EQ(tree.roots.method, RootsFrom::Inferred);
    EXPECT_EQ(tree.output, "");
    EXPECT_EQ(tree.message, "");
    EXPECT_EQ(tree.topology->GetErrorText(), "");
    EXPECT_THAT(RanksOf(tree),
                ElementsAre(ElementsAre("root0"), ElementsAre("leaf0", "leaf1", "leaf2", "leaf3"),
                            ElementsAre("root1")));
  }
  static void ExpectSearched(const BuiltTree& tree) {
    EXPECT_TRUE(tree.isBuilt);
    EXPECT_EQ(tree.roots.method, RootsFrom::Search);
    EXPECT_EQ(tree.roots.notice, "");
    EXPECT_EQ(tree.output, "-I- Detecting roots by distance classifications\n");
    EXPECT_EQ(tree.message, "");
    EXPECT_THAT(RanksOf(tree), ElementsAre(ElementsAre("root0", "root1"),
                                           ElementsAre("leaf0", "leaf1", "leaf2", "leaf3")));
  }

  const std::vector<int> searched{2, 4};
  const std::vector<int> inferred{1, 4, 1};
  CheckOptions options;
  std::ostringstream stream;
};

TEST_F(BuildTreeTest, ASearchWhoseTreeFitsEveryCableStandsUnasked) {
  ExpectSearched(Build());
  EXPECT_EQ(inference.askedFor, 0);
}

TEST_F(BuildTreeTest, InferredRootsThatFitBetterAreUsed) {
  options.showGuid = 2;
  inference.roots = {"root0"};
  misfits = {{searched, 8}, {inferred, 7}};
  const BuiltTree tree = Build();
  ExpectInferred(tree);
  EXPECT_EQ(tree.roots.misfits, 7U);
  EXPECT_EQ(tree.roots.notice,
            "-W- Roots: distance classifications leave 8 misfits, the inferred roots 7; these are "
            "used (--roots search for the former)");
  EXPECT_EQ(stream.str(), "");
}

TEST_F(BuildTreeTest, InferredRootsThatFitAsWellAreNotUsed) {
  inference.roots = {"root0"};
  misfits = {{searched, 7}, {inferred, 7}};
  const BuiltTree tree = Build();
  ExpectSearched(tree);
  EXPECT_EQ(tree.roots.misfits, 7U);
  EXPECT_EQ(inference.askedFor, 1);
}

TEST_F(BuildTreeTest, ASearchThatRefusesGivesWayToInferredRoots) {
  options.retries = 0;
  inference.roots = {"root0"};
  misfits = {{inferred, 3}};
  const BuiltTree tree = Build();
  ExpectInferred(tree);
  EXPECT_EQ(tree.roots.misfits, 3U);
  EXPECT_EQ(tree.roots.notice,
            "-W- Roots: distance classifications give none (Cannot build Fat-Tree topology. Failed "
            "to find 2 equal Classifications out of 0 retries); inferred roots are used");
}

TEST_F(BuildTreeTest, ARefusalStandsWhereNothingCanBeInferred) {
  options.retries = 0;
  for (const int levels : {0, 2}) {
    inference = {{}, levels};
    const BuiltTree tree = Build();
    EXPECT_FALSE(tree.isBuilt);
    EXPECT_EQ(tree.roots.method, RootsFrom::Search);
    EXPECT_EQ(tree.roots.notice, "");
    EXPECT_EQ(tree.output, "-I- Detecting roots by distance classifications\n");
    EXPECT_EQ(tree.message,
              "Cannot build Fat-Tree topology. Failed to find 2 equal Classifications out of 0 "
              "retries");
  }
}

TEST_F(BuildTreeTest, ATreeOfOneRankIsNoneToUse) {
  inference.roots = {"root0", "root1", "leaf0", "leaf1", "leaf2", "leaf3"};
  inference.levels = 1;
  misfits = {{searched, 7}, {{6}, 0}};
  ExpectSearched(Build());
  options.retries = 0;
  EXPECT_FALSE(Build().isBuilt);
}

TEST_F(BuildTreeTest, InferredRootsCanBeAskedFor) {
  options.roots = RootsFrom::Inferred;
  inference.roots = {"root0"};
  misfits = {{searched, 1}, {inferred, 7}};
  const BuiltTree tree = Build();
  ExpectInferred(tree);
  EXPECT_EQ(tree.roots.notice, "");
}

TEST_F(BuildTreeTest, WithoutLevelsNoSwitchIsARoot) {
  options.roots = RootsFrom::Inferred;
  inference = {{"root0"}, 0};
  const BuiltTree tree = Build();
  EXPECT_FALSE(tree.isBuilt);
  EXPECT_EQ(tree.roots.method, RootsFrom::Inferred);
  EXPECT_EQ(tree.message,
            "Cannot build Fat-Tree topology. Failed to fill tree's ranks by the given roots: No "
            "root was provided for creating topology");
  EXPECT_THAT(tree.topology->GetRanks(), IsEmpty());
}

TEST_F(BuildTreeTest, AskedForTheSearchGivesWayToNothing) {
  options.roots = RootsFrom::Search;
  inference.roots = {"root0"};
  misfits = {{searched, 8}, {inferred, 7}};
  ExpectSearched(Build());
  options.retries = 0;
  EXPECT_FALSE(Build().isBuilt);
  EXPECT_EQ(inference.askedFor, 0);
}

TEST_F(BuildTreeTest, MisfitsOfOtherRootsAreCountedWhenAskedFor) {
  misfits = {{searched, 8}};
  options.rootRegex = std::make_shared<regExp>("^root");
  for (const RootsFrom method : {RootsFrom::Search, RootsFrom::Regex}) {
    options.roots = method;
    options.wantMisfits = false;
    EXPECT_EQ(Build().roots.misfits, 0U);
    options.wantMisfits = true;
    EXPECT_EQ(Build().roots.misfits, 8U);
    EXPECT_EQ(Build().roots.method, method);
  }
  options.roots = RootsFrom::Smdb;
  const BuiltTree tree = Build();
  EXPECT_FALSE(tree.isBuilt) << "no switch has a rank";
  EXPECT_EQ(tree.roots.misfits, 0U);
}

}  // namespace

TreeRanks InferRanks(const IBFabric& fabric, const TreeReading& /*reading*/) {
  ++inference.askedFor;
  TreeRanks ranks{std::vector<int>(fabric.GetNodes().size(), TreeRanks::none), inference.levels};
  for (const IBNode& node : fabric.GetNodes()) {
    if (node.nodeType == NodeTypeSwitch) {
      ranks.ofNode[node.index] = inference.roots.contains(std::string(node.name)) ? 0 : 1;
    }
  }
  return ranks;
}

std::uint64_t CountMisfits(const TreeRanks& ranks, TreeReading& reading) {
  const SwitchGraph& graph = reading.graph;
  std::vector<int> counts(static_cast<std::size_t>(ranks.levels));
  for (std::size_t i = 0; i < ranks.ofNode.size(); ++i) {
    const int rank = ranks.ofNode[i];
    const bool isSwitch = graph.NumberOf(static_cast<std::uint32_t>(i)) != SwitchGraph::none;
    EXPECT_EQ(rank == TreeRanks::none, !isSwitch);
    if (rank != TreeRanks::none) ++counts.at(static_cast<std::size_t>(rank));
  }
  const auto known = misfits.find(counts);
  return known == misfits.end() ? 0 : known->second;
}

bool IsProperTree(const FTTopology& /*topology*/) { return false; }

}  // namespace fabscope::internal
