#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "formats/write_fabric.h"
#include "support/test_fabric.h"

namespace fabscope::internal {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

using Lines = std::vector<std::string>;

constexpr FabricFormat document = FabricFormat::Document;
constexpr FabricFormat dump = FabricFormat::TopologyDump;
constexpr FabricFormat netFile = FabricFormat::NetFile;
constexpr FabricFormat dot = FabricFormat::Dot;
constexpr FabricFormat graphMl = FabricFormat::GraphMl;

// Of whatever is in a fabric, Graphviz has no numbers of ports; the others have.
const char* const portCountOfOne = "1 node loses its number of ports";

NodeSpec Node(const std::string& name) {
  NodeSpec spec;
  spec.name = name;
  spec.numPorts = 8;
  return spec;
}

Lines LossesOfNode(const NodeSpec& spec, FabricFormat format) {
  TestFabric fabric;
  fabric.Node(spec);
  return LossesOf(fabric.Build(), format);
}

// That a node's attribute is lost in all formats but the document, and in no other way.
void ExpectOnlyDocumentHolds(const NodeSpec& spec, const std::string& line) {
  EXPECT_THAT(LossesOfNode(spec, document), IsEmpty());
  EXPECT_THAT(LossesOfNode(spec, dump), ElementsAre(line));
  EXPECT_THAT(LossesOfNode(spec, netFile), ElementsAre(line));
  EXPECT_THAT(LossesOfNode(spec, dot), ElementsAre(portCountOfOne, line));
  EXPECT_THAT(LossesOfNode(spec, graphMl), ElementsAre(line));
}

class PortLosses : public ::testing::Test {
 protected:
  PortLosses() { fabric.Switch("a", 4).Switch("b", 4).Link("a", 1, "b", 1); }

  // That the only loss is one of ports, in all formats but the document.
  void ExpectOnlyDocumentHolds(const std::string& line) {
    const IBFabric& model = fabric.Build();
    EXPECT_THAT(LossesOf(model, document), IsEmpty());
    EXPECT_THAT(LossesOf(model, dump), ElementsAre(line));
    EXPECT_THAT(LossesOf(model, netFile), ElementsAre(line));
    EXPECT_THAT(LossesOf(model, dot), ElementsAre("2 nodes lose their number of ports", line));
    EXPECT_THAT(LossesOf(model, graphMl), ElementsAre(line));
  }

  TestFabric fabric;
};

PortSpec Port(std::uint8_t num) {
  PortSpec spec;
  spec.num = num;
  return spec;
}

TEST(FabricLosses, NothingIsLostOfNamesTypesCablesAndSpeeds) {
  TestFabric fabric;
  NodeSpec router = Node("gate");
  router.type = NodeTypeRouter;
  fabric.Node(router).Host("h1").Switch("leaf").Switch("spine");
  fabric.Cable("leaf", "h1").Cable("leaf", "spine", 0x800).Cable("leaf", "gate", 0);
  const IBFabric& model = fabric.Build();
  EXPECT_THAT(LossesOf(model, document), IsEmpty());
  EXPECT_THAT(LossesOf(model, dump), IsEmpty());
  EXPECT_THAT(LossesOf(model, netFile), IsEmpty());
  EXPECT_THAT(LossesOf(model, graphMl), IsEmpty());
  EXPECT_THAT(LossesOf(model, dot), ElementsAre("4 nodes lose their number of ports"));
}

TEST(FabricLosses, GraphvizLosesNoNumberOfPortsOfANodeWithoutAny) {
  NodeSpec spec = Node("a");
  spec.numPorts = 0;
  EXPECT_THAT(LossesOfNode(spec, dot), IsEmpty());
}

TEST(FabricLosses, SystemGuidsAreLostInGraphsOnly) {
  NodeSpec spec = Node("a");
  spec.systemGuid = 0x99;
  EXPECT_THAT(LossesOfNode(spec, document), IsEmpty());
  EXPECT_THAT(LossesOfNode(spec, dump), IsEmpty());
  EXPECT_THAT(LossesOfNode(spec, netFile), IsEmpty());
  EXPECT_THAT(LossesOfNode(spec, dot), ElementsAre("1 node loses its system GUID", portCountOfOne));
  EXPECT_THAT(LossesOfNode(spec, graphMl), ElementsAre("1 node loses its system GUID"));
}

TEST(FabricLosses, DisplayNamesAreHeldByTheDocument) {
  NodeSpec spec = Node("a");
  spec.displayName = "rack 1";
  ExpectOnlyDocumentHolds(spec, "1 node loses its display name");
}

TEST(FabricLosses, RanksAreHeldByTheDocument) {
  NodeSpec spec = Node("a");
  spec.smdbRank = 0;
  ExpectOnlyDocumentHolds(spec, "1 node loses its rank");
}

TEST(FabricLosses, MultiAsicMarksAreHeldByTheDocument) {
  NodeSpec spec = Node("a");
  spec.multiAsic = true;
  ExpectOnlyDocumentHolds(spec, "1 node loses its multi-ASIC flag");
}

TEST(FabricLosses, AsicsAreHeldByTheDocument) {
  NodeSpec spec = Node("a");
  spec.asic = "2";
  ExpectOnlyDocumentHolds(spec, "1 node loses its ASIC");
}

TEST(FabricLosses, NumbersOfPlanesAreHeldByTheDocument) {
  NodeSpec spec = Node("a");
  spec.planesNumber = 4;
  ExpectOnlyDocumentHolds(spec, "1 node loses its number of planes");
}

TEST(FabricLosses, PlanesAreHeldByTheDocument) {
  NodeSpec spec = Node("a");
  spec.suitablePlane = 2;
  ExpectOnlyDocumentHolds(spec, "1 node loses its planes");
  spec.planes = {1};
  ExpectOnlyDocumentHolds(spec, "1 node loses its planes");
  spec.suitablePlane = 1;
  spec.planes = {1, 2};
  ExpectOnlyDocumentHolds(spec, "1 node loses its planes");
  spec.planes = std::vector<std::int32_t>{};
  ExpectOnlyDocumentHolds(spec, "1 node loses its planes");
}

TEST(FabricLosses, FlidsAreHeldByTheDocument) {
  NodeSpec spec = Node("a");
  spec.flids = {7, 8};
  ExpectOnlyDocumentHolds(spec, "1 node loses its FLIDs");
}

TEST(FabricLosses, NodesAreCountedAndAttributesToldInAFixedOrder) {
  TestFabric fabric;
  NodeSpec spec = Node("a");
  spec.flids = {7};
  fabric.Node(spec);
  spec.name = "b";
  spec.smdbRank = 1;
  fabric.Node(spec).Switch("c");
  EXPECT_THAT(LossesOf(fabric.Build(), dump),
              ElementsAre("1 node loses its rank", "2 nodes lose their FLIDs"));
}

const char* const specialMarkLost =
    "1 node loses its special flag (not stored; re-derived from the name)";

TEST(FabricLosses, SpecialMarkOfAnAdapterIsKeptWhereItsNameTellsIt) {
  NodeSpec spec = Node("rack1 Aggregation Node");
  spec.type = NodeTypeCA;
  spec.special = true;
  EXPECT_THAT(LossesOfNode(spec, document), IsEmpty());
  EXPECT_THAT(LossesOfNode(spec, dump), IsEmpty());
  EXPECT_THAT(LossesOfNode(spec, netFile), IsEmpty());
  EXPECT_THAT(LossesOfNode(spec, graphMl), ElementsAre("1 node loses its special flag"));
  EXPECT_THAT(LossesOfNode(spec, dot),
              ElementsAre(portCountOfOne, "1 node loses its special flag"));
}

TEST(FabricLosses, SpecialMarkIsLostWhereTheNameDoesNotTellIt) {
  NodeSpec spec = Node("h1");
  spec.type = NodeTypeCA;
  spec.special = true;
  EXPECT_THAT(LossesOfNode(spec, document), IsEmpty());
  EXPECT_THAT(LossesOfNode(spec, dump), ElementsAre(specialMarkLost));
  EXPECT_THAT(LossesOfNode(spec, netFile), ElementsAre(specialMarkLost));
}

TEST(FabricLosses, AdapterThatOnlyHasTheNameOfASpecialNodeWouldBecomeOne) {
  NodeSpec spec = Node("rack1 Aggregation Node");
  spec.type = NodeTypeCA;
  EXPECT_THAT(LossesOfNode(spec, document), IsEmpty());
  EXPECT_THAT(LossesOfNode(spec, dump), ElementsAre(specialMarkLost));
  EXPECT_THAT(LossesOfNode(spec, netFile), ElementsAre(specialMarkLost));
  EXPECT_THAT(LossesOfNode(spec, graphMl), IsEmpty());
}

TEST(FabricLosses, SwitchesAreSpecialByNoName) {
  NodeSpec spec = Node("rack1 Aggregation Node");
  EXPECT_THAT(LossesOfNode(spec, dump), IsEmpty());
  EXPECT_THAT(LossesOfNode(spec, netFile), IsEmpty());
  spec.special = true;
  EXPECT_THAT(LossesOfNode(spec, dump), ElementsAre(specialMarkLost));
  EXPECT_THAT(LossesOfNode(spec, netFile), ElementsAre(specialMarkLost));
}

TEST(FabricLosses, NameThatANetFileCutsTellsNoSpecialNodeAnyMore) {
  NodeSpec spec = Node(std::string(50, 'x') + " Aggregation Node");
  spec.type = NodeTypeCA;
  spec.special = true;
  EXPECT_THAT(LossesOfNode(spec, dump), IsEmpty());
  EXPECT_THAT(LossesOfNode(spec, netFile),
              ElementsAre("1 node loses its full name", specialMarkLost));
}

TEST(FabricLosses, NetFilesHoldNamesOf63BytesWithoutDoubleQuotes) {
  EXPECT_THAT(LossesOfNode(Node(std::string(63, 'x')), netFile), IsEmpty());
  EXPECT_THAT(LossesOfNode(Node(std::string(64, 'x')), netFile),
              ElementsAre("1 node loses its full name"));
  EXPECT_THAT(LossesOfNode(Node("a\"b"), netFile), ElementsAre("1 node loses its full name"));
  EXPECT_THAT(LossesOfNode(Node("a\"b"), dump), IsEmpty());
}

TEST(FabricLosses, BytesOutsideOfUtf8AreHeldByFormatsWithoutACharacterSet) {
  NodeSpec spec = Node("h\xf6st");
  const std::string line = "1 node loses its bytes outside of UTF-8";
  EXPECT_THAT(LossesOfNode(spec, document), ElementsAre(line));
  EXPECT_THAT(LossesOfNode(spec, dump), IsEmpty());
  EXPECT_THAT(LossesOfNode(spec, netFile), IsEmpty());
  EXPECT_THAT(LossesOfNode(spec, dot), ElementsAre(line, portCountOfOne));
  EXPECT_THAT(LossesOfNode(spec, graphMl), ElementsAre(line));
  EXPECT_THAT(LossesOfNode(Node("h\xc3\xb6st"), document), IsEmpty());
}

TEST(FabricLosses, DocumentsLoseBytesOutsideOfUtf8OfEveryText) {
  NodeSpec spec = Node("host");
  spec.displayName = "h\xf6st";
  EXPECT_THAT(LossesOfNode(spec, document), ElementsAre("1 node loses its bytes outside of UTF-8"));
  spec.displayName = "host";
  spec.asic = "\xf6";
  EXPECT_THAT(LossesOfNode(spec, document), ElementsAre("1 node loses its bytes outside of UTF-8"));
}

TEST(FabricLosses, ControlCharactersAreHeldByNoFormat) {
  NodeSpec spec = Node("a\nb");
  const std::string line = "1 node loses its control characters";
  EXPECT_THAT(LossesOfNode(spec, document), ElementsAre(line));
  EXPECT_THAT(LossesOfNode(spec, dump), ElementsAre(line));
  EXPECT_THAT(LossesOfNode(spec, netFile), ElementsAre("1 node loses its full name"));
  EXPECT_THAT(LossesOfNode(spec, dot), ElementsAre(line, portCountOfOne));
  EXPECT_THAT(LossesOfNode(spec, graphMl), ElementsAre(line));
}

TEST(FabricLosses, DocumentsLoseControlCharactersOfEveryText) {
  NodeSpec spec = Node("host");
  spec.displayName = "\x7f";
  EXPECT_THAT(LossesOfNode(spec, document), ElementsAre("1 node loses its control characters"));
  spec.displayName = "host";
  spec.asic = "\t";
  EXPECT_THAT(LossesOfNode(spec, document), ElementsAre("1 node loses its control characters"));
}

TEST_F(PortLosses, StateIsHeldByTheDocument) {
  PortSpec port = Port(1);
  port.state = 2;
  fabric.Port("a", port);
  port.num = 2;
  fabric.Port("a", port);
  ExpectOnlyDocumentHolds("2 ports lose their state");
}

TEST_F(PortLosses, StateThatFollowsFromTheCableIsNotLost) {
  PortSpec port = Port(1);
  port.state = 4;
  fabric.Port("a", port);
  port = Port(2);
  port.state = 1;
  fabric.Port("a", port);
  EXPECT_THAT(LossesOf(fabric.Build(), dump), IsEmpty());
}

TEST_F(PortLosses, StateOfTheOtherKindOfPortIsLost) {
  PortSpec port = Port(1);
  port.state = 1;
  fabric.Port("a", port);
  port = Port(2);
  port.state = 4;
  fabric.Port("b", port);
  ExpectOnlyDocumentHolds("2 ports lose their state");
}

TEST_F(PortLosses, SpeedOfAPortWithoutACableIsHeldByTheDocument) {
  PortSpec port = Port(3);
  port.speed = 0x400;
  fabric.Port("b", port);
  ExpectOnlyDocumentHolds("1 port loses its speed");
}

TEST_F(PortLosses, OfTwoSpeedsOfACableOneIsLostWhereACableHasOne) {
  PortSpec port = Port(1);
  port.speed = 0x800;
  fabric.Port("b", port);
  const IBFabric& model = fabric.Build();
  EXPECT_THAT(LossesOf(model, document), IsEmpty());
  EXPECT_THAT(LossesOf(model, dump), ElementsAre("1 port loses its speed"));
  EXPECT_THAT(LossesOf(model, netFile), ElementsAre("1 port loses its speed"));
  EXPECT_THAT(LossesOf(model, graphMl), IsEmpty());
}

TEST(FabricLosses, SpeedWithoutANameIsLostWhereSpeedsAreNamed) {
  TestFabric fabric;
  fabric.Switch("a").Switch("b").Cable("a", "b", 0x8);
  const IBFabric& model = fabric.Build();
  EXPECT_THAT(LossesOf(model, document), IsEmpty());
  EXPECT_THAT(LossesOf(model, dump), ElementsAre("2 ports lose their speed"));
  EXPECT_THAT(LossesOf(model, netFile), ElementsAre("2 ports lose their speed"));
  EXPECT_THAT(LossesOf(model, graphMl), IsEmpty());
}

TEST_F(PortLosses, MarksAsNotSymmetricAreHeldByTheDocument) {
  PortSpec port = Port(1);
  port.symmetric = false;
  fabric.Port("b", port);
  ExpectOnlyDocumentHolds("1 port loses its not-symmetric flag");
}

TEST_F(PortLosses, FnmMarksAreHeldByTheDocument) {
  PortSpec port = Port(1);
  port.fnm = true;
  fabric.Port("b", port);
  ExpectOnlyDocumentHolds("1 port loses its FNM flag");
}

TEST_F(PortLosses, Fnm1MarksAreHeldByTheDocument) {
  PortSpec port = Port(1);
  port.fnm1 = true;
  fabric.Port("b", port);
  ExpectOnlyDocumentHolds("1 port loses its FNM1 flag");
}

TEST_F(PortLosses, PlacesOutsideOfTheSubFabricAreHeldByTheDocument) {
  PortSpec port = Port(1);
  port.inSubFabric = false;
  fabric.Port("b", port);
  ExpectOnlyDocumentHolds("1 port loses its place outside of the sub-fabric");
}

TEST_F(PortLosses, PlaneMultiplicitiesAreHeldByTheDocument) {
  PortSpec port = Port(1);
  port.planeMultiplicity = 0;
  fabric.Port("b", port);
  ExpectOnlyDocumentHolds("1 port loses its plane multiplicity");
}

TEST_F(PortLosses, GroupsAreHeldByTheDocumentEvenGroup0) {
  PortSpec port = Port(1);
  port.group = 0;
  fabric.Port("b", port);
  ExpectOnlyDocumentHolds("1 port loses its group");
}

TEST_F(PortLosses, AggregatedPortsAreHeldByTheDocument) {
  fabric.AggregatedPort({{"a", 1}, {"b", 1}}, 0);
  ExpectOnlyDocumentHolds("1 aggregated port loses its ports and asymmetry mark");
}

TEST(FabricLosses, NodesOutOfTheOrderOfNamesLoseTheirPlaceWhereFilesTellNone) {
  TestFabric fabric;
  fabric.Switch("leaf2").Switch("leaf10").Switch("spine").Switch("a");
  const IBFabric& model = fabric.Build();
  const std::string line =
      "4 nodes lose their place in the order of nodes (re-derived from names and GUIDs)";
  EXPECT_THAT(LossesOf(model, document), IsEmpty());
  EXPECT_THAT(LossesOf(model, dump), ElementsAre(line));
  EXPECT_THAT(LossesOf(model, netFile), ElementsAre(line));
  EXPECT_THAT(LossesOf(model, graphMl), IsEmpty());
}

TEST(FabricLosses, NumbersInNamesCountForTheOrder) {
  TestFabric fabric;
  fabric.Switch("leaf2").Switch("leaf10").Switch("spine");
  EXPECT_THAT(LossesOf(fabric.Build(), dump), IsEmpty());
}

TEST(FabricLosses, NodesOfOneNameAreInTheOrderOfTheirGuids) {
  FabricBuilder builder;
  NodeSpec spec = Node("chip");
  for (const std::uint64_t guid : {1U, 3U, 2U}) {
    spec.guid = guid;
    ASSERT_EQ(builder.AddNode(spec), std::nullopt);
  }
  EXPECT_THAT(
      LossesOf(*builder.Build(), dump),
      ElementsAre(
          "2 nodes lose their place in the order of nodes (re-derived from names and GUIDs)"));
}

TEST(FabricLosses, OrderGoesByTheNamesThatAreWritten) {
  TestFabric fabric;
  // A net file makes one name of these, so that the order of the GUIDs holds.
  fabric.Switch(std::string(63, 'x') + "2").Switch(std::string(63, 'x') + "1");
  const IBFabric& model = fabric.Build();
  EXPECT_THAT(LossesOf(model, netFile), ElementsAre("2 nodes lose their full name"));
  EXPECT_THAT(
      LossesOf(model, dump),
      ElementsAre(
          "2 nodes lose their place in the order of nodes (re-derived from names and GUIDs)"));
}

TEST(FabricLosses, NetFilesLeaveOutNodesWithoutPorts) {
  TestFabric fabric;
  fabric.Switch("b", 0).Switch("a", 0).Switch("c", 1);
  const IBFabric& model = fabric.Build();
  EXPECT_THAT(LossesOf(model, netFile), ElementsAre("2 nodes lose their record (no ports)"));
  EXPECT_THAT(
      LossesOf(model, dump),
      ElementsAre(
          "2 nodes lose their place in the order of nodes (re-derived from names and GUIDs)"));
}

TEST(FabricLosses, NetFileOfNodesWithoutPortsCannotBeRead) {
  TestFabric fabric;
  fabric.Switch("a", 0);
  const IBFabric& model = fabric.Build();
  EXPECT_THAT(LossesOf(model, netFile), ElementsAre("1 node loses its record (no ports)",
                                                    "a file without a node cannot be read again"));
  EXPECT_THAT(LossesOf(model, dump), IsEmpty());
}

TEST(FabricLosses, FabricWithoutNodesCannotBeReadFromADump) {
  TestFabric fabric;
  const IBFabric& model = fabric.Build();
  EXPECT_THAT(LossesOf(model, document), IsEmpty());
  EXPECT_THAT(LossesOf(model, dump), ElementsAre("a file without a node cannot be read again"));
  EXPECT_THAT(LossesOf(model, netFile), ElementsAre("a file without a node cannot be read again"));
  EXPECT_THAT(LossesOf(model, dot), IsEmpty());
  EXPECT_THAT(LossesOf(model, graphMl), IsEmpty());
}

}  // namespace
}  // namespace fabscope::internal
