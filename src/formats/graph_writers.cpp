#include "formats/graph_writers.h"

#include <array>
#include <fmt/format.h>
#include <iterator>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>

#include "fabric/fabric_walk.h"
#include "fabric/guid.h"
#include "formats/json_text.h"
#include "formats/link_speeds.h"
#include "formats/text_fields.h"

namespace fabscope {
namespace {

// What stands for a byte that is not part of valid UTF-8.
constexpr std::string_view replacement = "\xef\xbf\xbd";

// A text from the fabric without control characters and invalid bytes.
std::string PlainText(std::string_view text) {
  const std::string clean = CleanText(text);
  std::string plain;
  std::string_view rest = clean;
  for (;;) {
    const std::size_t valid = FirstInvalidUtf8(rest);
    plain += rest.substr(0, valid);
    if (valid == rest.size()) return plain;
    plain += replacement;
    rest.remove_prefix(valid + 1);
  }
}

using Escape = std::pair<std::string_view, std::string_view>;  // a text and what stands for it

template <std::size_t Count>
std::string Escaped(const std::string& plain, const std::array<Escape, Count>& escapes) {
  std::string escaped;
  for (std::string_view rest = plain; !rest.empty();) {
    std::string_view from = rest.substr(0, 1);
    std::string_view to = from;
    for (const Escape& escape : escapes) {
      if (rest.starts_with(escape.first)) std::tie(from, to) = escape;
    }
    escaped += to;
    rest.remove_prefix(from.size());
  }
  return escaped;
}

// Graphviz reads escapes such as "\N" in a label, and entities as HTML has them.
std::string DotLabel(std::string_view text) {
  constexpr std::array<Escape, 3> escapes{{{"\"", "\\\""}, {"\\", "\\\\"}, {"&", "&amp;"}}};
  return Escaped(PlainText(text), escapes);
}

// The last two are valid UTF-8, U+FFFE and U+FFFF, but no characters of XML.
std::string XmlText(std::string_view text) {
  constexpr std::array<Escape, 6> escapes{{{"&", "&amp;"},
                                           {"<", "&lt;"},
                                           {">", "&gt;"},
                                           {"\"", "&quot;"},
                                           {"\xef\xbf\xbe", replacement},
                                           {"\xef\xbf\xbf", replacement}}};
  return Escaped(PlainText(text), escapes);
}

std::string SpeedText(std::uint32_t code) {
  const std::string_view name = SpeedName(code);
  if (!name.empty()) return std::string(name);
  return code == 0 ? std::string() : std::to_string(code);
}

// "HDR", "HDR/EDR" where the ends differ, or an empty text where neither is known.
std::string SpeedText(const IBPort& source, const IBPort& target) {
  if (source.speed == target.speed) return SpeedText(source.speed);
  return SpeedText(source.speed) + "/" + SpeedText(target.speed);
}

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

const char* TypeName(std::uint32_t nodeType) {
  if (nodeType == NodeTypeSwitch) return "switch";
  return nodeType == NodeTypeCA ? "ca" : "router";
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
              XmlText(node.name), TypeName(node.nodeType));
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

}  // namespace fabscope
