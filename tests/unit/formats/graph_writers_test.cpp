#include "formats/graph_writers.h"

#include <gtest/gtest.h>
#include <sstream>
#include <string>

#include "support/test_fabric.h"

namespace fabscope::internal {
namespace {

std::string DotOf(TestFabric& fabric) {
  std::ostringstream text;
  WriteDot(fabric.Build(), text);
  return text.str();
}

std::string GraphMlOf(TestFabric& fabric) {
  std::ostringstream text;
  WriteGraphMl(fabric.Build(), text);
  return text.str();
}

// A host before the switch that it is cabled to, a router, parallel cables, a cable back to its own
// switch, ends of different speed, a speed without a name and none.
void AddKinds(TestFabric& fabric) {
  NodeSpec router;
  router.type = NodeTypeRouter;
  router.name = "gate";
  router.numPorts = 2;
  fabric.Host("h1").Switch("leaf", 40).Node(router).Switch("spine", 36).Host("h2", 2);
  fabric.Link("h1", 1, "leaf", 40).Link("gate", 2, "leaf", 7, true, 0x3);
  fabric.Link("leaf", 1, "spine", 2).Link("leaf", 2, "spine", 1, true, 0);
  fabric.Link("spine", 3, "spine", 4, true, 0x200).Link("h2", 1, "h2", 2);
  PortSpec slow;
  slow.num = 2;
  slow.speed = 0x100;
  fabric.Port("spine", slow);
}

TEST(DotWriterTest, NodesFollowTheModelAndEveryCableIsOneEdge) {
  TestFabric fabric;
  AddKinds(fabric);
  EXPECT_EQ(DotOf(fabric),
            "graph fabric {\n"
            "  node [shape=box];\n"
            "  edge [fontsize=8];\n"
            "  \"0x0000000000000001\" [label=\"h1\", shape=plaintext, fontsize=8, width=0, "
            "height=0, margin=0.02];\n"
            "  \"0x0000000000000002\" [label=\"leaf\"];\n"
            "  \"0x0000000000000003\" [label=\"gate\", shape=diamond];\n"
            "  \"0x0000000000000004\" [label=\"spine\"];\n"
            "  \"0x0000000000000005\" [label=\"h2\", shape=plaintext, fontsize=8, width=0, "
            "height=0, margin=0.02];\n"
            "  \"0x0000000000000002\" -- \"0x0000000000000001\" [taillabel=40, headlabel=1, "
            "label=\"HDR\"];\n"
            "  \"0x0000000000000002\" -- \"0x0000000000000004\" [taillabel=1, headlabel=2, "
            "label=\"HDR/FDR\"];\n"
            "  \"0x0000000000000002\" -- \"0x0000000000000004\" [taillabel=2, headlabel=1];\n"
            "  \"0x0000000000000002\" -- \"0x0000000000000003\" [taillabel=7, headlabel=2, "
            "label=\"3\"];\n"
            "  \"0x0000000000000004\" -- \"0x0000000000000004\" [taillabel=3, headlabel=4, "
            "label=\"EDR\"];\n"
            "  \"0x0000000000000005\" -- \"0x0000000000000005\" [taillabel=1, headlabel=2, "
            "label=\"HDR\"];\n"
            "}\n");
}

TEST(DotWriterTest, AFabricWithoutNodesIsAnEmptyGraph) {
  TestFabric fabric;
  EXPECT_EQ(DotOf(fabric), "graph fabric {\n  node [shape=box];\n  edge [fontsize=8];\n}\n");
}

std::string DotLabel(const std::string& name) {
  TestFabric fabric;
  fabric.Switch(name);
  const std::string text = DotOf(fabric);
  const std::string before =
      "graph fabric {\n  node [shape=box];\n  edge [fontsize=8];\n  \"0x0000000000000001\" [label=";
  const std::string behind = "];\n}\n";
  EXPECT_TRUE(text.starts_with(before) && text.ends_with(behind)) << text;
  return text.substr(before.size(), text.size() - before.size() - behind.size());
}

TEST(DotWriterTest, LabelsShowNamesToTheLetter) {
  EXPECT_EQ(DotLabel("leaf 1; #2 <x> -- {y} [z]"), "\"leaf 1; #2 <x> -- {y} [z]\"");
  EXPECT_EQ(DotLabel(""), "\"\"");
  EXPECT_EQ(DotLabel("a \"b\""), R"("a \"b\"")");
  EXPECT_EQ(DotLabel(R"(\N\n\)"), R"("\\N\\n\\")");
  EXPECT_EQ(DotLabel(R"(\")"), R"("\\\"")");
  EXPECT_EQ(DotLabel("a & b &lt; c"), "\"a &amp; b &amp;lt; c\"");
}

TEST(DotWriterTest, LabelsHaveNeitherControlCharactersNorInvalidBytes) {
  EXPECT_EQ(DotLabel("two\r\nlines\tand\x7f"), "\"two??lines?and?\"");
  EXPECT_EQ(DotLabel("caf\xc3\xa9 caf\xe9\"\xff"),
            "\"caf\xc3\xa9 caf\xef\xbf\xbd\\\"\xef\xbf\xbd\"");
}

const std::string graphMlHead =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<graphml xmlns=\"http://graphml.graphdrawing.org/xmlns\">\n"
    "<key id=\"name\" for=\"node\" attr.name=\"name\" attr.type=\"string\"/>\n"
    "<key id=\"type\" for=\"node\" attr.name=\"type\" attr.type=\"string\"/>\n"
    "<key id=\"guid\" for=\"node\" attr.name=\"guid\" attr.type=\"string\"/>\n"
    "<key id=\"ports\" for=\"node\" attr.name=\"ports\" attr.type=\"int\"/>\n"
    "<key id=\"sourcePort\" for=\"edge\" attr.name=\"sourcePort\" attr.type=\"int\"/>\n"
    "<key id=\"targetPort\" for=\"edge\" attr.name=\"targetPort\" attr.type=\"int\"/>\n"
    "<key id=\"speed\" for=\"edge\" attr.name=\"speed\" attr.type=\"string\"/>\n"
    "<graph id=\"fabric\" edgedefault=\"undirected\">\n";
const std::string graphMlEnd = "</graph>\n</graphml>\n";

std::string GraphMlNode(const std::string& guid, const std::string& name, const std::string& type,
                        int ports) {
  return "<node id=\"" + guid + R"("><data key="name">)" + name + R"(</data><data key="type">)" +
         type + R"(</data><data key="guid">)" + guid + R"(</data><data key="ports">)" +
         std::to_string(ports) + "</data></node>\n";
}

TEST(GraphMlWriterTest, NodesFollowTheModelAndEveryCableIsOneEdge) {
  TestFabric fabric;
  AddKinds(fabric);
  EXPECT_EQ(GraphMlOf(fabric),
            graphMlHead + GraphMlNode("0x0000000000000001", "h1", "ca", 1) +
                GraphMlNode("0x0000000000000002", "leaf", "switch", 40) +
                GraphMlNode("0x0000000000000003", "gate", "router", 2) +
                GraphMlNode("0x0000000000000004", "spine", "switch", 36) +
                GraphMlNode("0x0000000000000005", "h2", "ca", 2) +
                "<edge source=\"0x0000000000000002\" target=\"0x0000000000000001\">"
                "<data key=\"sourcePort\">40</data><data key=\"targetPort\">1</data>"
                "<data key=\"speed\">HDR</data></edge>\n"
                "<edge source=\"0x0000000000000002\" target=\"0x0000000000000004\">"
                "<data key=\"sourcePort\">1</data><data key=\"targetPort\">2</data>"
                "<data key=\"speed\">HDR/FDR</data></edge>\n"
                "<edge source=\"0x0000000000000002\" target=\"0x0000000000000004\">"
                "<data key=\"sourcePort\">2</data><data key=\"targetPort\">1</data></edge>\n"
                "<edge source=\"0x0000000000000002\" target=\"0x0000000000000003\">"
                "<data key=\"sourcePort\">7</data><data key=\"targetPort\">2</data>"
                "<data key=\"speed\">3</data></edge>\n"
                "<edge source=\"0x0000000000000004\" target=\"0x0000000000000004\">"
                "<data key=\"sourcePort\">3</data><data key=\"targetPort\">4</data>"
                "<data key=\"speed\">EDR</data></edge>\n"
                "<edge source=\"0x0000000000000005\" target=\"0x0000000000000005\">"
                "<data key=\"sourcePort\">1</data><data key=\"targetPort\">2</data>"
                "<data key=\"speed\">HDR</data></edge>\n" +
                graphMlEnd);
}

TEST(GraphMlWriterTest, AFabricWithoutNodesIsAnEmptyGraph) {
  TestFabric fabric;
  EXPECT_EQ(GraphMlOf(fabric), graphMlHead + graphMlEnd);
}

std::string GraphMlName(const std::string& name) {
  TestFabric fabric;
  fabric.Switch(name, 8);
  const std::string text = GraphMlOf(fabric);
  const std::string before = graphMlHead + R"(<node id="0x0000000000000001"><data key="name">)";
  const std::string behind =
      R"(</data><data key="type">switch</data><data key="guid">0x0000000000000001</data>)"
      R"(<data key="ports">8</data></node>)"
      "\n" +
      graphMlEnd;
  EXPECT_TRUE(text.starts_with(before) && text.ends_with(behind)) << text;
  return text.substr(before.size(), text.size() - before.size() - behind.size());
}

TEST(GraphMlWriterTest, NamesKeepWhatXmlTakesForMarkup) {
  EXPECT_EQ(GraphMlName("leaf 1; it's \\ {y}"), "leaf 1; it's \\ {y}");
  EXPECT_EQ(GraphMlName("<a> & \"b\"]]>"), "&lt;a&gt; &amp; &quot;b&quot;]]&gt;");
  EXPECT_EQ(GraphMlName("&lt;"), "&amp;lt;");
}

TEST(GraphMlWriterTest, NamesLoseWhatXmlCannotHold) {
  EXPECT_EQ(GraphMlName("two\r\nlines\tand\x1b\x7f"), "two??lines?and??");
  EXPECT_EQ(GraphMlName("caf\xc3\xa9 caf\xe9<\xff"), "caf\xc3\xa9 caf\xef\xbf\xbd&lt;\xef\xbf\xbd");
  // U+FFFE and U+FFFF are no characters, the one before them is.
  EXPECT_EQ(GraphMlName("\xef\xbf\xbd\xef\xbf\xbe\xef\xbf\xbf"),
            "\xef\xbf\xbd\xef\xbf\xbd\xef\xbf\xbd");
}

}  // namespace
}  // namespace fabscope::internal
