#include "formats/topology_dump.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>

#include "platform/progress.h"
#include "support/topology_dump_fixture.h"

namespace fabscope::internal {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

// What lines/plain.topo and all its disguises hold.
constexpr const char* plainModel = R"(ca 0x21 "h1" ports 1
ca 0x22 "h2" ports 1
switch 0x11 "leaf" ports 4
0x21:1 - 0x11:1 speed 0x400
0x22:1 - 0x11:2 speed 0x400
)";

TEST_F(TopologyDumpTest, ASwitchWithTwoHosts) {
  EXPECT_EQ(LoadFile("lines/plain.topo"), plainModel);
  EXPECT_THAT(warnings, IsEmpty());
}

TEST_F(TopologyDumpTest, NoHeaderCommentIsNeeded) {
  EXPECT_EQ(LoadFile("lines/no-header-comments.topo"), plainModel);
  EXPECT_THAT(warnings, IsEmpty());
}

TEST_F(TopologyDumpTest, CommentsMayStandAnywhere) {
  EXPECT_EQ(LoadFile("lines/comments-anywhere.topo"), plainModel);
  EXPECT_THAT(warnings, IsEmpty());
}

TEST_F(TopologyDumpTest, NoBlankLineIsNeededBetweenRecords) {
  EXPECT_EQ(LoadFile("lines/no-blank-lines.topo"), plainModel);
  EXPECT_THAT(warnings, IsEmpty());
}

TEST_F(TopologyDumpTest, ARecordMayBeginWithItsNodeLine) {
  EXPECT_EQ(LoadFile("lines/no-head-lines.topo"), plainModel);
  EXPECT_THAT(warnings, IsEmpty());
}

TEST_F(TopologyDumpTest, LineEndsMayHaveACarriageReturn) {
  EXPECT_EQ(LoadFile("lines/crlf.topo"), plainModel);
  EXPECT_THAT(warnings, IsEmpty());
}

TEST_F(TopologyDumpTest, AByteOrderMarkMayStandInFront) {
  EXPECT_EQ(LoadFile("lines/byte-order-mark.topo"), plainModel);
  EXPECT_THAT(warnings, IsEmpty());
}

TEST_F(TopologyDumpTest, AByteOrderMarkMayStandInFrontOfARecord) {
  EXPECT_EQ(Load("\xef\xbb\xbf"
                 "Ca\t1 \"H-0000000000000021\"\t\t# \"h1\"\n"),
            "ca 0x21 \"h1\" ports 1\n");
  EXPECT_THAT(warnings, IsEmpty());
}

TEST_F(TopologyDumpTest, TabsSeparate) {
  EXPECT_EQ(LoadFile("lines/tabs.topo"), plainModel);
  EXPECT_THAT(warnings, IsEmpty());
}

TEST_F(TopologyDumpTest, RunsOfBlanksSeparate) {
  EXPECT_EQ(LoadFile("lines/blanks.topo"), plainModel);
  EXPECT_THAT(warnings, IsEmpty());
}

TEST_F(TopologyDumpTest, TheLastLineEndMayBeMissing) {
  EXPECT_EQ(LoadFile("lines/no-final-line-end.topo"), plainModel);
  EXPECT_THAT(warnings, IsEmpty());
}

TEST_F(TopologyDumpTest, AMissingSystemGuidIsTheNodesOwn) {
  EXPECT_EQ(LoadFile("lines/no-sysimgguid.topo"),
            "switch 0x11 \"aggregated\" ports 2 system 0x77\n"
            "switch 0x12 \"alone\" ports 2\n");
  EXPECT_THAT(warnings, IsEmpty());
}

TEST_F(TopologyDumpTest, TheSystemGuidOfARecordWithoutNodeLineIsNotTheNextRecords) {
  EXPECT_EQ(Load("vendid=0x2c9\n"
                 "sysimgguid=0x77\n"
                 "\n"
                 "vendid=0x2c9\n"
                 "switchguid=0x11(11)\n"
                 "Switch\t4 \"S-0000000000000011\"\t\t# \"leaf\" base port 0 lid 1 lmc 0\n"),
            "switch 0x11 \"leaf\" ports 4\n");
}

TEST_F(TopologyDumpTest, TheSystemGuidOfANodeThatIsLeftOutIsNotTheNextRecords) {
  EXPECT_EQ(Load("sysimgguid=0x77\n"
                 "???\t1 \"?-0000000000000031\"\t\t# \"odd\"\n"
                 "Ca\t1 \"H-0000000000000021\"\t\t# \"h1\"\n"),
            "ca 0x21 \"h1\" ports 1\n");
}

TEST_F(TopologyDumpTest, EachNodeTellsHowFarTheReadingHasCome) {
  std::vector<std::string> told;
  SetProgressSink([&](std::string_view phase, std::size_t done, std::size_t total) {
    told.push_back(std::string(phase) + " " + std::to_string(done) + "/" + std::to_string(total));
  });
  const std::string first = "# dump\nCa\t1 \"H-21\"\t\t# \"h1\"\n";
  const std::string second = "\nCa\t1 \"H-22\"\t\t# \"h2\"\n";
  Load(first + second + "# end\n");
  SetProgressSink({});
  const auto at = [&](std::size_t done) {
    return "reading " + std::to_string(done) + "/" +
           std::to_string(first.size() + second.size() + 6);
  };
  EXPECT_THAT(told, ElementsAre(at(first.size()), at(first.size() + second.size())));
}

TEST_F(TopologyDumpTest, ARecordMayBeginWithItsDevice) {
  EXPECT_EQ(Load("devid=0xd2f0\n"
                 "sysimgguid=0x77\n"
                 "\n"
                 "devid=0xd2f0\n"
                 "switchguid=0x11(11)\n"
                 "Switch\t4 \"S-0000000000000011\"\t\t# \"leaf\" base port 0 lid 1 lmc 0\n"),
            "switch 0x11 \"leaf\" ports 4\n");
}

TEST_F(TopologyDumpTest, GuidsAreNumbersHoweverTheyArePadded) {
  EXPECT_EQ(LoadFile("lines/unpadded-guids.topo"), R"(ca 0x2c9000b "h1" ports 1
switch 0x2c9000a "leaf" ports 2
0x2c9000b:1 - 0x2c9000a:1 speed 0x400
)");
  EXPECT_THAT(warnings, IsEmpty());
}

TEST_F(TopologyDumpTest, ADescriptionReachesFromTheFirstToTheLastQuote) {
  EXPECT_EQ(LoadFile("lines/descriptions.topo"), R"(ca 0x26 "" ports 1
ca 0x24 "  spaced  " ports 1
ca 0x27 """ ports 1
ca 0x23 "a;b:c/d" ports 1
switch 0x11 "leaf; "north" # 1" ports 8
ca 0x21 "rack 3 # 7" ports 1
ca 0x28 "room "lid 9" ports 1
ca 0x22 "the "blue" one" ports 1
ca 0x25 "up lid 4 4xSDR" ports 1
0x26:1 - 0x11:6 speed 0x400
0x24:1 - 0x11:4 speed 0x400
0x27:1 - 0x11:7 speed 0x400
0x23:1 - 0x11:3 speed 0x400
0x11:1 - 0x21:1 speed 0x400
0x11:2 - 0x22:1 speed 0x400
0x11:5 - 0x25:1 speed 0x400
0x11:8 - 0x28:1 speed 0x400
)");
  EXPECT_THAT(warnings, IsEmpty());
}

TEST_F(TopologyDumpTest, NamesAreNoKeys) {
  EXPECT_EQ(LoadFile("lines/same-names.topo"), R"(switch 0x11 "unmanaged 36-port switch" ports 4
switch 0x12 "unmanaged 36-port switch" ports 4
switch 0x13 "unmanaged 36-port switch" ports 4
0x11:1 - 0x13:1 speed 0x400
0x11:2 - 0x12:1 speed 0x400
)");
  EXPECT_THAT(warnings, IsEmpty());
}

TEST_F(TopologyDumpTest, AMarkInParenthesesMayEndALine) {
  EXPECT_EQ(LoadFile("lines/scp-marks.topo"), R"(ca 0x21 "h1" ports 1
ca 0x22 "h2" ports 1
switch 0x11 "leaf" ports 4
0x21:1 - 0x11:1 speed 0x400
0x22:1 - 0x11:2 speed 0x0
)");
  EXPECT_THAT(warnings, IsEmpty());
}

TEST_F(TopologyDumpTest, ExternalPortMarksDoNotChangeThePortNumber) {
  EXPECT_EQ(LoadFile("lines/external-ports.topo"), R"(ca 0x21 "h1" ports 1
switch 0x12 "line" ports 36
switch 0x11 "spine" ports 36
0x21:1 - 0x11:20 speed 0x4
0x12:20 - 0x11:19 speed 0x4
)");
  EXPECT_THAT(warnings, IsEmpty());
}

TEST_F(TopologyDumpTest, ChassisGroupingChangesNothing) {
  EXPECT_EQ(LoadFile("lines/chassis.topo"), R"(switch 0x12 "core/L11/U1" ports 24 system 0x77
switch 0x11 "core/S01/U1" ports 24 system 0x77
ca 0x21 "h1" ports 1
0x12:1 - 0x21:1 speed 0x2
0x12:13 - 0x11:1 speed 0x2
)");
  EXPECT_THAT(warnings, IsEmpty());
}

TEST_F(TopologyDumpTest, EverySpeedHasItsCode) {
  EXPECT_EQ(LoadFile("lines/speeds.topo"), R"(switch 0x11 "a" ports 10
switch 0x12 "b" ports 10
0x11:1 - 0x12:1 speed 0x1
0x11:2 - 0x12:2 speed 0x2
0x11:3 - 0x12:3 speed 0x4
0x11:4 - 0x12:4 speed 0x10000
0x11:5 - 0x12:5 speed 0x100
0x11:6 - 0x12:6 speed 0x200
0x11:7 - 0x12:7 speed 0x400
0x11:8 - 0x12:8 speed 0x800
0x11:9 - 0x12:9 speed 0x1000000
0x11:10 - 0x12:10 speed 0x20000
)");
  EXPECT_THAT(warnings, IsEmpty());
}

TEST_F(TopologyDumpTest, TheSpeedStandsBehindAnyWidthOrNone) {
  EXPECT_EQ(LoadFile("lines/widths.topo"), R"(switch 0x11 "a" ports 8
switch 0x12 "b" ports 8
0x11:1 - 0x12:1 speed 0x400
0x11:2 - 0x12:2 speed 0x400
0x11:3 - 0x12:3 speed 0x400
0x11:4 - 0x12:4 speed 0x400
0x11:5 - 0x12:5 speed 0x400
0x11:6 - 0x12:6 speed 0x400
0x11:7 - 0x12:7 speed 0x400
0x11:8 - 0x12:8 speed 0x400
)");
  EXPECT_THAT(warnings, IsEmpty());
}

TEST_F(TopologyDumpTest, WidthAndSpeedMayBeMissing) {
  EXPECT_EQ(LoadFile("lines/width-or-speed-missing.topo"), R"(switch 0x11 "a" ports 5
switch 0x12 "b" ports 5
0x11:1 - 0x12:1 speed 0x0
0x11:2 - 0x12:2 speed 0x400
0x11:3 - 0x12:3 speed 0x0
0x11:4 - 0x12:4 speed 0x0
0x11:5 - 0x12:5 speed 0x0
)");
  EXPECT_THAT(warnings, IsEmpty());
}

TEST_F(TopologyDumpTest, LidsMayBeZeroNegativeOrBlank) {
  EXPECT_EQ(LoadFile("lines/lids.topo"), R"(switch 0x11 "a" ports 6
switch 0x12 "b" ports 6
0x11:1 - 0x12:1 speed 0x400
0x11:2 - 0x12:2 speed 0x400
0x11:3 - 0x12:3 speed 0x400
0x11:4 - 0x12:4 speed 0x400
0x11:5 - 0x12:5 speed 0x400
0x11:6 - 0x12:6 speed 0x0
)");
  EXPECT_THAT(warnings, IsEmpty());
}

TEST_F(TopologyDumpTest, WhatFollowsTheSpeedDoesNotCount) {
  EXPECT_EQ(LoadFile("lines/suffixes.topo"), R"(switch 0x11 "a" ports 7
switch 0x12 "b" ports 7
0x11:1 - 0x12:1 speed 0x400
0x11:2 - 0x12:2 speed 0x400
0x11:3 - 0x12:3 speed 0x400
0x11:4 - 0x12:4 speed 0x0
0x11:5 - 0x12:5 speed 0x0
0x11:6 - 0x12:6 speed 0x0
0x11:7 - 0x12:7 speed 0x0
)");
  EXPECT_THAT(warnings, IsEmpty());
}

TEST_F(TopologyDumpTest, ParallelCablesAreLinksOfTheirOwnAndOneMayBeMissing) {
  EXPECT_EQ(LoadFile("lines/parallel-cables.topo"), R"(switch 0x11 "a" ports 8
switch 0x12 "b" ports 8
0x11:1 - 0x12:1 speed 0x400
0x11:2 - 0x12:2 speed 0x400
0x11:4 - 0x12:4 speed 0x400
)");
  EXPECT_THAT(warnings, IsEmpty());
}

TEST_F(TopologyDumpTest, ACableMayJoinTwoPortsOfOneSwitch) {
  EXPECT_EQ(LoadFile("lines/self-loop-cables.topo"), R"(switch 0x11 "leaf" ports 8
0x11:1 - 0x11:2 speed 0x400
0x11:3 - 0x11:7 speed 0x400
)");
  EXPECT_THAT(warnings, IsEmpty());
}

TEST_F(TopologyDumpTest, AFabricMayBeOneAdapter) {
  EXPECT_EQ(LoadFile("lines/lone-adapter.topo"), "ca 0x21 \"mgmt\" ports 2\n");
  EXPECT_THAT(warnings, IsEmpty());
  ASSERT_NE(fabric, nullptr);
  EXPECT_THAT(fabric->switches, IsEmpty());
}

TEST_F(TopologyDumpTest, ManagementPortsMayBeEnhancedOrNumberedOne) {
  EXPECT_EQ(LoadFile("lines/enhanced-port.topo"), R"(switch 0x11 "a" ports 4
switch 0x12 "b" ports 4
switch 0x13 "c" ports 4
)");
  EXPECT_THAT(warnings, IsEmpty());
}

TEST_F(TopologyDumpTest, ARouterIsANodeWithLinks) {
  EXPECT_EQ(LoadFile("lines/router.topo"), R"(router 0x31 "gate" ports 2
switch 0x11 "leaf" ports 4
0x31:2 - 0x11:1 speed 0x400
)");
  EXPECT_THAT(warnings, IsEmpty());
}

// An aggregation engine hangs on the last port of its switch; a switch is never one itself.
TEST_F(TopologyDumpTest, AdaptersOfASpecialNameAreSpecial) {
  EXPECT_EQ(LoadFile("lines/aggregation-nodes.topo"),
            R"(switch 0x12 "Aggregation Node of rack 2" ports 65
ca 0x22 "h1" ports 1
switch 0x11 "leaf" ports 41
ca 0x21 "rack1 Aggregation Node" ports 1 special
switch 0x13 "spine" ports 129
0x22:1 - 0x11:1 speed 0x400
0x11:41 - 0x21:1 speed 0x400
)");
  EXPECT_THAT(warnings, IsEmpty());
}

TEST_F(TopologyDumpTest, OnlyAdaptersAreSpecial) {
  const regExp anything(".");
  FabricBuilder builder;
  Warnings found;
  ASSERT_EQ(LoadFabric(DataPath("lines/router.topo"), nullptr, &anything, builder, found),
            std::nullopt);
  const auto loaded = builder.Build();
  EXPECT_FALSE(loaded->getNodeByGuid(0x11)->isSpecialNode());
  EXPECT_FALSE(loaded->getNodeByGuid(0x31)->isSpecialNode());
}

TEST_F(TopologyDumpTest, WithoutAnExpressionNoAdapterIsSpecial) {
  FabricBuilder builder;
  Warnings found;
  const std::string path = DataPath("lines/aggregation-nodes.topo");
  ASSERT_EQ(LoadFabric(path, nullptr, nullptr, builder, found), std::nullopt);
  const auto loaded = builder.Build();
  EXPECT_FALSE(loaded->getNodeByGuid(0x21)->isSpecialNode());
}

TEST_F(TopologyDumpTest, HostsMayHangOnAnySwitch) {
  EXPECT_EQ(LoadFile("lines/hosts-above-leaves.topo"), R"(ca 0x22 "h1" ports 1
switch 0x12 "leaf" ports 4
ca 0x21 "mgmt" ports 1
switch 0x11 "spine" ports 4
0x22:1 - 0x12:2 speed 0x400
0x12:1 - 0x11:1 speed 0x400
0x21:1 - 0x11:2 speed 0x400
)");
  EXPECT_THAT(warnings, IsEmpty());
}

TEST_F(TopologyDumpTest, ANodeMayHaveNoPortLine) {
  EXPECT_EQ(LoadFile("lines/no-port-lines.topo"), R"(switch 0x12 "dark" ports 0
ca 0x21 "h1" ports 1
switch 0x11 "leaf" ports 4
)");
  EXPECT_THAT(warnings, IsEmpty());
}

TEST_F(TopologyDumpTest, AnAdapterMayHaveSeveralPorts) {
  EXPECT_EQ(LoadFile("lines/two-port-adapter.topo"), R"(switch 0x11 "a" ports 4
switch 0x12 "b" ports 4
ca 0x21 "h1" ports 2
0x11:1 - 0x21:1 speed 0x400
0x12:1 - 0x21:2 speed 0x400
)");
  EXPECT_THAT(warnings, IsEmpty());
}

TEST_F(TopologyDumpTest, PortLinesMayComeInAnyOrder) {
  EXPECT_EQ(Load("Switch\t4 \"S-0000000000000011\"\t\t# \"a\" base port 0 lid 1 lmc 0\n"
                 "[3]\t\"S-0000000000000012\"[1]\t\t# \"b\" lid 2 4xHDR\n"
                 "[1]\t\"S-0000000000000012\"[4]\t\t# \"b\" lid 2 4xEDR\n"
                 "Switch\t4 \"S-0000000000000012\"\t\t# \"b\" base port 0 lid 2 lmc 0\n"
                 "[4]\t\"S-0000000000000011\"[1]\t\t# \"a\" lid 1 4xEDR\n"
                 "[1]\t\"S-0000000000000011\"[3]\t\t# \"a\" lid 1 4xHDR\n"),
            R"(switch 0x11 "a" ports 4
switch 0x12 "b" ports 4
0x11:1 - 0x12:4 speed 0x200
0x11:3 - 0x12:1 speed 0x400
)");
  EXPECT_THAT(warnings, IsEmpty());
}

// Width and speed are not what makes two ends agree: a link can tell its speed at one end only.
TEST_F(TopologyDumpTest, EndsOfDifferentSpeedTakeThatOfTheFirstLine) {
  EXPECT_EQ(LoadFile("lines/ends-of-different-speed.topo"), R"(switch 0x11 "a" ports 4
switch 0x12 "b" ports 4
0x11:1 - 0x12:1 speed 0x400
)");
}

TEST_F(TopologyDumpTest, TheSecondLineTellsTheSpeedWhenTheFirstDoesNot) {
  EXPECT_EQ(Load("Switch\t4 \"S-0000000000000011\"\t\t# \"a\" base port 0 lid 1 lmc 0\n"
                 "[1]\t\"S-0000000000000012\"[1]\t\t# \"b\" lid 2 4x\n"
                 "Switch\t4 \"S-0000000000000012\"\t\t# \"b\" base port 0 lid 2 lmc 0\n"
                 "[1]\t\"S-0000000000000011\"[1]\t\t# \"a\" lid 1 4xEDR\n"),
            R"(switch 0x11 "a" ports 4
switch 0x12 "b" ports 4
0x11:1 - 0x12:1 speed 0x200
)");
}

TEST_F(TopologyDumpTest, ControlCharactersOfNamesBecomeQuestionMarks) {
  EXPECT_EQ(LoadFile("lines/control-characters.topo"), R"(ca 0x21 "h?1?x?" ports 1
switch 0x11 "le?[31maf?" ports 4
)");
}

TEST_F(TopologyDumpTest, NamesNeedNotBeUtf8) {
  EXPECT_EQ(LoadFile("lines/not-utf8.topo"), "switch 0x11 \"caf\xe9\" ports 4\n");
}

TEST_F(TopologyDumpTest, WhatADumpDoesNotTellTakesItsDefault) {
  LoadFile("lines/plain.topo");
  ASSERT_NE(fabric, nullptr);
  const IBNode* leaf = fabric->getNodeByGuid(0x11);
  EXPECT_EQ(leaf->systemGuid, 0x11U);
  EXPECT_EQ(leaf->getAlternativeName(), "leaf");
  EXPECT_EQ(leaf->smdbRank, 255);
  EXPECT_FALSE(leaf->special);
  EXPECT_FALSE(leaf->multiAsic);
  EXPECT_EQ(leaf->getVortaSwitchASIC(), "");
  EXPECT_EQ(leaf->getPlanesNumber(), 1);
  EXPECT_EQ(leaf->getSuitablePlane(), 1);
  EXPECT_THAT(leaf->GetPlanes(), ElementsAre(1));
  EXPECT_THAT(leaf->GetFlids(), IsEmpty());
  EXPECT_THAT(fabric->GetAPorts(), IsEmpty());

  const IBPort* port = leaf->getPort(2);
  ASSERT_NE(port, nullptr);
  EXPECT_EQ(port->num, 2);
  EXPECT_EQ(port->GetState(), 4U);
  EXPECT_FALSE(port->fnm);
  EXPECT_FALSE(port->fnm1);
  EXPECT_TRUE(port->inSubFabric);
  EXPECT_EQ(port->GetPlaneMultiplicity(), 1);
  EXPECT_EQ(port->GetGroup(), std::nullopt);
  EXPECT_EQ(port->GetAPort(), nullptr);
}

TEST_F(TopologyDumpTest, PackedAndPlainDumpsGiveTheSame) {
  // The large dumps are kept packed.
  LoadFile("tree-11664h.topo.gz");
  ASSERT_NE(fabric, nullptr);
  EXPECT_THAT(fabric->GetNodes(), SizeIs(11664 + 1620));
  EXPECT_THAT(fabric->GetPorts(), SizeIs(2 * 34992));
  EXPECT_THAT(warnings, IsEmpty());
}

}  // namespace
}  // namespace fabscope::internal
