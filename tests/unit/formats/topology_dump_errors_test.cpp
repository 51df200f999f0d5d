#include <algorithm>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <string_view>

#include "formats/load_fabric.h"
#include "formats/topology_dump.h"

namespace fabscope::internal {
namespace {

constexpr const char* leaf =
    "Switch\t4 \"S-0000000000000011\"\t\t# \"leaf\" base port 0 lid 1 lmc 0\n";

// What is wrong with a dump; an empty text when nothing is.
std::string Error(const std::string& bytes) {
  Input input("net.topo", bytes);
  FabricBuilder builder;
  Warnings warnings;
  const MaybeError error = LoadTopologyDump(input, nullptr, nullptr, builder, warnings);
  return error ? error->Text() : "";
}

// The same of a file of the test data, without the folder in front of its name.
std::string ErrorOfFile(const std::string& name) {
  const std::string folder = FABSCOPE_TEST_DATA "/";
  FabricBuilder builder;
  Warnings warnings;
  const MaybeError error = LoadFabric(folder + name, nullptr, nullptr, builder, warnings);
  if (!error) return "";
  EXPECT_EQ(error->Text().substr(0, folder.size()), folder);
  return error->Text().substr(folder.size());
}

TEST(TopologyDumpErrorsTest, ANodeGuidMustBeHexadecimal) {
  EXPECT_EQ(ErrorOfFile("lines/guid-not-hexadecimal.topo"),
            "lines/guid-not-hexadecimal.topo:5:13: not a GUID, expected 1 to 16 hexadecimal "
            "digits");
}

TEST(TopologyDumpErrorsTest, APortLineOfTheUsualFormIsHeldToThePortNumbersThereAre) {
  const std::string message = ": port number out of range, expected 1 to 255";
  const std::string end = "\t\t# \"root\" lid 2 4xHDR\n";
  EXPECT_EQ(Error(leaf + ("[256]\t\"S-0000000000000021\"[1]" + end)), "net.topo:2:2" + message);
  EXPECT_EQ(Error(leaf + ("[1]\t\"S-0000000000000021\"[256]" + end)), "net.topo:2:26" + message);
  EXPECT_EQ(Error(leaf + ("[1]\t\"S-0000000000000021\"[255]" + end)), "");
}

TEST(TopologyDumpErrorsTest, APortLineOfTheUsualFormIsHeldToGuidsOfSixteenDigits) {
  const std::string end = "\t\"S-0000000000000021\"[1]\t\t# \"root\" lid 2 4xHDR\n";
  EXPECT_EQ(Error(leaf + ("[1](00000000000000123)" + end)),
            "net.topo:2:5: not a GUID, expected 1 to 16 hexadecimal digits");
  EXPECT_EQ(Error(leaf + ("[1](0000000000000123)" + end)), "");
}

TEST(TopologyDumpErrorsTest, AGuidHasOneToSixteenDigits) {
  const std::string message = ": not a GUID, expected 1 to 16 hexadecimal digits";
  EXPECT_EQ(Error("Ca\t1 \"H-\"\t\t# \"h1\"\n"), "net.topo:1:9" + message);
  EXPECT_EQ(Error("Ca\t1 \"H-00000000000000011\"\t\t# \"h1\"\n"), "net.topo:1:9" + message);
  EXPECT_EQ(Error("Ca\t1 \"H-ffffffffffffffff\"\t\t# \"h1\"\n"), "");
}

TEST(TopologyDumpErrorsTest, ANodeIsNamedByTypeDashAndGuid) {
  EXPECT_EQ(Error("Ca\t1 \"H0000000000000021\"\t\t# \"h1\"\n"),
            "net.topo:1:9: not a GUID, expected 1 to 16 hexadecimal digits");
}

TEST(TopologyDumpErrorsTest, AnEmptyNodeIdIsAnErrorOfItsOwnLine) {
  EXPECT_EQ(Error("\nCa\t1 \"\"\n\n"),
            "net.topo:2:7: not a GUID, expected 1 to 16 hexadecimal digits");
}

TEST(TopologyDumpErrorsTest, ANodeIdStandsInQuotes) {
  const std::string message = ": expected a node in double quotes, as \"S-0002c90200400001\"";
  EXPECT_EQ(Error("Ca\t1 H-21\t\t# h1\n"), "net.topo:1:6" + message);
  EXPECT_EQ(Error("Ca\t1 \"H-21 # h1\n"), "net.topo:1:6" + message);
  EXPECT_EQ(Error(std::string(leaf) + "[1] S-12[1] # b lid 2 4xHDR\n"), "net.topo:2:5" + message);
  EXPECT_EQ(Error(std::string(leaf) + "[1] \"S-12[1]\n"), "net.topo:2:5" + message);
}

TEST(TopologyDumpErrorsTest, GuidsOfARecordsHeadMustBeHexadecimal) {
  const std::string message = ": expected 0x and 1 to 16 hexadecimal digits";
  EXPECT_EQ(Error("vendid=intel\n"), "net.topo:1:8" + message);
  EXPECT_EQ(Error("devid=0x\n"), "net.topo:1:7" + message);
  EXPECT_EQ(Error("sysimgguid=\n"), "net.topo:1:12" + message);
  EXPECT_EQ(Error("switchguid=0x11g(11)\n"), "net.topo:1:12" + message);
  EXPECT_EQ(Error("\r\n  caguid=0x12345678901234567\r\n"), "net.topo:2:10" + message);
  EXPECT_EQ(Error("rtguid=-1\n"), "net.topo:1:8" + message);
}

TEST(TopologyDumpErrorsTest, PortGuidsMustBeHexadecimalToo) {
  const std::string message = ": not a GUID, expected 1 to 16 hexadecimal digits";
  EXPECT_EQ(Error(std::string(leaf) + "[1]\t\"H-21\"[1](2x) \t\t# \"h1\" lid 2 4xHDR\n"),
            "net.topo:2:15" + message);
  EXPECT_EQ(Error("Ca\t1 \"H-21\"\t\t# \"h1\"\n"
                  "[1](2x) \t\"S-11\"[1]\t\t# lid 2 lmc 0 \"leaf\" lid 1 4xHDR\n"),
            "net.topo:2:5" + message);
  EXPECT_EQ(Error("switchguid=0x11(1g)\n"), "net.topo:1:17" + message);
  EXPECT_EQ(Error("switchguid=0x11(11\n"), "net.topo:1:17" + message);
}

TEST(TopologyDumpErrorsTest, ANodeHasZeroTo255Ports) {
  const std::string message = ": not a number of ports, expected 0 to 255";
  const std::string rest = " \"S-11\"\t\t# \"leaf\" base port 0 lid 1 lmc 0\n";
  EXPECT_EQ(Error("Switch\t256" + rest), "net.topo:1:8" + message);
  EXPECT_EQ(Error("Switch\t-1" + rest), "net.topo:1:8" + message);
  EXPECT_EQ(Error("Switch\tmany" + rest), "net.topo:1:8" + message);
  EXPECT_EQ(Error("Switch\t36ports" + rest), "net.topo:1:8" + message);
  EXPECT_EQ(Error("Switch\t255" + rest), "");
  EXPECT_EQ(Error("Switch\t0" + rest), "");
}

TEST(TopologyDumpErrorsTest, ANodeHasADescriptionInQuotes) {
  const std::string message = ": expected # and the node's description in double quotes";
  EXPECT_EQ(Error("Ca\t1 \"H-21\"\t\t\"h1\"\n"), "net.topo:1:14" + message);
  EXPECT_EQ(Error("Ca\t1 \"H-21\"\t\t# h1\n"), "net.topo:1:14" + message);
  EXPECT_EQ(Error("Ca\t1 \"H-21\"\t\t# \"h1\n"), "net.topo:1:14" + message);
  EXPECT_EQ(Error("Ca\t1 \"H-21\"\n"), "net.topo:1:12" + message);
}

TEST(TopologyDumpErrorsTest, PortNumbersAre1To255) {
  const std::string head = "Ca\t255 \"H-21\"\t\t# \"h1\"\n";
  const std::string message = ": port number out of range, expected 1 to 255";
  EXPECT_EQ(Error(head + "[0](121) \t\"S-11\"[1]\t\t# lid 2\n"), "net.topo:2:2" + message);
  EXPECT_EQ(Error(head + "[256](121) \t\"S-11\"[1]\t\t# lid 2\n"), "net.topo:2:2" + message);
  EXPECT_EQ(Error(head + "[99999999999999999999] \t\"S-11\"[1]\t\t# lid 2\n"),
            "net.topo:2:2" + message);
  EXPECT_EQ(Error(head + "[255](121) \t\"S-11\"[1]\t\t# lid 2\n"), "");
  EXPECT_EQ(Error(head + "[1](121) \t\"S-11\"[0]\t\t# lid 2\n"), "net.topo:2:18" + message);
  EXPECT_EQ(Error(head + "[1](121) \t\"S-11\"[256]\t\t# lid 2\n"), "net.topo:2:18" + message);
  EXPECT_EQ(Error(head + "[1](121) \t\"S-11\"[x]\t\t# lid 2\n"), "net.topo:2:18" + message);
  EXPECT_EQ(Error(head + "[1](121) \t\"S-11\"[255]\t\t# lid 2\n"), "");
}

TEST(TopologyDumpErrorsTest, PortNumbersStandInBrackets) {
  const std::string head = "Ca\t4 \"H-21\"\t\t# \"h1\"\n";
  EXPECT_EQ(Error(head + "[1 \t\"S-11\"[1]\t\t# lid 2\n"),
            "net.topo:2:3: expected \"]\" behind the port");
  EXPECT_EQ(Error(head + "[1]\t\"S-11\"[1\t\t# lid 2\n"),
            "net.topo:2:13: expected \"]\" behind the port");
  EXPECT_EQ(Error(head + "[1]\t\"S-11\"\t\t# lid 2\n"),
            "net.topo:2:11: expected the peer's port in brackets");
  EXPECT_EQ(Error(head + "[1]\t\"S-11\"\n"), "net.topo:2:11: expected the peer's port in brackets");
}

TEST(TopologyDumpErrorsTest, APortNumberIsAtMostTheNumberOfPorts) {
  EXPECT_EQ(ErrorOfFile("lines/port-out-of-range.topo"),
            "lines/port-out-of-range.topo:6:2: port number out of range, the node has 4 ports");
  EXPECT_EQ(Error("Ca\t1 \"H-21\"\t\t# \"h1\"\n"
                  "[2](121) \t\"S-11\"[1]\t\t# lid 2 lmc 0 \"leaf\" lid 1 4xHDR\n"),
            "net.topo:2:2: port number out of range, the node has 1 port");
}

TEST(TopologyDumpErrorsTest, APeersPortNumberIsAtMostItsNumberOfPorts) {
  const std::string host = "Ca\t1 \"H-21\"\t\t# \"h1\"\n";
  EXPECT_EQ(Error(std::string(leaf) + "[1]\t\"H-21\"[2](121) \t\t# \"h1\" lid 2 4xHDR\n" + host),
            "net.topo:2:12: port number out of range: port 2 of node 0x0000000000000021 does not "
            "exist: it has 1 port");
  EXPECT_EQ(Error(host + "[1](121) \t\"S-11\"[5]\t\t# lid 2 lmc 0 \"leaf\" lid 1 4xHDR\n" + leaf),
            "net.topo:2:18: port number out of range: port 5 of node 0x0000000000000011 does not "
            "exist: it has 4 ports");
}

TEST(TopologyDumpErrorsTest, APeersPortOutOfRangeIsFoundHoweverFarOnItStands) {
  const std::string other =
      "Switch\t4 \"S-0000000000000021\"\t\t# \"root\" base port 0 lid 2 lmc 0\n";
  const std::string end = "\"S-0000000000000021\"[9]\t\t# \"root\" lid 2 4xHDR\n";
  for (const char blank : {'\t', ' '}) {
    // With 231 blanks the port is byte 255 of its line, counted from 0.
    for (const std::size_t count : {1U, 2U, 229U, 230U, 231U, 232U, 233U, 300U, 70000U}) {
      std::string dump(leaf);
      dump.append("[1]").append(count, blank).append(end).append(other);
      EXPECT_EQ(Error(dump),
                "net.topo:2:" + std::to_string(count + 25) +
                    ": port number out of range: port 9 of node 0x0000000000000021 does not exist: "
                    "it has 4 ports");
    }
  }
}

TEST(TopologyDumpErrorsTest, OfSeveralPeersThatStandFarOnTheOneOutOfRangeIsFound) {
  const std::string other =
      "Switch\t4 \"S-0000000000000021\"\t\t# \"root\" base port 0 lid 2 lmc 0\n";
  const auto port = [](int num, std::size_t blanks, int peer) {
    return "[" + std::to_string(num) + "]" + std::string(blanks, ' ') + "\"S-0000000000000021\"[" +
           std::to_string(peer) + "]\t\t# \"root\" lid 2 4xHDR\n";
  };
  EXPECT_EQ(Error(leaf + port(1, 300, 1) + port(2, 400, 6) + port(3, 500, 3) + other),
            "net.topo:3:425: port number out of range: port 6 of node 0x0000000000000021 does not "
            "exist: it has 4 ports");
}

TEST(TopologyDumpErrorsTest, ANodeGuidIsGivenOnce) {
  EXPECT_EQ(ErrorOfFile("lines/guid-twice.topo"),
            "lines/guid-twice.topo:17:9: node GUID 0x0000000000000011 is given twice");
}

TEST(TopologyDumpErrorsTest, ARepeatedNodeGuidIsTheLaterRecordsFaultWhateverTheNames) {
  EXPECT_EQ(Error("Ca\t1 \"H-21\"\t\t# \"z\"\n"
                  "Ca\t1 \"H-22\"\t\t# \"m\"\n"
                  "Ca\t1 \"H-0021\"\t\t# \"a\"\n"
                  "Ca\t1 \"H-23\"\t\t# \"b\"\n"),
            "net.topo:3:9: node GUID 0x0000000000000021 is given twice");
}

TEST(TopologyDumpErrorsTest, ANodeGuidIsNotZero) {
  EXPECT_EQ(Error("Ca\t1 \"H-0000000000000000\"\t\t# \"h1\"\n"),
            "net.topo:1:9: a node's GUID must not be 0");
}

constexpr const char* noNode =
    "no node found, expected a fabric document (JSON) or a topology dump as `ibnetdiscover` "
    "prints it";

TEST(TopologyDumpErrorsTest, AFileWithoutANodeIsNoFabric) {
  EXPECT_EQ(Error("# a comment\n"), std::string("net.topo:1:1: ") + noNode);
  EXPECT_EQ(Error("devid=0x1\n"), std::string("net.topo:1:1: ") + noNode);
  EXPECT_EQ(Error("[\"nodes\"]\n"), std::string("net.topo:1:1: ") + noNode);
}

TEST(TopologyDumpErrorsTest, ANodeOfUnknownTypeAloneIsNoFabric) {
  EXPECT_EQ(Error("???\t1 \"?-21\"\t\t# \"odd\"\n"), std::string("net.topo:1:1: ") + noNode);
}

TEST(TopologyDumpErrorsTest, AnEmptyFileIsNoFabric) {
  EXPECT_EQ(Error(""), "net.topo:1:1: the file is empty");
  EXPECT_EQ(Error(" \t"), "net.topo:1:1: the file is empty");
}

TEST(TopologyDumpErrorsTest, BinaryDataIsNoFabric) {
  EXPECT_EQ(Error(std::string("\x7f"
                              "ELF\0\0\n",
                              7)),
            "net.topo:1:1: the file is binary, expected a fabric document (JSON) or a topology "
            "dump");
}

TEST(TopologyDumpErrorsTest, AHeaderAloneMakesOneAskHowTheDumpWasTaken) {
  EXPECT_EQ(ErrorOfFile("lines/no-node.topo"),
            "lines/no-node.topo:1:1: no node behind the header of the dump: did `ibnetdiscover` "
            "run as root, "
            "on a host whose adapter is up?");
}

TEST(TopologyDumpErrorsTest, APortListIsNamedAsWhatItIs) {
  EXPECT_EQ(ErrorOfFile("tree-32h.ports"),
            "tree-32h.ports:1:1: this is the port list of `ibnetdiscover -p`, which does not tell "
            "the size of a switch; give the output of `ibnetdiscover` without options");
}

TEST(TopologyDumpErrorsTest, APortListMayBeginWithAnyTypeOfNode) {
  const std::string list = "net.topo:1:1: this is the port list of `ibnetdiscover -p`, ";
  for (const std::string type : {"CA", "SW", "RT"}) {
    EXPECT_THAT(Error(type + "  1  1 0x0000000000000021 4x HDR 'h1'\n"),
                ::testing::StartsWith(list));
    EXPECT_EQ(Error(type + "  1  1\n"), std::string("net.topo:1:1: ") + noNode);
  }
  EXPECT_EQ(Error("??  1  1 0x0000000000000021\n"), std::string("net.topo:1:1: ") + noNode);
}

TEST(TopologyDumpErrorsTest, ALinkListHasArrowsWithBothOfTheirEnds) {
  EXPECT_THAT(Error("1[  ] ==( 4X 53.125 Gbps Active/  LinkUp)==>  2\n"),
              ::testing::StartsWith("net.topo:1:1: this is the output of `iblinkinfo`; "));
  EXPECT_EQ(Error("1 ==( 4X\n"), std::string("net.topo:1:1: ") + noNode);
  EXPECT_EQ(Error("LinkUp)==> 2\n"), std::string("net.topo:1:1: ") + noNode);
}

TEST(TopologyDumpErrorsTest, ALinkListIsNamedAsWhatItIs) {
  EXPECT_EQ(ErrorOfFile("tree-32h.iblinkinfo"),
            "tree-32h.iblinkinfo:1:1: this is the output of `iblinkinfo`; give the output of "
            "`ibnetdiscover` without options");
}

TEST(TopologyDumpErrorsTest, AnEndInTheMiddleOfALineIsAnErrorAtThatEnd) {
  EXPECT_EQ(ErrorOfFile("lines/cut-line.topo"),
            "lines/cut-line.topo:26:66: the file ends in the middle of a line");
}

TEST(TopologyDumpErrorsTest, ALastLineThatLacksAPartWasCut) {
  for (const std::string_view line : {"v",
                                      "vendid",
                                      "vendid=",
                                      "vendid=0x2c9",
                                      "devid=0x1",
                                      "sys",
                                      "sysimgguid=0x1",
                                      "switchguid=0x12(1",
                                      "caguid=0x12",
                                      "rtguid=0x12",
                                      "S",
                                      "Switch",
                                      "Switch ",
                                      "Switch\t3",
                                      "Ca",
                                      "Ca\t1 \"H-21",
                                      "Ca\t1 \"H-21\"",
                                      "[2]\t\"S-11\"[1]\t# \"h1\" lid 2 4",
                                      "Rt\t1 \"R-21\"\t# \"ga",
                                      "[",
                                      "[2",
                                      "[2]\t\"S-11\"[1]",
                                      "[2]\t\"S-11\"[1]\t# \"h1\" lid 2",
                                      "[2]\t\"S-11\"[1]\t# \"h1\" lid 2 4x",
                                      "[2]\t\"S-11\"[1]\t# \"h1\" lid 2 4xHD",
                                      "Switch\t4 \"S-12\"\t# \"leaf\" base port 0 lid 1 lmc "}) {
    EXPECT_EQ(Error(leaf + std::string(line)), "net.topo:2:" + std::to_string(line.size() + 1) +
                                                   ": the file ends in the middle of a line");
  }
}

TEST(TopologyDumpErrorsTest, ANodeLineCutBehindTheGuidHasNoDescription) {
  EXPECT_EQ(Error("Ca\t1 \"H-21\"\n"),
            "net.topo:1:12: expected # and the node's description in double quotes");
}

TEST(TopologyDumpErrorsTest, ALastLineWithAllItNeedsIsNotCut) {
  for (const std::string_view line :
       {"# comm", "Chassis 1 (gu", "Non-Chassis Nodes", " \t",
        "Switch\t4 \"S-12\"\t# \"leaf\" base port 0 lid 1 lmc 0",
        "Switch\t4 \"S-12\"\t# \"leaf\" base port 0 lid 1 lmc 0 (scp)", "Ca\t1 \"H-21\"\t# \"h1\"",
        "Ca\t1 \"H-21\"\t# \"h1\" (scp)", "Rt\t1 \"R-21\"\t# \"gate\"",
        "[2]\t\"S-99\"[1]\t# \"h1\" lid 2 4xHDR", "[2]\t\"S-99\"[1]\t# \"h1\" lid 2 HDR s=",
        "[2]\t\"S-99\"[1]\t# \"h1\" lid 2 4x???", "[2]\t\"S-99\"[1]\t# \"h1\" lid 2 4xGDR",
        "[2]\t\"S-99\"[1]\t# \"a # b\" lid 2 4xFDR10 slot 3"}) {
    EXPECT_EQ(Error(leaf + std::string(line)), "") << line;
  }
}

// The kinds of line of tree-32h.topo that stand outside of records.
bool MayBeCut(std::string_view line) { return line.empty() || line.front() == '#'; }

// A cut dump must not pass for a smaller fabric.
TEST(TopologyDumpErrorsTest, ADumpThatWasCutInsideALineOfARecordIsAnErrorInThatLine) {
  std::stringstream file;
  file << std::ifstream(FABSCOPE_TEST_DATA "/tree-32h.topo").rdbuf();
  const std::string whole = file.str();
  const std::size_t firstNode = whole.find("Switch");
  for (std::size_t size = 0; size < whole.size(); ++size) {
    const std::string bytes = whole.substr(0, size);
    const std::size_t start = bytes.rfind('\n') + 1;
    const std::string left = bytes.substr(start);
    const std::string line = whole.substr(start, whole.find('\n', start) - start);
    const std::string error = Error(bytes);

    const bool headLine = line.find("id=") != std::string::npos;
    if (!MayBeCut(line) && !left.empty() && (left != line || headLine)) {
      const auto number = 1 + std::count(bytes.begin(), bytes.end(), '\n');
      EXPECT_THAT(error, ::testing::StartsWith("net.topo:" + std::to_string(number) + ":")) << left;
    } else if (start <= firstNode && left != line) {
      EXPECT_NE(error, "") << size;  // no node yet
    } else if (start > firstNode) {
      EXPECT_EQ(error, "") << left;
    }
  }
}

}  // namespace
}  // namespace fabscope::internal
