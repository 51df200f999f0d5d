#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "compare/finding_changes.h"

namespace fabscope::internal {

// A node's name, and its GUID where that would not tell it from another node.
class NodeNames {
 public:
  explicit NodeNames(const IBFabric& fabric);
  std::string Of(const IBNode& node) const;
  std::string Of(const IBPort& port) const { return Of(*port.node, port.num); }
  // "leaf-1 port: 7"; port 0 stands for the node.
  std::string Of(const IBNode& node, std::uint8_t port) const;

 private:
  std::vector<std::string_view> shared_;  // sorted
};

// A fault in words, with the tag of its level: without the numbers of groups, which change from run
// to run.
std::string FaultText(const Fault& fault, const NodeNames& names);

}  // namespace fabscope::internal
