#include "fabric/fabric_walk.h"

#include <array>
#include <csignal>
#include <gtest/gtest.h>
#include <span>

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

  const IBNode* RemoteOfPort1() { return GetRemoteSwitch(fabric["near"]->getPort(1)); }

  TestFabric fabric;
};

TEST_F(FabricWalkTest, ACableToASwitchLeadsToIt) {
  fabric.Link("near", 1, "far", 5);
  EXPECT_EQ(RemoteOfPort1(), fabric["far"]);
  EXPECT_EQ(GetRemoteSwitch(fabric["far"]->getPort(5)), fabric["near"]);
}

TEST_F(FabricWalkTest, ANullPortLeadsNowhere) { EXPECT_EQ(GetRemoteSwitch(nullptr), nullptr); }

TEST_F(FabricWalkTest, APortWithoutCableLeadsNowhere) {
  fabric.Port("near", Attributes(1));
  ASSERT_NE(fabric["near"]->getPort(1), nullptr);
  EXPECT_EQ(RemoteOfPort1(), nullptr);
}

TEST_F(FabricWalkTest, ARemotePortWithoutOwnerLeadsNowhere) {
  IBPort ownerless;
  IBPort port;
  port.remotePort = &ownerless;
  EXPECT_EQ(GetRemoteSwitch(&port), nullptr);
}

TEST_F(FabricWalkTest, PortsOfBothFNMKindsCarryNoTreeLink) {
  fabric.Link("near", 1, "far", 1).Link("near", 2, "far", 2);
  PortSpec fnm = Attributes(1);
  fnm.fnm = true;
  PortSpec fnm1 = Attributes(2);
  fnm1.fnm1 = true;
  fabric.Port("near", fnm).Port("near", fnm1);
  EXPECT_EQ(RemoteOfPort1(), nullptr);
  EXPECT_EQ(GetRemoteSwitch(fabric["near"]->getPort(2)), nullptr);
}

TEST_F(FabricWalkTest, AnAsymmetricLinkBetweenSwitchesIsNoTreeLink) {
  fabric.Link("near", 1, "far", 1, false);
  EXPECT_EQ(RemoteOfPort1(), nullptr);
  EXPECT_EQ(GetRemoteSwitch(fabric["far"]->getPort(1)), nullptr);
}

TEST_F(FabricWalkTest, OnlyTheNearPortIsAskedForItsKindAndSymmetry) {
  fabric.Link("near", 1, "far", 1);
  PortSpec spec = Attributes(1);
  spec.symmetric = false;
  spec.fnm = true;
  spec.fnm1 = true;
  fabric.Port("far", spec);
  EXPECT_EQ(RemoteOfPort1(), fabric["far"]);
  EXPECT_EQ(GetRemoteSwitch(fabric["far"]->getPort(1)), nullptr);
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
  EXPECT_EQ(GetRemoteSwitch(fabric["host"]->getPort(1)), fabric["near"]);
}

TEST_F(FabricWalkTest, ACableFromASwitchToItselfLeadsToItself) {
  fabric.Link("near", 1, "near", 2);
  EXPECT_EQ(RemoteOfPort1(), fabric["near"]);
}

// What getPort answers depends on the node's type and on the length of its port array alone, so
// these nodes stand by themselves.
class GetPortTest : public ::testing::Test {
 protected:
  GetPortTest() {
    node.nodeType = NodeTypeSwitch;
    node.numPorts = 3;
    node.ports = std::span(slots).first(3);
  }

  std::array<IBPort, 4> objects;
  // The last one belongs to the next node of the fabric.
  std::array<IBPort*, 4> slots{objects.data(), nullptr, &objects[2], &objects[3]};
  IBNode node;
};

TEST_F(GetPortTest, PortNumbersIndexTheArray) { EXPECT_EQ(node.getPort(2), &objects[2]); }

TEST_F(GetPortTest, AnEmptySlotIsNoPort) { EXPECT_EQ(node.getPort(1), nullptr); }

TEST_F(GetPortTest, NumbersBeyondTheArrayAreNoPorts) {
  EXPECT_EQ(node.getPort(3), nullptr);  // numPorts says that it exists, the array decides
  EXPECT_EQ(node.getPort(255), nullptr);
}

TEST_F(GetPortTest, ThePortCountIsNotAsked) {
  node.numPorts = 1;
  EXPECT_EQ(node.getPort(2), &objects[2]);
}

TEST_F(GetPortTest, PortZeroOfASwitchIsItsManagementPort) {
  EXPECT_EQ(node.getPort(0), objects.data());
  slots[0] = nullptr;
  EXPECT_EQ(node.getPort(0), nullptr);
}

TEST_F(GetPortTest, PortZeroExistsOnSwitchesOnly) {
  for (const std::uint32_t type : {NodeTypeCA, NodeTypeRouter}) {
    node.nodeType = type;
    EXPECT_EQ(node.getPort(0), nullptr) << "type " << type;
    EXPECT_EQ(node.getPort(2), &objects[2]) << "type " << type;
  }
}

TEST_F(GetPortTest, ANodeWithoutPortArrayHasNoNumberedPorts) {
  node.ports = {};
  EXPECT_EQ(node.getPort(1), nullptr);
  node.nodeType = NodeTypeCA;
  EXPECT_EQ(node.getPort(0), nullptr);
}

TEST_F(GetPortTest, TheHighestPortNumberWorks) {
  TestFabric fabric;
  fabric.Switch("a", 255).Switch("b", 255).Link("a", 255, "b", 255);
  ASSERT_NE(fabric["a"]->getPort(255), nullptr);
  EXPECT_EQ(fabric["a"]->getPort(255)->remotePort, fabric["b"]->getPort(255));
}

TEST(GetPortDeathTest, ASwitchWithoutPortArrayHasNoPortZero) {
  IBNode node;
  node.nodeType = NodeTypeSwitch;
  EXPECT_EXIT(node.getPort(0), ::testing::KilledBySignal(SIGABRT), "");
}

TEST(GetTreePortsTest, RunFromPortOneToTheLastAndLeaveOutPortZero) {
  std::array<IBPort, 4> objects{};
  std::array<IBPort*, 4> slots{objects.data(), &objects[1], nullptr, &objects[3]};
  IBNode node;
  node.numPorts = 3;
  node.ports = slots;
  const auto ports = GetTreePorts(node);
  ASSERT_EQ(ports.size(), 3U);
  EXPECT_EQ(ports[0], &objects[1]);
  EXPECT_EQ(ports[1], nullptr);
  EXPECT_EQ(ports[2], &objects[3]);
}

TEST(GetTreePortsTest, EndAtThePortCountEvenWithMoreSlots) {
  std::array<IBPort*, 4> slots{};
  IBNode node;
  node.numPorts = 2;
  node.ports = slots;
  EXPECT_EQ(GetTreePorts(node).size(), 2U);
}

TEST(GetTreePortsTest, EndWithTheSlotsEvenWithMorePorts) {
  std::array<IBPort*, 2> slots{};
  IBNode node;
  node.numPorts = 255;
  node.ports = slots;
  EXPECT_EQ(GetTreePorts(node).size(), 1U);
  node.ports = {};
  EXPECT_TRUE(GetTreePorts(node).empty());
}

TEST(GetTreePortsTest, ReachPort255) {
  std::array<IBPort*, 256> slots{};
  IBNode node;
  node.numPorts = 255;
  node.ports = slots;
  EXPECT_EQ(GetTreePorts(node).size(), 255U);
}

TEST(GetSwitchASICTest, IsBehindASlash) {
  IBNode node;
  node.asic = "2";
  EXPECT_EQ(GetSwitchASIC(&node), "/2");
}

TEST(GetSwitchASICTest, IsNothingForOtherSwitches) {
  const IBNode node;
  EXPECT_EQ(GetSwitchASIC(&node), "");
}

}  // namespace
}  // namespace fabscope::internal
