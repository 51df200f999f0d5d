// What a fabric loses when it is written in a format.
//
// The tables below say it attribute by attribute: which limit of a format loses it, and of which
// nodes or ports it is worth a word, because reading the file again would give them another value.
// So a fabric for which no line is said comes back as it was, and one line is never about nothing.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "formats/fabric_formats.h"
#include "formats/net_file_writer.h"
#include "formats/node_order.h"
#include "formats/topology_dump_writer.h"
#include "formats/write_fabric.h"
#include "text/text_fields.h"
#include "text/utf8.h"

namespace fabscope::internal {
namespace {

template <typename Owner>
struct Attribute {
  FormatLimit limit;  // of the formats that lose it
  const char* name;
  bool (*isLost)(const Owner& owner);
};

bool IsUtf8(std::string_view text) { return FirstInvalidUtf8(text) == text.size(); }
bool HasControls(std::string_view text) { return CleanText(text) != text; }

// Whether a loader of dumps takes a node of that name for a special one, as long as it is not told
// to look for another name.
bool IsSpecialByName(const IBNode& node, std::string_view name) {
  return node.nodeType == NodeTypeCA && name.find("Aggregation Node") != std::string::npos;
}

constexpr const char* specialMark = "special flag (not stored; re-derived from the name)";

constexpr std::array<Attribute<IBNode>, 17> nodeAttributes{{
    {TextsAreJson, "bytes outside of UTF-8",
     [](const IBNode& node) {
       return !IsUtf8(node.name) || !IsUtf8(node.getAlternativeName()) ||
              !IsUtf8(node.getVortaSwitchASIC());
     }},
    {NamesAreUtf8, "bytes outside of UTF-8", [](const IBNode& node) { return !IsUtf8(node.name); }},
    {TextsAreJson, "control characters",
     [](const IBNode& node) {
       return HasControls(node.name) || HasControls(node.getAlternativeName()) ||
              HasControls(node.getVortaSwitchASIC());
     }},
    {NamesAreOneLine, "control characters",
     [](const IBNode& node) { return HasControls(node.name); }},
    {NamesAreNetFiles, "full name",
     [](const IBNode& node) { return node.name != NetFileName(node.name); }},
    {OnlyGraph, "system GUID", [](const IBNode& node) { return node.systemGuid != node.guid; }},
    {NoPortCounts, "number of ports", [](const IBNode& node) { return node.numPorts != 0; }},
    {OnlyDiscovered, "display name",
     [](const IBNode& node) { return node.getAlternativeName() != node.name; }},
    {OnlyDiscovered, "rank", [](const IBNode& node) { return node.smdbRank != 255; }},
    {SpecialByName, specialMark,
     [](const IBNode& node) { return node.isSpecialNode() != IsSpecialByName(node, node.name); }},
    {NamesAreNetFiles, specialMark,
     [](const IBNode& node) {
       return node.isSpecialNode() != IsSpecialByName(node, NetFileName(node.name));
     }},
    {OnlyGraph, "special flag", [](const IBNode& node) { return node.special; }},
    {OnlyDiscovered, "multi-ASIC flag", [](const IBNode& node) { return node.multiAsic; }},
    {OnlyDiscovered, "ASIC", [](const IBNode& node) { return !node.getVortaSwitchASIC().empty(); }},
    {OnlyDiscovered, "number of planes",
     [](const IBNode& node) { return node.getPlanesNumber() != 1; }},
    {OnlyDiscovered, "planes",
     [](const IBNode& node) { return node.getSuitablePlane() != 1 || node.HasPlanes(); }},
    {OnlyDiscovered, "FLIDs", [](const IBNode& node) { return !node.GetFlids().empty(); }},
}};

constexpr std::array<Attribute<IBPort>, 9> portAttributes{{
    {OnlyDiscovered, "state",
     [](const IBPort& port) { return port.GetState() != (port.remotePort != nullptr ? 4U : 1U); }},
    {ReadLikeDump, "speed", [](const IBPort& port) { return port.speed != DumpedSpeed(port); }},
    {OnlyGraph, "speed",
     [](const IBPort& port) { return port.remotePort == nullptr && port.speed != 0; }},
    {OnlyDiscovered, "not-symmetric flag", [](const IBPort& port) { return !port.symmetric; }},
    {OnlyDiscovered, "FNM flag", [](const IBPort& port) { return port.fnm; }},
    {OnlyDiscovered, "FNM1 flag", [](const IBPort& port) { return port.fnm1; }},
    {OnlyDiscovered, "place outside of the sub-fabric",
     [](const IBPort& port) { return !port.inSubFabric; }},
    {OnlyDiscovered, "plane multiplicity",
     [](const IBPort& port) { return port.GetPlaneMultiplicity() != 1; }},
    {OnlyDiscovered, "group", [](const IBPort& port) { return port.GetGroup().has_value(); }},
}};

// The simulator takes no node without ports, and it and its place are lost for one reason.
bool IsLeftOut(const IBNode& node, unsigned limits) {
  return (limits & NodesHavePorts) != 0 && node.numPorts == 0;
}

// Nodes that stand elsewhere once they are in the order that a dump's loader gives them.
std::size_t CountOutOfOrder(const IBFabric& fabric, unsigned limits) {
  struct Entry {
    std::string name;
    std::uint64_t guid;
  };
  std::vector<Entry> entries;
  entries.reserve(fabric.GetNodes().size());
  for (const IBNode& node : fabric.GetNodes()) {
    if (IsLeftOut(node, limits)) continue;
    const bool isNetFile = (limits & NamesAreNetFiles) != 0;
    entries.push_back({isNetFile ? NetFileName(node.name) : CleanText(node.name), node.guid});
  }
  std::sort(entries.begin(), entries.end(), [](const Entry& a, const Entry& b) {
    return CompareNodeOrder(a.name.data(), a.guid, b.name.data(), b.guid) < 0;
  });
  std::size_t count = 0;
  auto entry = entries.begin();
  for (const IBNode& node : fabric.GetNodes()) {
    if (!IsLeftOut(node, limits) && (entry++)->guid != node.guid) ++count;
  }
  return count;
}

class LossLines {
 public:
  explicit LossLines(unsigned limits) : limits_(limits) {}

  bool Has(FormatLimit limit) const { return (limits_ & limit) != 0; }

  // "2 nodes lose their FLIDs"
  void Add(std::size_t count, const std::string& owner, const std::string& name) {
    if (count == 0) return;
    lines_.push_back(std::to_string(count) + " " + owner +
                     (count == 1 ? " loses its " : "s lose their ") + name);
  }

  void Say(std::string line) { lines_.push_back(std::move(line)); }

  template <typename Owners, typename Attributes>
  void AddAll(const Owners& owners, const std::string& owner, const Attributes& attributes) {
    for (const auto& attribute : attributes) {
      if (!Has(attribute.limit)) continue;
      const auto count = std::count_if(owners.begin(), owners.end(), attribute.isLost);
      Add(static_cast<std::size_t>(count), owner, attribute.name);
    }
  }

  std::vector<std::string> Take() { return std::move(lines_); }

 private:
  unsigned limits_;
  std::vector<std::string> lines_;
};

// What is told of nodes only by the records that stand in the file, and by their order.
void AddLossesOfRecords(const IBFabric& fabric, unsigned limits, LossLines& lines) {
  const std::vector<IBNode>& nodes = fabric.GetNodes();
  const auto leftOut = static_cast<std::size_t>(
      std::count_if(nodes.begin(), nodes.end(),
                    [limits](const IBNode& node) { return IsLeftOut(node, limits); }));
  lines.Add(leftOut, "node", "record (no ports)");
  lines.Add(CountOutOfOrder(fabric, limits), "node",
            "place in the order of nodes (re-derived from names and GUIDs)");
  if (leftOut == nodes.size()) lines.Say("a file without a node cannot be read again");
}

}  // namespace

std::vector<std::string> LossesOf(const IBFabric& fabric, FabricFormat format) {
  const unsigned limits = EntryOf(format).limits;
  LossLines lines(limits);
  lines.AddAll(fabric.GetNodes(), "node", nodeAttributes);
  lines.AddAll(fabric.GetPorts(), "port", portAttributes);
  if (lines.Has(OnlyDiscovered)) {
    lines.Add(fabric.GetAPorts().size(), "aggregated port", "ports and asymmetry mark");
  }
  if (lines.Has(ReadLikeDump)) AddLossesOfRecords(fabric, limits, lines);
  return lines.Take();
}

}  // namespace fabscope::internal
