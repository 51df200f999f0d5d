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

constexpr const char* notPlain = "?";

// The same of a line of the plain form.
std::string ReadPlainly(const std::string& line) {
  DumpPortLine port;
  return ReadPlainPortLine(line, 100, port) ? InWords(port) : notPlain;
}

TEST(TopologyDumpLinesTest, APortLineTellsBothPortsAndTheSpeed) {
  EXPECT_EQ(Parsed("[5]\t\"S-000000000020000e\"[2]\t\t# \"mid-p3m0\" lid 22 4xHDR"),
            "[5]@101 2097166[2]@125 HDR");
  EXPECT_EQ(Parsed("[1](2c903)\t\"S-00000000000000ff\"[255](2c904)\t\t# \"a\" lid 65535 12xFDR10"),
            "[1]@101 255[255]@132 FDR10");
}

// What large fabrics consist of must not take the long way.
TEST(TopologyDumpLinesTest, PortLinesAsTheToolPrintsThemAreReadInOneGo) {
  EXPECT_EQ(ReadPlainly("[5]\t\"S-000000000020000e\"[2]\t\t# \"mid-p3m0\" lid 22 4xHDR"),
            "[5]@101 2097166[2]@125 HDR");
  EXPECT_EQ(ReadPlainly("[12]\t\"H-ffffffffffffffff\"[1](2c904) \t\t# \"h1 mlx5_0\" lid 7 12xEDR"),
            "[12]@101 18446744073709551615[1]@126 EDR");
  EXPECT_EQ(ReadPlainly("[1](0002c90300a1b2c3) \t\"S-00000000000000ff\"[255]\t\t"
                        "# lid 3 lmc 0 \"a # \" b\" lid 65535 4xFDR10"),
            "[1]@101 255[255]@144 FDR10");
  EXPECT_EQ(ReadPlainly(R"x([255](0)"R-0000000000000001"[10](f)#"" lid 0 99999xA0Z9)x"),
            "[255]@101 1[10]@129 A0Z9");
}

TEST(TopologyDumpLinesTest, PortLinesOfOtherFormsAreLookedAtClosely) {
  for (const char* line : {
           // What stands around the ports.
           R"( [1] "S-0000000000000011"[2] # "a" lid 5 4xHDR)",
           R"(1] "S-0000000000000011"[2] # "a" lid 5 4xHDR)",
           R"([1 "S-0000000000000011"[2] # "a" lid 5 4xHDR)",
           R"([1] "S-0000000000000011" [2] # "a" lid 5 4xHDR)",
           R"([1] "S-0000000000000011"2] # "a" lid 5 4xHDR)",
           R"([1] "S-0000000000000011"[2 # "a" lid 5 4xHDR)",
           R"([1][ext 3] "S-0000000000000011"[2] # "a" lid 5 4xHDR)",
           R"([1] "S-0000000000000011"[2][ext 3] # "a" lid 5 4xHDR)",
           // The numbers of the ports.
           R"([] "S-0000000000000011"[2] # "a" lid 5 4xHDR)",
           R"([0] "S-0000000000000011"[2] # "a" lid 5 4xHDR)",
           R"([256] "S-0000000000000011"[2] # "a" lid 5 4xHDR)",
           R"([0001] "S-0000000000000011"[2] # "a" lid 5 4xHDR)",
           R"([1] "S-0000000000000011"[256] # "a" lid 5 4xHDR)",
           // Their GUIDs.
           R"([1]() "S-0000000000000011"[2] # "a" lid 5 4xHDR)",
           R"([1](00000000000000123) "S-0000000000000011"[2] # "a" lid 5 4xHDR)",
           R"([1](2g) "S-0000000000000011"[2] # "a" lid 5 4xHDR)",
           R"([1](2 "S-0000000000000011"[2] # "a" lid 5 4xHDR)",
           // The peer.
           R"([1] S-0000000000000011"[2] # "a" lid 5 4xHDR)",
           R"([1] "S0000000000000011"[2] # "a" lid 5 4xHDR)",
           R"([1] "S-11"[2] # "a" lid 5 4xHDR)",
           R"([1] "S-000000000000001g"[2] # "a" lid 5 4xHDR)",
           R"([1] "S-00000000000000011"[2] # "a" lid 5 4xHDR)",
           R"([1] ""-0000000000000011"[2] # "a" lid 5 4xHDR)",
           R"([1] "S-0000000000000011")",
           // What stands behind it.
           R"([1] "S-0000000000000011"[2])",
           R"([1] "S-0000000000000011"[2] "a" lid 5 4xHDR)",
           R"([1] "S-0000000000000011"[2] # lid 5 4xHDR)",
           R"([1] "S-0000000000000011"[2] # "a")",
           R"([1] "S-0000000000000011"[2] # "a" lid  4xHDR)",
           R"([1] "S-0000000000000011"[2] # "a" lid -1 4xHDR)",
           R"([1] "S-0000000000000011"[2] # "a" lid 123456 4xHDR)",
           R"([1] "S-0000000000000011"[2] # "a" lid 5 123456xHDR)",
           R"([1] "S-0000000000000011"[2] # "a" lid 5)",
           R"([1] "S-0000000000000011"[2] # "a" lid 5 HDR)",
           R"([1] "S-0000000000000011"[2] # "a" lid 5 4x)",
           R"([1] "S-0000000000000011"[2] # "a" lid 5 4xhdr)",
           R"([1] "S-0000000000000011"[2] # "a" lid 5 4xHD@)",
           R"([1] "S-0000000000000011"[2] # "a" lid 5 4xHD[)",
           R"([1] "S-0000000000000011"[2] # "a" lid 5 4x???)",
           R"([1] "S-0000000000000011"[2] # "a" lid 5 4xHDR slot 3)",
           "",
       }) {
    EXPECT_EQ(ReadPlainly(line), notPlain) << line;
  }
}

// Lines of the usual form are read in a shorter way. A blank in front makes a line unusual, so the
// two ways can be compared.
TEST(TopologyDumpLinesTest, TheUsualFormIsReadAsAnyOther) {
  const std::vector<std::string> usual{
      "[5]\t\"S-000000000020000e\"[2]\t\t# \"mid-p3m0\" lid 22 4xHDR",
      R"([12](2c903) "H-0002c9030040f160"[1](2c904)  # "n \" lid 5 1xSDR" lid 7 12xEDR)",
      R"([255]"R-FFFFffff00000000"[100]#"" lid 0 4xXDR)"};
  constexpr std::string_view characters = "0129afFxX\"[]()#-= \t\rSHDRlid?:;";
  std::minstd_rand random(1);
  const auto below = [&](std::size_t size) { return random() % size; };
  int readable = 0;
  for (int i = 0; i < 300000; ++i) {
    std::string line = usual[below(usual.size())];
    for (auto changes = below(3); changes != 0; --changes) {
      const std::size_t at = 1 + below(line.size() - 1);
      const char c = characters[below(characters.size())];
      switch (below(4)) {
        case 0:
          line[at] = c;
          break;
        case 1:
          line.insert(at, 1, c);
          break;
        case 2:
          line.erase(at, 1);
          break;
        default:
          line.resize(at + 1);
      }
    }
    const std::string parsed = Parsed(line);
    ASSERT_EQ(parsed, Parsed(" " + line, 1)) << line;
    readable += parsed.front() == '[' ? 1 : 0;
  }
  EXPECT_GT(readable, 100000);
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
