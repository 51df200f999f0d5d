#pragma once

#include <cstddef>
#include <cstdint>
#include <fabscope/export.h>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace fabscope {

namespace internal {
class IBNode;
struct Access;
struct LoadedInput;
}  // namespace internal

class Port;

/// NodeInfo NodeType of a node.
enum class NodeType { Unknown = 0, ChannelAdapter = 1, Switch = 2, Router = 3 };

/// A switch, channel adapter or router. A view: it holds as long as the fabric that it is from, a
/// copy of that, or a result about it. Cheap to copy; any number of threads may use it.
class FABSCOPE_API Node {
 public:
  /// The place in the fabric's order, counted from 0.
  std::size_t Index() const;
  NodeType Type() const;
  std::uint64_t Guid() const;
  /// Shared by the chips of one system; 0 if unknown.
  std::uint64_t SystemGuid() const;
  /// The node description, or what a node-name map has for it.
  std::string_view Name() const;
  /// A channel adapter that is not counted as a host, such as an aggregation node.
  bool IsSpecial() const;

  /// Ports are numbered from 1 to this.
  int PortCount() const;
  /// The port of a number from 1 to PortCount(); std::out_of_range for any other.
  Port PortAt(int number) const;
  /// Those with a cable, by number.
  std::vector<Port> CabledPorts() const;

  friend bool operator==(const Node& a, const Node& b) { return a.node_ == b.node_; }

 private:
  friend struct internal::Access;
  explicit Node(const internal::IBNode& node) : node_(&node) {}
  const internal::IBNode* node_;
};

/// A port of a node. A view like Node.
class FABSCOPE_API Port {
 public:
  Node Owner() const;
  int Number() const;
  /// The far end of the cable; nothing if there is no cable.
  std::optional<Port> Peer() const;
  /// "HDR"; empty if unknown.
  std::string Speed() const;

  friend bool operator==(const Port& a, const Port& b) {
    return a.node_ == b.node_ && a.number_ == b.number_;
  }

 private:
  friend struct internal::Access;
  Port(const internal::IBNode& node, int number) : node_(&node), number_(number) {}
  const internal::IBNode* node_;
  int number_;
};

/// A fabric as it was read; it never changes. A copy is the same fabric and costs next to nothing.
/// Any number of threads may use one.
class FABSCOPE_API Fabric {
 public:
  /// As the caller named it.
  const std::string& Name() const;
  std::size_t NodeCount() const;
  /// Nodes stand by name (numbers in it by value), then by GUID; those of a fabric document as
  /// they stand in it. All reports follow this order. std::out_of_range from NodeCount() on.
  Node NodeAt(std::size_t index) const;
  std::vector<Node> Nodes() const;
  std::vector<Node> Switches() const;
  /// By node GUID.
  std::optional<Node> FindNode(std::uint64_t guid) const;
  /// What was odd in the files, one line each as the command prints it.
  const std::vector<std::string>& Warnings() const;

 private:
  friend struct internal::Access;
  explicit Fabric(std::shared_ptr<const internal::LoadedInput> input) : input_(std::move(input)) {}
  std::shared_ptr<const internal::LoadedInput> input_;
};

/// What belongs to a fabric besides its dump. An empty path: there is no such file.
struct LoadOptions {
  /// Names that an administrator gave: lines 0xGUID "name".
  std::string nodeNameMap;
  /// The subnet manager's ranks: CSV of guid,rank.
  std::string ranks;
  /// CSV of guid,flid.
  std::string flids;
  /// Channel adapters that are not counted as hosts: a POSIX extended regular expression for their
  /// names; empty for none. Fabric documents say it themselves.
  std::string specialNodes = "Aggregation Node";
};

/// Reads a fabric in any format that the command reads, gzip or not; "-" is standard input.
/// Throws Error, or std::bad_alloc.
FABSCOPE_API Fabric LoadFabric(const std::string& path, const LoadOptions& options = {});

/// Reads a fabric from memory, which must not be packed. `name` is its name in messages.
/// Throws Error, or std::bad_alloc.
FABSCOPE_API Fabric ParseFabric(std::string text, std::string name,
                                const LoadOptions& options = {});

}  // namespace fabscope
