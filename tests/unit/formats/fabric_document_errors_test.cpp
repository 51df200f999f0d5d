#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <string_view>

#include "formats/fabric_document.h"
#include "formats/load_fabric.h"

namespace fabscope::internal {
namespace {

using ::testing::StartsWith;

// What is wrong with a document; an empty text when nothing is.
std::string Error(const std::string& text) {
  InputText input{"net.json", text};
  input.bytes.reserve(text.size() + 64);  // as ReadInput does, for the parser
  FabricBuilder builder;
  Warnings warnings;
  const MaybeError error = LoadFabricDocument(input, nullptr, builder, warnings);
  return error ? error->Text() : "";
}

constexpr std::string_view head = R"({"format":"fabscope-fabric","version":1,"nodes":)";

// A document whose second line is a list of nodes, and whose third line is the rest.
std::string ErrorOfNodes(const std::string& nodes) {
  return Error(std::string(head) + "[\n" + nodes + "\n]}");
}
std::string ErrorBehindNodes(const std::string& rest) {
  return Error(std::string(head) +
               R"([{"guid":"0x1","type":"switch","name":"a","numPorts":8},)"
               R"({"guid":"0x2","type":"ca","name":"h","numPorts":1}],)"
               "\n" +
               rest + "}");
}

// A node with one more member, which begins at column 57 of line 2.
std::string ErrorOfMember(const std::string& member) {
  return ErrorOfNodes(R"({"guid":"0x1","type":"switch","name":"a","numPorts":8,  )" + member + "}");
}
// A port with one more member, which begins at column 75 of line 2.
std::string ErrorOfPort(const std::string& member) {
  return ErrorOfMember(R"("ports":[{"num":1,)" + member + "}]");
}
// A link with one more member, which begins at column 46 of line 2.
std::string ErrorOfLink(const std::string& member) {
  return ErrorBehindNodes(R"("links":[{"a":"0x1","aPort":1,"b":"0x2","bPort":1,)" + member + "}]");
}

TEST(FabricDocumentErrorsTest, TheTextsAroundTheMistakesHaveNone) {
  EXPECT_EQ(ErrorOfNodes(""), "");
  EXPECT_EQ(ErrorBehindNodes(R"("links":[])"), "");
  EXPECT_EQ(ErrorOfMember(R"("special":true)"), "");
  EXPECT_EQ(ErrorOfPort(R"("fnm":true)"), "");
  EXPECT_EQ(ErrorOfLink(R"("speed":"HDR")"), "");
}

// Keys.

TEST(FabricDocumentErrorsTest, AnUnknownKeyIsNamedWithThoseThatAreKnown) {
  EXPECT_EQ(ErrorBehindNodes(R"("nodess":[])"),
            "net.json:2:1: unknown key \"nodess\" in the document, expected one of format, "
            "version, nodes, links, aports");
  EXPECT_EQ(ErrorOfMember(R"("smdbrank":1)"),
            "net.json:2:57: unknown key \"smdbrank\" in a node, expected one of guid, type, name, "
            "numPorts, systemGuid, displayName, smdbRank, special, multiAsic, asic, planesNumber, "
            "suitablePlane, planes, flids, ports");
  EXPECT_EQ(ErrorOfPort(R"("Fnm":true)"),
            "net.json:2:75: unknown key \"Fnm\" in a port, expected one of num, state, speed, "
            "symmetric, fnm, fnm1, inSubFabric, planeMultiplicity, group");
  EXPECT_EQ(ErrorOfLink(R"("width":4)"),
            "net.json:2:51: unknown key \"width\" in a link, expected one of a, aPort, b, bPort, "
            "speed, symmetric");
  EXPECT_EQ(ErrorBehindNodes(R"("aports":[{"ports":[],"name":"p"}])"),
            "net.json:2:23: unknown key \"name\" in an aggregated port, expected one of ports, "
            "asymmetry");
}

TEST(FabricDocumentErrorsTest, AnUnknownKeyIsShownWithoutControlCharacters) {
  EXPECT_EQ(ErrorBehindNodes(R"("\u001b[2J":[])"),
            "net.json:2:1: unknown key \"?[2J\" in the document, expected one of format, version, "
            "nodes, links, aports");
}

TEST(FabricDocumentErrorsTest, AnUnknownKeyIsAnErrorWhateverItsValue) {
  const std::string deep(100000, '[');
  EXPECT_EQ(ErrorBehindNodes(R"("x":)" + deep),
            "net.json:2:1: unknown key \"x\" in the document, expected one of format, version, "
            "nodes, links, aports");
}

TEST(FabricDocumentErrorsTest, AKeyIsGivenOnce) {
  EXPECT_EQ(ErrorBehindNodes(R"("version":1)"), "net.json:2:1: key \"version\" is given twice");
  EXPECT_EQ(ErrorOfMember(R"("name":"b")"), "net.json:2:57: key \"name\" is given twice");
  EXPECT_EQ(ErrorOfMember(R"("n\u0061me":"b")"), "net.json:2:57: key \"name\" is given twice");
  EXPECT_EQ(ErrorOfMember(R"("flids":[],"flids":[1])"),
            "net.json:2:68: key \"flids\" is given twice");
  EXPECT_EQ(ErrorOfPort(R"("num":1)"), "net.json:2:75: key \"num\" is given twice");
  EXPECT_EQ(ErrorOfLink(R"("bPort":1)"), "net.json:2:51: key \"bPort\" is given twice");
  EXPECT_EQ(ErrorBehindNodes(R"("aports":[{"ports":[],"ports":[]}])"),
            "net.json:2:23: key \"ports\" is given twice");
}

TEST(FabricDocumentErrorsTest, ADocumentNeedsFormatVersionAndNodes) {
  EXPECT_EQ(Error("\n {}"), "net.json:2:2: the document has no \"format\"");
  EXPECT_EQ(Error(R"({"version":1,"nodes":[]})"), "net.json:1:1: the document has no \"format\"");
  EXPECT_EQ(Error(R"({"format":"fabscope-fabric","nodes":[]})"),
            "net.json:1:1: the document has no \"version\"");
  EXPECT_EQ(Error(R"({"format":"fabscope-fabric","version":1,"links":[]})"),
            "net.json:1:1: the document has no \"nodes\"");
}

TEST(FabricDocumentErrorsTest, ANodeNeedsGuidTypeNameAndNumPorts) {
  EXPECT_EQ(ErrorOfNodes("  {}"), "net.json:2:3: a node has no \"guid\"");
  EXPECT_EQ(ErrorOfNodes(R"({"type":"ca","name":"a","numPorts":1})"),
            "net.json:2:1: a node has no \"guid\"");
  EXPECT_EQ(ErrorOfNodes(R"({"guid":"0x1","name":"a","numPorts":1})"),
            "net.json:2:1: a node has no \"type\"");
  EXPECT_EQ(ErrorOfNodes(R"({"guid":"0x1","type":"ca","numPorts":1,"displayName":"a"})"),
            "net.json:2:1: a node has no \"name\"");
  EXPECT_EQ(ErrorOfNodes(R"({"guid":"0x1","type":"ca","name":"a"})"),
            "net.json:2:1: a node has no \"numPorts\"");
}

TEST(FabricDocumentErrorsTest, APortNeedsItsNumber) {
  EXPECT_EQ(ErrorOfMember(R"("ports":[{"state":1}])"), "net.json:2:66: a port has no \"num\"");
}

TEST(FabricDocumentErrorsTest, ALinkNeedsBothEnds) {
  EXPECT_EQ(ErrorBehindNodes(R"("links":[{"aPort":1,"b":"0x2","bPort":1}])"),
            "net.json:2:10: a link has no \"a\"");
  EXPECT_EQ(ErrorBehindNodes(R"("links":[{"a":"0x1","b":"0x2","bPort":1}])"),
            "net.json:2:10: a link has no \"aPort\"");
  EXPECT_EQ(ErrorBehindNodes(R"("links":[{"a":"0x1","aPort":1,"bPort":1}])"),
            "net.json:2:10: a link has no \"b\"");
  EXPECT_EQ(ErrorBehindNodes(R"("links":[{"a":"0x1","aPort":1,"b":"0x2"}])"),
            "net.json:2:10: a link has no \"bPort\"");
}

TEST(FabricDocumentErrorsTest, AnAggregatedPortNeedsItsPorts) {
  EXPECT_EQ(ErrorBehindNodes(R"("aports":[{"asymmetry":1}])"),
            "net.json:2:11: an aggregated port has no \"ports\"");
}

// Values.

TEST(FabricDocumentErrorsTest, TheFormatIsNamed) {
  EXPECT_EQ(Error(R"({"format":"fabscope-result","version":1,"nodes":[]})"),
            "net.json:1:11: not a fabric document, expected \"fabscope-fabric\"");
  EXPECT_EQ(Error(R"({"format":1,"version":1,"nodes":[]})"), "net.json:1:11: expected a string");
}

TEST(FabricDocumentErrorsTest, TheVersionIsOne) {
  for (const std::string_view version : {"2", "0", "-1", "1.0", "\"1\"", "null", "1e0"}) {
    EXPECT_EQ(Error(R"({"format":"fabscope-fabric","version":)" + std::string(version) + "}"),
              "net.json:1:39: unknown version of the format, expected 1")
        << version;
  }
}

TEST(FabricDocumentErrorsTest, ListsAreArrays) {
  EXPECT_EQ(Error(std::string(head) + "{}}"), "net.json:1:49: expected an array");
  EXPECT_EQ(ErrorBehindNodes(R"("links":null)"), "net.json:2:9: expected an array");
  EXPECT_EQ(ErrorBehindNodes(R"("aports":"none")"), "net.json:2:10: expected an array");
  EXPECT_EQ(ErrorBehindNodes(R"("aports":[{"ports":1}])"), "net.json:2:20: expected an array");
  EXPECT_EQ(ErrorOfMember(R"("planes":1)"), "net.json:2:66: expected an array");
  EXPECT_EQ(ErrorOfMember(R"("flids":{})"), "net.json:2:65: expected an array");
  EXPECT_EQ(ErrorOfMember(R"("ports":true)"), "net.json:2:65: expected an array");
}

TEST(FabricDocumentErrorsTest, ElementsOfListsAreObjects) {
  EXPECT_EQ(ErrorOfNodes("1"), "net.json:2:1: expected an object: a node");
  EXPECT_EQ(ErrorOfNodes("[{}]"), "net.json:2:1: expected an object: a node");
  EXPECT_EQ(ErrorOfMember(R"("ports":[1])"), "net.json:2:66: expected an object: a port");
  EXPECT_EQ(ErrorBehindNodes(R"("links":[null])"), "net.json:2:10: expected an object: a link");
  EXPECT_EQ(ErrorBehindNodes(R"("aports":["x"])"),
            "net.json:2:11: expected an object: an aggregated port");
}

TEST(FabricDocumentErrorsTest, ADeeplyNestedListIsAnErrorAtItsFirstLevel) {
  EXPECT_EQ(ErrorOfNodes(std::string(100000, '[') + std::string(100000, ']')),
            "net.json:2:1: expected an object: a node");
}

TEST(FabricDocumentErrorsTest, TextsAreStrings) {
  EXPECT_EQ(ErrorOfNodes(R"({"name":1})"), "net.json:2:9: expected a string");
  EXPECT_EQ(ErrorOfNodes(R"({"type":2})"), "net.json:2:9: expected a string");
  EXPECT_EQ(ErrorOfNodes(R"({"guid":17})"), "net.json:2:9: expected a string");
  EXPECT_EQ(ErrorOfMember(R"("displayName":null)"), "net.json:2:71: expected a string");
  EXPECT_EQ(ErrorOfMember(R"("asic":[])"), "net.json:2:64: expected a string");
  EXPECT_EQ(ErrorOfMember(R"("systemGuid":1)"), "net.json:2:70: expected a string");
  EXPECT_EQ(ErrorBehindNodes(R"("links":[{"a":1}])"), "net.json:2:15: expected a string");
}

TEST(FabricDocumentErrorsTest, FlagsAreTrueOrFalse) {
  EXPECT_EQ(ErrorOfMember(R"("special":1)"), "net.json:2:67: expected true or false");
  EXPECT_EQ(ErrorOfMember(R"("multiAsic":"true")"), "net.json:2:69: expected true or false");
  EXPECT_EQ(ErrorOfMember(R"("multiAsic":truex)"), "net.json:2:69: expected true or false");
  EXPECT_EQ(ErrorOfPort(R"("symmetric":null)"), "net.json:2:87: expected true or false");
  EXPECT_EQ(ErrorOfPort(R"("fnm":0)"), "net.json:2:81: expected true or false");
  EXPECT_EQ(ErrorOfPort(R"("fnm1":0)"), "net.json:2:82: expected true or false");
  EXPECT_EQ(ErrorOfPort(R"("inSubFabric":0)"), "net.json:2:89: expected true or false");
  EXPECT_EQ(ErrorOfLink(R"("symmetric":0)"), "net.json:2:63: expected true or false");
}

TEST(FabricDocumentErrorsTest, GuidsBeginWith0xAndHaveOneToSixteenDigits) {
  const std::string message =
      "net.json:2:9: not a GUID, expected \"0x\" and 1 to 16 hexadecimal "
      "digits";
  for (const std::string_view guid :
       {"", "1", "0x", "0X1", " 0x1", "0x1 ", "0x1g", "0x-1", "0x12345678901234567", "x1"}) {
    EXPECT_EQ(ErrorOfNodes(R"({"guid":")" + std::string(guid) + "\"}"), message) << guid;
  }
}

TEST(FabricDocumentErrorsTest, ATypeIsOneOfThree) {
  const std::string message =
      R"(net.json:2:9: unknown node type, expected "switch", "ca" or "router")";
  EXPECT_EQ(ErrorOfNodes(R"({"type":"Switch"})"), message);
  EXPECT_EQ(ErrorOfNodes(R"({"type":""})"), message);
}

TEST(FabricDocumentErrorsTest, NumbersBelow256) {
  const std::string message = ": expected a whole number from 0 to 255";
  for (const std::string_view number :
       {"256", "-1", "1.5", "1e1", "\"1\"", "null", "01", "99999999999999999999"}) {
    const std::string text(number);
    EXPECT_EQ(ErrorOfNodes(R"({"numPorts":)" + text + "}"), "net.json:2:13" + message) << text;
    EXPECT_EQ(ErrorOfMember(R"("smdbRank":)" + text), "net.json:2:68" + message) << text;
  }
}

TEST(FabricDocumentErrorsTest, PortNumbersAreFrom1To255) {
  const std::string message = ": expected a whole number from 1 to 255";
  for (const std::string_view number : {"0", "256", "-1", "1.5", "\"1\"", "null"}) {
    const std::string text(number);
    EXPECT_EQ(ErrorOfMember(R"("ports":[{"num":)" + text + "}]"), "net.json:2:73" + message);
    EXPECT_EQ(ErrorBehindNodes(R"("links":[{"aPort":)" + text + "}]"), "net.json:2:19" + message);
    EXPECT_EQ(ErrorBehindNodes(R"("links":[{"bPort":)" + text + "}]"), "net.json:2:19" + message);
    EXPECT_EQ(ErrorBehindNodes(R"("aports":[{"ports":[["0x1",)" + text + "]]}]"),
              "net.json:2:28" + message);
  }
}

TEST(FabricDocumentErrorsTest, FlidsAreBelow65536) {
  const std::string message = ": expected a whole number from 0 to 65535";
  EXPECT_EQ(ErrorOfMember(R"("flids":[65536])"), "net.json:2:66" + message);
  EXPECT_EQ(ErrorOfMember(R"("flids":[1,-1])"), "net.json:2:68" + message);
  EXPECT_EQ(ErrorOfMember(R"("flids":[1,"2"])"), "net.json:2:68" + message);
}

TEST(FabricDocumentErrorsTest, StatesAndSpeedCodesHave32Bits) {
  const std::string message = ": expected a whole number from 0 to 4294967295";
  EXPECT_EQ(ErrorOfPort(R"("state":4294967296)"), "net.json:2:83" + message);
  EXPECT_EQ(ErrorOfPort(R"("state":-1)"), "net.json:2:83" + message);
  EXPECT_EQ(ErrorOfPort(R"("speed":4294967296)"), "net.json:2:83" + message);
  EXPECT_EQ(ErrorOfLink(R"("speed":-1)"), "net.json:2:59" + message);
}

TEST(FabricDocumentErrorsTest, PlanesAndGroupsHaveASignAnd32Bits) {
  const std::string message = ": expected a whole number from -2147483648 to 2147483647";
  for (const std::string_view number : {"2147483648", "-2147483649", "0.5", "\"1\"", "true"}) {
    const std::string text(number);
    EXPECT_EQ(ErrorOfMember(R"("planesNumber":)" + text), "net.json:2:72" + message) << text;
    EXPECT_EQ(ErrorOfMember(R"("suitablePlane":)" + text), "net.json:2:73" + message) << text;
    EXPECT_EQ(ErrorOfMember(R"("planes":[)" + text + "]"), "net.json:2:67" + message) << text;
    EXPECT_EQ(ErrorOfPort(R"("planeMultiplicity":)" + text), "net.json:2:95" + message) << text;
    EXPECT_EQ(ErrorOfPort(R"("group":)" + text), "net.json:2:83" + message) << text;
  }
}

TEST(FabricDocumentErrorsTest, TheAsymmetryMarkHas64Bits) {
  const std::string message =
      "net.json:2:24: expected a whole number from 0 to 18446744073709551615";
  EXPECT_EQ(ErrorBehindNodes(R"("aports":[{"asymmetry":18446744073709551616}])"), message);
  EXPECT_EQ(ErrorBehindNodes(R"("aports":[{"asymmetry":-1}])"), message);
}

TEST(FabricDocumentErrorsTest, ASpeedNameIsKnown) {
  const std::string message = ": unknown speed, expected a name as \"HDR\" or the code as a number";
  EXPECT_EQ(ErrorOfPort(R"("speed":"4xHDR")"), "net.json:2:83" + message);
  EXPECT_EQ(ErrorOfPort(R"("speed":"hdr")"), "net.json:2:83" + message);
  EXPECT_EQ(ErrorOfLink(R"("speed":"")"), "net.json:2:59" + message);
}

TEST(FabricDocumentErrorsTest, AMemberOfAnAggregatedPortIsAPair) {
  const std::string message = "net.json:2:21: expected a port as [GUID, port number]";
  EXPECT_EQ(ErrorBehindNodes(R"("aports":[{"ports":[[]]}])"), message);
  EXPECT_EQ(ErrorBehindNodes(R"("aports":[{"ports":[["0x1"]]}])"), message);
  EXPECT_EQ(ErrorBehindNodes(R"("aports":[{"ports":[["0x1",1,2]]}])"), message);
  EXPECT_EQ(ErrorBehindNodes(R"("aports":[{"ports":[{}]}])"), "net.json:2:21: expected an array");
  EXPECT_EQ(ErrorBehindNodes(R"("aports":[{"ports":[[1,"0x1"]]}])"),
            "net.json:2:22: expected a string");
  EXPECT_EQ(ErrorBehindNodes(R"("aports":[{"ports":[["0x1","1"]]}])"),
            "net.json:2:28: expected a whole number from 1 to 255");
}

// What the fabric refuses.

TEST(FabricDocumentErrorsTest, ANodeGuidIsNotZeroAndGivenOnce) {
  EXPECT_EQ(ErrorOfNodes(R"({"guid":"0x0","type":"ca","name":"a","numPorts":1})"),
            "net.json:2:9: a node's GUID must not be 0");
  EXPECT_EQ(ErrorOfNodes(R"({"guid":"0xa","type":"ca","name":"a","numPorts":1},)"
                         "\n"
                         R"({"name":"b","guid":"0x0A","type":"ca","numPorts":1})"),
            "net.json:3:20: node GUID 0x000000000000000a is given twice");
}

TEST(FabricDocumentErrorsTest, APortNumberIsOneToTheNumberOfPortsAndGivenOnce) {
  const std::string port = "net.json:2:66: port ";
  EXPECT_EQ(ErrorOfMember(R"("ports":[{"num":9}])"),
            port + "9 of node 0x0000000000000001 does not exist: it has 8 ports");
  EXPECT_EQ(ErrorOfMember(R"("ports":[{"num":8},{"num":8}])"),
            "net.json:2:76: port 8 of node 0x0000000000000001 is given twice");
}

std::string ErrorOfEnds(const std::string& a, int aPort, const std::string& b, int bPort) {
  return ErrorBehindNodes(R"("links":[{"a":")" + a + R"(","aPort":)" + std::to_string(aPort) +
                          R"(,"b":")" + b + R"(","bPort":)" + std::to_string(bPort) + "}]");
}

TEST(FabricDocumentErrorsTest, ALinkJoinsPortsThatExist) {
  EXPECT_EQ(ErrorOfEnds("0x3", 1, "0x2", 1), "net.json:2:10: unknown node 0x0000000000000003");
  EXPECT_EQ(ErrorOfEnds("0x1", 1, "0x0", 1), "net.json:2:10: unknown node 0x0000000000000000");
  EXPECT_EQ(ErrorOfEnds("0x1", 9, "0x2", 1),
            "net.json:2:10: port 9 of node 0x0000000000000001 does not exist: it has 8 ports");
  EXPECT_EQ(ErrorOfEnds("0x1", 8, "0x2", 2),
            "net.json:2:10: port 2 of node 0x0000000000000002 does not exist: it has 1 port");
}

TEST(FabricDocumentErrorsTest, ALinkJoinsTwoPorts) {
  EXPECT_EQ(ErrorOfEnds("0x1", 4, "0x01", 4),
            "net.json:2:10: port 4 of node 0x0000000000000001 is linked to itself");
  EXPECT_EQ(ErrorOfEnds("0x1", 4, "0x1", 5), "");
}

TEST(FabricDocumentErrorsTest, APortHasOneLink) {
  EXPECT_EQ(ErrorBehindNodes(R"("links":[{"a":"0x1","aPort":1,"b":"0x2","bPort":1},)"
                             "\n"
                             R"({"a":"0x1","aPort":2,"b":"0x2","bPort":1}])"),
            "net.json:3:1: port 1 of node 0x0000000000000002 has a link already");
  EXPECT_EQ(ErrorBehindNodes(R"("links":[{"a":"0x1","aPort":1,"b":"0x2","bPort":1},)"
                             "\n"
                             R"({"b":"0x1","bPort":2,"a":"0x1","aPort":1}])"),
            "net.json:3:1: port 1 of node 0x0000000000000001 has a link already");
}

TEST(FabricDocumentErrorsTest, APortIsInOneAggregatedPort) {
  EXPECT_EQ(ErrorBehindNodes(R"("aports":[{"ports":[["0x1",1],["0x1",1]]}])"),
            "net.json:2:11: port 1 of node 0x0000000000000001 is in an aggregated port already");
  EXPECT_EQ(ErrorBehindNodes(R"("aports":[{"ports":[["0x1",1]]},)"
                             "\n"
                             R"({"ports":[["0x2",1],["0x1",1]]}])"),
            "net.json:3:1: port 1 of node 0x0000000000000001 is in an aggregated port already");
  EXPECT_EQ(ErrorBehindNodes(R"("aports":[{"ports":[["0x1",9]]}])"),
            "net.json:2:11: port 9 of node 0x0000000000000001 does not exist: it has 8 ports");
  EXPECT_EQ(ErrorBehindNodes(R"("aports":[{"ports":[["0x7",1]]}])"),
            "net.json:2:11: unknown node 0x0000000000000007");
}

// What stands behind the first mistake is not looked at: a file that is something else, or made to
// do harm, may have a million of them.
TEST(FabricDocumentErrorsTest, NothingIsReadBehindTheFirstMistake) {
  const std::string before = R"({"guid":"0x1","type":"switch","name":"a","numPorts":8)";
  const std::string behind = R"({"guid":"0x99","type":"ca","name":"z","numPorts":1})";
  const auto read = [&](const std::string& text) {
    InputText input{"net.json", text};
    input.bytes.reserve(text.size() + 64);
    FabricBuilder builder;
    Warnings warnings;
    const MaybeError error = LoadFabricDocument(input, nullptr, builder, warnings);
    const bool isAll = builder.FindNode(0x99) != GuidIndex::None;
    return std::string(error ? "wrong" : "right") + (isAll ? ", read on" : ", stopped");
  };
  const auto readNode = [&](const std::string& node) {
    return read(std::string(head) + "[" + node + "," + behind + "]}");
  };
  const auto readMember = [&](const std::string& member) {
    return readNode(before + "," + member + "}");
  };
  ASSERT_EQ(readMember(R"("asic":"x")"), "right, read on");

  for (const std::string node :
       {"1", "[]", "null", "x", R"({"guid":1})", R"({"guid":"1"})", R"({"guid" "0x1"})",
        R"({"name":"a"})", R"({"guid":"0x1","type":1,"name":"a","numPorts":1})",
        R"({"guid":"0x1","type":"hub","name":"a","numPorts":1})",
        R"({"guid":"0x1","type":"ca","name":1,"numPorts":1})",
        R"({"guid":"0x1","type":"ca","name":"\q","numPorts":1})",
        R"({"guid":"0x1","type":"ca","name":"a","numPorts":256})",
        R"({"guid":"0x0","type":"ca","name":"a","numPorts":1})"}) {
    EXPECT_EQ(readNode(node), "wrong, stopped") << node;
  }
  for (const std::string member : {R"("names":1)",
                                   R"("\q":1)",
                                   R"("name":"b")",
                                   R"("asic":"\q")",
                                   R"("systemGuid":1)",
                                   R"("systemGuid":"1")",
                                   R"("displayName":1)",
                                   R"("smdbRank":256)",
                                   R"("special":1)",
                                   R"("multiAsic":1)",
                                   R"("asic":1)",
                                   R"("planesNumber":0.5)",
                                   R"("suitablePlane":"1")",
                                   R"("planes":1)",
                                   R"("planes":[1,"2"])",
                                   R"("flids":1)",
                                   R"("flids":[65536])",
                                   R"("flids":[1 2])",
                                   R"("ports":1)",
                                   R"("ports":[1])",
                                   R"("ports":[{}])",
                                   R"("ports":[{"num":9}])",
                                   R"("ports":[{"num":1,"speed":"warp"}])",
                                   R"("ports":[{"num":1,"speed":"\q"}])",
                                   R"("ports":[{"num":1,"speed":x}])",
                                   R"("ports":[{"num":1,"group":1.5}])",
                                   R"("ports":[{"num":1},{"num":1}])"}) {
    EXPECT_EQ(readMember(member), "wrong, stopped") << member;
  }
  // Members of the document may come in any order.
  const auto readInFront = [&](const std::string& member) {
    return read("{" + member + R"(,"nodes":[)" + behind + "]}");
  };
  ASSERT_EQ(readInFront(R"("format":"fabscope-fabric","version":1)"), "right, read on");
  for (const std::string member :
       {R"("format":1)", R"("format":"fabscope-result")", R"("format":"\q")", R"("version":2)",
        R"("version":"1")", R"("links":1)", R"("links":[1])", R"("links":[{"a":"1"}])",
        R"("aports":[{}])", R"("aports":[{"ports":[["0x1"]]}])",
        R"("aports":[{"ports":[["0x1",1,2]]}])", R"("name":1)", R"("links":[],"links":[])",
        R"("version" 1)"}) {
    EXPECT_EQ(readInFront(member), "wrong, stopped") << member;
  }
}

// A document with a mistake has no links, as those stand for the whole of its nodes.
TEST(FabricDocumentErrorsTest, LinksAreMadeOfAWholeDocumentOnly) {
  const auto hasLink = [](const std::string& rest) {
    const std::string text =
        R"({"version":1,"nodes":[{"guid":"0x1","type":"switch","name":"a","numPorts":8}],)"
        R"("links":[{"a":"0x1","aPort":1,"b":"0x1","bPort":2}])" +
        rest;
    InputText input{"net.json", text};
    input.bytes.reserve(text.size() + 64);
    FabricBuilder builder;
    Warnings warnings;
    LoadFabricDocument(input, nullptr, builder, warnings);
    return builder.HasLink({0, 1});
  };
  const std::string format = R"(,"format":"fabscope-fabric")";
  ASSERT_TRUE(hasLink(format + "}"));
  EXPECT_FALSE(hasLink("}"));
  EXPECT_FALSE(hasLink(format + R"(,"aports":[{}]})"));
  EXPECT_FALSE(hasLink(format + R"(,"name":1})"));
  EXPECT_FALSE(hasLink(format + "}{}"));
}

// Malformed JSON.

constexpr const char* nothing = "malformed JSON: Empty: no JSON found";
constexpr const char* endsEarly = "malformed JSON: the text does not end with the closing brace";
constexpr const char* badStructure =
    "malformed JSON: The JSON document has an improper structure: missing or superfluous commas, "
    "braces, missing keys, etc.";

TEST(FabricDocumentErrorsTest, BytesThatAreNotUtf8AreShownWhereTheyStand) {
  EXPECT_EQ(ErrorOfNodes("{\"name\":\"caf\xe9\"}"),
            "net.json:2:13: malformed JSON: not valid UTF-8");
  EXPECT_EQ(Error("\xef\xbb\xbf{\n\"\xc0\x80\":1}"),
            "net.json:2:2: malformed JSON: not valid UTF-8");
}

TEST(FabricDocumentErrorsTest, EscapesAreKnown) {
  const std::string message = "net.json:2:9: malformed JSON: bad escape in a string";
  EXPECT_EQ(ErrorOfNodes(R"({"name":"a\q"})"), message);
  EXPECT_EQ(ErrorOfNodes(R"({"name":"\ud800"})"), message);
  EXPECT_EQ(ErrorOfNodes(R"({"guid":"0\x31"})"), message);
  EXPECT_EQ(ErrorOfNodes(R"({"type":"\u12"})"), message);
  EXPECT_EQ(ErrorOfPort(R"("speed":"\q")"),
            "net.json:2:83: malformed JSON: bad escape in a string");
}

TEST(FabricDocumentErrorsTest, EscapesInKeysAreKnown) {
  const std::string message = ": malformed JSON: bad escape in a string";
  EXPECT_EQ(ErrorOfNodes(R"({"na\qme":1})"), "net.json:2:2" + message);
  EXPECT_EQ(ErrorBehindNodes(R"("\ud800":[])"), "net.json:2:1" + message);
}

TEST(FabricDocumentErrorsTest, AStringEndsOnItsLine) {
  const std::string message = "malformed JSON: a string that does not end on its line";
  EXPECT_EQ(Error("{\"format\":\n\"a\\\"b\nc\"}"), "net.json:2:6: " + message);
  EXPECT_EQ(Error("{\"format\":\"a\tb\"}"), "net.json:1:13: " + message);
  EXPECT_EQ(Error("{\"format\":\"a b\x1f\"}"), "net.json:1:15: " + message);
  EXPECT_EQ(Error("{\"format\":\"a}"), "net.json:1:14: " + message);
}

TEST(FabricDocumentErrorsTest, NothingFollowsTheDocument) {
  const std::string whole = std::string(head) + "[]}";
  const std::string message = "net.json:1:52: malformed JSON: something stands behind the document";
  EXPECT_EQ(Error(whole + "}"), message);
  EXPECT_EQ(Error(whole + ",{}"), message);
  EXPECT_EQ(Error(whole + whole), message);
  EXPECT_EQ(Error(whole + " x"), std::string("net.json:1:54: ") + endsEarly);
  EXPECT_EQ(Error(whole + "]"), std::string("net.json:1:53: ") + endsEarly);
}

TEST(FabricDocumentErrorsTest, AnEmptyTextIsNoDocument) {
  EXPECT_EQ(Error(""), std::string("net.json:1:1: ") + nothing);
  EXPECT_EQ(Error("\n "), std::string("net.json:2:2: ") + nothing);
}

TEST(FabricDocumentErrorsTest, ADocumentThatEndsEarlyIsAnErrorAtItsEnd) {
  EXPECT_EQ(Error("{"), std::string("net.json:1:2: ") + endsEarly);
  EXPECT_EQ(Error(std::string(head)), std::string("net.json:1:49: ") + endsEarly);
  EXPECT_EQ(Error(std::string(head) + "[]\n"), std::string("net.json:2:1: ") + endsEarly);
}

// Not at the end of the text, which may be a million lines further down.
TEST(FabricDocumentErrorsTest, AStructureThatIsWrongIsAnErrorInItsLine) {
  const auto error = [&](const std::string& line) {
    return Error("{\"format\":\"fabscope-fabric\",\"version\":1,\n" + line + ",\n\"links\":\n[]}");
  };
  const auto at = [](int column) {
    return "net.json:2:" + std::to_string(column) + ": " + badStructure;
  };
  EXPECT_EQ(error(R"("nodes" [])"), at(9));
  EXPECT_EQ(error(R"("nodes":[{"guid":"0x1" "type":"ca"}])"), at(24));
  EXPECT_EQ(error(R"("nodes":[{]])"), at(11));
  EXPECT_EQ(error(R"("nodes":[{"guid":"0x1"]])"), at(23));
  EXPECT_EQ(error(R"("nodes":[],,"aports":[])"), at(12));
  EXPECT_EQ(error(R"("nodes":[],aports:[])"), at(12));
}

TEST(FabricDocumentErrorsTest, AValueThatIsNoneIsAnErrorInItsLine) {
  EXPECT_EQ(ErrorOfPort(R"("speed":x)"), std::string("net.json:2:83: ") + badStructure);
  EXPECT_EQ(ErrorOfPort(R"("speed":})"), std::string("net.json:2:83: ") + badStructure);
  EXPECT_EQ(ErrorOfNodes("x"), "net.json:2:1: expected an object: a node");
  EXPECT_EQ(ErrorOfMember(R"("flids":x)"), "net.json:2:65: expected an array");
}

TEST(FabricDocumentErrorsTest, ASuperfluousCommaIsAnError) {
  EXPECT_EQ(ErrorOfNodes(R"({"guid":"0x1","type":"ca","name":"a","numPorts":1},)"),
            "net.json:3:1: expected an object: a node");
  EXPECT_EQ(ErrorOfMember(R"("flids":[1,])"),
            "net.json:2:68: expected a whole number from 0 to 65535");
}

TEST(FabricDocumentErrorsTest, ADocumentCutAnywhereIsAnError) {
  const std::string whole =
      std::string(head) +
      R"([{"guid":"0x1","type":"switch","name":"\u0061\"","numPorts":8,"special":true,"planes":[1,)"
      R"(-2],"ports":[{"num":1,"speed":"HDR","fnm":false},{"num":8,"speed":4}]}],"links":[{"a":)"
      R"("0x1","aPort":1,"b":"0x1","bPort":2}],"aports":[{"ports":[["0x1",3]],"asymmetry":5}]})";
  ASSERT_EQ(Error(whole), "");
  for (std::size_t size = 0; size < whole.size(); ++size) {
    EXPECT_THAT(Error(whole.substr(0, size)), StartsWith("net.json:1:")) << size;
  }
}

TEST(FabricDocumentErrorsTest, ADocumentWithoutOneOfItsBytesNeverPassesForAnotherStructure) {
  const std::string whole =
      std::string(head) + R"([{"guid":"0x1","type":"ca","name":"a","numPorts":8}],"links":[]})";
  ASSERT_EQ(Error(whole), "");
  for (std::size_t at = 0; at < whole.size(); ++at) {
    if (std::string_view("{}[]:,\"").find(whole[at]) == std::string_view::npos) continue;
    EXPECT_NE(Error(whole.substr(0, at) + whole.substr(at + 1)), "") << at;
  }
}

TEST(FabricDocumentErrorsTest, OnlyAnObjectIsADocument) {
  EXPECT_EQ(Error("[]"), "net.json:1:1: expected an object: the document");
}

}  // namespace
}  // namespace fabscope::internal
