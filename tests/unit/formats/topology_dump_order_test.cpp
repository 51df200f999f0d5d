#include <algorithm>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "formats/fabric_document.h"
#include "support/topology_dump_fixture.h"

namespace fabscope::internal {
namespace {

using ::testing::IsEmpty;
using ::testing::SizeIs;

using TopologyDumpOrderTest = TopologyDumpTest;

TEST_F(TopologyDumpOrderTest, NodesAreOrderedByNameDigitsAsNumbersThenByGuid) {
  EXPECT_EQ(LoadFile("lines/digits-in-names.topo"), R"(switch 0x15 "Leaf2" ports 1
switch 0x18 "leaf" ports 1
switch 0x17 "leaf02" ports 1
switch 0x13 "leaf1" ports 1
switch 0x16 "leaf2" ports 1
switch 0x19 "leaf2" ports 1
switch 0x12 "leaf9" ports 1
switch 0x11 "leaf10" ports 1
switch 0x14 "spine" ports 1
)");
}

TEST_F(TopologyDumpOrderTest, GuidsOrderNodesOfOneNameAsNumbers) {
  EXPECT_EQ(Load("Switch\t4 \"S-0000000000000100\"\t\t# \"a\" base port 0 lid 1 lmc 0\n"
                 "Switch\t4 \"S-9\"\t\t# \"a\" base port 0 lid 2 lmc 0\n"
                 "Switch\t4 \"S-ffffffffffffffff\"\t\t# \"a\" base port 0 lid 2 lmc 0\n"),
            "switch 0x9 \"a\" ports 4\n"
            "switch 0x100 \"a\" ports 4\n"
            "switch 0xffffffffffffffff \"a\" ports 4\n");
}

TEST_F(TopologyDumpOrderTest, GivenNamesReplaceThoseOfTheFabricBeforeTheNodesAreOrdered) {
  names = {{0x11, "aisle 1"}, {0x22, "zone 7"}, {0x99, "elsewhere"}};
  EXPECT_EQ(LoadFile("lines/plain.topo"), R"(switch 0x11 "aisle 1" ports 4
ca 0x21 "h1" ports 1
ca 0x22 "zone 7" ports 1
0x11:1 - 0x21:1 speed 0x400
0x11:2 - 0x22:1 speed 0x400
)");
}

TEST_F(TopologyDumpOrderTest, AGivenNameDecidesWhetherAnAdapterIsSpecial) {
  names = {{0x21, "engine"}, {0x22, "my Aggregation Node"}};
  LoadFile("lines/aggregation-nodes.topo");
  ASSERT_NE(fabric, nullptr);
  EXPECT_FALSE(fabric->getNodeByGuid(0x21)->isSpecialNode());
  EXPECT_TRUE(fabric->getNodeByGuid(0x22)->isSpecialNode());
}

// The records of a dump, its comments left out.
std::vector<std::string> Records(const std::string& path) {
  std::stringstream file;
  file << std::ifstream(path).rdbuf();
  const std::string text = file.str();
  std::vector<std::string> records;
  for (std::size_t start = 0; start < text.size();) {
    const std::size_t end = std::min(text.find("\n\n", start), text.size() - 2) + 2;
    if (text[start] != '#') records.push_back(text.substr(start, end - start));
    start = end;
  }
  return records;
}

std::string Joined(const std::vector<std::string>& records) {
  std::string text;
  for (const std::string& record : records) text += record + "\n";
  return text;
}

TEST_F(TopologyDumpOrderTest, TheOrderOfTheRecordsDoesNotMatter) {
  std::vector<std::string> records = Records(DataPath("tree-32h.topo"));
  ASSERT_THAT(records, SizeIs(52));
  LoadFile("tree-32h.topo");
  ASSERT_NE(fabric, nullptr);
  const std::string document = FabricDocumentText(*fabric);

  std::mt19937 random(7);
  for (int i = 0; i < 20; ++i) {
    std::shuffle(records.begin(), records.end(), random);
    fabric.reset();
    const std::string model = Load(Joined(records));
    ASSERT_NE(fabric, nullptr) << model;
    EXPECT_EQ(FabricDocumentText(*fabric), document);
    EXPECT_THAT(warnings, IsEmpty());
  }
}

}  // namespace
}  // namespace fabscope::internal
