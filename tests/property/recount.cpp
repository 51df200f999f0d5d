#include "property/recount.h"

#include <iomanip>
#include <set>
#include <sstream>

namespace fabscope::internal {

std::vector<const IBPort*> PortsOf(const IBNode& node) {
  std::vector<const IBPort*> ports;
  for (const IBPort& port : node.ports) ports.push_back(&port);
  return ports;
}

const IBNode* CountedSwitch(const IBPort& port) {
  if (port.fnm || port.fnm1 || !port.symmetric || port.remotePort == nullptr) return nullptr;
  const IBNode* far = port.remotePort->node;
  return far->nodeType == 2 ? far : nullptr;
}

Recount::Recount(const FTTopology& topology) : rankCount_(topology.GetRanks().size()) {
  int rank = 0;
  for (const NodeSet& nodes : topology.GetRanks()) {
    for (const IBNode* node : nodes) rankOf_[node] = rank;
    ++rank;
  }
}

int Recount::RankOf(const IBNode* node) const {
  const auto found = rankOf_.find(node);
  return found == rankOf_.end() ? -1 : found->second;
}

int Recount::HostsOf(const IBNode& leaf) const {
  int cables = 0;
  std::set<std::uint64_t> groupedHosts;
  for (const IBPort* port : PortsOf(leaf)) {
    if (port->fnm || port->fnm1 || !port->symmetric || port->remotePort == nullptr) continue;
    const IBNode& host = *port->remotePort->node;
    if (host.nodeType != 1 || host.special) continue;
    const bool isGrouped =
        port->remotePort->GetGroup() && port->remotePort->GetGroup()->number >= 1;
    if (leaf.multiAsic && isGrouped) {
      groupedHosts.insert(host.guid);
    } else {
      ++cables;
    }
  }
  return cables + static_cast<int>(groupedHosts.size());
}

Links Recount::LinksOf(const IBNode& node) const {
  const int rank = RankOf(&node);
  Links links;
  for (const IBPort* port : PortsOf(node)) {
    const IBNode* far = CountedSwitch(*port);
    const int farRank = far != nullptr ? RankOf(far) : -1;
    if (farRank >= 0 && farRank == rank - 1) ++links.up;
    if (farRank >= 0 && farRank == rank + 1) ++links.down;
  }
  if (rank > 0 && rank + 1 == static_cast<int>(rankCount_)) links.down = HostsOf(node);
  return links;
}

std::string NameWithGuid(const IBNode& node) {
  const std::string asic = node.getVortaSwitchASIC().empty() ? "" : "/" + node.getVortaSwitchASIC();
  std::string name(node.getAlternativeName());
  for (const char* cut : {"/A", "/U"}) {
    if (const std::size_t at = name.find(cut); at != std::string::npos) {
      name.resize(at);
      break;
    }
  }
  std::ostringstream text;
  text << "0x" << std::hex << std::setw(16) << std::setfill('0') << node.guid << " -- " << name
       << asic;
  return text.str();
}

}  // namespace fabscope::internal
