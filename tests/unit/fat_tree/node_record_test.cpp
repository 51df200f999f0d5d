#include "fat_tree/node_record.h"

#include <gtest/gtest.h>
#include <string>

#include "support/test_fabric.h"

namespace fabscope::internal {
namespace {

class NodeRecordTest : public ::testing::Test {
 protected:
  // The record of a switch of the given display name and ASIC.
  static std::string Record(const std::string& displayName, const std::string& asic = "",
                            int showGuid = 0) {
    NodeSpec spec;
    spec.guid = 0x2c9;
    spec.systemGuid = 0xFEDCBA9876543210;
    spec.name = "name";
    spec.displayName = displayName;
    spec.asic = asic;
    TestFabric fabric;
    return GetNodeRecord(fabric.Node(spec)["name"], showGuid);
  }
};

TEST_F(NodeRecordTest, IsTheDisplayNameAndNotTheName) { EXPECT_EQ(Record("shown"), "shown"); }

TEST_F(NodeRecordTest, TheAsicFollowsTheName) {
  EXPECT_EQ(Record("sw1", "2"), "sw1/2");
  EXPECT_EQ(Record("sw1/A1", "2"), "sw1/2");
}

TEST_F(NodeRecordTest, TheNameIsCutBeforeItsFirstSlashA) {
  EXPECT_EQ(Record("sw1/A1"), "sw1");
  EXPECT_EQ(Record("sw1/A1/A2"), "sw1");
  EXPECT_EQ(Record("sw1/A"), "sw1");
}

TEST_F(NodeRecordTest, TheNameIsCutBeforeItsFirstSlashUWithoutSlashA) {
  EXPECT_EQ(Record("sw1/U1"), "sw1");
  EXPECT_EQ(Record("sw1/U1/U2"), "sw1");
}

TEST_F(NodeRecordTest, SlashAWinsEvenBehindSlashU) {
  EXPECT_EQ(Record("sw1/U1/A2"), "sw1/U1");
  EXPECT_EQ(Record("sw1/A2/U1"), "sw1");
}

TEST_F(NodeRecordTest, ANameThatBeginsWithTheCutIsEmpty) {
  EXPECT_EQ(Record("/A1"), "");
  EXPECT_EQ(Record("/U1", "3"), "/3");
}

TEST_F(NodeRecordTest, OtherSlashesStay) {
  EXPECT_EQ(Record("row1/rack2/a3/u4/L5"), "row1/rack2/a3/u4/L5");
  EXPECT_EQ(Record("AU"), "AU");
}

TEST_F(NodeRecordTest, SystemGuidComesWithTheAsicOfItsOwn) {
  EXPECT_EQ(Record("sw1/A1", "2", 1), "0xfedcba9876543210/2 -- sw1/2");
  EXPECT_EQ(Record("sw1/A1", "", 1), "0xfedcba9876543210 -- sw1");
}

TEST_F(NodeRecordTest, NodeGuidComesWithoutTheAsic) {
  EXPECT_EQ(Record("sw1/A1", "2", 2), "0x00000000000002c9 -- sw1/2");
}

TEST_F(NodeRecordTest, AnyOtherSettingShowsTheNameOnly) {
  for (const int setting : {3, -1, 12}) {
    EXPECT_EQ(Record("sw1/A1", "2", setting), "sw1/2") << setting;
  }
}

}  // namespace
}  // namespace fabscope::internal
