#include <functional>
#include <ostream>
#include <sstream>
#include <utility>

#include "support/stage_fixture.h"

namespace fabscope {
namespace {

using Lines = std::vector<std::string>;

class ValidationTest : public StageTest {
 protected:
  FTNeighborhood& Group(std::size_t rank, std::size_t index) {
    return *Topology().GetNeighborhoods().at(rank).at(index);
  }
  std::string Id(std::size_t rank, std::size_t index) {
    return std::to_string(Group(rank, index).GetId());
  }
  // The number of groups of each rank.
  std::vector<std::size_t> GroupCounts() {
    std::vector<std::size_t> counts;
    for (const auto& groups : Topology().GetNeighborhoods()) counts.push_back(groups.size());
    return counts;
  }

  // Two neighborhoods of one spine and one line, with an asymmetric aggregated port in each.
  void AddTwoPairsWithAsymmetricAPorts() {
    for (const char* name : {"root0", "root1", "leaf0", "leaf1"}) fabric.Switch(name);
    fabric.Link("root0", 1, "leaf0", 1).Link("root1", 1, "leaf1", 1);
    PortSpec planePort;
    planePort.num = 1;
    planePort.planeMultiplicity = 2;
    fabric.Port("root0", planePort).Port("root1", planePort);
    fabric.AggregatedPort({{"root0", 1}}, 1).AggregatedPort({{"root1", 1}}, 1);
  }

  // Replaces a group by null, as no fabric does.
  void LoseGroup(std::size_t rank, std::size_t index) {
    FTNeighborhood*& slot = TestPeer::Neighborhoods(Topology()).at(rank).at(index);
    delete slot;
    slot = nullptr;
  }
};

// What the checks write of a group all of whose counts agree.
std::string EqualCounts(const std::string& label, const std::string& set, const std::string& links,
                        int count) {
  return "-I- " + label + ": all " + set + " have the same number of " + links + ": " +
         std::to_string(count) + "\n";
}

// A stream that lets a test interfere while the checks run: it acts at each flush, of which there
// is one behind each line.
class HookedStream : private std::stringbuf, public std::ostream {
 public:
  explicit HookedStream(std::function<void(int)> hook)
      : std::ostream(this), action(std::move(hook)) {}

 private:
  int sync() override {
    action(++flushes);
    return 0;
  }

  std::function<void(int)> action;
  int flushes = 0;
};

TEST_F(ValidationTest, ACleanTwoLevelTree) {
  AddTwoLevelTree(fabric, 2, 3, 1);
  RankFrom({"root0", "root1"});
  message = "untouched";
  EXPECT_EQ(Topology().Validate(errors, message), 0);
  EXPECT_EQ(message, "untouched");
  EXPECT_EQ(ErrorLines(), Lines());
  EXPECT_EQ(Topology().GetIssuesCount(), 0U);
  ASSERT_EQ(GroupCounts(), (std::vector<std::size_t>{1}));
  const std::string label = "Neighborhood " + Id(0, 0);
  EXPECT_EQ(TakeOutput(), "\n" + EqualCounts(label, "spines", "downlinks", 3) +
                              EqualCounts(label, "lines", "uplinks", 2) +
                              EqualCounts(label, "lines", "downlinks", 1) + "\n\n");
}

TEST_F(ValidationTest, GroupsAreCheckedInRankOrderAndVectorOrder) {
  AddThreeLevelTree(fabric, 2, 2, 2, 2, 1);
  RankFrom({"root0", "root1", "root2", "root3"});
  EXPECT_EQ(Topology().Validate(errors, message), 0);
  ASSERT_EQ(GroupCounts(), (std::vector<std::size_t>{2, 2}));
  std::string expected;
  for (std::size_t i : {0U, 1U}) {
    const std::string label = "Connectivity group " + Id(0, i);
    expected += "\n" + EqualCounts(label, "spines", "downlinks", 2) +
                EqualCounts(label, "lines", "uplinks", 2) +
                EqualCounts(label, "lines", "downlinks", 2);
  }
  for (std::size_t i : {0U, 1U}) {
    const std::string label = "Neighborhood " + Id(1, i);
    expected += "\n" + EqualCounts(label, "spines", "uplinks", 2) +
                EqualCounts(label, "spines", "downlinks", 2) +
                EqualCounts(label, "lines", "uplinks", 2) +
                EqualCounts(label, "lines", "downlinks", 1);
  }
  EXPECT_EQ(TakeOutput(), expected + "\n\n");
}

TEST_F(ValidationTest, FindingsAreNoFailures) {
  fabric.Switch("r0").Switch("r1").Switch("l0").Switch("l1").Switch("l2");
  fabric.Cable("r0", "l0").Cable("r1", "l0").Cable("r0", "l1").Cable("r1", "l1").Cable("r0", "l2");
  RankFrom({"r0", "r1"});
  message = "untouched";
  EXPECT_EQ(Topology().Validate(errors, message), 0);
  EXPECT_EQ(message, "untouched");
  const std::string label = "Neighborhood " + Id(0, 0);
  EXPECT_EQ(ErrorLines(), (Lines{label + ": missing link between switches (r1) and (l2)"}));
  EXPECT_EQ(TakeOutput(), "\n-E- " + label +
                              ": spines with different number of downlinks (expected  3 downlinks)"
                              "\n\t 2 downlinks: r1 "
                              "\n-E- " +
                              label +
                              ": lines with different number of uplinks (expected  2 uplinks)"
                              "\n\t 1 uplinks: l2 "
                              "\n" +
                              EqualCounts(label, "lines", "downlinks", 0) + "\n\n");
  EXPECT_EQ(Topology().GetIssuesCount(), 4U);
}

TEST_F(ValidationTest, BothChecksOfAGroupComeBeforeTheNextGroup) {
  AddTwoPairsWithAsymmetricAPorts();
  RankFrom({"root0", "root1"});
  EXPECT_EQ(Topology().Validate(errors, message), 0);
  ASSERT_EQ(GroupCounts(), (std::vector<std::size_t>{2}));
  std::string expected;
  for (std::size_t i : {0U, 1U}) {
    const std::string label = "Neighborhood " + Id(0, i);
    expected += "\n" + EqualCounts(label, "spines", "downlinks", 1) +
                EqualCounts(label, "lines", "uplinks", 1) +
                EqualCounts(label, "lines", "downlinks", 0) + "-W- " + label +
                ": found 1 asymmetric APort\n";
  }
  EXPECT_EQ(TakeOutput(), expected + "\n\n");
  EXPECT_EQ(Topology().GetIssuesCount(), 2U);
}

TEST_F(ValidationTest, FlidsAreCheckedLast) {
  NodeSpec leaf;
  leaf.numPorts = 4;
  leaf.flids = {7};
  leaf.name = "leaf0";
  fabric.Switch("root0").Switch("root1").Node(leaf);
  leaf.name = "leaf1";
  fabric.Node(leaf).Cable("root0", "leaf0").Cable("root1", "leaf1");
  RankFrom({"root0", "root1"});
  EXPECT_EQ(Topology().Validate(errors, message), 0);
  ASSERT_EQ(GroupCounts(), (std::vector<std::size_t>{2}));
  std::string expected;
  for (std::size_t i : {0U, 1U}) {
    const std::string label = "Neighborhood " + Id(0, i);
    expected += "\n" + EqualCounts(label, "spines", "downlinks", 1) +
                EqualCounts(label, "lines", "uplinks", 1) +
                EqualCounts(label, "lines", "downlinks", 0);
  }
  EXPECT_EQ(TakeOutput(), expected + "\n\n-W- FLID=7 appears in the following neighborhoods: " +
                              Id(0, 0) + ", " + Id(0, 1) +
                              "\n-I- Additional information related to FLIDs could be found in the "
                              "fabscope2.flid file generated by the Router stage\n");
}

TEST_F(ValidationTest, TheMinimalRatioIsKnownAfterwards) {
  AddThreeLevelTree(fabric, 2, 2, 2, 2, 1);
  RankFrom({"root0", "root1", "root2", "root3"});
  EXPECT_EQ(Topology().Validate(errors, message), 0);
  EXPECT_EQ(Topology().GetMinUpDownRatio(), 50.0);  // 2 up-links of 50 Gb/s a lane, 2 down-links
}

// --- Grouping.

TEST_F(ValidationTest, EveryRankButTheLastHasAnEntryOfGroups) {
  AddThreeLevelTree(fabric, 2, 2, 1, 1, 1);
  RankFrom({"root0"});
  EXPECT_EQ(Topology().CreateNeighborhoods(errors), 0);
  EXPECT_EQ(GroupCounts(), (std::vector<std::size_t>{1, 2}));
  EXPECT_EQ(Group(0, 0).GetSpines(), Nodes({"root0"}));
  EXPECT_EQ(Group(0, 0).GetLines(), Nodes({"mid0.0", "mid1.0"}));
  EXPECT_EQ(Group(1, 0).GetSpines(), Nodes({"mid0.0"}));
  EXPECT_EQ(Group(1, 1).GetLines(), Nodes({"leaf1.0", "leaf1.1"}));
}

TEST_F(ValidationTest, RecordsComeRankByRank) {
  fabric.Switch("root0").Switch("root1").Switch("mid").Switch("leaf0").Switch("leaf1");
  fabric.Cable("leaf0", "leaf1").Cable("root0", "root1");
  fabric.Cable("root0", "mid").Cable("root1", "mid").Cable("mid", "leaf0").Cable("mid", "leaf1");
  RankFrom({"root0", "root1"});
  EXPECT_EQ(Topology().CreateNeighborhoods(errors), 0);
  EXPECT_EQ(ErrorLines(),
            (Lines{"Connectivity group " + Id(0, 0) +
                       " : invalid link between switches (root0 port: 1) and (root1 port: 1)",
                   "Neighborhood " + Id(1, 0) +
                       " : invalid link between switches (leaf0 port: 1) and (leaf1 port: 1)"}));
}

// The second root has no lower switch, so no group holds it when its cable to the first is told.
TEST_F(ValidationTest, AFailureOnRankZeroStopsBeforeRankOneAndBeforeTheChecks) {
  fabric.Switch("root0").Switch("root1").Switch("mid").Switch("leaf0").Switch("leaf1");
  fabric.Cable("root0", "root1").Cable("leaf0", "leaf1");
  fabric.Cable("root0", "mid").Cable("mid", "leaf0").Cable("mid", "leaf1");
  RankFrom({"root0", "root1"});
  EXPECT_EQ(Topology().Validate(errors, message), 4);
  EXPECT_EQ(message,
            "Cannot validate Fat-Tree topology. The provided switch ( GUID: 0x0000000000000002 ) "
            "is not associated with any neighborhood on the rank: 0");
  EXPECT_EQ(GroupCounts(), (std::vector<std::size_t>{0, 0}));
  EXPECT_EQ(ErrorLines(), Lines());
  EXPECT_EQ(TakeOutput(), "");
  EXPECT_EQ(Topology().GetMinUpDownRatio(), 0.0);
}

TEST_F(ValidationTest, AFailureOnRankOneKeepsWhatRankZeroGave) {
  fabric.Switch("root0").Switch("root1").Switch("mid").Switch("leaf");
  fabric.Cable("root0", "root1").Cable("root0", "mid").Cable("root1", "mid").Cable("mid", "leaf");
  RankFrom({"root0", "root1"});
  TestPeer::Ranks(Topology())[2].insert(nullptr);
  EXPECT_EQ(Topology().Validate(errors, message), 4);
  EXPECT_EQ(message,
            "Cannot validate Fat-Tree topology. One of IBNodes is NULL."
            "Cannot initialize the \"up-hop\" histogram");
  ASSERT_EQ(GroupCounts(), (std::vector<std::size_t>{1, 0}));
  EXPECT_EQ(ErrorLines(),
            (Lines{"Connectivity group " + Id(0, 0) +
                   " : invalid link between switches (root0 port: 1) and (root1 port: 1)"}));
  EXPECT_EQ(TakeOutput(), "");
}

TEST_F(ValidationTest, AStatusOfTheGroupingIsPassedUpUnchanged) {
  fabric.Switch("switch");
  const std::vector<IBNode> upper(2049);
  NodeSet tooMany;
  for (const IBNode& node : upper) tooMany.insert(&node);
  TestPeer::Ranks(Topology()) = {tooMany, Nodes({"switch"})};
  EXPECT_EQ(Topology().Validate(errors, message), 9);
  EXPECT_EQ(message, "Cannot validate Fat-Tree topology. Bit-set is too short to story 2049bits");
}

TEST_F(ValidationTest, ATreeOfOneRankHasNoGroupsAndIsRefused) {
  fabric.Switch("root");
  RankFrom({"root"});
  EXPECT_EQ(Topology().CreateNeighborhoods(errors), 0);
  EXPECT_EQ(GroupCounts(), std::vector<std::size_t>());
  EXPECT_EQ(Topology().GetErrorText(), "");
  EXPECT_EQ(Topology().Validate(errors, message), 9);
  EXPECT_EQ(message,
            "Cannot validate Fat-Tree topology. "
            "Cannot calculate Up/Down links. It is not a Fat-Tree topology");
  EXPECT_EQ(TakeOutput(), "");
}

TEST_F(ValidationTest, ATreeWithoutRanksHasNoGroupsAndIsRefused) {
  EXPECT_EQ(Topology().CreateNeighborhoods(errors), 0);
  EXPECT_EQ(GroupCounts(), std::vector<std::size_t>());
  EXPECT_EQ(Topology().Validate(errors, message), 9);
  EXPECT_EQ(message,
            "Cannot validate Fat-Tree topology. "
            "Cannot calculate Up/Down links. It is not a Fat-Tree topology");
  EXPECT_EQ(TakeOutput(), "");
}

// --- Taking over groups.

TEST_F(ValidationTest, SettingGroupsOfARankHandsBackTheFormerOnes) {
  TestPeer::Neighborhoods(Topology()).resize(2);
  auto* former = new FTNeighborhood(&Topology(), 1, 1);
  auto* latter = new FTNeighborhood(&Topology(), 2, 1);
  std::vector<FTNeighborhood*> groups{former};
  EXPECT_EQ(Topology().SetNeighborhoodsOnRank(groups, 1), 0);
  EXPECT_TRUE(groups.empty());
  groups = {latter};
  EXPECT_EQ(Topology().SetNeighborhoodsOnRank(groups, 1), 0);
  EXPECT_EQ(groups, (std::vector<FTNeighborhood*>{former}));
  EXPECT_EQ(Topology().GetNeighborhoods(),
            (std::vector<std::vector<FTNeighborhood*>>{{}, {latter}}));
  delete former;
}

TEST_F(ValidationTest, GroupsOfARankBeyondTheLastEntryAreRefused) {
  TestPeer::Neighborhoods(Topology()).resize(2);
  FTNeighborhood group(&Topology(), 1, 2);
  std::vector<FTNeighborhood*> groups{&group};
  EXPECT_EQ(Topology().SetNeighborhoodsOnRank(groups, 2), 9);
  EXPECT_EQ(Topology().GetErrorText(),
            "Cannot set neighborhoods/connectivity groups on rank: 2 container size: 2");
  EXPECT_EQ(groups, (std::vector<FTNeighborhood*>{&group}));
}

// --- Failures of the checks.

TEST_F(ValidationTest, ChecksWithoutAnyEntryOfGroupsFail) {
  EXPECT_EQ(Topology().CheckNeighborhoodsLinksAndAPorts(errors), 9);
  EXPECT_EQ(Topology().GetErrorText(), "Cannot calculate Up/Down links. Map is empty");
}

TEST_F(ValidationTest, EntriesWithoutGroupsHaveNothingToCheck) {
  TestPeer::Neighborhoods(Topology()).resize(2);
  EXPECT_EQ(Topology().CheckNeighborhoodsLinksAndAPorts(errors), 0);
  EXPECT_EQ(TakeOutput(), "");
}

// A null root does no harm to the grouping, which asks the lower switches.
TEST_F(ValidationTest, TheRatioIsCalculatedBeforeAnyGroupIsChecked) {
  fabric.Switch("root").Switch("leaf").Cable("root", "leaf");
  RankFrom({"root"});
  TestPeer::Ranks(Topology())[0].insert(nullptr);
  EXPECT_EQ(Topology().Validate(errors, message), 4);
  EXPECT_EQ(message,
            "Cannot validate Fat-Tree topology. "
            "Cannot calculate Up/Down links. One of IB-Nodes is NULL");
  EXPECT_EQ(GroupCounts(), (std::vector<std::size_t>{1}));
  EXPECT_EQ(TakeOutput(), "");
}

TEST_F(ValidationTest, ANullGroupEndsTheChecks) {
  AddTwoPairsWithAsymmetricAPorts();
  RankFrom({"root0", "root1"});
  ASSERT_EQ(Topology().CreateNeighborhoods(errors), 0);
  LoseGroup(0, 0);
  EXPECT_EQ(Topology().CheckUpDownLinksAndAPorts(errors), 4);
  EXPECT_EQ(Topology().GetErrorText(),
            "Cannot calculate Up/Down links. One of FTNeighborhoods is NULL");
  EXPECT_EQ(TakeOutput(), "");
}

TEST_F(ValidationTest, WhatWasCheckedBeforeANullGroupStands) {
  AddTwoPairsWithAsymmetricAPorts();
  RankFrom({"root0", "root1"});
  ASSERT_EQ(Topology().CreateNeighborhoods(errors), 0);
  LoseGroup(0, 1);
  EXPECT_EQ(Topology().CheckUpDownLinksAndAPorts(errors), 4);
  const std::string label = "Neighborhood " + Id(0, 0);
  EXPECT_EQ(TakeOutput(), "\n" + EqualCounts(label, "spines", "downlinks", 1) +
                              EqualCounts(label, "lines", "uplinks", 1) +
                              EqualCounts(label, "lines", "downlinks", 0) + "-W- " + label +
                              ": found 1 asymmetric APort\n");
  EXPECT_EQ(Topology().GetIssuesCount(), 1U);
}

TEST_F(ValidationTest, AFailingLinkCheckKeepsTheAPortCheckAndLaterGroupsFromRunning) {
  AddTwoPairsWithAsymmetricAPorts();
  RankFrom({"root0", "root1"});
  ASSERT_EQ(Topology().CreateNeighborhoods(errors), 0);
  TestPeer::Lines(Group(0, 0)).insert(nullptr);
  EXPECT_EQ(Topology().CheckUpDownLinksAndAPorts(errors), 4);
  EXPECT_EQ(Topology().GetErrorText(), "Cannot calculate Up/Down links for the neighborhood: " +
                                           Id(0, 0) + ". One of its IB-Nodes is NULL");
  EXPECT_EQ(TakeOutput(), "\n" + EqualCounts("Neighborhood " + Id(0, 0), "spines", "downlinks", 1));
  EXPECT_EQ(Topology().GetIssuesCount(), 0U);
}

TEST_F(ValidationTest, AFailingGroupPassesOnItsWholeErrorText) {
  fabric.Switch("root").Switch("leaf").Cable("root", "leaf");
  RankFrom({"root"});
  ASSERT_EQ(Topology().CreateNeighborhoods(errors), 0);
  TestPeer::Spines(Group(0, 0)).insert(nullptr);
  ASSERT_EQ(Group(0, 0).CheckInternalAPorts(out), 4);
  EXPECT_EQ(Topology().GetErrorText(), "");
  EXPECT_EQ(Topology().CheckNeighborhoodsLinksAndAPorts(errors), 4);
  EXPECT_EQ(Topology().GetErrorText(),
            "Cannot check APorts internal links symmetry for the neighborhood: " + Id(0, 0) +
                ". One of its IB-Nodes is NULL"
                "Cannot calculate Up/Down links for the neighborhood: " +
                Id(0, 0) + ". One of its IB-Nodes is NULL");
}

// What fails in the later steps of one group fails in its first ones too, unless it goes wrong in
// between: the stream sees to that.
class InterferenceTest : public ValidationTest {
 protected:
  InterferenceTest() { AddTwoPairsWithAsymmetricAPorts(); }

  // Validates with `action` done behind the given number of written lines.
  int ValidateWithActionAfter(int lineCount, const std::function<void(FTTopology&)>& action) {
    FTTopology* target = nullptr;
    HookedStream stream([&](int flushes) {
      if (flushes == lineCount) action(*target);
    });
    topology = std::make_unique<FTTopology>(&fabric.Build(), &stream, mergePercent);
    target = topology.get();
    NodeSet roots = Nodes({"root0", "root1"});
    EXPECT_EQ(topology->FillRanksFromRoots(roots), 0);
    return topology->Validate(errors, message);
  }

  std::unique_ptr<FTTopology> topology;
};

TEST_F(InterferenceTest, AFailingAPortCheckIsAFailureOfTheTopology) {
  // Behind the empty line and the three link counts of the first group.
  EXPECT_EQ(ValidateWithActionAfter(4,
                                    [](FTTopology& checked) {
                                      FTNeighborhood& group = *checked.GetNeighborhoods()[0][0];
                                      TestPeer::Spines(group).insert(nullptr);
                                    }),
            4);
  EXPECT_EQ(message,
            "Cannot validate Fat-Tree topology. "
            "Cannot check APorts internal links symmetry for the neighborhood: " +
                std::to_string(topology->GetNeighborhoods()[0][0]->GetId()) +
                ". One of its IB-Nodes is NULL");
  EXPECT_EQ(topology->GetIssuesCount(), 0U);
}

TEST_F(InterferenceTest, AFailingFlidCheckHasAPrefixOfItsOwn) {
  // Behind the last line of the second group: five lines of each, the last of them about APorts.
  EXPECT_EQ(ValidateWithActionAfter(10,
                                    [](FTTopology& checked) {
                                      FTNeighborhood& group = *checked.GetNeighborhoods()[0][0];
                                      TestPeer::Neighborhoods(checked)[0][0] = nullptr;
                                      delete &group;
                                    }),
            4);
  EXPECT_EQ(message, "Cannot validate FLIDs distribution. NULL Neighborhood is found");
}

}  // namespace
}  // namespace fabscope
