#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace fabscope::internal::reference {

// A fabric as plain data: what random fabrics are made as, and all that the reference reads. It
// shares nothing with the model that the stage reads; both are made from it independently.

struct PlainPort {
  // The far end of the cable: index into PlainFabric::nodes (-1 without a cable) and port number.
  int remoteNode = -1;
  int remotePort = 0;

  std::uint32_t state = 1;
  std::uint32_t speed = 0;
  bool symmetric = true;
  bool fnm = false;
  bool fnm1 = false;
  bool inSubFabric = true;
  int planeMultiplicity = 1;
  std::optional<int> group;  // absent: no group record
  int aport = -1;            // index into PlainFabric::aportAsymmetry; -1: in no aggregated port
};

struct PlainNode {
  std::uint64_t guid = 0;
  std::uint64_t systemGuid = 0;
  int type = 2;  // 1 channel adapter, 2 switch, 3 router
  std::string name;
  std::string displayName;
  int numPorts = 0;
  int smdbRank = 255;
  bool special = false;
  bool multiAsic = false;
  std::string asic;
  int planesNumber = 1;
  int suitablePlane = 1;
  std::set<int> planes{1};
  std::set<int> flids;
  // By number. Ports that are not listed have neither a cable nor an attribute of their own.
  std::map<int, PlainPort> ports;
};

// The order of `nodes` is the model's order.
struct PlainFabric {
  std::vector<PlainNode> nodes;
  std::vector<std::uint64_t> aportAsymmetry;  // by aggregated port
};

enum class PlainRoots { Auto, Smdb, Regex };

// What the user asks for.
struct PlainOptions {
  PlainRoots roots = PlainRoots::Auto;
  std::string rootRegex;  // when roots is Regex: a POSIX extended regular expression
  int retries = 10;
  int equal = 2;
  int mergePercent = 70;
  int showGuid = 0;  // 0 none, 1 system, 2 node
};

}  // namespace fabscope::internal::reference
