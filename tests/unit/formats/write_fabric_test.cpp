#include "formats/write_fabric.h"

#include <gtest/gtest.h>
#include <sstream>
#include <string>

#include "formats/fabric_document.h"
#include "formats/graph_writers.h"
#include "formats/net_file_writer.h"
#include "formats/topology_dump_writer.h"
#include "support/test_fabric.h"

namespace fabscope::internal {
namespace {

TEST(WriteFabric, FormatsGoByTheirNames) {
  EXPECT_EQ(FabricFormatOfName("document"), FabricFormat::Document);
  EXPECT_EQ(FabricFormatOfName("ibnetdiscover"), FabricFormat::TopologyDump);
  EXPECT_EQ(FabricFormatOfName("ibsim"), FabricFormat::NetFile);
  EXPECT_EQ(FabricFormatOfName("dot"), FabricFormat::Dot);
  EXPECT_EQ(FabricFormatOfName("graphml"), FabricFormat::GraphMl);
  for (const char* name : {"", "Document", "json", "dot ", "documents", "gv"}) {
    EXPECT_EQ(FabricFormatOfName(name), std::nullopt) << name;
  }
}

TEST(WriteFabric, FilesTellTheirFormatByTheEnding) {
  EXPECT_EQ(FabricFormatOfFile("a.json"), FabricFormat::Document);
  EXPECT_EQ(FabricFormatOfFile("some/a.b.topo"), FabricFormat::TopologyDump);
  EXPECT_EQ(FabricFormatOfFile("a.net"), FabricFormat::NetFile);
  EXPECT_EQ(FabricFormatOfFile("a.dot"), FabricFormat::Dot);
  EXPECT_EQ(FabricFormatOfFile("a.gv"), FabricFormat::Dot);
  EXPECT_EQ(FabricFormatOfFile("a.graphml"), FabricFormat::GraphMl);
  for (const char* path : {"", "-", "json", "a.json.gz", "a.JSON", "a.topo/b", "a.txt"}) {
    EXPECT_EQ(FabricFormatOfFile(path), std::nullopt) << path;
  }
}

template <typename Write>
std::string TextOf(Write write) {
  std::ostringstream text;
  write(text);
  return text.str();
}

TEST(WriteFabric, EachFormatIsWrittenByItsWriter) {
  TestFabric made;
  made.Switch("leaf").Host("h1").Cable("leaf", "h1");
  const IBFabric& fabric = made.Build();
  const auto text = [&](FabricFormat format) {
    return TextOf([&](std::ostream& stream) { WriteFabric(fabric, format, stream); });
  };
  const auto textBy = [&](void (*write)(const IBFabric&, std::ostream&)) {
    return TextOf([&](std::ostream& stream) { write(fabric, stream); });
  };
  EXPECT_EQ(text(FabricFormat::Document), FabricDocumentText(fabric));
  EXPECT_EQ(text(FabricFormat::TopologyDump), textBy(WriteTopologyDump));
  EXPECT_EQ(text(FabricFormat::NetFile), textBy(WriteNetFile));
  EXPECT_EQ(text(FabricFormat::Dot), textBy(WriteDot));
  EXPECT_EQ(text(FabricFormat::GraphMl), textBy(WriteGraphMl));
}

}  // namespace
}  // namespace fabscope::internal
