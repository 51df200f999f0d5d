#include "compare/counterparts.h"

#include <gtest/gtest.h>

#include "support/test_fabric.h"

namespace fabscope::internal {
namespace {

class CounterpartsTest : public ::testing::Test {
 protected:
  static void AddHost(TestFabric& fabric, std::uint64_t guid, const std::string& name) {
    NodeSpec host;
    host.guid = guid;
    host.name = name;
    host.type = NodeTypeCA;
    host.numPorts = 1;
    fabric.Node(std::move(host));
  }

  Counterparts Compare() { return {was.Build(), is.Build()}; }

  TestFabric was;
  TestFabric is;
};

TEST_F(CounterpartsTest, NodesOfOneGuidAreTheSameWhateverTheirName) {
  was.SwitchOfGuid(7, "old");
  is.SwitchOfGuid(1, "first");
  is.SwitchOfGuid(7, "new");
  const Counterparts nodes = Compare();
  EXPECT_EQ(nodes.Now(*was["old"]), is["new"]);
  EXPECT_EQ(nodes.Then(*is["new"]), was["old"]);
  EXPECT_EQ(nodes.Then(*is["first"]), nullptr);
}

TEST_F(CounterpartsTest, ANodeOfAnotherTypeIsAnotherNode) {
  was.SwitchOfGuid(7, "name");
  AddHost(is, 7, "name");
  const Counterparts nodes = Compare();
  EXPECT_EQ(nodes.Now(*was["name"]), nullptr);
  EXPECT_EQ(nodes.Then(*is["name"]), nullptr);
}

TEST_F(CounterpartsTest, AnotherGuidUnderTheSameNameIsTheSamePlace) {
  was.SwitchOfGuid(7, "leaf");
  is.SwitchOfGuid(8, "leaf");
  const Counterparts nodes = Compare();
  EXPECT_EQ(nodes.Now(*was["leaf"]), is["leaf"]);
  EXPECT_EQ(nodes.IdentityOfNew(*is["leaf"]), nodes.IdentityOfOld(*was["leaf"]));
}

TEST_F(CounterpartsTest, ANodeOfAnotherTypeIsAnotherPlace) {
  was.SwitchOfGuid(7, "name");
  AddHost(is, 8, "name");
  const Counterparts nodes = Compare();
  EXPECT_EQ(nodes.Now(*was["name"]), nullptr);
  EXPECT_EQ(nodes.Then(*is["name"]), nullptr);
  EXPECT_EQ(nodes.IdentityOfNew(*is["name"]), 8U);
}

TEST_F(CounterpartsTest, ANameThatSeveralHadOrHaveTellsNoPlace) {
  was.SwitchOfGuid(1, "leaf").SwitchOfGuid(2, "leaf");
  is.SwitchOfGuid(8, "leaf");
  EXPECT_EQ(Compare().Then(*is["leaf"]), nullptr);
  EXPECT_EQ(Counterparts(is.Build(), was.Build()).Now(*is["leaf"]), nullptr);
}

TEST_F(CounterpartsTest, ANodeThatStayedIsNotReplacedByOneThatTookItsName) {
  was.SwitchOfGuid(1, "a");
  was.SwitchOfGuid(2, "b");
  is.SwitchOfGuid(1, "b");
  is.SwitchOfGuid(3, "a");
  const Counterparts nodes = Compare();
  EXPECT_EQ(nodes.Now(*was["a"]), is["b"]);
  EXPECT_EQ(nodes.Now(*was["b"]), nullptr);
  EXPECT_EQ(nodes.Then(*is["a"]), nullptr);
}

}  // namespace
}  // namespace fabscope::internal
