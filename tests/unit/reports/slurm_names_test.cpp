#include "reports/slurm_names.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/test_fabric.h"

namespace fabscope::internal {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST(SlurmNamesTest, HostIsTheFirstWordOfADescription) {
  EXPECT_EQ(SlurmHostName("node17 mlx5_0"), "node17");
  EXPECT_EQ(SlurmHostName("host-1 HCA-1"), "host-1");
  EXPECT_EQ(SlurmHostName("  rack_2.site.org"), "rack_2.site.org");
  EXPECT_EQ(SlurmHostName("7"), "7");
}

TEST(SlurmNamesTest, WordThatCannotNameAHostIsNone) {
  for (const char* text : {"", "  ", "a,b", "a[1]", "a=b", "#a", "a/b", "a\"", "a\\", "a:b",
                           "h\u00f6st", "?", "a;b x"}) {
    EXPECT_EQ(SlurmHostName(text), std::nullopt) << text;
  }
}

TEST(SlurmNamesTest, HostListHasNumbersInRanges) {
  EXPECT_EQ(SlurmHostList({"host1", "host2", "host3", "host4", "host7"}), "host[1-4,7]");
  EXPECT_EQ(SlurmHostList({"b2", "a10", "b1", "a9"}), "a[9-10],b[1-2]");
  EXPECT_EQ(SlurmHostList({"r1n1", "r2n1"}), "r1n1,r2n1");
  EXPECT_EQ(SlurmHostList({"host5"}), "host5");
  EXPECT_EQ(SlurmHostList({"login", "host", "host1"}), "host,host1,login");
}

TEST(SlurmNamesTest, HostListKeepsLeadingZeros) {
  EXPECT_EQ(SlurmHostList({"n008", "n009", "n010", "n011"}), "n[008-011]");
  EXPECT_EQ(SlurmHostList({"n098", "n099", "n100"}), "n[098-100]");
  EXPECT_EQ(SlurmHostList({"n0", "n00", "n01", "n1", "n2"}), "n[0-2,00-01]");
  EXPECT_EQ(SlurmHostList({"n09", "n9", "n10"}), "n[09-10,9]");
  EXPECT_EQ(SlurmHostList({"n99", "n100", "n0100"}), "n[99-100,0100]");
}

TEST(SlurmNamesTest, HostListLeavesAloneWhatIsNoNameWithANumber) {
  EXPECT_EQ(SlurmHostList({"1", "2"}), "1,2") << "no name before the number";
  EXPECT_EQ(SlurmHostList({"h123456789", "h123456790"}), "h[123456789-123456790]");
  EXPECT_EQ(SlurmHostList({"h1234567890", "h1234567891"}), "h1234567890,h1234567891");
  EXPECT_EQ(SlurmHostList({}), "");
}

class SlurmSwitchNamesTest : public ::testing::Test {
 protected:
  std::vector<std::string> NamesOf(const std::vector<std::string>& switches) {
    for (const std::string& name : switches) {
      NodeSpec spec;
      spec.name = name;
      spec.guid = ++guid;
      EXPECT_EQ(builder.AddNode(spec), std::nullopt);
    }
    fabric = builder.Build();
    const std::vector<const IBNode*> nodes(fabric->switches.begin(), fabric->switches.end());
    const SlurmSwitchNames given(nodes, {"root", "neighborhood-0"});
    std::vector<std::string> names;
    for (const IBNode* node : nodes) names.push_back(given.Of(*node));
    for (const IBNode* node : given.GetRenamed()) renamed.emplace_back(node->name);
    return names;
  }

  FabricBuilder builder;
  std::unique_ptr<IBFabric> fabric;
  std::uint64_t guid = 0x20;
  std::vector<std::string> renamed;
};

TEST_F(SlurmSwitchNamesTest, NamesThatSlurmTakesStay) {
  EXPECT_THAT(NamesOf({"leaf-1", "Leaf_2", "root2"}), ElementsAre("leaf-1", "Leaf_2", "root2"));
  EXPECT_THAT(renamed, IsEmpty());
}

TEST_F(SlurmSwitchNamesTest, WhatSlurmHasForItselfBecomesOneMark) {
  EXPECT_THAT(NamesOf({"MF0;sw-1:MSB7800/U1", "a, b", "x[1]=#", "\u00e4", "sw.site", ""}),
              ElementsAre("MF0_sw-1_MSB7800_U1", "a_b", "x_1_", "_", "sw_site", "switch"));
  EXPECT_THAT(renamed,
              ElementsAre("MF0;sw-1:MSB7800/U1", "a, b", "x[1]=#", "\u00e4", "sw.site", ""));
}

TEST_F(SlurmSwitchNamesTest, SharedNamesHaveTheGuidBehindThem) {
  EXPECT_THAT(NamesOf({"sw 1", "sw_1", "sw_2"}),
              ElementsAre("sw_1-0x0000000000000021", "sw_1-0x0000000000000022", "sw_2"));
  EXPECT_THAT(renamed, ElementsAre("sw 1", "sw_1"));
}

TEST_F(SlurmSwitchNamesTest, NamesOfGroupsAreTaken) {
  EXPECT_THAT(NamesOf({"root", "neighborhood-0", "neighborhood-1"}),
              ElementsAre("root-0x0000000000000021", "neighborhood-0-0x0000000000000022",
                          "neighborhood-1"));
}

TEST_F(SlurmSwitchNamesTest, NameMadeOfAGuidGivesWayToASwitchThatIsCalledSo) {
  EXPECT_THAT(NamesOf({"a", "a", "a-0x0000000000000021"}),
              ElementsAre("a-0x0000000000000021_", "a-0x0000000000000022", "a-0x0000000000000021"));
}

TEST_F(SlurmSwitchNamesTest, ChipsOfOneSwitchAreToldByTheirChip) {
  NodeSpec spec;
  spec.name = "sw";
  spec.asic = "A1";
  spec.guid = 1;
  ASSERT_EQ(builder.AddNode(spec), std::nullopt);
  EXPECT_THAT(NamesOf({"sw"}), ElementsAre("sw_A1", "sw"));
}

}  // namespace
}  // namespace fabscope::internal
