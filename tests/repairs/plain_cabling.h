#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <utility>

#include "repairs/plain_repair.h"

namespace fabscope::internal::plain {

// Two switches, the lesser GUID first.
using Pair = std::pair<std::uint64_t, std::uint64_t>;
using Pairs = std::multiset<Pair>;

Pair PairOf(const Link& link);

// For complaints: "0x12", "0x12:3", "0x12:3 - 0x13:1".
std::string Text(std::uint64_t guid);
std::string Text(const Socket& socket);
std::string Text(const Link& link);

// A fabric's cables while steps are done.
class Cabling {
 public:
  explicit Cabling(const Fabric& fabric) : fabric_(&fabric), cables_(fabric.cables) {}

  // First unplugs every cable that goes, then plugs every cable that comes. Answers what cannot be
  // done; the cabling is then as it was.
  std::string Do(const Changes& changes);

  const std::map<Socket, Socket>& Cables() const { return cables_; }
  // Each cable once; a cable from a switch to itself joins no pair.
  Pairs PairsJoined() const;
  // Switches with hosts that no cable connects, over however many switches, to another one.
  std::set<std::uint64_t> Lonely() const;

 private:
  std::string Unplug(const Link& link);
  std::string Plug(const Link& link);

  const Fabric* fabric_;
  std::map<Socket, Socket> cables_;
};

}  // namespace fabscope::internal::plain
