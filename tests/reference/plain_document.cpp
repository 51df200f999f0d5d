#include "reference/plain_document.h"

#include <array>
#include <iomanip>
#include <sstream>
#include <utility>

#include "reference/random_source.h"

namespace fabscope::internal::reference {
namespace {

constexpr std::array<std::pair<std::uint32_t, const char*>, 10> speedNames{{{0x1, "SDR"},
                                                                            {0x2, "DDR"},
                                                                            {0x4, "QDR"},
                                                                            {0x100, "FDR"},
                                                                            {0x200, "EDR"},
                                                                            {0x400, "HDR"},
                                                                            {0x800, "NDR"},
                                                                            {0x10000, "FDR10"},
                                                                            {0x20000, "EDR20"},
                                                                            {0x1000000, "XDR"}}};

std::string Quoted(const std::string& text) {
  std::string quoted = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\') quoted += '\\';
    quoted += c;
  }
  return quoted + '"';
}

std::string List(const std::vector<std::string>& items) {
  std::string list = "[";
  for (const std::string& item : items) list += (list.size() > 1 ? ", " : "") + item;
  return list + "]";
}

std::string List(const std::set<int>& numbers) {
  std::vector<std::string> items;
  items.reserve(numbers.size());
  for (const int number : numbers) items.push_back(std::to_string(number));
  return List(items);
}

// One JSON object under construction.
class Members {
 public:
  void Add(const char* key, const std::string& value) {
    text_ += (text_.empty() ? "\"" : ", \"") + std::string(key) + "\": " + value;
  }
  void Add(const char* key, bool value) { Add(key, std::string(value ? "true" : "false")); }
  std::string Text() const { return "{" + text_ + "}"; }

 private:
  std::string text_;
};

class DocumentMaker {
 public:
  DocumentMaker(const PlainFabric& fabric, std::uint64_t seed)
      : fabric_(fabric),
        random_(seed ^ 0xd0c),
        redundancy_(random_.Pick<int>({0, 0, 30, 100})),
        attributesAtPorts_(random_.Chance(30)) {}

  std::string Document();

 private:
  // Whether an attribute is written although nothing would change without it.
  bool WriteAnyway() { return random_.Chance(redundancy_); }

  std::string Guid(std::uint64_t guid);
  std::string Speed(std::uint32_t speed);
  std::string Node(const PlainNode& node);
  std::string Ports(const PlainNode& node);
  std::string Port(int num, const PlainPort& port);
  std::vector<std::string> Links();
  std::vector<std::string> APorts();

  const PlainNode& NodeAt(int index) const {
    return fabric_.nodes[static_cast<std::size_t>(index)];
  }
  const PlainPort& FarEnd(const PlainPort& port) const {
    return NodeAt(port.remoteNode).ports.at(port.remotePort);
  }
  // What the link itself says; ports that differ say so themselves.
  bool LinkTellsSpeed(const PlainPort& port) const {
    return !attributesAtPorts_ && port.speed == FarEnd(port).speed;
  }
  bool LinkTellsSymmetry(const PlainPort& port) const {
    return !attributesAtPorts_ && port.symmetric == FarEnd(port).symmetric;
  }

  const PlainFabric& fabric_;
  RandomSource random_;
  int redundancy_;
  bool attributesAtPorts_;
};

std::string DocumentMaker::Guid(std::uint64_t guid) {
  std::ostringstream text;
  text << "\"0x" << std::hex;
  const int form = random_.Below(3);
  if (form == 1) text << std::setw(16) << std::setfill('0');
  if (form == 2) text << std::uppercase;
  text << guid << '"';
  return text.str();
}

std::string DocumentMaker::Speed(std::uint32_t speed) {
  const bool asNumber = random_.Chance(20);
  for (const auto& [code, name] : speedNames) {
    if (code == speed && !asNumber) return Quoted(name);
  }
  return std::to_string(speed);
}

std::string DocumentMaker::Node(const PlainNode& node) {
  Members members;
  members.Add("guid", Guid(node.guid));
  constexpr std::array<const char*, 4> types{"", "ca", "switch", "router"};
  members.Add("type", Quoted(types[static_cast<std::size_t>(node.type)]));
  members.Add("name", Quoted(node.name));
  members.Add("numPorts", std::to_string(node.numPorts));
  if (node.systemGuid != node.guid || WriteAnyway()) {
    members.Add("systemGuid", Guid(node.systemGuid));
  }
  if (node.displayName != node.name || WriteAnyway()) {
    members.Add("displayName", Quoted(node.displayName));
  }
  if (node.smdbRank != 255 || WriteAnyway()) {
    members.Add("smdbRank", std::to_string(node.smdbRank));
  }
  if (node.special || WriteAnyway()) members.Add("special", node.special);
  if (node.multiAsic || WriteAnyway()) members.Add("multiAsic", node.multiAsic);
  if (!node.asic.empty() || WriteAnyway()) members.Add("asic", Quoted(node.asic));
  if (node.planesNumber != 1 || WriteAnyway()) {
    members.Add("planesNumber", std::to_string(node.planesNumber));
  }
  if (node.suitablePlane != 1 || WriteAnyway()) {
    members.Add("suitablePlane", std::to_string(node.suitablePlane));
  }
  if (node.planes != std::set{node.suitablePlane} || WriteAnyway()) {
    members.Add("planes", List(node.planes));
  }
  if (!node.flids.empty() || WriteAnyway()) members.Add("flids", List(node.flids));
  const std::string ports = Ports(node);
  if (ports != "[]" || WriteAnyway()) members.Add("ports", ports);
  return members.Text();
}

std::string DocumentMaker::Ports(const PlainNode& node) {
  std::vector<std::string> items;
  for (const auto& [num, port] : node.ports) {
    const std::string item = Port(num, port);
    if (!item.empty()) items.push_back(item);
  }
  return List(items);
}

// Nothing when the port has no attribute to tell.
std::string DocumentMaker::Port(int num, const PlainPort& port) {
  const bool isLinked = port.remoteNode >= 0;
  const std::uint32_t defaultSpeed = isLinked && LinkTellsSpeed(port) ? port.speed : 0;
  const bool defaultSymmetry = isLinked && LinkTellsSymmetry(port) ? port.symmetric : true;
  const std::uint32_t defaultState = isLinked ? 4 : 1;

  Members members;
  members.Add("num", std::to_string(num));
  const std::string bare = members.Text();
  if (port.state != defaultState || WriteAnyway()) {
    members.Add("state", std::to_string(port.state));
  }
  if (port.speed != defaultSpeed || WriteAnyway()) members.Add("speed", Speed(port.speed));
  if (port.symmetric != defaultSymmetry || WriteAnyway()) members.Add("symmetric", port.symmetric);
  if (port.fnm || WriteAnyway()) members.Add("fnm", port.fnm);
  if (port.fnm1 || WriteAnyway()) members.Add("fnm1", port.fnm1);
  if (!port.inSubFabric || WriteAnyway()) members.Add("inSubFabric", port.inSubFabric);
  if (port.planeMultiplicity != 1 || WriteAnyway()) {
    members.Add("planeMultiplicity", std::to_string(port.planeMultiplicity));
  }
  if (port.group) members.Add("group", std::to_string(*port.group));
  const std::string text = members.Text();
  return text == bare ? "" : text;
}

std::vector<std::string> DocumentMaker::Links() {
  std::vector<std::string> links;
  for (int index = 0; index < static_cast<int>(fabric_.nodes.size()); ++index) {
    for (const auto& [num, port] : NodeAt(index).ports) {
      if (port.remoteNode < 0) continue;
      if (std::pair(port.remoteNode, port.remotePort) < std::pair(index, num)) continue;
      Members members;
      members.Add("a", Guid(NodeAt(index).guid));
      members.Add("aPort", std::to_string(num));
      members.Add("b", Guid(NodeAt(port.remoteNode).guid));
      members.Add("bPort", std::to_string(port.remotePort));
      if (LinkTellsSpeed(port) && (port.speed != 0 || WriteAnyway())) {
        members.Add("speed", Speed(port.speed));
      }
      if (LinkTellsSymmetry(port) && (!port.symmetric || WriteAnyway())) {
        members.Add("symmetric", port.symmetric);
      }
      links.push_back(members.Text());
    }
  }
  random_.Shuffle(links);
  return links;
}

std::vector<std::string> DocumentMaker::APorts() {
  std::vector<std::vector<std::string>> ports(fabric_.aportAsymmetry.size());
  for (const PlainNode& node : fabric_.nodes) {
    for (const auto& [num, port] : node.ports) {
      if (port.aport < 0) continue;
      ports[static_cast<std::size_t>(port.aport)].push_back("[" + Guid(node.guid) + ", " +
                                                            std::to_string(num) + "]");
    }
  }
  std::vector<std::string> aports;
  for (std::size_t i = 0; i < ports.size(); ++i) {
    Members members;
    members.Add("ports", List(ports[i]));
    const std::uint64_t asymmetry = fabric_.aportAsymmetry[i];
    if (asymmetry != 0 || WriteAnyway()) members.Add("asymmetry", std::to_string(asymmetry));
    aports.push_back(members.Text());
  }
  return aports;
}

std::string DocumentMaker::Document() {
  Members members;
  members.Add("format", Quoted("fabscope-fabric"));
  members.Add("version", std::string("1"));
  std::vector<std::string> nodes;
  nodes.reserve(fabric_.nodes.size());
  for (const PlainNode& node : fabric_.nodes) nodes.push_back(Node(node));
  const std::vector<std::string> links = Links();
  const std::vector<std::string> aports = APorts();
  const bool linksFirst = random_.Chance(20);
  if (linksFirst) members.Add("links", List(links));
  if (linksFirst && !aports.empty()) members.Add("aports", List(aports));
  members.Add("nodes", List(nodes));
  if (!linksFirst && (!links.empty() || WriteAnyway())) members.Add("links", List(links));
  if (!linksFirst && (!aports.empty() || WriteAnyway())) members.Add("aports", List(aports));
  return members.Text() + "\n";
}

}  // namespace

std::string DocumentOf(const PlainFabric& fabric, std::uint64_t seed) {
  return DocumentMaker(fabric, seed).Document();
}

}  // namespace fabscope::internal::reference
