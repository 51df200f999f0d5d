#include "formats/plain_dump_lines.h"

#include <bit>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <random>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "formats/fabric_document.h"
#include "formats/link_speeds.h"
#include "formats/topology_dump.h"
#include "formats/topology_dump_lines.h"
#include "formats/write_fabric.h"
#include "support/test_fabric.h"

namespace fabscope::internal {
namespace {

using Kind = PlainDumpLines::Kind;

constexpr std::uint8_t hdr = 10;
constexpr const char* odd = "odd";

std::uint8_t SpeedBit(std::uint32_t code) {
  return static_cast<std::uint8_t>(std::countr_zero(code));
}

std::string InWords(const PlainDumpLines::Line& line) {
  return std::to_string(line.port) + " to " + std::to_string(line.guid) + " " +
         std::to_string(line.peerPort) + "@" + std::to_string(line.peerPortOffset) + " speed " +
         std::to_string(line.speedBit);
}

// A reader that knows the tail of an ordinary line.
class PlainDumpLinesTest : public ::testing::Test {
 protected:
  PlainDumpLinesTest() { lines.Learn("[5]\t\"S-1\"[2]\t\t# \"a\" lid 22 4xHDR", hdr); }

  // What is read is valid until the next line is.
  Kind Read(const std::string& line, PlainDumpLines::Line& parsed) {
    text = line + "\n" + std::string(PlainDumpLines::Ahead, '7');
    const Kind kind = lines.Read(text.data(), text.data() + text.size(), parsed);
    if (kind != Kind::Odd) {
      EXPECT_EQ(parsed.next - text.data(), static_cast<std::ptrdiff_t>(line.size() + 1)) << line;
    }
    return kind;
  }
  std::string ReadPort(const std::string& line) {
    PlainDumpLines::Line parsed;
    return Read(line, parsed) == Kind::Port ? InWords(parsed) : odd;
  }
  // A field's number; 0 if it is none of that kind.
  std::uint64_t ReadField(const std::string& line, Kind kind) {
    PlainDumpLines::Line parsed;
    return Read(line, parsed) == kind ? parsed.guid : 0;
  }

  PlainDumpLines lines;
  std::string text;
};

TEST_F(PlainDumpLinesTest, PortLinesAsTheToolPrintsThemArePlain) {
  EXPECT_EQ(ReadPort("[5]\t\"S-000000000020000e\"[2]\t\t# \"mid-p3m0\" lid 22 4xHDR"),
            "5 to 2097166 2@25 speed 10");
  EXPECT_EQ(ReadPort("[12]\t\"H-ffffffffffffffff\"[1](2c904) \t\t# \"h1 mlx5_0\" lid 7 4xHDR"),
            "12 to 18446744073709551615 1@26 speed 10");
  EXPECT_EQ(ReadPort("[1](0002c90300a1b2c3) \t\"S-00000000000000ff\"[255]\t\t"
                     "# lid 3 lmc 0 \"a # \" b\" lid 65535 4xHDR\r"),
            "1 to 255 255@44 speed 10");
  EXPECT_EQ(ReadPort(R"x([255](0)"R-0123456789abcdef"[10](f)#"" lid 0 4xHDR)x"),
            "255 to 81985529216486895 10@29 speed 10");
}

TEST_F(PlainDumpLinesTest, PortLinesOfOtherFormsAreOdd) {
  for (const char* line : {
           // What stands around the ports.
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
           R"([1] "S-000000000000001A"[2] # "a" lid 5 4xHDR)",
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
           R"([1] "S-0000000000000011"[2] # "a" lid 5 7 4xHDR)",
           R"([1] "S-0000000000000011"[2] # "a" lid 5 4xEDR)",
           R"([1] "S-0000000000000011"[2] # "a" lid 5 4xHDR slot 3)",
           R"([1] "S-0000000000000011"[2] # 5 4xHDR)",
           R"([1] "S-0000000000000011"[2]#5 4xHDR)",
       }) {
    EXPECT_EQ(ReadPort(line), odd) << line;
  }
}

TEST_F(PlainDumpLinesTest, EveryDigitOfAPeerMustBeOne) {
  const std::string line = "[5]\t\"S-0123456789abcdef\"[2]\t\t# \"a\" lid 22 4xHDR";
  ASSERT_NE(ReadPort(line), odd);
  const std::string digits = "0123456789abcdef";
  for (std::size_t at = line.find('-') + 1; line[at] != '"'; ++at) {
    for (int c = 0; c < 256; ++c) {
      std::string changed = line;
      changed[at] = static_cast<char>(c);
      if (c == '\n') continue;
      const bool isDigit = c != 0 && digits.find(static_cast<char>(c)) != std::string::npos;
      EXPECT_EQ(ReadPort(changed) != odd, isDigit) << at << ' ' << c;
    }
  }
}

TEST_F(PlainDumpLinesTest, TheFirstPeerOfAllMustHaveDigitsToo) {
  const std::string line = "[5]\t\"S-0000000000000011\"[2]\t\t# \"a\" lid 22 4xHDR";
  std::string changed = line;
  changed.replace(changed.find('-') + 1, 8, 8, '\0');
  EXPECT_EQ(ReadPort(changed), odd);
  EXPECT_NE(ReadPort(line), odd);
}

TEST_F(PlainDumpLinesTest, SeveralTailsAreKnownAtATime) {
  const std::string begin = R"([1] "S-0000000000000011"[2] # "a" lid 5)";
  const std::vector<std::string> tails{" 1xSDR", " 4xEDR s=1 w=1 v=1", " 4xNDR", " 12xQDR"};
  std::uint8_t bit = 0;
  for (const std::string& tail : tails) lines.Learn(begin + tail, bit++);
  for (int round = 0; round < 2; ++round) {
    for (std::size_t i = 0; i < tails.size(); ++i) {
      EXPECT_EQ(ReadPort(begin + tails[i]), "1 to 17 2@25 speed " + std::to_string(i));
    }
  }
  EXPECT_EQ(ReadPort(begin + " 4xHDR"), odd) << "the first one is forgotten";
}

TEST_F(PlainDumpLinesTest, ALongTailIsComparedWhole) {
  const std::string begin = R"([1] "S-0000000000000011"[2] # "a" lid )";
  const std::string longest = " 4xEDR s=1 w=1 v=1 and all that can be kept of it";
  lines.Learn(begin + "60 4xEDR s=1 w=1 v=1", 3);
  EXPECT_NE(ReadPort(begin + "9 4xEDR s=1 w=1 v=1"), odd);
  EXPECT_EQ(ReadPort(begin + "9 1xEDR s=1 w=1 v=1"), odd);
  EXPECT_EQ(ReadPort(R"([1] "S-0000000000000011"[2] #1 w=1 v=1)"), odd) << "shorter than it";
  lines.Learn(begin + "1023456789" + longest.substr(0, 48), 4);
  EXPECT_NE(ReadPort(begin + "9" + longest.substr(0, 48)), odd);
  lines.Learn(begin + "9" + longest.substr(0, 49), 4);
  EXPECT_EQ(ReadPort(begin + "9" + longest.substr(0, 49)), odd);
}

TEST_F(PlainDumpLinesTest, NoTailIsLearnedOfALineThatHasNone) {
  const std::string begin = R"([1] "S-0000000000000011"[2] # "a")";
  for (const std::string behind :
       {" lid 5", " lid  4xEDR", " lid -1 4xEDR", " lid 5x 4xEDR", "  lid 5 4xEDR", " lit 5 4xEDR",
        " lid 5 4xEDR and more than could be kept of what may stand there"}) {
    lines.Learn(begin + behind, 0);
    EXPECT_EQ(ReadPort(begin + behind), odd) << behind;
    EXPECT_EQ(ReadPort(begin + " lid 5 4xEDR"), odd) << behind;
  }
  lines.Learn("[1] without a quote", 0);
  EXPECT_NE(ReadPort(begin + " lid 5 4xHDR"), odd) << "nothing else is forgotten";
}

TEST_F(PlainDumpLinesTest, FieldsAreReadByTheirKind) {
  EXPECT_EQ(ReadField("vendid=0x2c9", Kind::VendorField), 0x2c9U);
  EXPECT_EQ(ReadField("devid=0xd2f2", Kind::VendorField), 0xd2f2U);
  EXPECT_EQ(ReadField("sysimgguid=0xffffffff00000001\r", Kind::SystemGuid), 0xffffffff00000001U);
  EXPECT_EQ(ReadField("switchguid=0x12(12)", Kind::NodeGuid), 0x12U);
  EXPECT_EQ(ReadField("caguid=0x12", Kind::NodeGuid), 0x12U);
  EXPECT_EQ(ReadField("caguid=0x12(0123456789abcdef)", Kind::NodeGuid), 0x12U);
  PlainDumpLines::Line line;
  EXPECT_EQ(Read("", line), Kind::Ignored);
}

TEST_F(PlainDumpLinesTest, NodesTellTypePortsGuidAndName) {
  PlainDumpLines::Line line;
  ASSERT_EQ(
      Read("Switch\t64 \"S-0200000102000001\"\t\t# \"a \"b\" c\" base port 0 lid 1 lmc 0\r", line),
      Kind::Node);
  EXPECT_EQ(line.type, NodeTypeSwitch);
  EXPECT_EQ(line.numPorts, 64);
  EXPECT_EQ(line.guid, 0x200000102000001U);
  EXPECT_EQ(line.guidOffset, 13U);
  EXPECT_EQ(line.name, "a \"b\" c");
  ASSERT_EQ(Read("Switch\t255 \"S-0200000102000001\" \t # \"a\"", line), Kind::Node);
  EXPECT_EQ(line.numPorts, 255);
  ASSERT_EQ(Read("Ca\t1 \"H-0200000200000001\"# \"\"", line), Kind::Node);
  EXPECT_EQ(line.type, NodeTypeCA);
  EXPECT_EQ(line.name, "");
}

TEST_F(PlainDumpLinesTest, NodesOfOtherFormsAreOdd) {
  PlainDumpLines::Line line;
  for (const char* node :
       {"Switch 4 \"S-0200000102000001\"\t\t# \"a\"", "Switch\t \"S-0200000102000001\"\t\t# \"a\"",
        "Switch\t256 \"S-0200000102000001\"\t\t# \"a\"",
        "Switch\t0004 \"S-0200000102000001\"\t\t# \"a\"",
        "Switch\t4\t\"S-0200000102000001\"\t\t# \"a\"", "Switch\t4 \"S-1\"\t\t# \"a\"",
        "Switch\t4 \"S-0200000102000001\"\t\t#\"a\"", "Switch\t4 \"S-0200000102000001\"\t\t# \"a",
        "Switch\t4 \"S-0200000102000001\"\t\t\"a\"", "Rt\t4 \"R-0200000102000001\"\t\t# \"a\"",
        "Switch\t4 \"S-0200000102000001\"\t\t#-\"a\"",
        "Switch\t4 \"S-0200000102000001\"\t\t- \"a\"",
        "Switch\t4 \"S-0200000102000001\"\t\t\t\t# \"a\"",
        "Case\t4 \"S-0200000102000001\"\t\t# \"a\""}) {
    EXPECT_EQ(Read(node, line), Kind::Odd) << node;
  }
}

TEST_F(PlainDumpLinesTest, FieldsOfOtherFormsAreOdd) {
  PlainDumpLines::Line line;
  for (const char* field :
       {"vendid=0x", "vendid=2c9", "vendid=0x2c9 ", "vendid=0x12345678123456781", "vendid=0x2c9(",
        "vendid=0x2c9()", "vendid=0x2c9(2c9", "vendid=0x2c9(2g)", "vendid=0x2c9(2c9) ",
        "vendid=0x2c9(01234567812345678)", "vendor", "sysimgguid=0x77\t\t# \"Chassis\" 1",
        "rtguid=0x1", "vendid=0x2C9", "vendid=0x2c9(2C9)", " ", "# a"}) {
    EXPECT_EQ(Read(field, line), Kind::Odd) << field;
  }
}

TEST_F(PlainDumpLinesTest, ALineWithoutItsEndIsOdd) {
  const std::string name(PlainDumpLines::Ahead, 'a');
  PlainDumpLines::Line line;
  for (const std::string& whole :
       {"[5]\t\"S-000000000020000e\"[2]\t\t# \"" + name + "\" lid 22 4xHDR",
        "Ca\t1 \"H-0200000200000001\"\t\t# \"" + name + '"'}) {
    ASSERT_NE(Read(whole, line), Kind::Odd);
    EXPECT_EQ(lines.Read(whole.data(), whole.data() + whole.size(), line), Kind::Odd);
  }
}

// Changes a text here and there.
class Damage {
 public:
  explicit Damage(unsigned seed) : random_(seed) {}

  std::size_t Below(std::size_t size) { return random_() % size; }
  void Change(std::string& text, std::string_view characters) {
    const std::size_t at = 1 + Below(text.size() - 1);
    const char c = characters[Below(characters.size())];
    switch (Below(4)) {
      case 0:
        text[at] = c;
        break;
      case 1:
        text.insert(at, 1, c);
        break;
      case 2:
        text.erase(at, 1);
        break;
      default:
        text.resize(at + 1);
    }
  }

 private:
  std::minstd_rand random_;
};

constexpr std::string_view lineCharacters = "0129afFxX\"[]()#-= \t\rSHDRlid?:;";

TEST_F(PlainDumpLinesTest, APlainLineSaysWhatItSaysWhenLookedAtClosely) {
  const std::vector<std::string> usual{
      "[5]\t\"S-000000000020000e\"[2]\t\t# \"mid-p3m0\" lid 22 4xHDR",
      R"([12](2c903) "H-0002c9030040f160"[1](2c904)  # "n \" lid 5 1xSDR" lid 7 4xHDR)",
      R"([255]"R-FFFFffff00000000"[100]#"" lid 0 4xHDR)"};
  Damage damage(1);
  int plain = 0;
  for (int i = 0; i < 300000; ++i) {
    std::string line = usual[damage.Below(usual.size())];
    for (auto changes = damage.Below(3); changes != 0; --changes) {
      damage.Change(line, lineCharacters);
    }
    PlainDumpLines::Line parsed;
    if (Read(line, parsed) != Kind::Port) continue;
    ++plain;
    if (line.ends_with('\r')) line.pop_back();
    DumpPortLine port;
    ASSERT_FALSE(ParsePortLine(line, 0, port)) << line;
    PlainDumpLines::Line closely;
    closely.port = port.port;
    closely.guid = port.peerGuid;
    closely.peerPort = port.peerPort;
    closely.peerPortOffset = static_cast<std::uint32_t>(port.peerPortOffset);
    const auto code = SpeedCode(port.speed);
    ASSERT_TRUE(code) << line;
    closely.speedBit = SpeedBit(*code);
    ASSERT_EQ(InWords(parsed), InWords(closely)) << line;
  }
  EXPECT_GT(plain, 80000);
}

// All that comes of a dump: its fabric or an error, and its warnings.
using Loader = decltype(&LoadTopologyDump);
std::string AllThatComesOf(const std::string& text, Loader load) {
  Input input("dump", text);
  FabricBuilder builder;
  Warnings warnings;
  std::string all;
  if (const MaybeError error = load(input, nullptr, nullptr, builder, warnings)) {
    all = error->Text();
  } else {
    all = FabricDocumentText(*builder.Build());
  }
  for (const std::string& warning : warnings.Lines("dump")) all += '\n' + warning;
  return all;
}

std::string DumpOfATree() {
  TestFabric tree;
  AddThreeLevelTree(tree, 2, 2, 2, 2, 2);
  std::ostringstream text;
  WriteFabric(tree.Build(), FabricFormat::TopologyDump, text);
  return text.str();
}

std::vector<std::string> LinesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

TEST(PlainDumps, ZerosInTheFirstGuidsAreNoDigits) {
  const std::string blank(PlainDumpLines::Ahead, '\n');
  const std::string text =
      "Switch\t1 \"S-0000000000000001\"\t\t# \"a\" base port 0 lid 1 lmc 0\n\n"
      "Switch\t1 \"S-" +
      std::string(8, '\0') + "00000002\"\t\t# \"b\" base port 0 lid 2 lmc 0\n" + blank;
  EXPECT_THAT(AllThatComesOf(text, LoadTopologyDump), ::testing::HasSubstr("not a GUID"));
  EXPECT_EQ(AllThatComesOf(text, LoadTopologyDump), AllThatComesOf(text, LoadTopologyDumpClosely));
}

TEST(PlainDumps, GiveWhatTheyGiveWhenLookedAtCloselyHoweverDamaged) {
  const std::vector<std::string> tree = LinesOf(DumpOfATree());
  Damage damage(2);
  int readable = 0;
  constexpr int dumps = 20000;
  for (int i = 0; i < dumps; ++i) {
    std::vector<std::string> lines = tree;
    for (auto changes = 1 + damage.Below(4); changes != 0; --changes) {
      const std::size_t at = damage.Below(lines.size());
      const std::size_t other = damage.Below(lines.size());
      switch (damage.Below(6)) {
        case 0:
          if (lines[at].size() > 1) damage.Change(lines[at], lineCharacters);
          break;
        case 1:
          lines.erase(lines.begin() + static_cast<std::ptrdiff_t>(at));
          break;
        case 2:
          lines.insert(lines.begin() + static_cast<std::ptrdiff_t>(at), lines[other]);
          break;
        case 3:
          std::swap(lines[at], lines[other]);
          break;
        case 4:
          lines[at] += damage.Below(2) == 0 ? "\r" : " s=1 w=1 v=1";
          break;
        default:
          // The number of a port, where there is one.
          if (lines[at].starts_with('[')) lines[at][1] = static_cast<char>('0' + damage.Below(10));
      }
    }
    const std::string lineEnd = damage.Below(4) == 0 ? "\r\n" : "\n";
    std::string text = damage.Below(8) == 0 ? "\xef\xbb\xbf" : "";
    for (const std::string& line : lines) text += line + lineEnd;
    const std::string closely = AllThatComesOf(text, LoadTopologyDumpClosely);
    ASSERT_EQ(AllThatComesOf(text, LoadTopologyDump), closely) << text;
    readable += closely.starts_with('{') ? 1 : 0;
  }
  EXPECT_GT(readable, dumps / 10);
  EXPECT_LT(readable, dumps * 9 / 10);
}

}  // namespace
}  // namespace fabscope::internal
