#include <algorithm>
#include <cstddef>
#include <fabscope/fabric.h>
#include <stdexcept>
#include <utility>

#include "formats/link_speeds.h"
#include "library/access.h"

namespace fabscope {
namespace {

using internal::Access;
using internal::IBPort;
using internal::LoadedInput;

const IBPort* FindPort(const internal::IBNode& node, int number) {
  return node.getPort(static_cast<std::uint8_t>(number));
}

bool HasCable(const IBPort* port) { return port != nullptr && port->remotePort != nullptr; }

internal::CheckOptions FilesOf(const LoadOptions& options, std::string name) {
  internal::CheckOptions files;
  files.fabric = std::move(name);
  files.nodeNameMap = options.nodeNameMap;
  files.ranks = options.ranks;
  files.flids = options.flids;
  if (!options.specialNodes.empty()) {
    files.specialNodes = internal::CompiledRegex(options.specialNodes);
  }
  return files;
}

Fabric FabricOf(LoadedInput&& input) {
  if (input.error) internal::ThrowInputError(*input.error);
  return Access::MakeFabric(std::make_shared<const LoadedInput>(std::move(input)));
}

std::vector<Node> MakeNodes(const LoadedInput& input, bool onlySwitches) {
  std::vector<Node> nodes;
  for (const internal::IBNode& node : input.fabric->GetNodes()) {
    if (!onlySwitches || node.nodeType == internal::NodeTypeSwitch) {
      nodes.push_back(Access::MakeNode(node));
    }
  }
  return nodes;
}

}  // namespace

std::size_t Node::Index() const { return node_->index; }

static_assert(static_cast<std::uint32_t>(NodeType::ChannelAdapter) == internal::NodeTypeCA &&
              static_cast<std::uint32_t>(NodeType::Switch) == internal::NodeTypeSwitch &&
              static_cast<std::uint32_t>(NodeType::Router) == internal::NodeTypeRouter);

NodeType Node::Type() const {
  return node_->nodeType <= internal::NodeTypeRouter ? static_cast<NodeType>(node_->nodeType)
                                                     : NodeType::Unknown;
}

std::uint64_t Node::Guid() const { return node_->guid; }
std::uint64_t Node::SystemGuid() const { return node_->systemGuid; }
std::string_view Node::Name() const { return node_->name; }
bool Node::IsSpecial() const { return node_->isSpecialNode(); }
int Node::PortCount() const { return node_->numPorts; }

Port Node::PortAt(int number) const {
  if (number < 1 || number > PortCount()) {
    throw std::out_of_range("fabscope::Node::PortAt: " + std::to_string(number) + " is not 1 to " +
                            std::to_string(PortCount()));
  }
  return Access::MakePort(*node_, number);
}

std::vector<Port> Node::CabledPorts() const {
  std::vector<Port> ports;
  for (int number = 1; number <= PortCount(); ++number) {
    if (HasCable(FindPort(*node_, number))) ports.push_back(Access::MakePort(*node_, number));
  }
  return ports;
}

Node Port::Owner() const { return Access::MakeNode(*node_); }
int Port::Number() const { return number_; }

std::optional<Port> Port::Peer() const {
  const IBPort* port = FindPort(*node_, number_);
  if (!HasCable(port)) return std::nullopt;
  return Access::MakePort(*port->remotePort->node, port->remotePort->num);
}

std::string Port::Speed() const {
  const IBPort* port = FindPort(*node_, number_);
  return port != nullptr ? internal::SpeedText(port->speed) : std::string();
}

const std::string& Fabric::Name() const { return input_->name; }
std::size_t Fabric::NodeCount() const { return input_->fabric->GetNodes().size(); }

Node Fabric::NodeAt(std::size_t index) const {
  return Access::MakeNode(input_->fabric->GetNodes().at(index));
}

std::vector<Node> Fabric::Nodes() const { return MakeNodes(*input_, false); }
std::vector<Node> Fabric::Switches() const { return MakeNodes(*input_, true); }

std::optional<Node> Fabric::FindNode(std::uint64_t guid) const {
  const internal::IBNode* node = input_->fabric->getNodeByGuid(guid);
  if (node == nullptr) return std::nullopt;
  return Access::MakeNode(*node);
}

const std::vector<std::string>& Fabric::Warnings() const { return input_->warnings; }

Fabric LoadFabric(const std::string& path, const LoadOptions& options) {
  return FabricOf(internal::LoadInput(FilesOf(options, path)));
}

Fabric ParseFabric(std::string text, std::string name, const LoadOptions& options) {
  return FabricOf(internal::LoadInput(FilesOf(options, std::move(name)), std::move(text)));
}

}  // namespace fabscope
