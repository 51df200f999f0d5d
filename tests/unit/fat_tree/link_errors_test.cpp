#include "fat_tree/link_errors.h"

#include <memory>

#include "fat_tree/containers/pairs_container.h"
#include "support/stage_fixture.h"

namespace fabscope::internal {
namespace {

class LinkErrorsTest : public StageTest {
 protected:
  LinkErrorsTest() {
    fabric.Switch("up").Switch("low");
    issue = {fabric["up"], 7, 1, fabric["low"], 255, 2};
  }

  std::string Missing(std::uint64_t id, bool isNeighborhood) {
    return FTMissingLinkError(id, issue, isNeighborhood).GetErrorLine();
  }
  std::string Invalid(std::uint64_t id1, std::uint64_t id2, bool isNeighborhood) {
    return FTInvalidLinkError(id1, id2, issue, isNeighborhood).GetErrorLine();
  }
  EnFabricErrLevel_t LevelBetweenRanks(std::uint64_t rank1, std::uint64_t rank2) {
    issue.rank1 = rank1;
    issue.rank2 = rank2;
    return FTInvalidLinkError(1, 2, issue, true).GetLevel();
  }

  FTLinkIssue issue;
};

TEST_F(LinkErrorsTest, MissingLinkNamesTheGroupAndBothSwitchesButNoPorts) {
  EXPECT_EQ(Missing(3, true), "Neighborhood 3: missing link between switches (up) and (low)");
  EXPECT_EQ(Missing(3, false),
            "Connectivity group 3: missing link between switches (up) and (low)");
}

TEST_F(LinkErrorsTest, InvalidLinkBetweenNeighborhoodsNamesBothSo) {
  EXPECT_EQ(Invalid(1, 2, true),
            "Invalid link between neighborhood 1 (up port: 7) and neighborhood 2 (low port: 255)");
}

TEST_F(LinkErrorsTest, InvalidLinkBetweenConnectivityGroupsCallsTheSecondOnlyGroup) {
  EXPECT_EQ(Invalid(2, 1, false),
            "Invalid link between connectivity group 2 (up port: 7) and group 1 (low port: 255)");
}

TEST_F(LinkErrorsTest, InvalidLinkInsideOneGroupHasABlankBeforeTheColon) {
  EXPECT_EQ(Invalid(5, 5, true),
            "Neighborhood 5 : invalid link between switches (up port: 7) and (low port: 255)");
  EXPECT_EQ(
      Invalid(5, 5, false),
      "Connectivity group 5 : invalid link between switches (up port: 7) and (low port: 255)");
}

TEST_F(LinkErrorsTest, GroupIdsUseAll64Bits) {
  EXPECT_EQ(Missing(18446744073709551615U, true),
            "Neighborhood 18446744073709551615: missing link between switches (up) and (low)");
  // Equal in their low halves only: two groups.
  EXPECT_EQ(Invalid(4294967297U, 1, true),
            "Invalid link between neighborhood 4294967297 (up port: 7) and neighborhood 1 "
            "(low port: 255)");
}

TEST_F(LinkErrorsTest, SwitchesAreNamedByTheirNodeRecord) {
  FTMissingLinkError missing(3, issue, true, 2);
  FTInvalidLinkError invalid(5, 5, issue, true, 2);
  EXPECT_EQ(missing.GetErrorLine(),
            "Neighborhood 3: missing link between switches (0x0000000000000001 -- up) and "
            "(0x0000000000000002 -- low)");
  EXPECT_EQ(invalid.GetErrorLine(),
            "Neighborhood 5 : invalid link between switches (0x0000000000000001 -- up port: 7) "
            "and (0x0000000000000002 -- low port: 255)");
}

TEST_F(LinkErrorsTest, AnInvalidLinkIsMilderOnlyBetweenTwoRoots) {
  EXPECT_EQ(LevelBetweenRanks(0, 0), 2);
  EXPECT_EQ(LevelBetweenRanks(0, 1), 3);
  EXPECT_EQ(LevelBetweenRanks(1, 0), 3);
  EXPECT_EQ(LevelBetweenRanks(1, 1), 3);
  // Zero in their low halves only: no roots.
  EXPECT_EQ(LevelBetweenRanks(std::uint64_t{1} << 32, 0), 3);
  EXPECT_EQ(LevelBetweenRanks(0, std::uint64_t{1} << 32), 3);
}

TEST_F(LinkErrorsTest, AnInvalidLinkBetweenTwoRootsOfOneGroupIsMilderToo) {
  issue.rank1 = 0;
  issue.rank2 = 0;
  EXPECT_EQ(FTInvalidLinkError(5, 5, issue, false).GetLevel(), 2);
}

TEST_F(LinkErrorsTest, AMissingLinkIsAnErrorWhateverItsRanks) {
  EXPECT_EQ(FTMissingLinkError(1, issue, true).GetLevel(), 3);
  issue.rank1 = 0;
  issue.rank2 = 0;
  EXPECT_EQ(FTMissingLinkError(1, issue, true).GetLevel(), 3);
}

TEST_F(LinkErrorsTest, CsvLineOfAMissingLink) {
  EXPECT_EQ(FTMissingLinkError(3, issue, true).GetCSVErrorLine(),
            "CLUSTER,0x0,0x0,0x0,MISSING_LINK,"
            "\"Neighborhood 3: missing link between switches (up) and (low)\"");
}

TEST_F(LinkErrorsTest, CsvLineOfAnInvalidLink) {
  EXPECT_EQ(FTInvalidLinkError(5, 5, issue, true).GetCSVErrorLine(),
            "CLUSTER,0x0,0x0,0x0,INVALID_LINK,"
            "\"Neighborhood 5 : invalid link between switches (up port: 7) and "
            "(low port: 255)\"");
}

TEST_F(LinkErrorsTest, CsvLineStaysOneLineOfSixFieldsWhateverTheNames) {
  TestFabric odd;
  odd.Switch("a,\"b\"").Switch("c\nd");
  issue.node1 = odd["a,\"b\""];
  issue.node2 = odd["c\nd"];
  FTMissingLinkError error(3, issue, true);
  EXPECT_EQ(error.GetCSVErrorLine(),
            "CLUSTER,0x0,0x0,0x0,MISSING_LINK,"
            "\"Neighborhood 3: missing link between switches (a,\"\"b\"\") and (c d)\"");
  EXPECT_EQ(error.GetErrorLine(),
            "Neighborhood 3: missing link between switches (a,\"b\") and (c\nd)");
}

TEST_F(LinkErrorsTest, TheToolMayChangeLevelAndCsvOnly) {
  const std::unique_ptr<FabricErrGeneral> error =
      std::make_unique<FTMissingLinkError>(1, issue, true);
  EXPECT_FALSE(error->GetDumpCSVOnly());
  error->SetDumpCSVOnly(true);
  EXPECT_TRUE(error->GetDumpCSVOnly());
  error->SetLevel(EN_FABRIC_ERR_WARNING);
  EXPECT_EQ(error->GetLevel(), 2);
  error->SetLevel(EN_FABRIC_ERR_ERROR);
  EXPECT_EQ(error->GetLevel(), 3);
}

// A record that sets nothing, to see what the base starts from.
class PlainError : public FabricErrGeneral {
 public:
  std::string GetCSVErrorLine() override { return scope + ',' + errType; }
  std::string GetErrorLine() override { return description; }
};

TEST_F(LinkErrorsTest, ARecordStartsUnknownAndAsAnErrorForAllReports) {
  PlainError error;
  EXPECT_EQ(error.GetCSVErrorLine(), "UNKNOWN,UNKNOWN");
  EXPECT_EQ(error.GetErrorLine(), "UNKNOWN");
  EXPECT_EQ(error.GetLevel(), 3);
  EXPECT_FALSE(error.GetDumpCSVOnly());
}

class PairsContainerTest : public LinkErrorsTest {
 protected:
  PairsContainer<int> pairs;
};

TEST_F(PairsContainerTest, IsEmptyAtFirst) {
  EXPECT_EQ(pairs.Size(), 0U);
  EXPECT_FALSE(pairs.Contains(1, 2));
}

TEST_F(PairsContainerTest, BothOrdersAreOneEntry) {
  pairs.Add(1, 2);
  EXPECT_EQ(pairs.Size(), 1U);
  pairs.Add(2, 1);
  EXPECT_EQ(pairs.Size(), 1U);
  EXPECT_TRUE(pairs.Contains(1, 2));
  EXPECT_TRUE(pairs.Contains(2, 1));
}

TEST_F(PairsContainerTest, APairAddedLargerFirstIsFoundFromEitherEnd) {
  pairs.Add(2, 1);
  EXPECT_TRUE(pairs.Contains(1, 2));
  EXPECT_TRUE(pairs.Contains(2, 1));
}

TEST_F(PairsContainerTest, PairsThatShareAnEndAreDifferentEntries) {
  pairs.Add(1, 2);
  pairs.Add(1, 3);
  pairs.Add(3, 2);
  pairs.Add(2, 2);
  EXPECT_EQ(pairs.Size(), 4U);
  EXPECT_TRUE(pairs.Contains(2, 2));
  EXPECT_FALSE(pairs.Contains(1, 1));
  EXPECT_FALSE(pairs.Contains(3, 3));
}

TEST_F(PairsContainerTest, HoldsSwitches) {
  PairsContainer<const IBNode*> switches;
  switches.Add(issue.node1, issue.node2);
  switches.Add(issue.node2, issue.node1);
  EXPECT_EQ(switches.Size(), 1U);
  EXPECT_TRUE(switches.Contains(issue.node2, issue.node1));
  EXPECT_FALSE(switches.Contains(issue.node1, issue.node1));
}

}  // namespace
}  // namespace fabscope::internal
