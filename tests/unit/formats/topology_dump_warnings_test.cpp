#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "fabric/fabric_walk.h"
#include "formats/load_fabric.h"
#include "formats/topology_dump.h"

namespace fabscope::internal {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

std::string Switch(const std::string& digit, int numPorts) {
  return "Switch\t" + std::to_string(numPorts) + " \"S-000000000000001" + digit + "\"\t\t# \"s" +
         digit + "\" base port 0 lid 1 lmc 0\n";
}

// A port line from any switch to switch `digit`.
std::string Port(int port, const std::string& digit, int peerPort,
                 const std::string& speed = "4xHDR") {
  return "[" + std::to_string(port) + "]\t\"S-000000000000001" + digit + "\"[" +
         std::to_string(peerPort) + "]\t\t# \"s" + digit + "\" lid 1 " + speed + "\n";
}

// Loads a dump that has oddities and tells its warnings and cables.
class TopologyDumpWarningsTest : public ::testing::Test {
 protected:
  void Load(const std::string& bytes) {
    builder = FabricBuilder();
    found = Warnings();
    Input input("net.topo", bytes);
    Finish(LoadTopologyDump(input, nullptr, nullptr, builder, found));
  }

  void LoadFile(const std::string& name) {
    Finish(LoadFabric(FABSCOPE_TEST_DATA "/lines/" + name, nullptr, nullptr, builder, found));
  }

  // "11:1-21:1", and "?" behind it when the link is not symmetric.
  std::vector<std::string> Cables() const {
    std::vector<std::string> cables;
    for (const IBPort& port : fabric->GetPorts()) {
      if (port.remotePort == nullptr || !IsFirstEnd(port)) continue;
      std::ostringstream text;
      text << std::hex << port.node->guid << ':' << std::to_string(port.num) << '-'
           << port.remotePort->node->guid << ':' << std::to_string(port.remotePort->num)
           << (port.symmetric && port.remotePort->symmetric ? "" : "?");
      cables.push_back(text.str());
    }
    return cables;
  }

  std::unique_ptr<IBFabric> fabric;
  std::vector<std::string> warnings;

 private:
  void Finish(const MaybeError& error) {
    if (error) throw std::runtime_error(error->Text());
    fabric = builder.Build();
    warnings = found.Lines("net.topo");
  }

  FabricBuilder builder;
  Warnings found;
};

TEST_F(TopologyDumpWarningsTest, ALongNameIsCut) {
  const auto record = [](const std::string& guid, const std::string& name) {
    return "Switch\t2 \"S-00000000000000" + guid + "\"\t\t# \"" + name +
           "\" enhanced port 0 lid 1 lmc 0\n";
  };
  const std::string longest(256, 'x');
  Load(record("11", longest) + record("12", longest + 'y'));
  EXPECT_THAT(warnings, ElementsAre("net.topo:2: warning: name longer than 256 bytes, cut there"));
  EXPECT_EQ(fabric->getNodeByGuid(0x11)->name, longest);
  EXPECT_EQ(fabric->getNodeByGuid(0x12)->name, longest);
}

TEST_F(TopologyDumpWarningsTest, AShellPromptIsALineOfNoKnownKind) {
  LoadFile("shell-prompt.topo");
  EXPECT_THAT(warnings, ElementsAre("net.topo:1: warning: line of no known kind, left out",
                                    "net.topo:28: warning: line of no known kind, left out"));
  EXPECT_THAT(Cables(), ElementsAre("21:1-11:1", "22:1-11:2"));
}

TEST_F(TopologyDumpWarningsTest, ALineOfANewKindDoesNotEndItsRecord) {
  LoadFile("new-line-kind.topo");
  EXPECT_THAT(warnings, ElementsAre("net.topo:6: warning: line of no known kind, left out",
                                    "net.topo:9: warning: line of no known kind, left out"));
  EXPECT_THAT(Cables(), ElementsAre("21:1-11:1"));
}

TEST_F(TopologyDumpWarningsTest, ANodeOfUnknownTypeIsLeftOutWithItsLinks) {
  LoadFile("unknown-node-type.topo");
  EXPECT_THAT(warnings, ElementsAre("net.topo:12: warning: node of unknown type, left out with "
                                    "its links"));
  EXPECT_EQ(fabric->getNodeByGuid(0x31), nullptr);
  EXPECT_THAT(Cables(), ElementsAre("21:1-11:1"));
}

TEST_F(TopologyDumpWarningsTest, ANodeOfUnknownTypeMayStandBehindTheLinesThatNameIt) {
  Load("???\t2 \"?-0000000000000012\"\t\t# \"odd\"\n" + Switch("1", 4) + Port(1, "2", 1) +
       Port(2, "3", 1) + "???\t2 \"?-0000000000000013\"\t\t# \"odd\"\n");
  EXPECT_THAT(warnings,
              ElementsAre("net.topo:1: warning: node of unknown type, left out with its links",
                          "net.topo:5: warning: node of unknown type, left out with its links"));
  EXPECT_THAT(Cables(), IsEmpty());
}

std::string OddNode(const std::string& guid) { return "???\t2 \"?-" + guid + "\"\t\t# \"odd\"\n"; }
std::string OddPeer(const std::string& guid) {
  return "[1]\t\"?-" + guid + "\"[1]\t\t# \"odd\" lid 1 4xHDR\n";
}

TEST_F(TopologyDumpWarningsTest, TheGuidOfANodeOfUnknownTypeHasAnyNumberOfDigits) {
  for (const std::string guid : {"9", "39", "fedcba9876543210"}) {
    Load(OddNode(guid) + Switch("1", 4) + OddPeer(guid));
    EXPECT_THAT(warnings, ElementsAre("net.topo:1: warning: node of unknown type, left out with "
                                      "its links"))
        << guid;
  }
}

TEST_F(TopologyDumpWarningsTest, APeerWithoutRecordLeavesItsLinkOut) {
  LoadFile("peer-without-record.topo");
  EXPECT_THAT(warnings, ElementsAre("net.topo:7: warning: peer 0x0000000000000022 has no record "
                                    "of its own, link left out",
                                    "net.topo:8: warning: peer 0x0000000000000031 has no record "
                                    "of its own, link left out"));
  EXPECT_THAT(Cables(), ElementsAre("21:1-11:1"));
}

TEST_F(TopologyDumpWarningsTest, OfTwoLinesAboutOnePortTheFirstHolds) {
  LoadFile("repeated-port-lines.topo");
  EXPECT_THAT(warnings, ElementsAre("net.topo:7: warning: port 1 of 0x0000000000000011 is given "
                                    "twice, the first line holds",
                                    "net.topo:8: warning: port 1 of 0x0000000000000011 is given "
                                    "twice, the first line holds"));
  EXPECT_THAT(Cables(), ElementsAre("21:1-11:1", "22:1-11:2"));
}

TEST_F(TopologyDumpWarningsTest, OnePortNumberOfTwoNodesIsNotGivenTwice) {
  Load(Switch("1", 4) + Port(1, "2", 1) + Switch("2", 4) + Port(1, "1", 1));
  EXPECT_THAT(warnings, IsEmpty());
}

TEST_F(TopologyDumpWarningsTest, AnUnknownSpeedIsTakenAsNone) {
  LoadFile("unknown-speeds.topo");
  const std::string questionMarks = "warning: unknown link speed \"???\", taken as none";
  const std::string newSpeed = "warning: unknown link speed \"GDR\", taken as none";
  EXPECT_THAT(warnings, ElementsAre("net.topo:6: " + questionMarks, "net.topo:7: " + questionMarks,
                                    "net.topo:8: " + newSpeed, "net.topo:15: " + questionMarks,
                                    "net.topo:16: " + questionMarks, "net.topo:17: " + newSpeed));
  EXPECT_THAT(Cables(), ElementsAre("11:1-12:1", "11:2-12:2", "11:3-12:3"));
  for (const IBPort& port : fabric->GetPorts()) EXPECT_EQ(port.speed, 0U);
}

// Not an unknown width with half a speed behind it.
TEST_F(TopologyDumpWarningsTest, AnUnknownSpeedMayHaveNoWidthInFront) {
  Load(Switch("1", 4) + Port(1, "2", 1, "???") + Switch("2", 4) + Port(1, "1", 1));
  EXPECT_THAT(warnings,
              ElementsAre("net.topo:2: warning: unknown link speed \"???\", taken as none"));
}

TEST_F(TopologyDumpWarningsTest, AnUnknownSpeedIsShownWithoutControlCharacters) {
  Load(Switch("1", 4) + Port(1, "2", 1, "4x\x1b[2J") + Switch("2", 4) + Port(1, "1", 1));
  EXPECT_THAT(warnings, ElementsAre("net.topo:2: warning: unknown link speed \"?[2J\", taken as "
                                    "none"));
}

TEST_F(TopologyDumpWarningsTest, APortLineOutsideOfARecordIsLeftOut) {
  LoadFile("port-line-outside-record.topo");
  EXPECT_THAT(warnings, ElementsAre("net.topo:1: warning: port line outside of a node's record, "
                                    "left out",
                                    "net.topo:10: warning: port line outside of a node's record, "
                                    "left out"));
  EXPECT_THAT(Cables(), IsEmpty());
}

TEST_F(TopologyDumpWarningsTest, WhenTwoEndsDisagreeTheFirstLineHoldsAndTheLinkIsNotSymmetric) {
  LoadFile("ends-disagree.topo");
  EXPECT_THAT(
      warnings,
      ElementsAre("net.topo:6: warning: port 1 of 0x0000000000000011 names port 1 of "
                  "0x0000000000000021, which names port 2 of 0x0000000000000011; the link stands, "
                  "not symmetric",
                  "net.topo:7: warning: port 2 of 0x0000000000000011 names port 1 of "
                  "0x0000000000000022, which names nothing; the link stands, not symmetric",
                  "net.topo:14: warning: port 1 of 0x0000000000000021 names port 2 of "
                  "0x0000000000000011, but an earlier line linked one of them otherwise; link left "
                  "out"));
  EXPECT_THAT(Cables(), ElementsAre("21:1-11:1?", "22:1-11:2?"));
}

TEST_F(TopologyDumpWarningsTest, ALaterPairThatAgreesDoesNotUndoAnEarlierLine) {
  Load(Switch("1", 4) + Port(1, "2", 1) +  //
       Switch("2", 4) + Port(1, "3", 1) +  //
       Switch("3", 4) + Port(1, "2", 1));
  EXPECT_THAT(
      warnings,
      ElementsAre("net.topo:2: warning: port 1 of 0x0000000000000011 names port 1 of "
                  "0x0000000000000012, which names port 1 of 0x0000000000000013; the link stands, "
                  "not symmetric",
                  "net.topo:4: warning: port 1 of 0x0000000000000012 names port 1 of "
                  "0x0000000000000013, but an earlier line linked one of them otherwise; link left "
                  "out",
                  "net.topo:6: warning: port 1 of 0x0000000000000013 names port 1 of "
                  "0x0000000000000012, but an earlier line linked one of them otherwise; link left "
                  "out"));
  EXPECT_THAT(Cables(), ElementsAre("11:1-12:1?"));
}

TEST_F(TopologyDumpWarningsTest, AThirdEndDoesNotBreakAPairThatAgreed) {
  Load(Switch("1", 4) + Port(1, "2", 1) +  //
       Switch("2", 4) + Port(1, "1", 1) +  //
       Switch("3", 4) + Port(1, "2", 1));
  EXPECT_THAT(warnings,
              ElementsAre("net.topo:6: warning: port 1 of 0x0000000000000013 names port 1 of "
                          "0x0000000000000012, but an earlier line linked one of them otherwise; "
                          "link left out"));
  EXPECT_THAT(Cables(), ElementsAre("11:1-12:1"));
}

TEST_F(TopologyDumpWarningsTest, AnEndThatNamesTheRightSwitchButAnotherPortDisagrees) {
  Load(Switch("1", 4) + Port(1, "2", 1) + Switch("2", 4) + Port(1, "1", 3));
  EXPECT_THAT(Cables(), ElementsAre("11:1-12:1?"));
}

TEST_F(TopologyDumpWarningsTest, ANamedPortWithoutALineOfItsOwnNamesNothing) {
  Load(Switch("1", 4) + Port(1, "2", 3) + Switch("2", 4) + Port(1, "1", 2));
  EXPECT_THAT(
      warnings,
      ElementsAre("net.topo:2: warning: port 1 of 0x0000000000000011 names port 3 of "
                  "0x0000000000000012, which names nothing; the link stands, not symmetric",
                  "net.topo:4: warning: port 1 of 0x0000000000000012 names port 2 of "
                  "0x0000000000000011, which names nothing; the link stands, not symmetric"));
  EXPECT_THAT(Cables(), ElementsAre("11:1-12:3?", "11:2-12:1?"));
}

// A link that only one line tells has that line's speed and no other's.
TEST_F(TopologyDumpWarningsTest, AnEndThatDisagreesLendsNoSpeed) {
  Load(Switch("1", 4) + Port(1, "2", 1, "4x") + Switch("2", 4) + Port(1, "1", 2, "4xEDR"));
  ASSERT_THAT(Cables(), ElementsAre("11:1-12:1?"));
  EXPECT_EQ(fabric->getNodeByGuid(0x11)->getPort(1)->speed, 0U);
}

TEST_F(TopologyDumpWarningsTest, APortCabledToItselfHasNoLink) {
  LoadFile("port-cabled-to-itself.topo");
  EXPECT_THAT(warnings, ElementsAre("net.topo:6: warning: port 1 of 0x0000000000000011 is cabled "
                                    "to itself, link left out"));
  EXPECT_THAT(Cables(), ElementsAre("11:2-11:3"));
}

TEST_F(TopologyDumpWarningsTest, AWarningCountsLinesFromTheByteOrderMarkOn) {
  Load("\xef\xbb\xbf" + std::string("prompt\r\n") + Switch("1", 4));
  EXPECT_THAT(warnings, ElementsAre("net.topo:1: warning: line of no known kind, left out"));
}

TEST_F(TopologyDumpWarningsTest, WarningsComeInTheOrderOfTheLinesWhateverTheirKind) {
  Load(Switch("1", 4) + Port(1, "9", 1) + Port(1, "9", 1) + Port(2, "9", 2, "4xGDR") +
       "something else\n" + Port(3, "1", 3));
  EXPECT_THAT(
      warnings,
      ElementsAre("net.topo:2: warning: peer 0x0000000000000019 has no record of its own, link "
                  "left out",
                  "net.topo:3: warning: port 1 of 0x0000000000000011 is given twice, the first "
                  "line holds",
                  "net.topo:4: warning: unknown link speed \"GDR\", taken as none",
                  "net.topo:4: warning: peer 0x0000000000000019 has no record of its own, link "
                  "left out",
                  "net.topo:5: warning: line of no known kind, left out",
                  "net.topo:6: warning: port 3 of 0x0000000000000011 is cabled to itself, link "
                  "left out"));
}

struct ManyOddities {
  const char* name;
  const char* summary;         // what the last warning says of those beyond the tenth
  std::string (*text)(int i);  // the part of the dump that has the i-th one
};

std::ostream& operator<<(std::ostream& out, const ManyOddities& tested) {
  return out << tested.name;
}

std::string Hex(int i) { return {"0123456789abcdef"[i]}; }

// Switch i, whose ports 1 and 2 are cabled to each other.
std::string Looped(int i, const std::string& speed = "4xHDR") {
  return Switch(Hex(i), 2) + Port(1, Hex(i), 2, speed) + Port(2, Hex(i), 1);
}

class ManyOfAKindTest : public TopologyDumpWarningsTest,
                        public ::testing::WithParamInterface<ManyOddities> {
 protected:
  static std::string Dump(int count) {
    std::string text = Switch("0", 200);
    for (int i = 1; i <= count; ++i) text += GetParam().text(i);
    return text;
  }
};

TEST_P(ManyOfAKindTest, TenAreToldInFull) {
  Load(Dump(10));
  EXPECT_EQ(warnings.size(), 10U);
  EXPECT_THAT(warnings, ::testing::Each(::testing::StartsWith("net.topo:")));
  EXPECT_THAT(warnings, ::testing::Each(::testing::Not(::testing::HasSubstr(" more: "))));
}

TEST_P(ManyOfAKindTest, OthersAreOnlyCounted) {
  Load(Dump(13));
  ASSERT_EQ(warnings.size(), 11U);
  EXPECT_EQ(warnings.back(), std::string("net.topo: warning: 3 more: ") + GetParam().summary);
}

INSTANTIATE_TEST_SUITE_P(
    TopologyDumpWarnings, ManyOfAKindTest,
    ::testing::Values(ManyOddities{"UnknownLine", "line of no known kind",
                                   [](int) { return std::string("something else\n"); }},
                      ManyOddities{"UnknownNodeType", "node of unknown type",
                                   [](int i) {
                                     return "???\t1 \"?-00000000000000" + std::to_string(40 + i) +
                                            "\"\t\t# \"odd\"\n";
                                   }},
                      ManyOddities{"LineOutsideRecord", "port line outside of a node's record",
                                   [](int i) { return "devid=0x1\n" + Port(i, "9", 1); }},
                      ManyOddities{"RepeatedPort", "port given twice",
                                   [](int i) { return Looped(i) + Port(1, "0", 1); }},
                      ManyOddities{"UnknownSpeed", "unknown link speed",
                                   [](int i) { return Looped(i, "4xGDR"); }},
                      ManyOddities{"PeerWithoutRecord", "peer without a record of its own",
                                   [](int i) { return Port(i, "f", 1); }},
                      ManyOddities{"EndsDisagree", "two ends of a link that disagree",
                                   [](int i) { return Switch(Hex(i), 2) + Port(1, "0", i); }},
                      ManyOddities{"PortCabledToItself", "port cabled to itself",
                                   [](int i) { return Port(i, "0", i); }}),
    [](const auto& tested) { return std::string(tested.param.name); });

}  // namespace
}  // namespace fabscope::internal
