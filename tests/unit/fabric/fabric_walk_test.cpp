#include "fabric/fabric_walk.h"

#include <cstddef>
#include <cstdint>
#include <gtest/gtest.h>
#include <vector>

#include "support/test_fabric.h"

namespace fabscope::internal {
namespace {

// Attributes of a port that a test changes one of.
PortSpec Attributes(std::uint8_t num) {
  PortSpec spec;
  spec.num = num;
  return spec;
}

// Two switches and whatever a test hangs on port 1 of "near".
class FabricWalkTest : public ::testing::Test {
 protected:
  FabricWalkTest() { fabric.Switch("near", 8).Switch("far", 8); }

  const IBNode* RemoteOfPort1() { return GetRemoteSwitch(*fabric["near"]->getPort(1)); }

  TestFabric fabric;
};

TEST_F(FabricWalkTest, ACableToASwitchLeadsToIt) {
  fabric.Link("near", 1, "far", 5);
  EXPECT_EQ(RemoteOfPort1(), fabric["far"]);
  EXPECT_EQ(GetRemoteSwitch(*fabric["far"]->getPort(5)), fabric["near"]);
}

TEST_F(FabricWalkTest, APortWithoutCableLeadsNowhere) {
  fabric.Port("near", Attributes(1));
  ASSERT_NE(fabric["near"]->getPort(1), nullptr);
  EXPECT_EQ(RemoteOfPort1(), nullptr);
}

TEST_F(FabricWalkTest, ARemotePortWithoutOwnerLeadsNowhere) {
  IBPort ownerless;
  IBPort port;
  port.remotePort = &ownerless;
  EXPECT_EQ(GetRemoteSwitch(port), nullptr);
}

TEST_F(FabricWalkTest, PortsOfBothFNMKindsCarryNoTreeLink) {
  fabric.Link("near", 1, "far", 1).Link("near", 2, "far", 2);
  PortSpec fnm = Attributes(1);
  fnm.fnm = true;
  PortSpec fnm1 = Attributes(2);
  fnm1.fnm1 = true;
  fabric.Port("near", fnm).Port("near", fnm1);
  EXPECT_EQ(RemoteOfPort1(), nullptr);
  EXPECT_EQ(GetRemoteSwitch(*fabric["near"]->getPort(2)), nullptr);
}

TEST_F(FabricWalkTest, AnAsymmetricLinkBetweenSwitchesIsNoTreeLink) {
  fabric.Link("near", 1, "far", 1, false);
  EXPECT_EQ(RemoteOfPort1(), nullptr);
  EXPECT_EQ(GetRemoteSwitch(*fabric["far"]->getPort(1)), nullptr);
}

TEST_F(FabricWalkTest, OnlyTheNearPortIsAskedForItsKindAndSymmetry) {
  fabric.Link("near", 1, "far", 1);
  PortSpec spec = Attributes(1);
  spec.symmetric = false;
  spec.fnm = true;
  spec.fnm1 = true;
  fabric.Port("far", spec);
  EXPECT_EQ(RemoteOfPort1(), fabric["far"]);
  EXPECT_EQ(GetRemoteSwitch(*fabric["far"]->getPort(1)), nullptr);
}

TEST_F(FabricWalkTest, ThePortStateIsNotAsked) {
  fabric.Link("near", 1, "far", 1);
  PortSpec down = Attributes(1);
  down.state = 1;
  fabric.Port("near", down).Port("far", down);
  EXPECT_EQ(RemoteOfPort1(), fabric["far"]);
}

TEST_F(FabricWalkTest, ACableToAHostIsNoTreeLink) {
  fabric.Host("host").Link("near", 1, "host", 1);
  EXPECT_EQ(RemoteOfPort1(), nullptr);
}

TEST_F(FabricWalkTest, ACableToARouterIsNoTreeLink) {
  NodeSpec router;
  router.type = NodeTypeRouter;
  router.name = "router";
  router.numPorts = 1;
  fabric.Node(router).Link("near", 1, "router", 1);
  EXPECT_EQ(RemoteOfPort1(), nullptr);
}

TEST_F(FabricWalkTest, AHostPortLeadsToItsSwitch) {
  fabric.Host("host").Link("near", 1, "host", 1);
  EXPECT_EQ(GetRemoteSwitch(*fabric["host"]->getPort(1)), fabric["near"]);
}

TEST_F(FabricWalkTest, ACableFromASwitchToItselfLeadsToItself) {
  fabric.Link("near", 1, "near", 2);
  EXPECT_EQ(RemoteOfPort1(), fabric["near"]);
}

// What getPort answers depends on the numbers of the ports alone, so these nodes stand by
// themselves.
class GetPortTest : public ::testing::Test {
 protected:
  void SetPorts(const std::vector<std::uint8_t>& numbers) {
    ports.resize(numbers.size());
    for (std::size_t i = 0; i < numbers.size(); ++i) ports[i].num = numbers[i];
    node.ports = ports;
  }

  std::vector<IBPort> ports;
  IBNode node;
};

TEST_F(GetPortTest, PortsAreFoundByNumber) {
  SetPorts({1, 2, 3});
  EXPECT_EQ(node.getPort(1), ports.data());
  EXPECT_EQ(node.getPort(2), &ports[1]);
  EXPECT_EQ(node.getPort(3), &ports[2]);
}

TEST_F(GetPortTest, PortsAreFoundWhereNumbersAreMissing) {
  SetPorts({2, 3, 7, 200});
  EXPECT_EQ(node.getPort(2), ports.data());
  EXPECT_EQ(node.getPort(3), &ports[1]);
  EXPECT_EQ(node.getPort(7), &ports[2]);
  EXPECT_EQ(node.getPort(200), &ports[3]);
}

TEST_F(GetPortTest, PortsAreFoundWhereOnlyLaterNumbersAreMissing) {
  SetPorts({1, 2, 5});
  EXPECT_EQ(node.getPort(2), &ports[1]);
  EXPECT_EQ(node.getPort(5), &ports[2]);
}

TEST_F(GetPortTest, MissingNumbersAreNoPorts) {
  SetPorts({2, 3, 7});
  EXPECT_EQ(node.getPort(1), nullptr);
  EXPECT_EQ(node.getPort(4), nullptr);
  EXPECT_EQ(node.getPort(6), nullptr);
}

TEST_F(GetPortTest, NumbersBeyondTheLastAreNoPorts) {
  SetPorts({2, 3, 7});
  EXPECT_EQ(node.getPort(8), nullptr);
  EXPECT_EQ(node.getPort(255), nullptr);
}

TEST_F(GetPortTest, ThePortCountIsNotAsked) {
  SetPorts({2});
  node.numPorts = 1;
  EXPECT_EQ(node.getPort(2), ports.data());
}

TEST_F(GetPortTest, PortZeroIsNeverThere) {
  for (const std::uint8_t type : {NodeTypeSwitch, NodeTypeCA, NodeTypeRouter}) {
    node.nodeType = type;
    SetPorts({});
    EXPECT_EQ(node.getPort(0), nullptr) << "type " << int{type};
    SetPorts({1, 2});
    EXPECT_EQ(node.getPort(0), nullptr) << "type " << int{type};
  }
}

TEST_F(GetPortTest, ANodeWithoutPortsHasNoNumberedPorts) {
  EXPECT_EQ(node.getPort(1), nullptr);
  EXPECT_EQ(node.getPort(255), nullptr);
}

TEST_F(GetPortTest, TheHighestPortNumberWorks) {
  TestFabric fabric;
  fabric.Switch("a", 255).Switch("b", 255).Link("a", 255, "b", 255);
  ASSERT_NE(fabric["a"]->getPort(255), nullptr);
  EXPECT_EQ(fabric["a"]->getPort(255)->remotePort, fabric["b"]->getPort(255));
}

TEST(GetSwitchASICTest, IsBehindASlash) {
  NodeSpec spec;
  spec.name = "chip";
  spec.asic = "2";
  TestFabric fabric;
  EXPECT_EQ(GetSwitchASIC(fabric.Node(spec)["chip"]), "/2");
}

TEST(GetSwitchASICTest, IsNothingForOtherSwitches) {
  const IBNode node;
  EXPECT_EQ(GetSwitchASIC(&node), "");
}

}  // namespace
}  // namespace fabscope::internal
