#include "formats/fabric_document.h"

#include <cstdint>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "formats/load_fabric.h"
#include "support/test_fabric.h"
#include "text/text_fields.h"

namespace fabscope::internal {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

constexpr std::int32_t leastInt = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t greatestInt = std::numeric_limits<std::int32_t>::max();

// A document of these nodes, and what else follows them.
std::string Document(const std::string& nodes, const std::string& rest = "") {
  return R"({"format": "fabscope-fabric", "version": 1, "nodes": [)" + nodes + "]" + rest + "}";
}

// A switch of 8 ports with more members.
std::string Switch(const std::string& guid, const std::string& members = "") {
  return R"({"guid": ")" + guid + R"(", "type": "switch", "name": "s)" + guid +
         R"(", "numPorts": 8)" + members + "}";
}

InputText Input(const std::string& text) {
  InputText input{"net.json", text};
  input.bytes.reserve(text.size() + 64);  // as ReadInput does, for the parser
  return input;
}

class FabricDocumentTest : public ::testing::Test {
 protected:
  void Load(const std::string& text) {
    FabricBuilder builder;
    const MaybeError error = LoadFabricDocument(Input(text), &names, builder, warnings);
    if (error) throw std::runtime_error(error->Text());
    fabric = builder.Build();
  }

  const IBNode& Node(std::uint64_t guid) {
    const IBNode* node = fabric->getNodeByGuid(guid);
    if (node == nullptr) throw std::logic_error("no such node");
    return *node;
  }
  const IBPort& Port(std::uint64_t guid, std::uint8_t num) {
    const IBPort* port = Node(guid).getPort(num);
    if (port == nullptr) throw std::logic_error("no such port");
    return *port;
  }

  NodeNameMap names;
  Warnings warnings;
  std::unique_ptr<IBFabric> fabric;
};

TEST_F(FabricDocumentTest, ANodeTakesWhatEveryKeySays) {
  Load(Document(R"({"guid": "0x11", "type": "switch", "name": "leaf1", "numPorts": 41,
                    "systemGuid": "0x77", "displayName": "rack 1", "smdbRank": 2, "special": true,
                    "multiAsic": true, "asic": "A3", "planesNumber": 4, "suitablePlane": 2,
                    "planes": [2, 3], "flids": [7, 49152], "ports": []})"));
  const IBNode& node = Node(0x11);
  EXPECT_EQ(node.guid, 0x11U);
  EXPECT_EQ(node.nodeType, NodeTypeSwitch);
  EXPECT_EQ(node.name, "leaf1");
  EXPECT_EQ(node.numPorts, 41);
  EXPECT_EQ(node.systemGuid, 0x77U);
  EXPECT_EQ(node.getAlternativeName(), "rack 1");
  EXPECT_EQ(node.smdbRank, 2);
  EXPECT_TRUE(node.isSpecialNode());
  EXPECT_TRUE(node.isVortaSwitch());
  EXPECT_EQ(node.getVortaSwitchASIC(), "A3");
  EXPECT_EQ(node.getPlanesNumber(), 4);
  EXPECT_EQ(node.getSuitablePlane(), 2);
  EXPECT_FALSE(node.isOnSamePlane(1));
  EXPECT_TRUE(node.isOnSamePlane(2));
  EXPECT_TRUE(node.isOnSamePlane(3));
  EXPECT_THAT(node.GetFlids(), ElementsAre(7, 49152));
}

TEST_F(FabricDocumentTest, ANodeNeedsFourKeysOnly) {
  Load(Document(R"({"guid": "0x11", "type": "switch", "name": "leaf1", "numPorts": 4})"));
  const IBNode& node = Node(0x11);
  EXPECT_EQ(node.systemGuid, 0x11U);
  EXPECT_EQ(node.getAlternativeName(), "leaf1");
  EXPECT_EQ(node.smdbRank, 255);
  EXPECT_FALSE(node.isSpecialNode());
  EXPECT_FALSE(node.isVortaSwitch());
  EXPECT_EQ(node.getVortaSwitchASIC(), "");
  EXPECT_EQ(node.getPlanesNumber(), 1);
  EXPECT_EQ(node.getSuitablePlane(), 1);
  EXPECT_THAT(node.GetPlanes(), ElementsAre(1));
  EXPECT_THAT(node.GetFlids(), IsEmpty());
  EXPECT_EQ(node.getPort(1), nullptr);
}

TEST_F(FabricDocumentTest, ANodeIsASwitchAnAdapterOrARouter) {
  Load(Document(R"({"guid": "0x1", "type": "switch", "name": "a", "numPorts": 1},
                   {"guid": "0x2", "type": "ca", "name": "b", "numPorts": 1},
                   {"guid": "0x3", "type": "router", "name": "c", "numPorts": 1})"));
  EXPECT_EQ(Node(1).nodeType, 2U);
  EXPECT_EQ(Node(2).nodeType, 1U);
  EXPECT_EQ(Node(3).nodeType, 3U);
}

TEST_F(FabricDocumentTest, KeysMayComeInAnyOrderAndEscaped) {
  Load(R"({"nodes": [{"numPorts": 4, "na\u006de": "leaf1", "type": "switch", "guid": "0x11"}],
           "version": 1, "format": "fabscope-fabric"})");
  EXPECT_EQ(Node(0x11).name, "leaf1");
}

TEST_F(FabricDocumentTest, GuidsHaveOneToSixteenDigitsOfEitherCase) {
  Load(Document(Switch("0x1") + "," + Switch("0x000000000000aBcD") + "," +
                Switch("0xFFFFFFFFFFFFFFFF")));
  EXPECT_EQ(Node(0x1).name, "s0x1");
  EXPECT_EQ(Node(0xabcd).name, "s0x000000000000aBcD");
  EXPECT_EQ(Node(0xffffffffffffffff).name, "s0xFFFFFFFFFFFFFFFF");
}

TEST_F(FabricDocumentTest, TheOrderOfTheNodesIsTheModels) {
  Load(Document(Switch("0x9") + "," + Switch("0x1") + "," + Switch("0x5")));
  EXPECT_LT(&Node(9), &Node(1));
  EXPECT_LT(&Node(1), &Node(5));
  std::vector<std::uint64_t> switches;
  for (const IBNode* node : fabric->switches) switches.push_back(node->guid);
  EXPECT_THAT(switches, ElementsAre(9, 1, 5));
}

TEST_F(FabricDocumentTest, AFabricMayHaveNoNode) {
  Load(Document(""));
  EXPECT_THAT(fabric->GetNodes(), IsEmpty());
}

TEST_F(FabricDocumentTest, SmallestValues) {
  Load(Document(Switch("0x1", R"(, "systemGuid": "0x0", "smdbRank": 0, "planesNumber": -2147483648,
                    "suitablePlane": -2147483648, "flids": [0], "ports": [{"num": 1, "state": 0,
                    "speed": 0, "planeMultiplicity": -2147483648, "group": -2147483648}])") +
                R"(,{"guid": "0x2", "type": "switch", "name": "", "numPorts": 0})"));
  EXPECT_EQ(Node(1).systemGuid, 0U);
  EXPECT_EQ(Node(1).smdbRank, 0);
  EXPECT_EQ(Node(1).getPlanesNumber(), leastInt);
  EXPECT_EQ(Node(1).getSuitablePlane(), leastInt);
  EXPECT_THAT(Node(1).GetPlanes(), ElementsAre(leastInt));
  EXPECT_THAT(Node(1).GetFlids(), ElementsAre(0));
  EXPECT_EQ(Port(1, 1).GetState(), 0U);
  EXPECT_EQ(Port(1, 1).speed, 0U);
  EXPECT_EQ(Port(1, 1).GetPlaneMultiplicity(), leastInt);
  EXPECT_EQ(Port(1, 1).GetGroup().value().number, leastInt);
  EXPECT_EQ(Node(2).numPorts, 0);
  EXPECT_EQ(Node(2).name, "");
}

TEST_F(FabricDocumentTest, GreatestValues) {
  Load(Document(R"({"guid": "0x1", "type": "switch", "name": "a", "numPorts": 255,
                    "systemGuid": "0xffffffffffffffff", "smdbRank": 255,
                    "planesNumber": 2147483647, "suitablePlane": 2147483647,
                    "planes": [2147483647, -2147483648], "flids": [65535],
                    "ports": [{"num": 255, "state": 4294967295, "speed": 4294967295,
                               "planeMultiplicity": 2147483647, "group": 2147483647}]})",
                R"(, "aports": [{"ports": [["0x1", 255]], "asymmetry": 18446744073709551615}])"));
  EXPECT_EQ(Node(1).numPorts, 255);
  EXPECT_EQ(Node(1).systemGuid, 0xffffffffffffffffU);
  EXPECT_EQ(Node(1).smdbRank, 255);
  EXPECT_EQ(Node(1).getPlanesNumber(), greatestInt);
  EXPECT_EQ(Node(1).getSuitablePlane(), greatestInt);
  EXPECT_THAT(Node(1).GetPlanes(), ElementsAre(greatestInt, leastInt));
  EXPECT_THAT(Node(1).GetFlids(), ElementsAre(65535));
  EXPECT_EQ(Port(1, 255).GetState(), 0xffffffffU);
  EXPECT_EQ(Port(1, 255).speed, 0xffffffffU);
  EXPECT_EQ(Port(1, 255).GetPlaneMultiplicity(), greatestInt);
  EXPECT_EQ(Port(1, 255).GetGroup().value().number, greatestInt);
  EXPECT_EQ(Port(1, 255).GetAPort()->asymmetry, 0xffffffffffffffffU);
}

TEST_F(FabricDocumentTest, PlanesFollowTheSuitablePlaneWhereverItStands) {
  Load(Document(Switch("0x1", R"(, "suitablePlane": 3)") + "," +
                Switch("0x2", R"(, "planes": [], "suitablePlane": 3)")));
  EXPECT_THAT(Node(1).GetPlanes(), ElementsAre(3));
  EXPECT_THAT(Node(2).GetPlanes(), IsEmpty());
}

TEST_F(FabricDocumentTest, FlidsAreASet) {
  Load(Document(Switch("0x1", R"(, "flids": [9, 2, 9, 1])")));
  EXPECT_THAT(Node(1).GetFlids(), ElementsAre(1, 2, 9));
}

TEST_F(FabricDocumentTest, ALinkJoinsTwoPortsAndMakesThemActive) {
  Load(Document(Switch("0x1") + "," + Switch("0x2"),
                R"(, "links": [{"a": "0x1", "aPort": 3, "b": "0x2", "bPort": 8}])"));
  const IBPort& a = Port(1, 3);
  const IBPort& b = Port(2, 8);
  EXPECT_EQ(a.remotePort, &b);
  EXPECT_EQ(b.remotePort, &a);
  for (const IBPort* end : {&a, &b}) {
    EXPECT_EQ(end->GetState(), 4U);
    EXPECT_EQ(end->speed, 0U);
    EXPECT_TRUE(end->symmetric);
    EXPECT_FALSE(end->fnm);
    EXPECT_FALSE(end->fnm1);
    EXPECT_TRUE(end->inSubFabric);
    EXPECT_EQ(end->GetPlaneMultiplicity(), 1);
    EXPECT_EQ(end->GetGroup(), std::nullopt);
    EXPECT_EQ(end->GetAPort(), nullptr);
  }
  EXPECT_EQ(a.node, &Node(1));
  EXPECT_EQ(b.num, 8);
  EXPECT_EQ(Node(1).getPort(2), nullptr);
  EXPECT_EQ(Node(2).getPort(3), nullptr);
}

TEST_F(FabricDocumentTest, SpeedAndSymmetryOfALinkHoldForBothEnds) {
  Load(Document(Switch("0x1") + "," + Switch("0x2"),
                R"(, "links": [{"speed": "NDR", "symmetric": false,
                                "a": "0x1", "aPort": 1, "b": "0x2", "bPort": 1}])"));
  for (const IBPort* end : {&Port(1, 1), &Port(2, 1)}) {
    EXPECT_EQ(end->speed, 0x800U);
    EXPECT_FALSE(end->isSymmetricLink());
  }
}

TEST_F(FabricDocumentTest, ALinkMayJoinTwoPortsOfOneNode) {
  Load(Document(Switch("0x1"), R"(, "links": [{"a": "0x1", "aPort": 1, "b": "0x1", "bPort": 2}])"));
  EXPECT_EQ(Port(1, 1).remotePort, &Port(1, 2));
  EXPECT_EQ(Port(1, 2).remotePort, &Port(1, 1));
}

TEST_F(FabricDocumentTest, ASpeedIsANameOrItsCode) {
  const std::vector<std::pair<std::string, std::uint32_t>> speeds{
      {"\"SDR\"", 0x1},       {"\"DDR\"", 0x2},   {"\"QDR\"", 0x4},       {"\"FDR\"", 0x100},
      {"\"EDR\"", 0x200},     {"\"HDR\"", 0x400}, {"\"NDR\"", 0x800},     {"\"FDR10\"", 0x10000},
      {"\"EDR20\"", 0x20000}, {"1024", 0x400},    {"\"XDR\"", 0x1000000}, {"12345", 12345},
  };
  for (const auto& [text, code] : speeds) {
    Load(Document(Switch("0x1", R"(, "ports": [{"num": 1, "speed": )" + text + "}]")));
    EXPECT_EQ(Port(1, 1).speed, code) << text;
  }
}

TEST_F(FabricDocumentTest, APortTakesWhatEveryKeySays) {
  Load(Document(Switch("0x1", R"(, "ports": [{"num": 5, "state": 2, "speed": "HDR",
      "symmetric": false, "fnm": true, "fnm1": true, "inSubFabric": false, "planeMultiplicity": 4,
      "group": 0}])")));
  const IBPort& port = Port(1, 5);
  EXPECT_EQ(port.num, 5);
  EXPECT_EQ(port.GetState(), 2U);
  EXPECT_EQ(port.speed, 0x400U);
  EXPECT_FALSE(port.isSymmetricLink());
  EXPECT_TRUE(port.isFNMPort());
  EXPECT_TRUE(port.isFNM1Port());
  EXPECT_FALSE(port.getInSubFabric());
  EXPECT_EQ(port.GetPlaneMultiplicity(), 4);
  EXPECT_EQ(port.GetGroup().value().number, 0);
  EXPECT_EQ(port.remotePort, nullptr);
}

TEST_F(FabricDocumentTest, EachOfTheTwoFnmFlagsStandsForItself) {
  Load(
      Document(Switch("0x1", R"(, "ports": [{"num": 1, "fnm": true}, {"num": 2, "fnm1": true}])")));
  EXPECT_TRUE(Port(1, 1).isFNMPort());
  EXPECT_FALSE(Port(1, 1).isFNM1Port());
  EXPECT_FALSE(Port(1, 2).isFNMPort());
  EXPECT_TRUE(Port(1, 2).isFNM1Port());
}

TEST_F(FabricDocumentTest, APortWithoutLinkIsDown) {
  Load(Document(Switch("0x1", R"(, "ports": [{"num": 5}])")));
  const IBPort& port = Port(1, 5);
  EXPECT_EQ(port.GetState(), 1U);
  EXPECT_EQ(port.speed, 0U);
  EXPECT_TRUE(port.symmetric);
  EXPECT_FALSE(port.fnm);
  EXPECT_FALSE(port.fnm1);
  EXPECT_TRUE(port.inSubFabric);
  EXPECT_EQ(port.GetPlaneMultiplicity(), 1);
  EXPECT_EQ(port.GetGroup(), std::nullopt);
}

TEST_F(FabricDocumentTest, WhatAPortSaysOverridesItsLinkAtThatEndOnly) {
  Load(Document(Switch("0x1", R"(, "ports": [{"num": 1, "state": 3, "speed": "SDR",
                                              "symmetric": true}])") +
                    "," + Switch("0x2"),
                R"(, "links": [{"a": "0x2", "aPort": 1, "b": "0x1", "bPort": 1, "speed": "EDR",
                                "symmetric": false}])"));
  EXPECT_EQ(Port(1, 1).GetState(), 3U);
  EXPECT_EQ(Port(1, 1).speed, 0x1U);
  EXPECT_TRUE(Port(1, 1).symmetric);
  EXPECT_EQ(Port(2, 1).GetState(), 4U);
  EXPECT_EQ(Port(2, 1).speed, 0x200U);
  EXPECT_FALSE(Port(2, 1).symmetric);
}

TEST_F(FabricDocumentTest, APortWithAttributesKeepsTheOtherValuesOfItsLink) {
  Load(Document(Switch("0x1", R"(, "ports": [{"num": 1, "group": 6}])") + "," + Switch("0x2"),
                R"(, "links": [{"a": "0x1", "aPort": 1, "b": "0x2", "bPort": 1, "speed": "EDR",
                                "symmetric": false}])"));
  EXPECT_EQ(Port(1, 1).GetState(), 4U);
  EXPECT_EQ(Port(1, 1).speed, 0x200U);
  EXPECT_FALSE(Port(1, 1).symmetric);
}

TEST_F(FabricDocumentTest, AggregatedPortsAreSharedByTheirMembers) {
  Load(Document(Switch("0x1") + "," + Switch("0x2"),
                R"(, "aports": [{"ports": [["0x1", 1], ["0x2", 1]]},
                                {"asymmetry": 12, "ports": [["0x1", 2]]}])"));
  ASSERT_THAT(fabric->GetAPorts(), SizeIs(2));
  EXPECT_EQ(Port(1, 1).GetAPort(), &fabric->GetAPorts()[0]);
  EXPECT_EQ(Port(2, 1).GetAPort(), &fabric->GetAPorts()[0]);
  EXPECT_EQ(Port(1, 2).GetAPort(), &fabric->GetAPorts()[1]);
  EXPECT_EQ(Port(1, 1).GetAPort()->asymmetry, 0U);
  EXPECT_EQ(Port(1, 2).GetAPort()->asymmetry, 12U);
}

TEST_F(FabricDocumentTest, LinksAndAggregatedPortsMayStandBeforeTheirNodes) {
  Load(R"({"links": [{"a": "0x1", "aPort": 1, "b": "0x2", "bPort": 2}],
           "aports": [{"ports": [["0x2", 2]]}],
           "nodes": [)" +
       Switch("0x1") + "," + Switch("0x2") + R"(], "format": "fabscope-fabric", "version": 1})");
  EXPECT_EQ(Port(1, 1).remotePort, &Port(2, 2));
  EXPECT_EQ(Port(2, 2).GetAPort(), &fabric->GetAPorts()[0]);
}

TEST_F(FabricDocumentTest, PortsMayStandBeforeTheNumberOfPorts) {
  Load(Document(R"({"ports": [{"state": 2, "num": 3}], "numPorts": 3, "name": "a",
                    "type": "ca", "guid": "0x1"})"));
  EXPECT_EQ(Port(1, 3).GetState(), 2U);
}

TEST_F(FabricDocumentTest, ListsMayBeEmpty) {
  Load(Document(Switch("0x1", R"(, "flids": [], "ports": [])"), R"(, "links": [], "aports": [])"));
  EXPECT_THAT(fabric->GetPorts(), IsEmpty());
  EXPECT_THAT(fabric->GetAPorts(), IsEmpty());
}

TEST_F(FabricDocumentTest, ControlCharactersOfTextsBecomeQuestionMarks) {
  Load(Document(Switch("0x1", R"(, "displayName": "\u001b[1m\u007f",
                                  "asic": "A\u0000B\r\n\u001f \u0020")") +
                R"(,{"guid": "0x2", "type": "ca", "name": "\t\"h\\1\"\b/\f", "numPorts": 1})"));
  EXPECT_EQ(Node(1).getAlternativeName(), "?[1m?");
  EXPECT_EQ(Node(1).getVortaSwitchASIC(), "A?B???  ");
  EXPECT_EQ(Node(2).name, "?\"h\\1\"?/?");
  EXPECT_EQ(Node(2).getAlternativeName(), "?\"h\\1\"?/?");
}

TEST_F(FabricDocumentTest, OtherCharactersOfTextsStay) {
  Load(Document(
      R"({"guid": "0x2", "type": "ca", "name": "caf\u00e9 \ud83d\ude00 é", "numPorts": 1})"));
  EXPECT_EQ(Node(2).name, "caf\xc3\xa9 \xf0\x9f\x98\x80 \xc3\xa9");
}

TEST_F(FabricDocumentTest, AGivenNameReplacesNameAndDisplayName) {
  names = {{0x1, "rack 7"}, {0x9, "elsewhere"}};
  Load(Document(Switch("0x1", R"(, "displayName": "old", "asic": "A1")") + "," +
                Switch("0x2", R"(, "displayName": "kept")")));
  EXPECT_EQ(Node(1).name, "rack 7");
  EXPECT_EQ(Node(1).getAlternativeName(), "rack 7");
  EXPECT_EQ(Node(1).getVortaSwitchASIC(), "A1");
  EXPECT_EQ(Node(2).name, "s0x2");
  EXPECT_EQ(Node(2).getAlternativeName(), "kept");
}

TEST_F(FabricDocumentTest, AGivenNameDoesNotChangeTheOrder) {
  names = {{0x1, "z"}, {0x2, "a"}};
  Load(Document(Switch("0x1") + "," + Switch("0x2")));
  EXPECT_LT(&Node(1), &Node(2));
}

TEST_F(FabricDocumentTest, ADocumentMayHaveAByteOrderMarkAndBlanksAround) {
  Load("\xef\xbb\xbf \r\n\t" + Document(Switch("0x1")) + "\r\n \t\n");
  EXPECT_EQ(Node(1).name, "s0x1");
}

// Writing.

// Every attribute of the model. Ports that have neither cable nor attribute are as good as absent.
std::string Snapshot(const IBFabric& fabric) {
  std::ostringstream text;
  for (const IBNode& node : fabric.GetNodes()) {
    text << node.guid << ' ' << node.systemGuid << " type " << int{node.nodeType} << " rank "
         << int{node.smdbRank} << " ports " << int{node.numPorts} << ' ' << node.special
         << node.multiAsic << " planes " << node.getPlanesNumber() << ' ' << node.getSuitablePlane()
         << ':' << ::testing::PrintToString(node.GetPlanes()) << " flids "
         << ::testing::PrintToString(node.GetFlids()) << ' ' << node.name << '|'
         << node.getAlternativeName() << '|' << node.getVortaSwitchASIC() << '\n';
  }
  const auto& aports = fabric.GetAPorts();
  for (const IBPort& port : fabric.GetPorts()) {
    text << port.node->guid << ':' << int{port.num} << " state " << port.GetState() << " speed "
         << port.speed << ' ' << port.symmetric << port.fnm << port.fnm1 << port.inSubFabric
         << " multiplicity " << port.GetPlaneMultiplicity();
    if (port.remotePort != nullptr) {
      text << " to " << port.remotePort->node->guid << ':' << int{port.remotePort->num};
    }
    if (port.GetGroup()) text << " group " << port.GetGroup()->number;
    for (std::size_t i = 0; i < aports.size(); ++i) {
      if (port.GetAPort() == &aports[i]) text << " aport " << i << ' ' << aports[i].asymmetry;
    }
    text << '\n';
  }
  return text.str();
}

TEST_F(FabricDocumentTest, DefaultsAreNotWritten) {
  TestFabric made;
  made.Switch("root", 4).Switch("leaf", 4).Host("h1");
  made.Link("leaf", 4, "root", 1).Link("leaf", 1, "h1", 1, true, 0);
  EXPECT_EQ(FabricDocumentText(made.Build()), R"({"format":"fabscope-fabric","version":1,
"nodes":[
{"guid":"0x0000000000000001","type":"switch","name":"root","numPorts":4},
{"guid":"0x0000000000000002","type":"switch","name":"leaf","numPorts":4},
{"guid":"0x0000000000000003","type":"ca","name":"h1","numPorts":1}],
"links":[
{"a":"0x0000000000000001","aPort":1,"b":"0x0000000000000002","bPort":4,"speed":"HDR"},
{"a":"0x0000000000000002","aPort":1,"b":"0x0000000000000003","bPort":1}],
"aports":[]}
)");
}

TEST_F(FabricDocumentTest, AnEmptyFabricIsWritten) {
  EXPECT_EQ(FabricDocumentText(*FabricBuilder().Build()),
            "{\"format\":\"fabscope-fabric\",\"version\":1,\n\"nodes\":[],\n\"links\":[],\n"
            "\"aports\":[]}\n");
}

// Two nodes with no attribute at its default, and a link whose ends differ.
constexpr const char* fullDocument =
    R"({"format":"fabscope-fabric","version":1,
"nodes":[
{"guid":"0x0000000000000011","type":"switch","name":"leaf \"1\"","numPorts":41,)"
    R"("systemGuid":"0x0000000000000077","displayName":"rack\\1","smdbRank":2,"special":true,)"
    R"("multiAsic":true,"asic":"A3","planesNumber":4,"suitablePlane":2,"planes":[2,-3],)"
    R"("flids":[7,49152],"ports":[{"num":2,"speed":"EDR20","group":-5},)"
    R"({"num":41,"state":2,"speed":5,"symmetric":false,"fnm":true,"fnm1":true,)"
    R"("inSubFabric":false,"planeMultiplicity":4,"group":0}]},
{"guid":"0x0000000000000012","type":"router","name":"gate","numPorts":2,"planes":[],)"
    R"("ports":[{"num":1,"state":3,"speed":0,"symmetric":true}]}],
"links":[
{"a":"0x0000000000000011","aPort":1,"b":"0x0000000000000012","bPort":1,)"
    R"("speed":7,"symmetric":false}],
"aports":[
{"ports":[["0x0000000000000011",1],["0x0000000000000012",2]],)"
    R"("asymmetry":18446744073709551615},
{"ports":[["0x0000000000000011",40]]},
{"ports":[]}]}
)";

TEST_F(FabricDocumentTest, EverythingElseIsWritten) {
  Load(fullDocument);
  EXPECT_EQ(FabricDocumentText(*fabric), fullDocument);
}

TEST_F(FabricDocumentTest, ADocumentReadsBackAsTheSameModel) {
  Load(fullDocument);
  const std::string model = Snapshot(*fabric);
  Load(FabricDocumentText(*fabric));
  EXPECT_EQ(Snapshot(*fabric), model);
}

TEST_F(FabricDocumentTest, LongTextsAreCutWithAWarning) {
  const std::string longest(MostTextBytes, 'x');
  Load(Document(R"({"guid": "0x11", "type": "switch", "numPorts": 1, "name": ")" + longest + R"("},
                  {"guid": "0x12", "type": "switch", "numPorts": 1, "name": "b",
                   "displayName": ")" +
                longest + R"(y", "asic": ")" + longest + R"(z"})"));
  EXPECT_EQ(Node(0x11).name, longest);
  EXPECT_EQ(Node(0x12).getAlternativeName(), longest);
  EXPECT_EQ(Node(0x12).getVortaSwitchASIC(), longest);
  const std::string cut = ": warning: text longer than 256 bytes, cut there";
  EXPECT_THAT(warnings.Lines("net"), ElementsAre("net:3" + cut, "net:3" + cut));
}

TEST_F(FabricDocumentTest, ADumpWrittenAsADocumentReadsBackAsTheSameModel) {
  FabricBuilder builder;
  const regExp special("n[12]$");
  ASSERT_EQ(LoadFabric(FABSCOPE_TEST_DATA "/tree-32h.topo", nullptr, &special, builder, warnings),
            std::nullopt);
  const auto original = builder.Build();
  Load(FabricDocumentText(*original));
  EXPECT_EQ(Snapshot(*fabric), Snapshot(*original));
}

// A link is written with what its first end has; the other end tells how it differs.
TEST_F(FabricDocumentTest, EndsOfALinkThatDifferReadBackAsTheyWere) {
  PortSpec first;
  first.num = 1;
  PortSpec second = first;
  first.speed = 0x200;
  first.symmetric = false;
  second.speed = 0;
  second.state = 2;
  TestFabric made;
  made.Switch("a").Switch("b").Link("b", 1, "a", 1).Port("a", first).Port("b", second);
  Load(FabricDocumentText(made.Build()));
  EXPECT_EQ(Snapshot(*fabric), Snapshot(made.Build()));
  EXPECT_EQ(Port(1, 1).speed, 0x200U);
  EXPECT_EQ(Port(2, 1).speed, 0U);
}

TEST_F(FabricDocumentTest, ABareUncabledPortIsNotWritten) {
  Load(Document(Switch("0x1", R"(, "ports": [{"num": 1}])")));
  EXPECT_EQ(FabricDocumentText(*fabric), R"({"format":"fabscope-fabric","version":1,
"nodes":[
{"guid":"0x0000000000000001","type":"switch","name":"s0x1","numPorts":8}],
"links":[],
"aports":[]}
)");
}

TEST_F(FabricDocumentTest, ANameThatIsNotUtf8IsWrittenWithReplacementCharacters) {
  TestFabric made;
  made.Switch("caf\xe9 1");
  EXPECT_THAT(FabricDocumentText(made.Build()),
              ::testing::HasSubstr("\"name\":\"caf\xef\xbf\xbd 1\",\"numPorts\":16}"));
  Load(FabricDocumentText(made.Build()));
  EXPECT_EQ(Node(1).name, "caf\xef\xbf\xbd 1");
}

}  // namespace
}  // namespace fabscope::internal
