#include "fabric/fabric_builder.h"

#include <cstddef>
#include <cstdint>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <vector>

#include "fabric/guid.h"

namespace fabscope::internal {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

NodeSpec Switch(std::uint64_t guid, std::uint8_t numPorts = 4) {
  NodeSpec spec;
  spec.guid = guid;
  spec.numPorts = numPorts;
  return spec;
}

NodeSpec Host(std::uint64_t guid) {
  NodeSpec spec = Switch(guid, 1);
  spec.type = NodeTypeCA;
  return spec;
}

PortSpec Port(std::uint8_t num) {
  PortSpec spec;
  spec.num = num;
  return spec;
}

// Answers are compared as texts; an empty one is a success.
std::string Text(const FabricBuilder::Problem& problem) { return problem.value_or(""); }

// A builder that has the switches 1 and 2 of 4 ports each and the host 3.
class FabricBuilderTest : public ::testing::Test {
 protected:
  FabricBuilderTest() {
    EXPECT_EQ(Text(builder.AddNode(Switch(1))), "");
    EXPECT_EQ(Text(builder.AddNode(Switch(2))), "");
    EXPECT_EQ(Text(builder.AddNode(Host(3))), "");
  }

  std::string Link(PortRef a, PortRef b) { return Text(builder.AddLink({a, b, 0x400, true})); }
  std::string APort(const std::vector<PortRef>& ports, std::uint64_t asymmetry = 0) {
    return Text(builder.AddAPort(ports, asymmetry));
  }

  FabricBuilder builder;
};

TEST_F(FabricBuilderTest, AbsentValuesOfANodeFollowAnother) {
  NodeSpec spec = Switch(9);
  spec.name = "leaf";
  spec.suitablePlane = 3;
  ASSERT_EQ(Text(builder.AddNode(spec)), "");
  const auto fabric = builder.Build();
  const IBNode* node = fabric->getNodeByGuid(9);
  EXPECT_EQ(node->systemGuid, 9U);
  EXPECT_EQ(node->getAlternativeName(), "leaf");
  EXPECT_THAT(node->GetPlanes(), ElementsAre(3));
}

TEST_F(FabricBuilderTest, GivenValuesOfANodeStand) {
  NodeSpec spec = Switch(9);
  spec.name = "leaf";
  spec.systemGuid = 0;
  spec.displayName = "";
  spec.planes = std::vector<std::int32_t>{};
  spec.flids = {5, 1, 5};
  ASSERT_EQ(Text(builder.AddNode(spec)), "");
  const auto fabric = builder.Build();
  const IBNode* node = fabric->getNodeByGuid(9);
  EXPECT_EQ(node->systemGuid, 0U);
  EXPECT_EQ(node->getAlternativeName(), "");
  EXPECT_THAT(node->GetPlanes(), IsEmpty());
  EXPECT_THAT(node->GetFlids(), ElementsAre(1, 5));
}

TEST_F(FabricBuilderTest, ANodeAnswersWhatItWasMadeFrom) {
  NodeSpec spec = Switch(9, 36);
  spec.name = "leaf";
  spec.systemGuid = 8;
  spec.displayName = "chassis/A1";
  spec.smdbRank = 3;
  spec.special = true;
  spec.multiAsic = true;
  spec.asic = "2";
  spec.planesNumber = 4;
  spec.suitablePlane = 3;
  spec.planes = std::vector<std::int32_t>{1, 2};
  ASSERT_EQ(Text(builder.AddNode(spec)), "");
  const auto fabric = builder.Build();
  const IBNode* node = fabric->getNodeByGuid(9);
  EXPECT_EQ(node->guid, 9U);
  EXPECT_EQ(node->systemGuid, 8U);
  EXPECT_EQ(node->nodeType, 2U);
  EXPECT_EQ(node->numPorts, 36);
  EXPECT_EQ(node->name, "leaf");
  EXPECT_EQ(node->getAlternativeName(), "chassis/A1");
  EXPECT_EQ(node->smdbRank, 3);
  EXPECT_TRUE(node->isSpecialNode());
  EXPECT_TRUE(node->isVortaSwitch());
  EXPECT_EQ(node->getVortaSwitchASIC(), "2");
  EXPECT_EQ(node->getPlanesNumber(), 4);
  EXPECT_EQ(node->getSuitablePlane(), 3);
  EXPECT_TRUE(node->isOnSamePlane(1));
  EXPECT_TRUE(node->isOnSamePlane(2));
  EXPECT_FALSE(node->isOnSamePlane(3));
}

TEST_F(FabricBuilderTest, ANodeIsOrdinaryUnlessToldOtherwise) {
  const auto fabric = builder.Build();
  const IBNode* node = fabric->getNodeByGuid(1);
  EXPECT_EQ(node->smdbRank, 255);
  EXPECT_FALSE(node->isSpecialNode());
  EXPECT_FALSE(node->isVortaSwitch());
  EXPECT_EQ(node->getVortaSwitchASIC(), "");
  EXPECT_EQ(node->getPlanesNumber(), 1);
  EXPECT_EQ(node->getSuitablePlane(), 1);
  EXPECT_TRUE(node->isOnSamePlane(1));
  EXPECT_THAT(node->GetFlids(), IsEmpty());
  EXPECT_EQ(fabric->getNodeByGuid(3)->nodeType, 1U);
}

TEST_F(FabricBuilderTest, ANodeGuidIsNotZeroAndBelongsToOneNode) {
  EXPECT_EQ(Text(builder.AddNode(Switch(0))), "a node's GUID must not be 0");
  EXPECT_EQ(Text(builder.AddNode(Host(1))), "node GUID 0x0000000000000001 is given twice");
  EXPECT_TRUE(builder.IsSwitch(1));
  EXPECT_THAT(builder.Build()->GetNodes(), SizeIs(3));
}

TEST_F(FabricBuilderTest, OnlySwitchesAreSwitches) {
  EXPECT_TRUE(builder.IsSwitch(2));
  EXPECT_FALSE(builder.IsSwitch(3));
  EXPECT_FALSE(builder.IsSwitch(4));
}

TEST_F(FabricBuilderTest, NodesAreFoundByGuid) {
  EXPECT_EQ(builder.FindNode(1), 0U);
  EXPECT_EQ(builder.FindNode(3), 2U);
  EXPECT_EQ(builder.FindNode(4), GuidIndex::None);
  EXPECT_EQ(builder.FindNode(0), GuidIndex::None);
}

TEST_F(FabricBuilderTest, NodesAreFoundAmongManyOfAnyGuid) {
  std::vector<std::uint64_t> guids;
  for (std::uint64_t i = 4; i < 3000; ++i) guids.push_back(i % 2 == 0 ? i : i << 48U);
  for (const std::uint64_t guid : guids) ASSERT_EQ(Text(builder.AddNode(Switch(guid))), "");
  for (std::size_t i = 0; i < guids.size(); ++i) ASSERT_EQ(builder.FindNode(guids[i]), i + 3);
  EXPECT_EQ(Text(builder.AddNode(Switch(2998))), "node GUID 0x0000000000000bb6 is given twice");
  EXPECT_EQ(builder.FindNode(3000), GuidIndex::None);
}

// The value that the mixing of GUIDs takes to the given one.
std::uint64_t Unmixed(std::uint64_t mixed) {
  mixed ^= mixed >> 33U;
  for (const std::uint64_t factor : {0x9cb4b2f8129337dbU, 0x4f74430c22a54005U}) {
    mixed *= factor;
    mixed ^= mixed >> 33U;
  }
  return mixed;
}

TEST_F(FabricBuilderTest, NodesAreFoundAmongManyThatShareTheirPlace) {
  std::vector<std::uint64_t> guids;
  for (std::uint64_t i = 1; i < 1000; ++i) guids.push_back(Unmixed(i << 32U));
  for (const std::uint64_t guid : guids) {
    EXPECT_EQ(builder.FindNode(guid), GuidIndex::None);
    ASSERT_EQ(Text(builder.AddNode(Switch(guid))), "");
  }
  for (std::size_t i = 0; i < guids.size(); ++i) ASSERT_EQ(builder.FindNode(guids[i]), i + 3);
  EXPECT_EQ(Text(builder.AddNode(Switch(guids.front()))),
            "node GUID " + GuidText(guids.front()) + " is given twice");
  EXPECT_EQ(Text(builder.AddNode(Switch(guids.back()))),
            "node GUID " + GuidText(guids.back()) + " is given twice");
  EXPECT_EQ(builder.FindNode(Unmixed(std::uint64_t{1000} << 32U)), GuidIndex::None);
  EXPECT_EQ(builder.FindNode(3), 2U);
}

TEST_F(FabricBuilderTest, PortsAreNumberedFromOneToThePortCount) {
  EXPECT_TRUE(builder.HasPort({0, 1}));
  EXPECT_TRUE(builder.HasPort({0, 4}));
  EXPECT_FALSE(builder.HasPort({0, 0}));
  EXPECT_FALSE(builder.HasPort({0, 5}));
  EXPECT_FALSE(builder.HasPort({2, 2}));
}

TEST_F(FabricBuilderTest, APortThatDoesNotExistIsToldWithWhatTheNodeHas) {
  EXPECT_EQ(builder.NoPortText({0, 5}),
            "port 5 of node 0x0000000000000001 does not exist: it has 4 ports");
  EXPECT_EQ(builder.NoPortText({2, 2}),
            "port 2 of node 0x0000000000000003 does not exist: it has 1 port");
}

TEST_F(FabricBuilderTest, ANodeOf255PortsHasThemAll) {
  ASSERT_EQ(Text(builder.AddNode(Switch(9, 255))), "");
  EXPECT_EQ(Link({9, 255}, {1, 1}), "");
  EXPECT_TRUE(builder.HasLink({3, 255}));
  for (std::uint8_t num = 1; num < 255; ++num) ASSERT_EQ(Text(builder.SetPort(9, Port(num))), "");
  const auto fabric = builder.Build();
  EXPECT_THAT(fabric->getNodeByGuid(9)->ports, SizeIs(255));
  EXPECT_EQ(fabric->getNodeByGuid(9)->getPort(255)->num, 255);
}

TEST_F(FabricBuilderTest, ANodeWithoutPortsHasNone) {
  ASSERT_EQ(Text(builder.AddNode(Switch(9, 0))), "");
  EXPECT_EQ(Link({9, 1}, {1, 1}),
            "port 1 of node 0x0000000000000009 does not exist: it has 0 ports");
  EXPECT_EQ(builder.Build()->getNodeByGuid(9)->getPort(0), nullptr);
}

TEST_F(FabricBuilderTest, ALinkIsRefusedWhereItCannotBe) {
  ASSERT_EQ(Link({1, 1}, {2, 1}), "");
  EXPECT_EQ(Link({7, 1}, {2, 2}), "unknown node 0x0000000000000007");
  EXPECT_EQ(Link({1, 2}, {7, 1}), "unknown node 0x0000000000000007");
  EXPECT_EQ(Link({1, 2}, {3, 2}),
            "port 2 of node 0x0000000000000003 does not exist: it has 1 port");
  EXPECT_EQ(Link({1, 2}, {1, 2}), "port 2 of node 0x0000000000000001 is linked to itself");
  EXPECT_EQ(Link({1, 1}, {2, 2}), "port 1 of node 0x0000000000000001 has a link already");
  EXPECT_EQ(Link({1, 2}, {2, 1}), "port 1 of node 0x0000000000000002 has a link already");
}

TEST_F(FabricBuilderTest, ARefusedLinkLeavesBothPortsFree) {
  ASSERT_EQ(Link({1, 1}, {2, 1}), "");
  ASSERT_NE(Link({1, 2}, {2, 1}), "");
  ASSERT_NE(Link({1, 3}, {3, 2}), "");
  EXPECT_FALSE(builder.HasLink({0, 2}));
  EXPECT_FALSE(builder.HasLink({0, 3}));
  EXPECT_TRUE(builder.HasLink({0, 1}));
  EXPECT_TRUE(builder.HasLink({1, 1}));
  EXPECT_EQ(Link({1, 2}, {3, 1}), "");
}

TEST_F(FabricBuilderTest, TwoPortsOfANodeMayBeLinked) {
  EXPECT_EQ(Link({1, 1}, {1, 2}), "");
  const auto fabric = builder.Build();
  const IBNode* node = fabric->getNodeByGuid(1);
  EXPECT_EQ(node->getPort(1)->remotePort, node->getPort(2));
  EXPECT_EQ(node->getPort(2)->remotePort, node->getPort(1));
}

TEST_F(FabricBuilderTest, AttributesOfAPortAreGivenOnce) {
  EXPECT_EQ(Text(builder.SetPort(1, Port(2))), "");
  EXPECT_EQ(Text(builder.SetPort(1, Port(2))), "port 2 of node 0x0000000000000001 is given twice");
  EXPECT_EQ(Text(builder.SetPort(2, Port(2))), "");
  EXPECT_EQ(Text(builder.SetPort(3, Port(2))),
            "port 2 of node 0x0000000000000003 does not exist: it has 1 port");
  EXPECT_EQ(Text(builder.SetPort(8, Port(2))), "unknown node 0x0000000000000008");
}

TEST_F(FabricBuilderTest, APortAnswersWhatItWasGiven) {
  PortSpec spec = Port(2);
  spec.state = 3;
  spec.speed = 0x800;
  spec.symmetric = false;
  spec.fnm = true;
  spec.fnm1 = true;
  spec.inSubFabric = false;
  spec.planeMultiplicity = -2;
  spec.group = -1;
  ASSERT_EQ(Text(builder.SetPort(1, spec)), "");
  const auto fabric = builder.Build();
  const IBPort* port = fabric->getNodeByGuid(1)->getPort(2);
  ASSERT_NE(port, nullptr);
  EXPECT_EQ(port->num, 2);
  EXPECT_EQ(port->node, fabric->getNodeByGuid(1));
  EXPECT_EQ(port->GetState(), 3U);
  EXPECT_EQ(port->speed, 0x800U);
  EXPECT_FALSE(port->isSymmetricLink());
  EXPECT_TRUE(port->isFNMPort());
  EXPECT_TRUE(port->isFNM1Port());
  EXPECT_FALSE(port->getInSubFabric());
  EXPECT_EQ(port->GetPlaneMultiplicity(), -2);
  ASSERT_TRUE(port->GetGroup().has_value());
  EXPECT_EQ(port->GetGroup()->number, -1);
}

TEST_F(FabricBuilderTest, TheTwoKindsOfFNMPortsAreKeptApart) {
  PortSpec fnm = Port(1);
  fnm.fnm = true;
  PortSpec fnm1 = Port(2);
  fnm1.fnm1 = true;
  ASSERT_EQ(Text(builder.SetPort(1, fnm)), "");
  ASSERT_EQ(Text(builder.SetPort(1, fnm1)), "");
  const auto fabric = builder.Build();
  EXPECT_TRUE(fabric->getNodeByGuid(1)->getPort(1)->isFNMPort());
  EXPECT_FALSE(fabric->getNodeByGuid(1)->getPort(1)->isFNM1Port());
  EXPECT_FALSE(fabric->getNodeByGuid(1)->getPort(2)->isFNMPort());
  EXPECT_TRUE(fabric->getNodeByGuid(1)->getPort(2)->isFNM1Port());
}

TEST_F(FabricBuilderTest, APortIsOrdinaryUnlessToldOtherwise) {
  ASSERT_EQ(Link({1, 1}, {2, 1}), "");
  ASSERT_EQ(Text(builder.SetPort(1, Port(1))), "");
  ASSERT_EQ(Text(builder.SetPort(1, Port(2))), "");
  const auto fabric = builder.Build();
  const IBPort* cabled = fabric->getNodeByGuid(1)->getPort(1);
  const IBPort* uncabled = fabric->getNodeByGuid(1)->getPort(2);
  EXPECT_EQ(cabled->GetState(), 4U);
  EXPECT_EQ(cabled->speed, 0x400U);
  EXPECT_EQ(cabled->get_remote_node(), fabric->getNodeByGuid(2));
  EXPECT_EQ(uncabled->GetState(), 1U);
  EXPECT_EQ(uncabled->speed, 0U);
  EXPECT_EQ(uncabled->get_remote_node(), nullptr);
  for (const IBPort* port : {cabled, uncabled}) {
    EXPECT_TRUE(port->isSymmetricLink());
    EXPECT_FALSE(port->isFNMPort());
    EXPECT_FALSE(port->isFNM1Port());
    EXPECT_TRUE(port->getInSubFabric());
    EXPECT_EQ(port->GetPlaneMultiplicity(), 1);
    EXPECT_FALSE(port->GetGroup().has_value());
    EXPECT_EQ(port->GetAPort(), nullptr);
  }
}

TEST_F(FabricBuilderTest, AttributesOverrideTheLinkWhicheverComesFirst) {
  PortSpec early = Port(1);
  early.speed = 0x1;
  PortSpec late = Port(1);
  late.symmetric = false;
  ASSERT_EQ(Text(builder.SetPort(1, early)), "");
  ASSERT_EQ(Link({1, 1}, {2, 1}), "");
  ASSERT_EQ(Text(builder.SetPort(2, late)), "");
  const auto fabric = builder.Build();
  const IBPort* a = fabric->getNodeByGuid(1)->getPort(1);
  const IBPort* b = fabric->getNodeByGuid(2)->getPort(1);
  EXPECT_EQ(a->speed, 0x1U);
  EXPECT_TRUE(a->symmetric);
  EXPECT_EQ(b->speed, 0x400U);
  EXPECT_FALSE(b->symmetric);
}

TEST_F(FabricBuilderTest, APortIsInOneAggregatedPort) {
  EXPECT_EQ(APort({{1, 1}, {1, 1}}),
            "port 1 of node 0x0000000000000001 is in an aggregated port already");
  EXPECT_EQ(APort({{1, 1}, {2, 1}}), "");
  EXPECT_EQ(APort({{1, 2}, {2, 1}}),
            "port 1 of node 0x0000000000000002 is in an aggregated port already");
  EXPECT_EQ(APort({{1, 2}, {1, 9}}),
            "port 9 of node 0x0000000000000001 does not exist: it has 4 ports");
}

TEST_F(FabricBuilderTest, ARefusedAggregatedPortLeavesItsPortsFree) {
  ASSERT_EQ(APort({{1, 1}}), "");
  ASSERT_NE(APort({{1, 2}, {1, 1}}), "");
  ASSERT_NE(APort({{1, 2}, {1, 9}}), "");
  EXPECT_EQ(APort({{1, 2}}, 7), "");
  const auto fabric = builder.Build();
  ASSERT_THAT(fabric->GetAPorts(), SizeIs(2));
  EXPECT_EQ(fabric->getNodeByGuid(1)->getPort(1)->GetAPort(), &fabric->GetAPorts()[0]);
  EXPECT_EQ(fabric->getNodeByGuid(1)->getPort(2)->GetAPort(), &fabric->GetAPorts()[1]);
  EXPECT_EQ(fabric->GetAPorts()[1].asymmetry, 7U);
}

TEST_F(FabricBuilderTest, RanksOfAllNodesCanBeTakenAwayAndGivenAnew) {
  NodeSpec ranked = Switch(9);
  ranked.smdbRank = 3;
  ASSERT_EQ(Text(builder.AddNode(ranked)), "");
  builder.ClearRanks();
  builder.SetRank(1, 0);
  const auto fabric = builder.Build();
  EXPECT_EQ(fabric->getNodeByGuid(9)->smdbRank, 255);
  EXPECT_EQ(fabric->getNodeByGuid(1)->smdbRank, 0);
}

TEST_F(FabricBuilderTest, FlidsAreAddedOnceAndInOrder) {
  for (const int flid : {300, 7, 300, 65535, 0}) {
    builder.AddFlid(1, static_cast<std::uint16_t>(flid));
  }
  EXPECT_THAT(builder.Build()->getNodeByGuid(1)->GetFlids(), ElementsAre(0, 7, 300, 65535));
}

TEST_F(FabricBuilderTest, NodesStandInTheOrderInWhichTheyWereAdded) {
  ASSERT_EQ(Text(builder.AddNode(Switch(99))), "");
  ASSERT_EQ(Text(builder.AddNode(Switch(5))), "");
  const auto fabric = builder.Build();
  std::vector<std::uint64_t> guids;
  for (const IBNode& node : fabric->GetNodes()) guids.push_back(node.guid);
  EXPECT_THAT(guids, ElementsAre(1, 2, 3, 99, 5));
  std::vector<std::uint64_t> switches;
  for (const IBNode* node : fabric->switches) switches.push_back(node->guid);
  EXPECT_THAT(switches, ElementsAre(1, 2, 99, 5));
  for (const IBNode& node : fabric->GetNodes()) {
    EXPECT_EQ(&fabric->GetNodes()[node.index], &node);
  }
}

TEST_F(FabricBuilderTest, PortsStandByNodeAndNumber) {
  ASSERT_EQ(Link({2, 4}, {1, 3}), "");
  ASSERT_EQ(Link({3, 1}, {1, 1}), "");
  ASSERT_EQ(Text(builder.SetPort(2, Port(2))), "");
  const auto fabric = builder.Build();
  std::vector<std::pair<std::uint64_t, int>> ports;
  for (const IBPort& port : fabric->GetPorts()) ports.emplace_back(port.node->guid, port.num);
  using ::testing::Pair;
  EXPECT_THAT(ports, ElementsAre(Pair(1, 1), Pair(1, 3), Pair(2, 2), Pair(2, 4), Pair(3, 1)));
}

TEST_F(FabricBuilderTest, APortWithoutCableOrAttributeHasNoObject) {
  ASSERT_EQ(Link({1, 2}, {3, 1}), "");
  const auto fabric = builder.Build();
  const IBNode* node = fabric->getNodeByGuid(1);
  EXPECT_EQ(node->getPort(0), nullptr);
  EXPECT_EQ(node->getPort(1), nullptr);
  EXPECT_NE(node->getPort(2), nullptr);
  EXPECT_EQ(node->getPort(4), nullptr);
  EXPECT_EQ(node->getPort(200), nullptr);
  EXPECT_EQ(fabric->getNodeByGuid(3)->getPort(0), nullptr);
}

TEST_F(FabricBuilderTest, ThePortsOfANodeAreThoseOfACableOrAnAttributeByNumber) {
  ASSERT_EQ(Text(builder.SetPort(1, Port(4))), "");
  ASSERT_EQ(Link({1, 2}, {3, 1}), "");
  ASSERT_EQ(APort({{1, 1}}), "");
  const auto fabric = builder.Build();
  std::vector<int> numbers;
  for (const IBPort& port : fabric->getNodeByGuid(1)->ports) numbers.push_back(port.num);
  EXPECT_THAT(numbers, ElementsAre(1, 2, 4));
  EXPECT_THAT(fabric->getNodeByGuid(2)->ports, IsEmpty());
  EXPECT_THAT(fabric->getNodeByGuid(3)->ports, SizeIs(1));
}

// The second port of the next node stands where that of the first one would if it had a first port.
TEST_F(FabricBuilderTest, CablesFindTheirPortsWhereOthersAreMissing) {
  EXPECT_EQ(Link({1, 2}, {2, 2}), "");
  EXPECT_EQ(Link({2, 4}, {3, 1}), "");
  const auto fabric = builder.Build();
  const std::vector<IBPort>& ports = fabric->GetPorts();
  ASSERT_THAT(ports, SizeIs(4));
  std::vector<std::ptrdiff_t> peers;
  for (const IBPort& port : ports) peers.push_back(port.remotePort - ports.data());
  EXPECT_THAT(peers, ElementsAre(1, 0, 3, 2));
}

TEST_F(FabricBuilderTest, AKeptNameIsTheNodes) {
  const std::string_view name = builder.KeepName(std::string("spine") + "7");
  NodeSpec spec = Switch(9);
  spec.keptName = name;
  EXPECT_EQ(Text(builder.AddNode(spec)), "");
  const auto fabric = builder.Build();
  const IBNode& node = fabric->GetNodes().back();
  EXPECT_EQ(node.name, "spine7");
  EXPECT_EQ(node.name.data(), name.data());
  EXPECT_EQ(node.getAlternativeName(), "spine7");
}

TEST_F(FabricBuilderTest, TheBuilderIsEmptyAfterwards) {
  ASSERT_EQ(Link({1, 1}, {2, 1}), "");
  ASSERT_EQ(Text(builder.SetPort(1, Port(2))), "");
  ASSERT_EQ(APort({{1, 1}}), "");
  builder.Build();
  EXPECT_THAT(builder.Build()->GetNodes(), IsEmpty());
  EXPECT_EQ(builder.FindNode(1), GuidIndex::None);
  ASSERT_EQ(Text(builder.AddNode(Switch(1))), "");
  EXPECT_FALSE(builder.HasLink({0, 1}));
  EXPECT_EQ(Text(builder.SetPort(1, Port(2))), "");
  EXPECT_EQ(APort({{1, 1}}), "");
  const auto fabric = builder.Build();
  EXPECT_THAT(fabric->GetNodes(), SizeIs(1));
  EXPECT_THAT(fabric->GetAPorts(), SizeIs(1));
  EXPECT_EQ(fabric->getNodeByGuid(1)->getPort(1)->remotePort, nullptr);
}

TEST_F(FabricBuilderTest, AnUnknownGuidHasNoNode) {
  EXPECT_EQ(builder.Build()->getNodeByGuid(77), nullptr);
}

TEST_F(FabricBuilderTest, GuidsAreShownInSixteenDigits) {
  EXPECT_EQ(GuidText(0), "0x0000000000000000");
  EXPECT_EQ(GuidText(0x2c9AbC), "0x00000000002c9abc");
  EXPECT_EQ(GuidText(0xfedcba9876543210), "0xfedcba9876543210");
}

}  // namespace
}  // namespace fabscope::internal
