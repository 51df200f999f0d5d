// Fabrics with names as hostile as hosts can give them, written in every format. What can be read
// again comes back as it was, except for what LossesOf names, to the number; graphs are well formed
// and hold every node and every cable.

#include <algorithm>
#include <expat.h>
#include <map>
#include <sstream>

#include "fabric/guid.h"
#include "formats/net_file_writer.h"
#include "formats/write_fabric.h"
#include "fuzz/fabric_parts.h"
#include "fuzz/loading.h"
#include "fuzz/plain_text.h"
#include "fuzz/require.h"

namespace {

using namespace fabscope::internal;
using namespace fabscope::internal::fuzz;

std::string Name(FuzzedDataProvider& bytes) {
  static const std::vector<std::string> pieces{"spine",
                                               "\"",
                                               "\" lid 1 4xNDR",
                                               " # \"",
                                               "Aggregation Node",
                                               "\n[1]\t",
                                               "\\",
                                               "\\\"N",
                                               "</data>&amp;",
                                               "]]>",
                                               "\xef\xbf\xbe",
                                               "\xff\xfe",
                                               "h\xf6st",
                                               "\xed\xa0\x80",
                                               "\xc3\xb6",
                                               "\x7f",
                                               "switchguid=0x1\r\n",
                                               "007",
                                               " ",
                                               "\t",
                                               "{\"a\":[",
                                               "-->",
                                               std::string(60, 'x'),
                                               std::string(1, '\0')};
  std::string name;
  for (auto count = bytes.ConsumeIntegralInRange(0, 4); count != 0; --count) {
    const auto piece = bytes.ConsumeIntegralInRange<std::size_t>(0, pieces.size() + 1);
    if (piece < pieces.size()) {
      name += pieces[piece];
    } else {
      name += bytes.ConsumeRandomLengthString(8);
    }
  }
  return name;
}

std::string Written(const IBFabric& fabric, FabricFormat format) {
  std::ostringstream stream;
  WriteFabric(fabric, format, stream);
  return stream.str();
}

// --- What is lost: every attribute of every node and port before and after.

// How many nodes or ports lose what. Tells it in the words of LossesOf.
class Counts {
 public:
  Counts(std::string owner, std::vector<const char*> names)
      : owner_(std::move(owner)), names_(std::move(names)), counts_(names_.size()) {}

  // In the order of the names.
  void Add(const std::vector<bool>& isLost) {
    for (std::size_t i = 0; i < names_.size(); ++i) counts_[i] += isLost[i] ? 1U : 0U;
  }
  void Tell(std::vector<std::string>& lines) const {
    for (std::size_t i = 0; i < names_.size(); ++i) {
      if (counts_[i] == 0) continue;
      lines.push_back(std::to_string(counts_[i]) + " " + owner_ +
                      (counts_[i] == 1 ? " loses its " : "s lose their ") + names_[i]);
    }
  }

 private:
  std::string owner_;
  std::vector<const char*> names_;
  std::vector<std::size_t> counts_;
};

// A fabric of one node: what it is when a file does not tell of it, as any other of its name.
std::unique_ptr<IBFabric> Untold(const IBNode& node) {
  NodeSpec untold;
  untold.guid = node.guid;
  untold.systemGuid = node.systemGuid;
  untold.type = node.nodeType;
  untold.name = NetFileName(node.name);
  untold.special =
      node.nodeType == NodeTypeCA && untold.name.find("Aggregation Node") != std::string::npos;
  FabricBuilder builder;
  Require(!builder.AddNode(untold), "a node is taken");
  return builder.Build();
}

class Difference {
 public:
  Difference(const IBFabric& before, const IBFabric& after, FabricFormat format)
      : before_(before), after_(after), format_(format) {}

  // What it tells is all that has changed.
  std::vector<std::string> Tell() {
    CompareNodes();
    ComparePorts();
    CompareAPorts();
    CompareRecords();
    return std::move(lines_);
  }

 private:
  void CompareNodes();
  void ComparePorts();
  void CompareAPorts();
  void CompareRecords();
  const IBPort* After(const IBPort& port) const {
    const IBNode* node = after_.getNodeByGuid(port.node->guid);
    return node == nullptr ? nullptr : node->getPort(port.num);
  }
  std::vector<bool> LostTexts(const IBNode& node, const IBNode& after) const;

  const IBFabric& before_;
  const IBFabric& after_;
  FabricFormat format_;
  std::vector<std::string> lines_;
};

// A document has texts in UTF-8, a net file short ones, and no loader lets a control character
// pass.
std::vector<bool> Difference::LostTexts(const IBNode& node, const IBNode& after) const {
  const bool isDocument = format_ == FabricFormat::Document;
  const bool isNetFile = format_ == FabricFormat::NetFile;
  const std::string_view shown = node.getAlternativeName();
  const std::string_view shownAfter = after.getAlternativeName();
  const bool showsName = (shown == node.name) == (shownAfter == after.name);
  const std::string_view asic = node.getVortaSwitchASIC();
  std::vector<std::string_view> texts{node.name};
  if (isDocument) texts.insert(texts.end(), {shown, asic});
  const bool isUtf8 = std::all_of(texts.begin(), texts.end(), IsUtf8);
  const bool hasControls = std::any_of(texts.begin(), texts.end(), HasControls);
  const bool isSame = node.name == after.name &&
                      (!isDocument || (shown == shownAfter && asic == after.getVortaSwitchASIC()));
  const bool mayDiffer = isNetFile || hasControls || (isDocument && !isUtf8);
  Require(isSame || mayDiffer, "a text that a format can hold is kept");
  return {isDocument && !isUtf8, !isNetFile && hasControls, isNetFile && !isSame,
          !isDocument && !showsName};
}

void Difference::CompareNodes() {
  Counts counts(
      "node", {"bytes outside of UTF-8", "control characters", "full name", "display name", "rank",
               "special flag (not stored; re-derived from the name)", "multi-ASIC flag", "ASIC",
               "number of planes", "planes", "FLIDs"});
  for (const IBNode& node : before_.GetNodes()) {
    const IBNode* found = after_.getNodeByGuid(node.guid);
    const auto untold = found == nullptr ? Untold(node) : nullptr;
    const IBNode& after = found == nullptr ? untold->GetNodes().front() : *found;
    Require(after.nodeType == node.nodeType && after.systemGuid == node.systemGuid &&
                after.numPorts == node.numPorts,
            "type, system and number of ports are kept");
    std::vector<bool> lost = LostTexts(node, after);
    const bool isDocument = format_ == FabricFormat::Document;
    lost.insert(lost.end(), {after.smdbRank != node.smdbRank, after.special != node.special,
                             after.multiAsic != node.multiAsic,
                             !isDocument && after.getVortaSwitchASIC() != node.getVortaSwitchASIC(),
                             after.getPlanesNumber() != node.getPlanesNumber(),
                             after.getSuitablePlane() != node.getSuitablePlane() ||
                                 after.GetPlanes() != node.GetPlanes(),
                             after.GetFlids() != node.GetFlids()});
    counts.Add(lost);
  }
  counts.Tell(lines_);
}

void Difference::ComparePorts() {
  Counts counts("port", {"state", "speed", "not-symmetric flag", "FNM flag", "FNM1 flag",
                         "place outside of the sub-fabric", "plane multiplicity", "group"});
  const auto group = [](const IBPort& port) {
    return port.GetGroup() ? std::optional(port.GetGroup()->number) : std::nullopt;
  };
  for (const IBPort& port : before_.GetPorts()) {
    const IBPort untold;
    const IBPort* found = After(port);
    const IBPort& after = found == nullptr ? untold : *found;
    Require((port.remotePort == nullptr) == (after.remotePort == nullptr) &&
                (port.remotePort == nullptr || After(*port.remotePort) == after.remotePort),
            "every cable is kept");
    counts.Add({after.GetState() != port.GetState(), after.speed != port.speed,
                after.symmetric != port.symmetric, after.fnm != port.fnm, after.fnm1 != port.fnm1,
                after.inSubFabric != port.inSubFabric,
                after.GetPlaneMultiplicity() != port.GetPlaneMultiplicity(),
                group(after) != group(port)});
  }
  counts.Tell(lines_);
}

void Difference::CompareAPorts() {
  if (format_ != FabricFormat::Document) {
    Require(after_.GetAPorts().empty(), "a format without aggregated ports has none");
    Counts counts("aggregated port", {"ports and asymmetry mark"});
    for (std::size_t i = 0; i < before_.GetAPorts().size(); ++i) counts.Add({true});
    counts.Tell(lines_);
    return;
  }
  Require(after_.GetAPorts().size() == before_.GetAPorts().size(), "aggregated ports are kept");
  std::map<const APort*, const APort*> found;
  for (const IBPort& port : before_.GetPorts()) {
    const IBPort* after = After(port);
    const APort* aport = after == nullptr ? nullptr : after->GetAPort();
    Require((port.GetAPort() == nullptr) == (aport == nullptr),
            "ports stay in their aggregated ports");
    if (aport == nullptr) continue;
    Require(aport->asymmetry == port.GetAPort()->asymmetry, "asymmetry marks are kept");
    Require(found.emplace(port.GetAPort(), aport).first->second == aport,
            "ports of an aggregated port stay together");
  }
}

// Which nodes are left, and in what order.
void Difference::CompareRecords() {
  Counts counts("node", {"record (no ports)",
                         "place in the order of nodes (re-derived from names and GUIDs)"});
  std::size_t place = 0;
  for (const IBNode& node : before_.GetNodes()) {
    const bool isLeftOut = after_.getNodeByGuid(node.guid) == nullptr;
    Require(!isLeftOut || node.numPorts == 0, "a node with ports is kept");
    counts.Add({isLeftOut, !isLeftOut && after_.GetNodes()[place].guid != node.guid});
    if (!isLeftOut) ++place;
  }
  Require(place == after_.GetNodes().size(), "no node comes from nowhere");
  counts.Tell(lines_);
}

std::string Joined(const std::vector<std::string>& lines) {
  std::string joined;
  for (const std::string& line : lines) joined += line + "\n";
  return joined;
}

Loaded Load(const std::string& text, FabricFormat format) {
  return format == FabricFormat::Document ? LoadDocument(text) : LoadDump(text);
}

void RequireLossesTold(const IBFabric& fabric, FabricFormat format) {
  const std::string text = Written(fabric, format);
  const Loaded loaded = Load(text, format);
  const std::vector<std::string> losses = LossesOf(fabric, format);
  const bool isEmpty =
      !losses.empty() && losses.back() == "a file without a node cannot be read again";
  Require(loaded.error.empty() != isEmpty, "what was written can be read, or it is said that not");
  if (isEmpty) return;
  Require(loaded.warnings.empty(), "what was written is read without a warning");
  RequireSame(Joined(losses), Joined(Difference(fabric, *loaded.fabric, format).Tell()),
              "what is lost is told, and nothing else");
  Require(LossesOf(*loaded.fabric, format).empty(), "nothing is lost twice");
  RequireSame(Load(Written(*loaded.fabric, format), format), loaded,
              "what was read is read again as it is");
}

// --- Graphs.

// What a graph shows as it is.
bool IsText(std::string_view name) {
  return IsUtf8(name) && !HasControls(name) && !HasBidirectionalControls(name) &&
         name.find("\xef\xbf\xbe") == std::string::npos &&
         name.find("\xef\xbf\xbf") == std::string::npos;
}

std::size_t CountCables(const IBFabric& fabric) {
  std::size_t ends = 0;
  for (const IBPort& port : fabric.GetPorts()) ends += port.remotePort != nullptr ? 1U : 0U;
  return ends / 2;
}

// What an XML parser finds in a GraphML file.
struct GraphMl {
  std::size_t edges = 0;
  std::map<std::string, std::string> names;  // by the ID of the node
  std::string node;                          // the one that is open
  bool inName = false;
};

void XMLCALL OnStart(void* data, const XML_Char* element, const XML_Char** attributes) {
  auto& graph = *static_cast<GraphMl*>(data);
  const std::string name = element;
  if (name == "node") {
    graph.node = attributes[1];
    Require(graph.names.emplace(graph.node, "").second, "a graph has a node once");
  }
  if (name == "edge") ++graph.edges;
  graph.inName = name == "data" && std::string_view(attributes[1]) == "name";
}

void XMLCALL OnEnd(void* data, const XML_Char*) { static_cast<GraphMl*>(data)->inName = false; }

void XMLCALL OnText(void* data, const XML_Char* text, int size) {
  auto& graph = *static_cast<GraphMl*>(data);
  if (graph.inName) graph.names[graph.node].append(text, static_cast<std::size_t>(size));
}

void RequireSoundGraphMl(const IBFabric& fabric) {
  const std::string text = Written(fabric, FabricFormat::GraphMl);
  GraphMl graph;
  XML_Parser parser = XML_ParserCreate(nullptr);
  XML_SetUserData(parser, &graph);
  XML_SetElementHandler(parser, OnStart, OnEnd);
  XML_SetCharacterDataHandler(parser, OnText);
  const auto status = XML_Parse(parser, text.data(), static_cast<int>(text.size()), XML_TRUE);
  XML_ParserFree(parser);
  Require(status == XML_STATUS_OK, "GraphML is XML");
  Require(graph.edges == CountCables(fabric), "a graph has an edge for each cable");
  Require(graph.names.size() == fabric.GetNodes().size(), "a graph has all nodes");
  for (const IBNode& node : fabric.GetNodes()) {
    const auto found = graph.names.find(GuidText(node.guid));
    Require(found != graph.names.end(), "nodes are known by their GUIDs");
    if (IsText(node.name)) RequireSame(found->second, node.name, "GraphML holds any name");
  }
}

// Takes the value of a label, from behind its quote to its end.
std::string TakeLabel(std::string_view& line) {
  constexpr std::string_view ampersand = "&amp;";
  std::string label;
  while (!line.empty() && line.front() != '"') {
    if (line.front() == '\\') {
      line.remove_prefix(1);
      Require(line.starts_with('"') || line.starts_with('\\'), "only known escapes are used");
    } else if (line.front() == '&') {
      Require(line.starts_with(ampersand), "only known entities are used");
      line.remove_prefix(ampersand.size());
      label += '&';
      continue;
    }
    label += line.front();
    line.remove_prefix(1);
  }
  return label;
}

void RequireSoundDot(const IBFabric& fabric) {
  std::istringstream text(Written(fabric, FabricFormat::Dot));
  std::size_t edges = 0;
  std::size_t nodes = 0;
  for (std::string whole; std::getline(text, whole);) {
    std::string_view line = whole;
    if (!line.starts_with("  \"0x")) continue;
    Require(line.ends_with("];"), "a line of a DOT file is a statement");
    line.remove_prefix(line.find('"', 3) + 1);
    if (line.starts_with(" -- ")) {
      ++edges;
      continue;
    }
    constexpr std::string_view start = " [label=\"";
    Require(line.starts_with(start), "a node has a label");
    line.remove_prefix(start.size());
    const std::string label = TakeLabel(line);
    Require(line == "\"];" || line.starts_with("\", shape="), "a label ends where it ends");
    const IBNode& node = fabric.GetNodes().at(nodes++);
    Require(IsUtf8(label) && !HasControls(label), "a label is plain text");
    if (IsText(node.name)) RequireSame(label, node.name, "a DOT file holds any name");
  }
  Require(nodes == fabric.GetNodes().size(), "a DOT file has all nodes");
  Require(edges == CountCables(fabric), "a DOT file has all cables");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedDataProvider bytes(data, size);
  const auto format = static_cast<FabricFormat>(
      bytes.ConsumeIntegralInRange(0, static_cast<int>(FabricFormat::Count_) - 1));
  const auto fabric = BuildFabric(MakeTree(bytes, Name));
  switch (format) {
    case FabricFormat::Dot:
      RequireSoundDot(*fabric);
      break;
    case FabricFormat::GraphMl:
      RequireSoundGraphMl(*fabric);
      break;
    default:
      RequireLossesTold(*fabric, format);
  }
  return 0;
}
