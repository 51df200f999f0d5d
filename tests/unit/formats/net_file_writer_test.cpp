#include "formats/net_file_writer.h"

#include <gtest/gtest.h>
#include <sstream>
#include <string>

#include "support/test_fabric.h"

namespace fabscope::internal {
namespace {

std::string NetFileOf(TestFabric& fabric) {
  std::ostringstream text;
  WriteNetFile(fabric.Build(), text);
  return text.str();
}

NodeSpec Node(std::uint8_t type, const std::string& name, std::uint8_t numPorts) {
  NodeSpec spec;
  spec.type = type;
  spec.name = name;
  spec.numPorts = numPorts;
  return spec;
}

TEST(NetFileWriterTest, EveryKindOfNodeHasItsLinesAndEveryCableIsToldAtBothEnds) {
  TestFabric fabric;
  NodeSpec leaf = Node(NodeTypeSwitch, "leaf", 40);
  leaf.guid = 0x2c9020040f160;
  leaf.systemGuid = 0x2c9020040f100;
  fabric.Host("h1").Node(leaf).Node(Node(NodeTypeRouter, "gate", 2)).Switch("spine", 36);
  fabric.Link("leaf", 40, "h1", 1).Link("spine", 36, "leaf", 2, true, 0x200);
  fabric.Link("leaf", 7, "gate", 2, true, 0x1).Link("spine", 3, "spine", 4, true, 0x4);
  EXPECT_EQ(NetFileOf(fabric),
            "# start it with: ibsim -s -N 4 -S 2 -P 81 FILE\n"
            "\n"
            "sysimgguid=0x1\n"
            "caguid=0x1\n"
            "Ca\t1 \"H-0000000000000001\"\t\t# \"h1\"\n"
            "[1]\t\"S-0002c9020040f160\"[40]\t\t# lid 0 lmc 0 \"leaf\" lid 0 4xHDR\n"
            "\n"
            "sysimgguid=0x2c9020040f100\n"
            "switchguid=0x2c9020040f160\n"
            "Switch\t40 \"S-0002c9020040f160\"\t\t# \"leaf\" base port 0 lid 0 lmc 0\n"
            "[2]\t\"S-0000000000000004\"[36]\t\t# \"spine\" lid 0 4xEDR\n"
            "[7]\t\"R-0000000000000003\"[2]\t\t# \"gate\" lid 0 4xSDR\n"
            "[40]\t\"H-0000000000000001\"[1]\t\t# \"h1\" lid 0 4xHDR\n"
            "\n"
            "sysimgguid=0x3\n"
            "rtguid=0x3\n"
            "Rt\t2 \"R-0000000000000003\"\t\t# \"gate\"\n"
            "[2]\t\"S-0002c9020040f160\"[7]\t\t# lid 0 lmc 0 \"leaf\" lid 0 4xSDR\n"
            "\n"
            "sysimgguid=0x4\n"
            "switchguid=0x4\n"
            "Switch\t36 \"S-0000000000000004\"\t\t# \"spine\" base port 0 lid 0 lmc 0\n"
            "[3]\t\"S-0000000000000004\"[4]\t\t# \"spine\" lid 0 4xQDR\n"
            "[4]\t\"S-0000000000000004\"[3]\t\t# \"spine\" lid 0 4xQDR\n"
            "[36]\t\"S-0002c9020040f160\"[2]\t\t# \"leaf\" lid 0 4xEDR\n");
}

TEST(NetFileWriterTest, EachEndTellsItsOwnSpeedAndAnUnnamedOneIsLeftOut) {
  TestFabric fabric;
  fabric.Switch("a", 2).Switch("b", 2);
  fabric.Link("a", 1, "b", 1, true, 0x800).Link("a", 2, "b", 2, true, 0);
  PortSpec slow;
  slow.num = 1;
  slow.speed = 0x10000;
  PortSpec unnamed;
  unnamed.num = 2;
  unnamed.speed = 0x3;
  fabric.Port("b", slow).Port("b", unnamed);
  EXPECT_EQ(NetFileOf(fabric),
            "# start it with: ibsim -s -N 2 -S 2 -P 6 FILE\n"
            "\n"
            "sysimgguid=0x1\n"
            "switchguid=0x1\n"
            "Switch\t2 \"S-0000000000000001\"\t\t# \"a\" base port 0 lid 0 lmc 0\n"
            "[1]\t\"S-0000000000000002\"[1]\t\t# \"b\" lid 0 4xNDR\n"
            "[2]\t\"S-0000000000000002\"[2]\t\t# \"b\" lid 0 4x\n"
            "\n"
            "sysimgguid=0x2\n"
            "switchguid=0x2\n"
            "Switch\t2 \"S-0000000000000002\"\t\t# \"b\" base port 0 lid 0 lmc 0\n"
            "[1]\t\"S-0000000000000001\"[1]\t\t# \"a\" lid 0 4xFDR10\n"
            "[2]\t\"S-0000000000000001\"[2]\t\t# \"a\" lid 0 4x\n");
}

// The names of a file's nodes in their order, a line for each.
std::string OrderOf(TestFabric& fabric) {
  std::istringstream file(NetFileOf(fabric));
  std::string names;
  for (std::string line; std::getline(file, line);) {
    if (line.starts_with("Switch\t") || line.starts_with("Ca\t") || line.starts_with("Rt\t")) {
      const std::size_t open = line.find("# \"") + 3;
      names += line.substr(open, line.find('"', open) - open) + "\n";
    }
  }
  return names;
}

TEST(NetFileWriterTest, TheFirstHostThatASwitchHasAtItsFirstPortComesFirst) {
  TestFabric fabric;
  fabric.Host("uncabled").Host("with-host").Host("other-host").Switch("leaf");
  fabric.Host("second-port", 2).Host("h1").Host("h2");
  fabric.Cable("with-host", "other-host").Link("leaf", 1, "second-port", 2);
  fabric.Cable("leaf", "h1").Cable("leaf", "h2");
  EXPECT_EQ(OrderOf(fabric), "h1\nuncabled\nwith-host\nother-host\nleaf\nsecond-port\nh2\n");
}

TEST(NetFileWriterTest, WithoutSuchAHostTheFirstSwitchWithACableComesFirst) {
  TestFabric fabric;
  fabric.Host("uncabled").Switch("dead").Node(Node(NodeTypeRouter, "gate", 1)).Switch("leaf");
  fabric.Host("second-port", 2);
  fabric.Link("leaf", 1, "gate", 1).Link("leaf", 2, "second-port", 2);
  EXPECT_EQ(OrderOf(fabric), "leaf\nuncabled\ndead\ngate\nsecond-port\n");
}

TEST(NetFileWriterTest, WithoutACabledSwitchTheModelOrderStands) {
  TestFabric fabric;
  fabric.Switch("dead").Host("h1").Host("h2").Cable("h1", "h2");
  EXPECT_EQ(OrderOf(fabric), "dead\nh1\nh2\n");
}

TEST(NetFileWriterTest, NodesWithoutPortsAreLeftOutAndNotCounted) {
  TestFabric fabric;
  fabric.Host("no-ports", 0).Switch("none", 0).Switch("leaf", 1).Node(Node(NodeTypeRouter, "r", 0));
  EXPECT_EQ(NetFileOf(fabric),
            "# start it with: ibsim -s -N 1 -S 1 -P 2 FILE\n"
            "\n"
            "sysimgguid=0x3\n"
            "switchguid=0x3\n"
            "Switch\t1 \"S-0000000000000003\"\t\t# \"leaf\" base port 0 lid 0 lmc 0\n");
}

TEST(NetFileWriterTest, AFabricWithoutNodesIsTheHeadAlone) {
  TestFabric fabric;
  EXPECT_EQ(NetFileOf(fabric), "# start it with: ibsim -s -N 0 -S 0 -P 0 FILE\n");
}

TEST(NetFileWriterTest, NamesLoseWhatTheSimulatorCannotRead) {
  EXPECT_EQ(NetFileName("leaf 1; #2 \\ 'x' [3]"), "leaf 1; #2 \\ 'x' [3]");
  EXPECT_EQ(NetFileName("a \"b\""), "a 'b'");
  EXPECT_EQ(NetFileName("two\nlines\tand\x7f"), "two?lines?and?");
  EXPECT_EQ(NetFileName("caf\xe9 caf\xc3\xa9"), "caf\xe9 caf\xc3\xa9");
  EXPECT_EQ(NetFileName(std::string(63, 'n')), std::string(63, 'n'));
  EXPECT_EQ(NetFileName(std::string(63, 'n') + "m"), std::string(63, 'n'));
}

TEST(NetFileWriterTest, NodesAndTheirPeersAreNamedSo) {
  TestFabric fabric;
  fabric.Switch("a\"\n", 1).Switch(std::string(64, 'b'), 1).Cable("a\"\n", std::string(64, 'b'));
  const std::string longest(63, 'b');
  EXPECT_EQ(NetFileOf(fabric),
            "# start it with: ibsim -s -N 2 -S 2 -P 4 FILE\n"
            "\n"
            "sysimgguid=0x1\n"
            "switchguid=0x1\n"
            "Switch\t1 \"S-0000000000000001\"\t\t# \"a'?\" base port 0 lid 0 lmc 0\n"
            "[1]\t\"S-0000000000000002\"[1]\t\t# \"" +
                longest +
                "\" lid 0 4xHDR\n"
                "\n"
                "sysimgguid=0x2\n"
                "switchguid=0x2\n"
                "Switch\t1 \"S-0000000000000002\"\t\t# \"" +
                longest +
                "\" base port 0 lid 0 lmc 0\n"
                "[1]\t\"S-0000000000000001\"[1]\t\t# \"a'?\" lid 0 4xHDR\n");
}

}  // namespace
}  // namespace fabscope::internal
