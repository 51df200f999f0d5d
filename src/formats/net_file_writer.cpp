#include "formats/net_file_writer.h"

#include <algorithm>
#include <fmt/format.h>
#include <iterator>
#include <vector>

#include "formats/link_speeds.h"
#include "formats/node_kinds.h"
#include "text/text_fields.h"

namespace fabscope::internal {
namespace {

// A description has 64 bytes, and the simulator ends each with a zero. It also reads lines of 255
// bytes at most and makes two of a longer one.
constexpr std::size_t maxNameLength = 63;

// The simulator refuses a file with a node that has no port.
bool IsTold(const IBNode& node) { return node.numPorts != 0; }

// From here a tool finds the fabric. The simulator attaches tools to an adapter's first port only.
bool IsGoodEntry(const IBNode& node) {
  const IBPort* first = node.nodeType == NodeTypeCA ? node.getPort(1) : nullptr;
  const IBNode* peer = first != nullptr ? first->get_remote_node() : nullptr;
  return peer != nullptr && IsSwitch(*peer);
}

bool HasCable(const IBNode& node) {
  return std::any_of(node.ports.begin(), node.ports.end(),
                     [](const IBPort& port) { return port.remotePort != nullptr; });
}

// The node that comes first in the file. Without a good adapter a switch does, at any port.
const IBNode* EntryOf(const std::vector<IBNode>& nodes) {
  auto entry = std::find_if(nodes.begin(), nodes.end(), IsGoodEntry);
  if (entry == nodes.end()) {
    entry = std::find_if(nodes.begin(), nodes.end(),
                         [](const IBNode& node) { return IsSwitch(node) && HasCable(node); });
  }
  return entry == nodes.end() ? nullptr : &*entry;
}

class NetFile {
 public:
  void AppendHead(const std::vector<IBNode>& nodes);
  void AppendNode(const IBNode& node);
  std::string_view Text() const { return {text_.data(), text_.size()}; }

 private:
  template <typename... Values>
  void Append(fmt::format_string<Values...> format, Values&&... values) {
    fmt::format_to(std::back_inserter(text_), format, std::forward<Values>(values)...);
  }
  void AppendNodeId(const IBNode& node) {
    Append("\"{}-{:016x}\"", KindOf(node).letter, node.guid);
  }
  void AppendPort(const IBPort& port);

  fmt::memory_buffer text_;
};

// Every switch needs one port more than it has, for its management port 0.
void NetFile::AppendHead(const std::vector<IBNode>& nodes) {
  std::size_t told = 0;
  std::size_t switches = 0;
  std::size_t ports = 0;
  for (const IBNode& node : nodes) {
    if (!IsTold(node)) continue;
    ++told;
    switches += IsSwitch(node) ? 1U : 0U;
    ports += node.numPorts + (IsSwitch(node) ? 1U : 0U);
  }
  Append("# start it with: ibsim -s -N {} -S {} -P {} FILE\n", told, switches, ports);
}

void NetFile::AppendNode(const IBNode& node) {
  const NodeKind& kind = KindOf(node);
  Append("\nsysimgguid={:#x}\n{}={:#x}\n", node.systemGuid, kind.guidKey, node.guid);
  Append("{}\t{} ", kind.word, node.numPorts);
  AppendNodeId(node);
  Append("\t\t# \"{}\"{}\n", NetFileName(node.name),
         IsSwitch(node) ? " base port 0 lid 0 lmc 0" : "");
  for (const IBPort& port : node.ports) {
    if (port.remotePort != nullptr) AppendPort(port);
  }
}

// The simulator takes width and speed from the line's end, which differs by the type of the node.
void NetFile::AppendPort(const IBPort& port) {
  const IBNode& peer = *port.remotePort->node;
  Append("[{}]\t", port.num);
  AppendNodeId(peer);
  Append("[{}]\t\t# {}\"{}\" lid 0 4x{}\n", port.remotePort->num,
         IsSwitch(*port.node) ? "" : "lid 0 lmc 0 ", NetFileName(peer.name), SpeedName(port.speed));
}

}  // namespace

std::string NetFileName(std::string_view name) {
  std::string text = CleanText(name.substr(0, maxNameLength));
  std::replace(text.begin(), text.end(), '"', '\'');
  return text;
}

void WriteNetFile(const IBFabric& fabric, std::ostream& stream) {
  const std::vector<IBNode>& nodes = fabric.GetNodes();
  const IBNode* entry = EntryOf(nodes);
  NetFile file;
  file.AppendHead(nodes);
  if (entry != nullptr) file.AppendNode(*entry);
  for (const IBNode& node : nodes) {
    if (&node != entry && IsTold(node)) file.AppendNode(node);
  }
  stream << file.Text();
}

}  // namespace fabscope::internal
