#include <gmock/gmock.h>
#include <string>
#include <vector>

#include "fat_tree/containers/pairs_container.h"
#include "fat_tree/link_errors.h"
#include "fat_tree/neighborhood.h"
#include "support/neighborhood_fixture.h"

namespace fabscope::internal {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class MissingLinksTest : public NeighborhoodTest {
 protected:
  // The report on a group as its rule reads: each unordered pair is looked at once.
  std::vector<std::string> MissingLinks(std::uint64_t id, const NodeSet& spines,
                                        const NodeSet& lines,
                                        const PairsContainer<const IBNode*>& connectedPairs) {
    std::vector<std::string> texts;
    PairsContainer<const IBNode*> visited;
    for (const IBNode* spine : spines) {
      if (spine == nullptr) return texts;
      for (const IBNode* line : lines) {
        if (line == nullptr) return texts;
        if (line == spine || visited.Contains(spine, line)) continue;
        visited.Add(spine, line);
        if (connectedPairs.Contains(spine, line)) continue;
        texts.push_back("Neighborhood " + std::to_string(id) + ": missing link between switches (" +
                        std::string(spine->name) + ") and (" + std::string(line->name) + ")");
      }
    }
    return texts;
  }
};

TEST_F(MissingLinksTest, LineCabledToOneOfTwoSpinesMissesOneLink) {
  AddRootsAndLeaves(2, {{0, 1}, {1}, {0, 1}});
  ASSERT_EQ(GroupFromRoots(2), 0);
  ASSERT_THAT(ErrorLines(), ElementsAre("Neighborhood " + Id(0, 0) +
                                        ": missing link between switches (root0) and (leaf1)"));
  ASSERT_NE(dynamic_cast<FTMissingLinkError*>(errors[0]), nullptr);
  EXPECT_EQ(errors[0]->GetLevel(), EN_FABRIC_ERR_ERROR);
}

TEST_F(MissingLinksTest, OneMissingLinkAmongFarMoreLinesThanSpinesIsFound) {
  for (const char* root : {"root0", "root1"}) fabric.Switch(root, 200);
  AddSwitches("leaf", 130);
  Cables cables(130, {0, 1});
  cables[70] = {0};
  AddCables("leaf", "root", cables);
  ASSERT_EQ(GroupFromRoots(2), 0);
  EXPECT_THAT(ErrorLines(), ElementsAre("Neighborhood " + Id(0, 0) +
                                        ": missing link between switches (root1) and (leaf70)"));
}

TEST_F(MissingLinksTest, GroupThatIsFullyCabledMissesNothing) {
  AddTwoLevelTree(fabric, 3, 4, 2);
  ASSERT_EQ(GroupFromRoots(3), 0);
  ASSERT_EQ(Topology().GetNeighborhoods()[0].size(), 1U);
  EXPECT_THAT(ErrorLines(), IsEmpty());
}

TEST_F(MissingLinksTest, MissingLinksAreToldSpineBySpine) {
  AddRootsAndLeaves(3, {{0, 2}, {1, 2}, {0, 2}, {0, 1, 2}});
  ASSERT_EQ(GroupFromRoots(3), 0);
  const std::string start = "Neighborhood " + Id(0, 0) + ": missing link between switches ";
  EXPECT_THAT(ErrorLines(),
              ElementsAre(start + "(root0) and (leaf1)", start + "(root1) and (leaf0)",
                          start + "(root1) and (leaf2)"));
}

TEST_F(MissingLinksTest, SpineIsNamedFirstWhereverItStandsInTheModel) {
  AddSwitches("leaf", 2);
  AddSwitches("root", 2);
  AddCables("leaf", "root", {{0, 1}, {0}});
  ASSERT_EQ(GroupFromRoots(2), 0);
  EXPECT_THAT(ErrorLines(), ElementsAre("Neighborhood " + Id(0, 0) +
                                        ": missing link between switches (root1) and (leaf1)"));
}

TEST_F(MissingLinksTest, MissingLinkAboveTheLastRankIsAConnectivityGroups) {
  AddRootsAndMids(2, {{0, 1}, {1}});
  ASSERT_EQ(GroupFromRoots(2), 0);
  EXPECT_THAT(ErrorLines(), ElementsAre("Connectivity group " + Id(0, 0) +
                                        ": missing link between switches (root0) and (mid1)"));
}

TEST_F(MissingLinksTest, SpineWithoutLinesAndLineWithoutSpinesMissNothing) {
  AddSwitches("root", 2);
  FTNeighborhood spinesOnly(&Topology(), 1, 0);
  spinesOnly.AddNodes({fabric["root0"], fabric["root1"]}, true);
  EXPECT_EQ(spinesOnly.MissingLinksReport(errors, {}), 0);
  FTNeighborhood linesOnly(&Topology(), 1, 0);
  linesOnly.AddNodes({fabric["root0"], fabric["root1"]}, false);
  EXPECT_EQ(linesOnly.MissingLinksReport(errors, {}), 0);
  EXPECT_THAT(ErrorLines(), IsEmpty());
}

TEST_F(MissingLinksTest, SwitchesThatAreSpineAndLineAreToldOnceAPairAndNeverAlone) {
  AddSwitches("root", 3);
  TestPeer::Neighborhoods(Topology()).resize(1);
  FTNeighborhood group(&Topology(), 7, 0);
  group.AddNodes({fabric["root0"], fabric["root1"]}, true);
  group.AddNodes({fabric["root0"], fabric["root1"], fabric["root2"]}, false);
  EXPECT_EQ(group.MissingLinksReport(errors, {}), 0);
  EXPECT_THAT(ErrorLines(),
              ElementsAre("Neighborhood 7: missing link between switches (root0) and (root1)",
                          "Neighborhood 7: missing link between switches (root0) and (root2)",
                          "Neighborhood 7: missing link between switches (root1) and (root2)"));
}

TEST_F(MissingLinksTest, PairMetFromItsLaterSwitchFirstIsToldFromThere) {
  // Only root1 is a spine: the pair is not met the other way round.
  AddSwitches("root", 2);
  TestPeer::Neighborhoods(Topology()).resize(1);
  FTNeighborhood group(&Topology(), 7, 0);
  group.AddNodes({fabric["root1"]}, true);
  group.AddNodes({fabric["root0"], fabric["root1"]}, false);
  EXPECT_EQ(group.MissingLinksReport(errors, {}), 0);
  EXPECT_THAT(ErrorLines(),
              ElementsAre("Neighborhood 7: missing link between switches (root1) and (root0)"));
}

TEST_F(MissingLinksTest, AnyFourSwitchesOnAnySidesAreToldAsIfAllVisitedPairsWereKept) {
  AddSwitches("root", 4);
  TestPeer::Neighborhoods(Topology()).resize(1);
  std::vector<const IBNode*> nodes;
  for (int i = 0; i < 4; ++i) nodes.push_back(fabric["root" + std::to_string(i)]);
  const auto chosen = [&](unsigned mask) {
    NodeSet set;
    for (unsigned i = 0; i < 4; ++i) {
      if ((mask >> i & 1) != 0) set.insert(nodes[i]);
    }
    return set;
  };

  for (unsigned connected = 0; connected < 64; ++connected) {
    PairsContainer<const IBNode*> pairs;
    NodePairs samePairs(nodes.size());
    for (unsigned i = 0, bit = 0; i < 4; ++i) {
      for (unsigned j = 0; j < i; ++j, ++bit) {
        if ((connected >> bit & 1) == 0) continue;
        pairs.Add(nodes[i], nodes[j]);
        samePairs.Add(*nodes[i], *nodes[j]);
      }
    }
    for (unsigned spines = 0; spines < 16; ++spines) {
      for (unsigned lines = 0; lines < 16; ++lines) {
        FTNeighborhood group(&Topology(), 7, 0);
        TestPeer::Spines(group) = chosen(spines);
        TestPeer::Lines(group) = chosen(lines);
        ASSERT_EQ(group.MissingLinksReport(errors, samePairs), 0);
        ASSERT_EQ(ErrorLines(), MissingLinks(7, group.GetSpines(), group.GetLines(), pairs))
            << "connected " << connected << " spines " << spines << " lines " << lines;
        for (FabricErrGeneral* error : errors) delete error;
        errors.clear();
      }
    }
  }
}

TEST_F(MissingLinksTest, NullSpineOrLineEndsTheReportQuietly) {
  AddSwitches("root", 2);
  FTNeighborhood nullSpine(&Topology(), 7, 0);
  nullSpine.AddNodes({nullptr, fabric["root0"]}, true);
  nullSpine.AddNodes({fabric["root1"]}, false);
  EXPECT_EQ(nullSpine.MissingLinksReport(errors, {}), 0);
  FTNeighborhood nullLine(&Topology(), 7, 0);
  nullLine.AddNodes({fabric["root0"]}, true);
  nullLine.AddNodes({nullptr, fabric["root1"]}, false);
  EXPECT_EQ(nullLine.MissingLinksReport(errors, {}), 0);
  EXPECT_THAT(ErrorLines(), IsEmpty());
  EXPECT_EQ(nullSpine.GetErrorText() + nullLine.GetErrorText(), "");
}

}  // namespace
}  // namespace fabscope::internal
