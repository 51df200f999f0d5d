#include "formats/graph_writers.h"

#include <fmt/format.h>
#include <iterator>
#include <string>
#include <string_view>
#include <utility>

#include "fabric/fabric_walk.h"
#include "fabric/guid.h"
#include "formats/link_speeds.h"
#include "formats/node_kinds.h"
#include "text/escaped_text.h"

namespace fabscope::internal {
namespace {

// Calls visit(source, target) for the ports of every cable.
template <typename Visit>
void ForEachCable(const IBFabric& fabric, Visit visit) {
  for (const IBPort& port : fabric.GetPorts()) {
    if (port.remotePort == nullptr || !IsFirstEnd(port)) continue;
    const bool isTurned =
        port.node->nodeType == NodeTypeCA && port.remotePort->node->nodeType != NodeTypeCA;
    if (isTurned) {
      visit(*port.remotePort, port);
    } else {
      visit(port, *port.remotePort);
    }
  }
}

class GraphText {
 public:
  template <typename... Values>
  void Append(fmt::format_string<Values...> format, Values&&... values) {
    fmt::format_to(std::back_inserter(text_), format, std::forward<Values>(values)...);
  }
  void WriteTo(std::ostream& stream) const {
    stream.write(text_.data(), static_cast<std::streamsize>(text_.size()));
  }

 private:
  fmt::memory_buffer text_;
};

constexpr std::string_view dotHead = "graph fabric {\n  node [shape=box];\n  edge [fontsize=8];\n";

const char* DotStyle(std::uint32_t nodeType) {
  if (nodeType == NodeTypeSwitch) return "";
  return nodeType == NodeTypeCA ? ", shape=plaintext, fontsize=8, width=0, height=0, margin=0.02"
                                : ", shape=diamond";
}

void AppendDotEdge(GraphText& text, const IBPort& source, const IBPort& target) {
  text.Append(R"(  "{}" -- "{}" [taillabel={}, headlabel={})", GuidText(source.node->guid),
              GuidText(target.node->guid), source.num, target.num);
  const std::string speed = SpeedText(source, target);
  if (!speed.empty()) text.Append(", label=\"{}\"", speed);
  text.Append("];\n");
}

constexpr std::string_view graphMlHead =
    R"(<?xml version="1.0" encoding="UTF-8"?>
<graphml xmlns="http://graphml.graphdrawing.org/xmlns">
<key id="name" for="node" attr.name="name" attr.type="string"/>
<key id="type" for="node" attr.name="type" attr.type="string"/>
<key id="guid" for="node" attr.name="guid" attr.type="string"/>
<key id="ports" for="node" attr.name="ports" attr.type="int"/>
<key id="sourcePort" for="edge" attr.name="sourcePort" attr.type="int"/>
<key id="targetPort" for="edge" attr.name="targetPort" attr.type="int"/>
<key id="speed" for="edge" attr.name="speed" attr.type="string"/>
<graph id="fabric" edgedefault="undirected">
)";

void AppendGraphMlNode(GraphText& text, const IBNode& node) {
  const std::string guid = GuidText(node.guid);
  text.Append(R"(<node id="{}"><data key="name">{}</data><data key="type">{}</data>)", guid,
              XmlText(node.name), KindOf(node).name);
  text.Append("<data key=\"guid\">{}</data><data key=\"ports\">{}</data></node>\n", guid,
              node.numPorts);
}

void AppendGraphMlEdge(GraphText& text, const IBPort& source, const IBPort& target) {
  text.Append(R"(<edge source="{}" target="{}"><data key="sourcePort">{}</data>)",
              GuidText(source.node->guid), GuidText(target.node->guid), source.num);
  text.Append(R"(<data key="targetPort">{}</data>)", target.num);
  const std::string speed = SpeedText(source, target);
  if (!speed.empty()) text.Append(R"(<data key="speed">{}</data>)", speed);
  text.Append("</edge>\n");
}

}  // namespace

void WriteDot(const IBFabric& fabric, std::ostream& stream) {
  GraphText text;
  text.Append("{}", dotHead);
  for (const IBNode& node : fabric.GetNodes()) {
    text.Append("  \"{}\" [label=\"{}\"{}];\n", GuidText(node.guid), DotLabel(node.name),
                DotStyle(node.nodeType));
  }
  ForEachCable(fabric, [&](const IBPort& source, const IBPort& target) {
    AppendDotEdge(text, source, target);
  });
  text.Append("}}\n");
  text.WriteTo(stream);
}

void WriteGraphMl(const IBFabric& fabric, std::ostream& stream) {
  GraphText text;
  text.Append("{}", graphMlHead);
  for (const IBNode& node : fabric.GetNodes()) AppendGraphMlNode(text, node);
  ForEachCable(fabric, [&](const IBPort& source, const IBPort& target) {
    AppendGraphMlEdge(text, source, target);
  });
  text.Append("</graph>\n</graphml>\n");
  text.WriteTo(stream);
}

}  // namespace fabscope::internal
