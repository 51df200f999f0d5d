#include "reports/fault_text.h"

#include <gtest/gtest.h>
#include <string>

#include "support/test_fabric.h"

namespace fabscope::internal {
namespace {

class FaultTextTest : public ::testing::Test {
 protected:
  FaultTextTest() { fabric.Switch("root").Switch("leaf").Switch("same").SwitchOfGuid(9, "same"); }

  std::string Text(const Finding& finding, const std::vector<Place>& places, int links = 0) {
    return FaultText({&finding, places, links}, NodeNames(fabric.Build()));
  }
  const IBNode* Root() { return fabric["root"]; }
  const IBNode* Leaf() { return fabric["leaf"]; }

  TestFabric fabric;
};

TEST_F(FaultTextTest, LinksAreNamedByTheirEnds) {
  EXPECT_EQ(Text(MissingLink{0, Root(), Leaf(), true}, {{Root(), 0}, {Leaf(), 0}}),
            "-E- missing link between root and leaf");
  FTLinkIssue link{Root(), 1, 1, Leaf(), 2, 1};
  EXPECT_EQ(Text(InvalidLink{0, 0, link, true}, {{Root(), 1}, {Leaf(), 2}}),
            "-E- invalid link between root port: 1 and leaf port: 2");
  link.rank1 = link.rank2 = 0;
  EXPECT_EQ(Text(InvalidLink{0, 0, link, true}, {{Root(), 1}, {Leaf(), 2}}),
            "-W- invalid link between root port: 1 and leaf port: 2");
}

TEST_F(FaultTextTest, CountsSayAmongWhichSwitchesTheyDiffer) {
  EXPECT_EQ(Text(UnevenLinks{0, 4, {}, true, true, false}, {{Root(), 0}}, 3),
            "-E- root has 3 uplinks, expected 4 among the spines of its connectivity group");
  EXPECT_EQ(Text(UnevenLinks{0, 4, {}, false, false, true}, {{Leaf(), 0}}, 3),
            "-E- leaf has 3 downlinks, expected 4 among the lines of its neighborhood");
}

TEST_F(FaultTextTest, GroupsAreNamedByTheirFirstLine) {
  EXPECT_EQ(Text(SuspectedBlocking{0, 4, 8, true}, {{Leaf(), 0}}),
            "-W- suspected blocking in the neighborhood of leaf: 4 links go up, 8 come from below");
  EXPECT_EQ(Text(SuspectedBlocking{0, 4, 8, false}, {{Leaf(), 0}}),
            "-W- suspected blocking in the connectivity group of leaf: 4 links go up, 8 come from "
            "below");
  EXPECT_EQ(Text(SharedFlid{7, {0, 1, 2}}, {{Leaf(), 0}, {Root(), 0}, {Leaf(), 0}}),
            "-W- FLID 7 is in the neighborhoods of leaf, root and leaf");
}

TEST_F(FaultTextTest, AggregatedPortsTellWhereTheyLead) {
  EXPECT_EQ(Text(AsymmetricAPorts{0, {}, true, true}, {{Leaf(), 3}}),
            "-W- asymmetric aggregated port to a host at leaf port: 3");
  EXPECT_EQ(Text(AsymmetricAPorts{0, {}, false, true}, {{Leaf(), 3}}),
            "-W- asymmetric aggregated port at leaf port: 3");
}

TEST_F(FaultTextTest, ASharedNameComesWithTheGuid) {
  const IBNode* ninth = fabric.Build().getNodeByGuid(9);
  EXPECT_EQ(Text(UnevenLinks{0, 2, {}, false, true, true}, {{ninth, 0}}, 1),
            "-E- same (0x0000000000000009) has 1 uplinks, expected 2 among the lines of its "
            "neighborhood");
}

}  // namespace
}  // namespace fabscope::internal
