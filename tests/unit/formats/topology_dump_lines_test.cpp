#include "formats/topology_dump_lines.h"

#include <gtest/gtest.h>
#include <random>
#include <string>

namespace fabscope {
namespace {

// A port line in words, its places counted from its bracket.
std::string Parsed(const std::string& line, std::size_t shift = 0) {
  DumpPortLine port;
  const MaybeProblem problem = ParsePortLine(line, 100 - shift, port);
  if (problem) return std::to_string(problem->offset) + ": " + problem->message;
  return "[" + std::to_string(port.port) + "]@" + std::to_string(port.portOffset) + " " +
         std::to_string(port.peerGuid) + "[" + std::to_string(port.peerPort) + "]@" +
         std::to_string(port.peerPortOffset) + " " + std::string(port.speed);
}

TEST(TopologyDumpLinesTest, APortLineTellsBothPortsAndTheSpeed) {
  EXPECT_EQ(Parsed("[5]\t\"S-000000000020000e\"[2]\t\t# \"mid-p3m0\" lid 22 4xHDR"),
            "[5]@101 2097166[2]@125 HDR");
  EXPECT_EQ(Parsed("[1](2c903)\t\"S-00000000000000ff\"[255](2c904)\t\t# \"a\" lid 65535 12xFDR10"),
            "[1]@101 255[255]@132 FDR10");
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

}  // namespace
}  // namespace fabscope
