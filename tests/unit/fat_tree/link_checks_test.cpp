#include <string>
#include <vector>

#include "fat_tree/status.h"
#include "support/stage_fixture.h"
#include "support/streams.h"

namespace fabscope::internal {
namespace {

// Groups are made by hand and the link counts of their switches laid down in the topology's memo,
// so that a check is fed with exactly the counts that a test is about.
class LinkChecksTest : public StageTest {
 protected:
  struct Counted {
    std::string name;
    UpDownLinks links;
  };

  // The group has number 3. Of the tree's two pairs of ranks the lower one is the last.
  FTNeighborhood& Group(std::uint64_t rank, const std::vector<Counted>& spines,
                        const std::vector<Counted>& lines) {
    for (const auto* switches : {&spines, &lines}) {
      for (const Counted& each : *switches) fabric.Switch(each.name);
    }
    TestPeer::Neighborhoods(Topology()).resize(2);
    group_ = std::make_unique<FTNeighborhood>(&Topology(), 3, rank);
    for (const Counted& each : spines) Join(TestPeer::Spines(*group_), each);
    for (const Counted& each : lines) Join(TestPeer::Lines(*group_), each);
    return *group_;
  }
  FTNeighborhood& Neighborhood(const std::vector<Counted>& spines,
                               const std::vector<Counted>& lines) {
    return Group(1, spines, lines);
  }
  FTNeighborhood& ConnectivityGroup(const std::vector<Counted>& spines,
                                    const std::vector<Counted>& lines) {
    return Group(0, spines, lines);
  }

  // `count` switches "a0", "a1", ... with so many links up.
  static std::vector<Counted> Alike(std::size_t count, std::int32_t up) {
    std::vector<Counted> switches(count, {"a", {up, 0}});
    for (std::size_t i = 0; i < count; ++i) switches[i].name += std::to_string(i);
    return switches;
  }

  // The report on the up-links of a neighborhood's lines.
  std::string LineUplinksReport(const std::vector<Counted>& lines) {
    FTNeighborhood& group = Neighborhood({}, lines);
    EXPECT_EQ(group.CheckSetLinks(group.GetLines(), 2, true, errors, out), StatusSuccess);
    return TakeOutput();
  }

 private:
  void Join(NodeSet& nodes, const Counted& each) {
    nodes.insert(fabric[each.name]);
    TestPeer::SwitchUpDownLinks(Topology()).Set(*fabric[each.name], each.links);
  }

  std::unique_ptr<FTNeighborhood> group_;
};

// --- The whole check.

TEST_F(LinkChecksTest, NeighborhoodBelowTheRootsIsCheckedForBlockingThenSpinesThenLines) {
  FTNeighborhood& group = Neighborhood({{"spine0", {4, 6}}, {"spine1", {4, 6}}},
                                       {{"line0", {2, 8}}, {"line1", {2, 8}}});
  EXPECT_EQ(group.CheckUpDownLinks(errors, out), StatusSuccess);
  EXPECT_EQ(TakeOutput(),
            "\n"
            "-W- Neighborhood 3: suspected blocking configuration  --  total number of spine's "
            "uplinks 8 is less then total number of internal links 12\n"
            "-I- Neighborhood 3: all spines have the same number of uplinks: 4\n"
            "-I- Neighborhood 3: all spines have the same number of downlinks: 6\n"
            "-I- Neighborhood 3: all lines have the same number of uplinks: 2\n"
            "-I- Neighborhood 3: all lines have the same number of downlinks: 8\n");
  EXPECT_TRUE(errors.empty());
  EXPECT_EQ(group.GetErrorText(), "");
}

TEST_F(LinkChecksTest, GroupOfRootsIsNotCheckedForBlockingNorForUplinksOfItsSpines) {
  FTNeighborhood& group =
      ConnectivityGroup({{"root0", {0, 9}}, {"root1", {5, 9}}}, {{"line", {2, 8}}});
  EXPECT_EQ(group.CheckUpDownLinks(errors, out), StatusSuccess);
  EXPECT_EQ(TakeOutput(),
            "\n"
            "-I- Connectivity group 3: all spines have the same number of downlinks: 9\n"
            "-I- Connectivity group 3: all lines have the same number of uplinks: 2\n"
            "-I- Connectivity group 3: all lines have the same number of downlinks: 8\n");
  EXPECT_EQ(group.GetTotalSpineUplinks(), 0U);
  EXPECT_EQ(group.GetTotalInternalLinks(), 0U);
  EXPECT_EQ(Topology().GetIssuesCount(), 0U);
}

TEST_F(LinkChecksTest, OnTheOnlyPairOfRanksTheGroupOfRootsIsANeighborhood) {
  FTNeighborhood& group = ConnectivityGroup({{"root", {0, 9}}}, {{"line", {2, 8}}});
  TestPeer::Neighborhoods(Topology()).resize(1);
  EXPECT_EQ(group.CheckUpDownLinks(errors, out), StatusSuccess);
  EXPECT_EQ(TakeOutput(),
            "\n"
            "-I- Neighborhood 3: all spines have the same number of downlinks: 9\n"
            "-I- Neighborhood 3: all lines have the same number of uplinks: 2\n"
            "-I- Neighborhood 3: all lines have the same number of downlinks: 8\n");
}

TEST_F(LinkChecksTest, SpinesWithOneMoreDownlinkBlockAndDiffer) {
  FTNeighborhood& group = Neighborhood({{"spine0", {4, 4}}, {"spine1", {4, 5}}}, {});
  EXPECT_EQ(group.CheckUpDownLinks(errors, out), StatusSuccess);
  EXPECT_EQ(
      TakeOutput(),
      "\n"
      "-W- Neighborhood 3: suspected blocking configuration  --  total number of spine's "
      "uplinks 8 is less then total number of internal links 9\n"
      "-I- Neighborhood 3: all spines have the same number of uplinks: 4\n"
      "-E- Neighborhood 3: spines with different number of downlinks (expected  5 downlinks)\n"
      "\t 4 downlinks: spine0 \n");
  EXPECT_EQ(Topology().GetIssuesCount(), 3U);
  EXPECT_TRUE(errors.empty());
}

TEST_F(LinkChecksTest, LinksOfARealTreeAreCountedOnTheRanksOfTheGroup) {
  AddThreeLevelTree(fabric, 2, 3, 2, 2, 4);
  RankFrom({"root0", "root1", "root2", "root3"});
  ASSERT_EQ(Topology().CreateNeighborhoods(errors), StatusSuccess);
  FTNeighborhood* roots = Topology().GetNeighborhoods()[0][0];
  EXPECT_EQ(roots->CheckUpDownLinks(errors, out), StatusSuccess);
  const std::string groupText = "-I- Connectivity group " + std::to_string(roots->GetId());
  EXPECT_EQ(TakeOutput(), "\n" + groupText + ": all spines have the same number of downlinks: 2\n" +
                              groupText + ": all lines have the same number of uplinks: 2\n" +
                              groupText + ": all lines have the same number of downlinks: 3\n");
  FTNeighborhood* pod = Topology().GetNeighborhoods()[1][0];
  EXPECT_EQ(pod->CheckUpDownLinks(errors, out), StatusSuccess);
  const std::string podText = " Neighborhood " + std::to_string(pod->GetId());
  EXPECT_EQ(TakeOutput(),
            "\n-W-" + podText +
                ": suspected blocking configuration  --  total number of spine's uplinks 4 is less "
                "then total number of internal links 6\n"
                "-I-" +
                podText +
                ": all spines have the same number of uplinks: 2\n"
                "-I-" +
                podText +
                ": all spines have the same number of downlinks: 3\n"
                "-I-" +
                podText +
                ": all lines have the same number of uplinks: 2\n"
                "-I-" +
                podText + ": all lines have the same number of downlinks: 4\n");
}

TEST_F(LinkChecksTest, RunTwiceTheTotalsAreTwiceAsLarge) {
  FTNeighborhood& group = Neighborhood({{"spine0", {4, 5}}, {"spine1", {3, 2}}}, {});
  group.CheckUpDownLinks(errors, out);
  EXPECT_EQ(group.GetTotalSpineUplinks(), 7U);
  EXPECT_EQ(group.GetTotalInternalLinks(), 7U);
  group.CheckUpDownLinks(errors, out);
  EXPECT_EQ(group.GetTotalSpineUplinks(), 14U);
  EXPECT_EQ(group.GetTotalInternalLinks(), 14U);
}

// --- Blocking.

TEST_F(LinkChecksTest, FewerUplinksThanInternalLinksMayBlock) {
  FTNeighborhood& group = Neighborhood({{"spine0", {9, 5}}, {"spine1", {1, 7}}}, {});
  EXPECT_EQ(group.CheckBlockingConfiguration(errors, out), StatusSuccess);
  EXPECT_EQ(TakeOutput(),
            "-W- Neighborhood 3: suspected blocking configuration  --  total number of spine's "
            "uplinks 10 is less then total number of internal links 12\n");
  EXPECT_EQ(Topology().GetIssuesCount(), 1U);
  EXPECT_TRUE(errors.empty());
}

TEST_F(LinkChecksTest, EqualTotalsDoNotBlock) {
  FTNeighborhood& group = Neighborhood({{"spine0", {4, 5}}, {"spine1", {5, 4}}}, {});
  EXPECT_EQ(group.CheckBlockingConfiguration(errors, out), StatusSuccess);
  EXPECT_EQ(TakeOutput(), "");
  EXPECT_EQ(Topology().GetIssuesCount(), 0U);
}

TEST_F(LinkChecksTest, OneUplinkMoreThanInternalLinksDoesNotBlock) {
  FTNeighborhood& group = Neighborhood({{"spine", {5, 4}}}, {{"line", {1, 9}}});
  EXPECT_EQ(group.CheckBlockingConfiguration(errors, out), StatusSuccess);
  EXPECT_EQ(TakeOutput(), "");
}

TEST_F(LinkChecksTest, BlockingConnectivityGroupIsCalledOne) {
  FTNeighborhood& group = ConnectivityGroup({{"spine", {0, 1}}}, {});
  EXPECT_EQ(group.CheckBlockingConfiguration(errors, out), StatusSuccess);
  EXPECT_EQ(TakeOutput(),
            "-W- Connectivity group 3: suspected blocking configuration  --  total number of "
            "spine's uplinks 0 is less then total number of internal links 1\n");
}

TEST_F(LinkChecksTest, TotalsAreComparedAsUnsignedNumbers) {
  FTNeighborhood& group = Neighborhood({{"spine", {-1, 4}}}, {});
  EXPECT_EQ(group.CheckBlockingConfiguration(errors, out), StatusSuccess);
  EXPECT_EQ(TakeOutput(), "");
  EXPECT_EQ(group.GetTotalSpineUplinks(), 0xffffffffffffffffU);
}

TEST_F(LinkChecksTest, CountsAreSignExtendedBeforeTheyAreSummedUp) {
  FTNeighborhood& group = Neighborhood({{"spine0", {-3, -1}}, {"spine1", {1, 5}}}, {});
  EXPECT_EQ(group.CheckBlockingConfiguration(errors, out), StatusSuccess);
  EXPECT_EQ(group.GetTotalSpineUplinks(), 0xfffffffffffffffeU);
  EXPECT_EQ(group.GetTotalInternalLinks(), 4U);
}

// --- One set.

TEST_F(LinkChecksTest, EmptySetSaysNothing) { EXPECT_EQ(LineUplinksReport({}), ""); }

TEST_F(LinkChecksTest, SetThatAgreesIsInformation) {
  EXPECT_EQ(LineUplinksReport(Alike(3, 16)),
            "-I- Neighborhood 3: all lines have the same number of uplinks: 16\n");
  EXPECT_EQ(Topology().GetIssuesCount(), 0U);
}

TEST_F(LinkChecksTest, GreatestCountIsExpectedEvenWhenMostHaveAnother) {
  EXPECT_EQ(LineUplinksReport({{"a", {3, 0}}, {"b", {4, 0}}, {"c", {3, 0}}}),
            "-E- Neighborhood 3: lines with different number of uplinks (expected  4 uplinks)\n"
            "\t 3 uplinks: a c \n");
}

TEST_F(LinkChecksTest, OtherCountsAreListedFromTheGreatestAndEveryCountIsAnIssue) {
  EXPECT_EQ(LineUplinksReport({{"a", {2, 0}}, {"b", {4, 0}}, {"c", {3, 0}}, {"d", {2, 0}}}),
            "-E- Neighborhood 3: lines with different number of uplinks (expected  4 uplinks)\n"
            "\t 3 uplinks: c \n"
            "\t 2 uplinks: a d \n");
  EXPECT_EQ(Topology().GetIssuesCount(), 3U);
  EXPECT_TRUE(errors.empty());
}

TEST_F(LinkChecksTest, SwitchesAreListedInModelOrderAndNotByGuid) {
  std::uint64_t guid = 9;
  for (const char* name : {"first", "second", "third", "full"}) {
    NodeSpec spec;
    spec.name = name;
    spec.guid = guid--;
    spec.numPorts = 4;
    fabric.Node(spec);
  }
  FTNeighborhood group(&Topology(), 3, 1);
  for (const char* name : {"first", "second", "third", "full"}) {
    TestPeer::SwitchUpDownLinks(Topology()).Set(*fabric[name], {0, 0});
  }
  TestPeer::SwitchUpDownLinks(Topology()).Set(*fabric["full"], {1, 0});
  group.CheckSetLinks(Nodes({"third", "full", "first", "second"}), 2, true, errors, out);
  EXPECT_EQ(TakeOutput(),
            "-E- Connectivity group 3: lines with different number of uplinks (expected  1 "
            "uplinks)\n"
            "\t 0 uplinks: first second third \n");
}

TEST_F(LinkChecksTest, CountIsOfTheLinksAskedFor) {
  FTNeighborhood& group = Neighborhood({{"a", {1, 7}}, {"b", {2, 7}}}, {});
  group.CheckSetLinks(group.GetSpines(), 1, false, errors, out);
  EXPECT_EQ(TakeOutput(), "-I- Neighborhood 3: all spines have the same number of downlinks: 7\n");
  group.CheckSetLinks(group.GetSpines(), 1, true, errors, out);
  EXPECT_EQ(TakeOutput(),
            "-E- Neighborhood 3: spines with different number of uplinks (expected  2 uplinks)\n"
            "\t 1 uplinks: a \n");
}

TEST_F(LinkChecksTest, SetOnTheRankOfTheSpinesIsCalledSpinesAndAnyOtherLines) {
  FTNeighborhood& group = Neighborhood({}, {});
  const FTNeighborhood::CountMap counts{{5, {}}};
  group.SetLinksReport(out, counts, 1, true);
  group.SetLinksReport(out, counts, 0, true);
  group.SetLinksReport(out, counts, 2, false);
  EXPECT_EQ(TakeOutput(),
            "-I- Neighborhood 3: all spines have the same number of uplinks: 5\n"
            "-I- Neighborhood 3: all lines have the same number of uplinks: 5\n"
            "-I- Neighborhood 3: all lines have the same number of downlinks: 5\n");
}

TEST_F(LinkChecksTest, GuidsAreShownInTheListingWhenAskedFor) {
  showGuid = 2;
  EXPECT_EQ(LineUplinksReport({{"a", {3, 0}}, {"b", {40, 0}}, {"c", {3, 0}}}),
            "-E- Neighborhood 3: lines with different number of uplinks (expected  40 uplinks)\n"
            "\t 3 uplinks: 0x0000000000000001 -- a 0x0000000000000003 -- c \n");
}

// --- Warning or error.

TEST_F(LinkChecksTest, OnlyDownlinksOfTheLeavesAreAWarning) {
  FTNeighborhood& neighborhood = Neighborhood({}, {});
  EXPECT_TRUE(neighborhood.IsWarning(2, false));
  EXPECT_FALSE(neighborhood.IsWarning(2, true));
  EXPECT_FALSE(neighborhood.IsWarning(1, false));
  EXPECT_FALSE(neighborhood.IsWarning(1, true));
  EXPECT_FALSE(neighborhood.IsWarning(3, false));
  FTNeighborhood connectivityGroup(&Topology(), 4, 0);
  EXPECT_FALSE(connectivityGroup.IsWarning(1, false));
}

TEST_F(LinkChecksTest, LeavesWithDifferentNumbersOfHostsAreAWarning) {
  FTNeighborhood& group = Neighborhood({}, {{"a", {0, 16}}, {"b", {0, 15}}});
  group.CheckSetLinks(group.GetLines(), 2, false, errors, out);
  EXPECT_EQ(
      TakeOutput(),
      "-W- Neighborhood 3: lines with different number of downlinks (expected  16 downlinks)\n"
      "\t 15 downlinks: b \n");
  EXPECT_EQ(Topology().GetIssuesCount(), 2U);
}

TEST_F(LinkChecksTest, SpinesWithDifferentNumbersOfDownlinksAreAnError) {
  FTNeighborhood& group = Neighborhood({{"a", {0, 16}}, {"b", {0, 15}}}, {});
  group.CheckSetLinks(group.GetSpines(), 1, false, errors, out);
  EXPECT_EQ(TakeOutput(),
            "-E- Neighborhood 3: spines with different number of downlinks (expected  16 downlinks)"
            "\n\t 15 downlinks: b \n");
}

TEST_F(LinkChecksTest, LinesOfAConnectivityGroupWithDifferentNumbersOfDownlinksAreAnError) {
  FTNeighborhood& group = ConnectivityGroup({}, {{"a", {0, 16}}, {"b", {0, 15}}});
  group.CheckSetLinks(group.GetLines(), 1, false, errors, out);
  EXPECT_EQ(TakeOutput(),
            "-E- Connectivity group 3: lines with different number of downlinks (expected  16 "
            "downlinks)\n"
            "\t 15 downlinks: b \n");
}

// --- The listing of those that deviate.

TEST_F(LinkChecksTest, SevenSwitchesWithOneDeviatingCountStayOnOneLine) {
  std::vector<Counted> lines = Alike(7, 3);
  lines.push_back({"full", {4, 0}});
  EXPECT_EQ(LineUplinksReport(lines),
            "-E- Neighborhood 3: lines with different number of uplinks (expected  4 uplinks)\n"
            "\t 3 uplinks: a0 a1 a2 a3 a4 a5 a6 \n");
}

TEST_F(LinkChecksTest, EightSwitchesWithOneDeviatingCountLeaveALineOfTwoTabs) {
  std::vector<Counted> lines = Alike(8, 3);
  lines.push_back({"full", {4, 0}});
  lines.push_back({"least", {2, 0}});
  EXPECT_EQ(LineUplinksReport(lines),
            "-E- Neighborhood 3: lines with different number of uplinks (expected  4 uplinks)\n"
            "\t 3 uplinks: a0 a1 a2 a3 a4 a5 a6 a7 \n"
            "\t\t\n"
            "\t 2 uplinks: least \n");
}

TEST_F(LinkChecksTest, NineSwitchesWithOneDeviatingCountBreakTheLineAfterEight) {
  std::vector<Counted> lines = Alike(9, 3);
  lines.push_back({"full", {4, 0}});
  EXPECT_EQ(LineUplinksReport(lines),
            "-E- Neighborhood 3: lines with different number of uplinks (expected  4 uplinks)\n"
            "\t 3 uplinks: a0 a1 a2 a3 a4 a5 a6 a7 \n"
            "\t\ta8 \n");
}

TEST_F(LinkChecksTest, EveryFurtherLineHoldsEightSwitchesToo) {
  std::vector<Counted> lines = Alike(16, 3);
  lines.push_back({"full", {4, 0}});
  EXPECT_EQ(LineUplinksReport(lines),
            "-E- Neighborhood 3: lines with different number of uplinks (expected  4 uplinks)\n"
            "\t 3 uplinks: a0 a1 a2 a3 a4 a5 a6 a7 \n"
            "\t\ta8 a9 a10 a11 a12 a13 a14 a15 \n"
            "\t\t\n");
}

TEST_F(LinkChecksTest, EveryDeviatingCountStartsItsOwnLine) {
  std::vector<Counted> lines = Alike(7, 3);
  lines.push_back({"full", {4, 0}});
  lines.push_back({"b0", {2, 0}});
  lines.push_back({"b1", {2, 0}});
  EXPECT_EQ(LineUplinksReport(lines),
            "-E- Neighborhood 3: lines with different number of uplinks (expected  4 uplinks)\n"
            "\t 3 uplinks: a0 a1 a2 a3 a4 a5 a6 \n"
            "\t 2 uplinks: b0 b1 \n");
}

TEST_F(LinkChecksTest, UnknownGuidIsSkippedAndTakesNoPlaceOnTheLine) {
  FTNeighborhood& group = Neighborhood({}, Alike(9, 3));
  group.ReportToStream(out, {{3, {1, 2, 77, 3, 4, 5, 6, 7, 8, 9}}, {4, {88}}}, 7, "uplinks");
  EXPECT_EQ(TakeOutput(),
            "\n\t 3 uplinks: a0 a1 a2 a3 a4 a5 a6 a7 \n"
            "\t\ta8 ");
}

TEST_F(LinkChecksTest, CountWhoseSwitchesAreAllUnknownStillHasItsLine) {
  FTNeighborhood& group = Neighborhood({}, {});
  group.ReportToStream(out, {{3, {77}}, {4, {88}}}, 7, "uplinks");
  EXPECT_EQ(TakeOutput(), "\n\t 3 uplinks: ");
}

TEST_F(LinkChecksTest, LineHoldsOneMoreThanTheGivenNumber) {
  FTNeighborhood& group = Neighborhood({}, Alike(4, 3));
  group.ReportToStream(out, {{3, {1, 2, 3, 4}}, {4, {}}}, 1, "some links");
  EXPECT_EQ(TakeOutput(), "\n\t 3 some links: a0 a1 \n\t\ta2 a3 \n\t\t");
  group.ReportToStream(out, {{3, {1, 2}}, {4, {}}}, 0, "downlinks");
  EXPECT_EQ(TakeOutput(), "\n\t 3 downlinks: a0 \n\t\ta1 \n\t\t");
}

TEST_F(LinkChecksTest, NothingIsListedWhenNoCountDeviates) {
  FTNeighborhood& group = Neighborhood({}, Alike(1, 3));
  group.ReportToStream(out, {{3, {1}}}, 7, "uplinks");
  group.ReportToStream(out, {}, 7, "uplinks");
  EXPECT_EQ(TakeOutput(), "");
}

// --- Null switches.

TEST_F(LinkChecksTest, NullSpineEndsTheCheckAtTheBlockingTest) {
  FTNeighborhood& group = Neighborhood({{"spine", {1, 9}}}, {{"line", {1, 1}}});
  TestPeer::Spines(group).insert(nullptr);
  EXPECT_EQ(group.CheckUpDownLinks(errors, out), StatusLookupFailed);
  EXPECT_EQ(TakeOutput(), "\n");
  EXPECT_EQ(group.GetErrorText(),
            "Cannot calculate Up/Down links for the neighborhood: 3. One of its IB-Nodes is NULL");
  EXPECT_EQ(Topology().GetIssuesCount(), 0U);
}

TEST_F(LinkChecksTest, NullRootEndsTheCheckAtTheDownlinksOfTheSpines) {
  FTNeighborhood& group = ConnectivityGroup({{"root", {0, 9}}}, {{"line", {1, 1}}});
  TestPeer::Spines(group).insert(nullptr);
  EXPECT_EQ(group.CheckUpDownLinks(errors, out), StatusLookupFailed);
  EXPECT_EQ(TakeOutput(), "\n");
  EXPECT_EQ(
      group.GetErrorText(),
      "Cannot calculate Up/Down links for the connectivity group: 3. One of its IB-Nodes is NULL");
}

TEST_F(LinkChecksTest, NullLineEndsTheCheckBehindTheSpines) {
  FTNeighborhood& group = Neighborhood({{"spine", {9, 1}}}, {{"line", {1, 1}}});
  TestPeer::Lines(group).insert(nullptr);
  EXPECT_EQ(group.CheckUpDownLinks(errors, out), StatusLookupFailed);
  EXPECT_EQ(TakeOutput(),
            "\n"
            "-I- Neighborhood 3: all spines have the same number of uplinks: 9\n"
            "-I- Neighborhood 3: all spines have the same number of downlinks: 1\n");
  // Once only: the second check of the lines was not run.
  EXPECT_EQ(group.GetErrorText(),
            "Cannot calculate Up/Down links for the neighborhood: 3. One of its IB-Nodes is NULL");
}

TEST_F(LinkChecksTest, NullSpineBehindTheBlockingTestEndsTheCheckAtTheUplinks) {
  FTNeighborhood& group = Neighborhood({{"spine", {1, 9}}}, {{"line", {1, 1}}});
  HookedStream stream([&](int flushes) {
    if (flushes == 2) TestPeer::Spines(group).insert(nullptr);
  });
  EXPECT_EQ(group.CheckUpDownLinks(errors, stream), StatusLookupFailed);
  EXPECT_EQ(stream.Text(),
            "\n"
            "-W- Neighborhood 3: suspected blocking configuration  --  total number of spine's "
            "uplinks 1 is less then total number of internal links 9\n");
  // Once only: the downlinks of the spines were not checked.
  EXPECT_EQ(group.GetErrorText(),
            "Cannot calculate Up/Down links for the neighborhood: 3. One of its IB-Nodes is NULL");
}

TEST_F(LinkChecksTest, NullSpineBehindTheUplinksEndsTheCheckAtTheDownlinks) {
  FTNeighborhood& group = Neighborhood({{"spine", {9, 1}}}, {{"line", {1, 1}}});
  HookedStream stream([&](int flushes) {
    if (flushes == 2) TestPeer::Spines(group).insert(nullptr);
  });
  EXPECT_EQ(group.CheckUpDownLinks(errors, stream), StatusLookupFailed);
  EXPECT_EQ(stream.Text(),
            "\n"
            "-I- Neighborhood 3: all spines have the same number of uplinks: 9\n");
}

TEST_F(LinkChecksTest, NullLineBehindTheUplinksIsTheResultOfTheLastCheck) {
  FTNeighborhood& group = ConnectivityGroup({{"root", {0, 9}}}, {{"line", {1, 1}}});
  HookedStream stream([&](int flushes) {
    if (flushes == 3) TestPeer::Lines(group).insert(nullptr);
  });
  EXPECT_EQ(group.CheckUpDownLinks(errors, stream), StatusLookupFailed);
  EXPECT_EQ(stream.Text(),
            "\n"
            "-I- Connectivity group 3: all spines have the same number of downlinks: 9\n"
            "-I- Connectivity group 3: all lines have the same number of uplinks: 1\n");
  EXPECT_EQ(
      group.GetErrorText(),
      "Cannot calculate Up/Down links for the connectivity group: 3. One of its IB-Nodes is NULL");
}

}  // namespace
}  // namespace fabscope::internal
