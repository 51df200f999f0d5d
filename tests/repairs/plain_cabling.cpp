#include "repairs/plain_cabling.h"

#include <algorithm>
#include <sstream>
#include <vector>

namespace fabscope::internal::plain {

Pair PairOf(const Link& link) { return std::minmax(link.upper.guid, link.lower.guid); }

std::string Text(std::uint64_t guid) {
  std::ostringstream text;
  text << "0x" << std::hex << guid;
  return text.str();
}

std::string Text(const Socket& socket) {
  return Text(socket.guid) + ":" + std::to_string(socket.port);
}

std::string Text(const Link& link) { return Text(link.upper) + " - " + Text(link.lower); }

std::string Cabling::Unplug(const Link& link) {
  const auto found = cables_.find(link.upper);
  if (found == cables_.end() || found->second != link.lower) return "no cable " + Text(link);
  cables_.erase(link.upper);
  cables_.erase(link.lower);
  return {};
}

std::string Cabling::Plug(const Link& link) {
  for (const Socket& end : {link.upper, link.lower}) {
    const auto owner = std::find_if(fabric_->switches.begin(), fabric_->switches.end(),
                                    [&](const Switch& node) { return node.guid == end.guid; });
    if (owner == fabric_->switches.end()) return "no switch has " + Text(end);
    if (end.port < 1 || end.port > owner->ports) return "no port " + Text(end);
    if (cables_.contains(end) || fabric_->taken.contains(end)) return Text(end) + " is not free";
  }
  if (link.upper == link.lower) return Text(link) + " has one end only";
  cables_[link.upper] = link.lower;
  cables_[link.lower] = link.upper;
  return {};
}

std::string Cabling::Do(const Changes& changes) {
  const auto cablesBefore = cables_;
  std::string problem;
  for (const Change& change : changes) {
    if (problem.empty() && change.before) problem = Unplug(*change.before);
  }
  for (const Change& change : changes) {
    if (problem.empty() && change.after) problem = Plug(*change.after);
  }
  if (!problem.empty()) cables_ = cablesBefore;
  return problem;
}

Pairs Cabling::PairsJoined() const {
  Pairs pairs;
  for (const auto& [end, far] : cables_) {
    if (end.guid < far.guid) pairs.insert({end.guid, far.guid});
  }
  return pairs;
}

std::set<std::uint64_t> Cabling::Lonely() const {
  std::map<std::uint64_t, std::set<std::uint64_t>> neighbors;
  for (const auto& [end, far] : cables_) neighbors[end.guid].insert(far.guid);
  for (const auto& [a, b] : fabric_->joinedOtherwise) {
    neighbors[a].insert(b);
    neighbors[b].insert(a);
  }
  std::set<std::uint64_t> withHosts;
  for (const Switch& node : fabric_->switches) {
    if (node.hasHosts) withHosts.insert(node.guid);
  }
  std::set<std::uint64_t> lonely;
  std::set<std::uint64_t> visited;
  for (const std::uint64_t start : withHosts) {
    if (visited.contains(start)) continue;
    int hostSwitches = 0;
    std::vector<std::uint64_t> open{start};
    visited.insert(start);
    while (!open.empty()) {
      const std::uint64_t guid = open.back();
      open.pop_back();
      if (withHosts.contains(guid)) ++hostSwitches;
      for (const std::uint64_t next : neighbors[guid]) {
        if (visited.insert(next).second) open.push_back(next);
      }
    }
    if (hostSwitches == 1) lonely.insert(start);
  }
  return lonely;
}

}  // namespace fabscope::internal::plain
