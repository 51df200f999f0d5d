#include "formats/topology_dump_lines.h"

#include <gtest/gtest.h>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "fabric/ib_node.h"

namespace fabscope::internal {
namespace {

std::string InWords(const DumpPortLine& port) {
  return "[" + std::to_string(port.port) + "]@" + std::to_string(port.portOffset) + " " +
         std::to_string(port.peerGuid) + "[" + std::to_string(port.peerPort) + "]@" +
         std::to_string(port.peerPortOffset) + " " + std::string(port.speed);
}

// A port line in words, its places counted from its bracket.
std::string Parsed(const std::string& line, std::size_t shift = 0) {
  DumpPortLine port;
  const MaybeProblem problem = ParsePortLine(line, 100 - shift, port);
  if (problem) return std::to_string(problem->offset) + ": " + problem->message;
  return InWords(port);
}

TEST(TopologyDumpLinesTest, APortLineTellsBothPortsAndTheSpeed) {
  EXPECT_EQ(Parsed("[5]\t\"S-000000000020000e\"[2]\t\t# \"mid-p3m0\" lid 22 4xHDR"),
            "[5]@101 2097166[2]@125 HDR");
  EXPECT_EQ(Parsed("[1](2c903)\t\"S-00000000000000ff\"[255](2c904)\t\t# \"a\" lid 65535 12xFDR10"),
            "[1]@101 255[255]@132 FDR10");
}

TEST(TopologyDumpLinesTest, ANodeOfAnyTypeHasTypePortsAndAQuote) {
  for (const char* line : {"???\t1 \"?-21\"\t\t# \"odd\"", "Gw 0 \"", "x\t \t12\t\"G-21\""}) {
    EXPECT_EQ(KindOfDumpLine(line), DumpLineKind::UnknownNode) << line;
  }
  for (const char* line : {"$ echo \"a\"", "echo \"a\"", "echo 1", "echo 1 a \"b\"", "1", "x"}) {
    EXPECT_EQ(KindOfDumpLine(line), DumpLineKind::Unknown) << line;
  }
}

TEST(TopologyDumpLinesTest, ANodeLineMayBeIndented) {
  DumpNodeLine node;
  ASSERT_EQ(ParseNodeLine(" \tRt\t12 \"R-21\"\t\t# \"gate\"", 100, node), std::nullopt);
  EXPECT_EQ(node.type, NodeTypeRouter);
  EXPECT_EQ(node.numPorts, 12);
  EXPECT_EQ(node.guid, 0x21U);
  EXPECT_EQ(node.guidOffset, 111U);
  EXPECT_EQ(node.name, "gate");
}

// A speed that begins like a known one was cut. Any other letter is some new hardware's.
TEST(TopologyDumpLinesTest, AWidthAndTheBeginningOfASpeedAreNotAllOfALine) {
  const auto isCut = [](const std::string& speed) {
    return IsCutLine("[2]\t\"S-11\"[1]\t# \"h1\" lid 2 4x" + speed);
  };
  for (char c = 'A'; c <= 'Z'; ++c) {
    const bool beginsASpeed = c == 'S' || c == 'D' || c == 'Q' || c == 'F' || c == 'E' ||
                              c == 'H' || c == 'N' || c == 'X';
    EXPECT_EQ(isCut({c}), beginsASpeed) << c;
  }
  for (char c = 'a'; c <= 'z'; ++c) EXPECT_FALSE(isCut({c})) << c;
  for (const char c : {'1', '?', '@', '[', '`', '{'}) EXPECT_TRUE(isCut({c})) << c;
  EXPECT_TRUE(isCut("FDR1"));
  EXPECT_FALSE(isCut("FDR10"));
}

TEST(TopologyDumpLinesTest, ALineOfARecordsHeadIsCutWhateverStandsInIt) {
  EXPECT_TRUE(IsCutLine("vendid=0x2c9"));
  EXPECT_TRUE(IsCutLine("sysimgguid=0x77\t\t# \"Chassis\" \"1\""));
  EXPECT_TRUE(IsCutLine("switchguid=0x12(12)\t# \"line\" \"3\""));
}

TEST(TopologyDumpLinesTest, WhatADescriptionHoldsIsNotTheEndOfASwitchsLine) {
  EXPECT_TRUE(IsCutLine("Switch\t4 \"S-12\"\t# \"a lmc 0\" base port 0 lid 1"));
  EXPECT_TRUE(IsCutLine("Switch\t4 \"S-12\"\t# \"a \" lmc 0 b\" base port 0 lid 1"));
  EXPECT_FALSE(IsCutLine("Switch\t4 \"S-12\"\t# \"a lmc 0\" base port 0 lid 1 lmc 0"));
}

TEST(TopologyDumpLinesTest, ALineOfNoKnownKindIsCutWhereAKnownOneMayGoOn) {
  for (const char* line : {"v", "vendid", "devi", "sysimgguid", "s", "ca", "r", "S", "Switch", "C",
                           "Ca", "R", "[", " \t[ "}) {
    EXPECT_TRUE(IsCutLine(line)) << line;
  }
  for (const char* line : {"x", "vendor", "Switches", "cab", "[a", "Cas", "$ echo \"a\""}) {
    EXPECT_FALSE(IsCutLine(line)) << line;
  }
  EXPECT_FALSE(IsCutLine("???\t1 \"?-21\""));
  EXPECT_FALSE(IsCutLine("Chassis 1 (gu"));
  EXPECT_FALSE(IsCutLine(""));
}

}  // namespace
}  // namespace fabscope::internal
