// A cable is known by its two ends, each a node and a port number. Those that only one of the
// fabrics has went or came. When a port has lost one of these and got another, somebody has moved
// a plug: the cable is told once, by the end that stayed. It may be either end; that of a host
// goes first, since "the host has moved to another switch" is what people say. So every cable is
// part of one change at most: two cables whose far ends were swapped are two moves, and a cable
// that was taken out while another one came elsewhere is two changes.

#include "compare/fabric_changes.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <tuple>

#include "fabric/fabric_walk.h"

namespace fabscope::internal {
namespace {

std::vector<Cable> CablesOf(const IBFabric& fabric) {
  std::vector<Cable> cables;
  for (const IBPort& port : fabric.GetPorts()) {
    if (port.remotePort != nullptr && IsFirstEnd(port)) cables.push_back({&port, port.remotePort});
  }
  return cables;
}

std::size_t CountCables(const IBNode& node) {
  const auto isCabled = [](const IBPort& port) { return port.remotePort != nullptr; };
  return static_cast<std::size_t>(std::count_if(node.ports.begin(), node.ports.end(), isCabled));
}

// The port of that number at a node's counterpart; null when there is none.
const IBPort* PortOf(const IBNode* counterpart, const IBPort& port) {
  return counterpart != nullptr ? counterpart->getPort(port.num) : nullptr;
}

bool IsHosts(const IBPort& port) { return port.node->nodeType != NodeTypeSwitch; }

// A port that has another cable than before.
struct Kept {
  const IBPort* was;
  const IBPort* now;
  std::size_t cable;  // that it had, in the list of those that went

  auto Order() const {
    const std::uint64_t places = std::uint64_t{was->node->index} + now->node->index;
    return std::tuple(!IsHosts(*was), places, std::minmax({was->node->guid, now->node->guid}),
                      was->num);
  }
};

class Comparison {
 public:
  Comparison(const IBFabric& was, const IBFabric& is, const Counterparts& nodes)
      : was_(was), is_(is), nodes_(nodes) {}

  FabricChanges Run() {
    CompareNodes();
    CompareCables();
    FindMoves();
    TellMoves([](const IBPort& kept) { return IsHosts(kept); });
    TellMoves([](const IBPort& kept) { return !IsHosts(kept); });
    TellTheRest();
    return std::move(changes_);
  }

 private:
  void CompareNodes();
  void CompareCables();
  void FindMoves();
  template <typename IsTold>
  void TellMoves(IsTold isTold);
  void TellTheRest();

  const IBPort* NowOf(const IBPort& port) const { return PortOf(nodes_.Now(*port.node), port); }
  const IBPort* ThenOf(const IBPort& port) const { return PortOf(nodes_.Then(*port.node), port); }

  const IBFabric& was_;
  const IBFabric& is_;
  const Counterparts& nodes_;
  FabricChanges changes_;
  std::vector<Cable> went_;
  std::vector<Cable> came_;
  // Of each cable that went; without a port that was kept it is none.
  std::vector<MovedCable> moves_;
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

// Ports that have lost a cable and got another, from which a cable is known that stayed. Two of
// them may want the same cable, so their order decides. It is the same with the fabrics exchanged:
// by where both fabrics have the node together, which is its place where they agree.
void Comparison::FindMoves() {
  std::vector<Kept> candidates;
  for (std::size_t cable = 0; cable < went_.size(); ++cable) {
    for (const IBPort* was : {went_[cable].end1, went_[cable].end2}) {
      const IBPort* now = NowOf(*was);
      if (now != nullptr && cameFrom_.contains(now)) candidates.push_back({was, now, cable});
    }
  }
  std::sort(candidates.begin(), candidates.end(),
            [](const Kept& a, const Kept& b) { return a.Order() < b.Order(); });
  moves_.assign(went_.size(), {});
  for (const Kept& kept : candidates) {
    const auto found = cameFrom_.find(kept.now);
    if (moves_[kept.cable].kept != nullptr || found == cameFrom_.end()) continue;
    const IBPort* is = found->second;
    moves_[kept.cable] = {kept.now, kept.was->remotePort, is};
    cameFrom_.erase(found);
    cameFrom_.erase(is);
  }
}

template <typename IsTold>
void Comparison::TellMoves(IsTold isTold) {
  for (const MovedCable& move : moves_) {
    if (move.kept != nullptr && isTold(*move.kept)) changes_.moved.push_back(move);
  }
}

void Comparison::TellTheRest() {
  for (std::size_t i = 0; i < went_.size(); ++i) {
    const Cable& cable = went_[i];
    if (moves_[i].kept == nullptr && nodes_.Now(*cable.end1->node) != nullptr &&
        nodes_.Now(*cable.end2->node) != nullptr) {
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

}  // namespace fabscope::internal
