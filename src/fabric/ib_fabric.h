#pragma once

#include <cstdint>
#include <deque>
#include <set>
#include <string>
#include <vector>

#include "fabric/guid_index.h"
#include "fabric/ib_node.h"
#include "fabric/text_arena.h"

namespace fabscope::internal {

// A whole fabric. Made by FabricBuilder, which fills every container below once; nothing may be
// added afterwards, since nodes and ports are known by their addresses.
class IBFabric {
 public:
  IBFabric() = default;
  IBFabric(const IBFabric&) = delete;
  IBFabric& operator=(const IBFabric&) = delete;

  // Every switch, in model order.
  std::set<IBNode*> switches;

  // The node with that node GUID, or null.
  const IBNode* getNodeByGuid(std::uint64_t guid) const;

  // When it was discovered, in the words of its file; empty if that does not say.
  const std::string& GetDate() const { return date_; }

  // All nodes in model order, for those who write a fabric out.
  const std::vector<IBNode>& GetNodes() const { return nodes_; }
  const std::vector<IBPort>& GetPorts() const { return ports_; }
  const std::deque<APort>& GetAPorts() const { return aports_; }

 private:
  friend class FabricBuilder;

  std::vector<IBNode> nodes_;
  std::vector<IBPort> ports_;  // by node, then by port number
  TextArena names_;
  std::string date_;
  std::deque<NodeExtras> extras_;
  std::deque<APort> aports_;
  GuidIndex indexByGuid_;
};

}  // namespace fabscope::internal
