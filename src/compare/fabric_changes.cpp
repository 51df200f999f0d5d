// A cable is known by its two ends, each a node and a port number. Those that only one of the
// fabrics has went or came. When a port has lost one of these and got another, somebody has moved
// a plug: the cable is told once, by the end that stayed. It may be either end; that of a host
// goes first, since "the host has moved to another switch" is what people say. So every cable is
// part of one change at most: two cables whose far ends were swapped are two moves, and a cable
// that was taken out while another one came elsewhere is two changes.

#include "compare/fabric_changes.h"

#include <algorithm>
#include <map>

#include "fabric/fabric_walk.h"

namespace fabscope {
namespace {

std::vector<Cable> CablesOf(const IBFabric& fabric) {
  std::vector<Cable> cables;
  for (const IBPort& port : fabric.GetPorts()) {
    if (port.remotePort != nullptr && IsFirstEnd(port)) cables.push_back({&port, port.remotePort});
  }
  return cables;
}

std::size_t CountCables(const IBNode& node) {
  const auto isCabled = [](const IBPort* port) {
    return port != nullptr && port->remotePort != nullptr;
  };
  return static_cast<std::size_t>(std::count_if(node.ports.begin(), node.ports.end(), isCabled));
}

// The port of that number at a node's counterpart; null when there is none.
const IBPort* PortOf(const IBNode* counterpart, const IBPort& port) {
  return counterpart != nullptr ? counterpart->getPort(port.num) : nullptr;
}

bool IsHosts(const IBPort& port) { return port.node->nodeType != NodeTypeSwitch; }

class Comparison {
 public:
  Comparison(const IBFabric& was, const IBFabric& is, const Counterparts& nodes)
      : was_(was), is_(is), nodes_(nodes) {}

  FabricChanges Run() {
    CompareNodes();
    CompareCables();
    FindMoves([](const IBPort& kept) { return IsHosts(kept); });
    FindMoves([](const IBPort&) { return true; });
    TellTheRest();
    return std::move(changes_);
  }

 private:
  void CompareNodes();
  void CompareCables();
  template <typename IsKept>
  void FindMoves(IsKept isKept);
  bool FindMove(const IBPort& kept, const IBPort& was);
  void TellTheRest();

  const IBPort* NowOf(const IBPort& port) const { return PortOf(nodes_.Now(*port.node), port); }
  const IBPort* ThenOf(const IBPort& port) const { return PortOf(nodes_.Then(*port.node), port); }

  const IBFabric& was_;
  const IBFabric& is_;
  const Counterparts& nodes_;
  FabricChanges changes_;
  std::vector<Cable> went_;
  std::vector<Cable> came_;
  // The far ends of the cables that came, by either end; without those that are part of a move.
  std::map<const IBPort*, const IBPort*> cameFrom_;
};

void Comparison::CompareNodes() {
  for (const IBNode& was : was_.GetNodes()) {
    const IBNode* is = nodes_.Now(was);
    if (is == nullptr) {
      changes_.nodesWent.push_back({&was, CountCables(was)});
    } else if (is->guid != was.guid) {
      changes_.replaced.push_back({&was, is});
    } else if (is->name != was.name) {
      changes_.renamed.push_back({&was, is});
    }
  }
  for (const IBNode& is : is_.GetNodes()) {
    if (nodes_.Then(is) == nullptr) changes_.nodesCame.push_back({&is, CountCables(is)});
  }
}

void Comparison::CompareCables() {
  for (const Cable& was : CablesOf(was_)) {
    const IBPort* end1 = NowOf(*was.end1);
    const IBPort* end2 = NowOf(*was.end2);
    if (end1 == nullptr || end2 == nullptr || end1->remotePort != end2) {
      went_.push_back(was);
    } else if (end1->speed != was.end1->speed || end2->speed != was.end2->speed) {
      changes_.speeds.push_back({was, {end1, end2}});
    }
  }
  for (const Cable& is : CablesOf(is_)) {
    const IBPort* end1 = ThenOf(*is.end1);
    const IBPort* end2 = ThenOf(*is.end2);
    if (end1 != nullptr && end2 != nullptr && end1->remotePort == end2) continue;
    came_.push_back(is);
    cameFrom_[is.end1] = is.end2;
    cameFrom_[is.end2] = is.end1;
  }
}

template <typename IsKept>
void Comparison::FindMoves(IsKept isKept) {
  const auto isMove = [&](const Cable& cable) {
    return (isKept(*cable.end1) && FindMove(*cable.end1, *cable.end2)) ||
           (isKept(*cable.end2) && FindMove(*cable.end2, *cable.end1));
  };
  went_.erase(std::remove_if(went_.begin(), went_.end(), isMove), went_.end());
}

// Whether another cable came to the end that is kept.
bool Comparison::FindMove(const IBPort& kept, const IBPort& was) {
  const IBPort* now = NowOf(kept);
  const auto found = now != nullptr ? cameFrom_.find(now) : cameFrom_.end();
  if (found == cameFrom_.end()) return false;
  const IBPort* is = found->second;
  changes_.moved.push_back({now, &was, is});
  cameFrom_.erase(found);
  cameFrom_.erase(is);
  return true;
}

void Comparison::TellTheRest() {
  for (const Cable& cable : went_) {
    if (nodes_.Now(*cable.end1->node) != nullptr && nodes_.Now(*cable.end2->node) != nullptr) {
      changes_.cablesWent.push_back(cable);
    }
  }
  for (const Cable& cable : came_) {
    if (cameFrom_.contains(cable.end1) && nodes_.Then(*cable.end1->node) != nullptr &&
        nodes_.Then(*cable.end2->node) != nullptr) {
      changes_.cablesCame.push_back(cable);
    }
  }
}

}  // namespace

FabricChanges CompareFabrics(const IBFabric& was, const IBFabric& is, const Counterparts& nodes) {
  return Comparison(was, is, nodes).Run();
}

}  // namespace fabscope
