#include <cstddef>
#include <cstdint>
#include <iterator>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "reference/reference_run.h"

namespace fabscope::internal::reference::detail {
namespace {

struct UpDown {
  int up = 0;
  int down = 0;
};

bool IsOnRank(const Run& run, int node, std::size_t rank) { return run.ranks[rank].contains(node); }

UpDown CountsOfRoot(Run& run, int node) {
  UpDown counts;
  for (const Cable& cable : SwitchCables(run, node)) {
    if (IsOnRank(run, cable.remoteNode, 1)) {
      ++counts.down;
    } else {
      run.Note("root's link past rank 1 not counted");
    }
  }
  return counts;
}

// Whether the cable to a host is one more down-link of the leaf. A leaf of the multi-ASIC family
// counts a host once when it is reached through ports that belong to a group.
bool CountsAsDownLink(Run& run, const PlainNode& leaf, const Cable& cable, std::set<int>& hosts) {
  if (run.Node(cable.remoteNode).special) {
    run.Note("special host not counted");
    return false;
  }
  if (!leaf.multiAsic) return true;
  const auto& remotePorts = run.Node(cable.remoteNode).ports;
  const auto remotePort = remotePorts.find(cable.remotePort);
  if (remotePort == remotePorts.end() || !remotePort->second.group) {
    run.Note("multi-ASIC leaf: host port without group record counted each time");
    return true;
  }
  if (*remotePort->second.group < 1) {
    run.Note("multi-ASIC leaf: host port of group below 1 counted each time");
    return true;
  }
  const bool isNew = hosts.insert(cable.remoteNode).second;
  run.Note(isNew ? "multi-ASIC leaf: host counted" : "multi-ASIC leaf: host not counted again");
  return isNew;
}

UpDown CountsOfLeaf(Run& run, int node) {
  UpDown counts;
  std::set<int> hosts;
  for (const Cable& cable : CountedCables(run, node)) {
    const int type = run.Node(cable.remoteNode).type;
    if (type == 1) {
      if (CountsAsDownLink(run, run.Node(node), cable, hosts)) ++counts.down;
    } else if (type == 2) {
      if (IsOnRank(run, cable.remoteNode, run.ranks.size() - 2)) {
        ++counts.up;
      } else {
        run.Note("leaf's link past the rank above not counted");
      }
    } else {
      run.Note("router not counted");
    }
  }
  return counts;
}

UpDown CountsOfMiddle(Run& run, int node, std::size_t rank) {
  UpDown counts;
  for (const Cable& cable : SwitchCables(run, node)) {
    if (IsOnRank(run, cable.remoteNode, rank - 1)) {
      ++counts.up;
    } else if (IsOnRank(run, cable.remoteNode, rank + 1)) {
      ++counts.down;
    } else {
      run.Note("middle switch's link past its neighbour ranks not counted");
    }
  }
  return counts;
}

UpDown CountLinks(Run& run, int node, std::size_t rank) {
  if (rank == 0) return CountsOfRoot(run, node);
  if (rank + 1 == run.ranks.size()) return CountsOfLeaf(run, node);
  return CountsOfMiddle(run, node, rank);
}

std::string Label(const Run& run, const Group& group) {
  return (AreNeighborhoods(run, group.rank) ? "Neighborhood " : "Connectivity group ") +
         std::to_string(group.id) + ": ";
}

void CheckBlocking(Run& run, Group& group) {
  for (const int spine : group.spines) {
    const UpDown counts = CountLinks(run, spine, group.rank);
    group.totalSpineUplinks += static_cast<std::uint64_t>(counts.up);
    group.totalInternalLinks += static_cast<std::uint64_t>(counts.down);
  }
  if (group.totalSpineUplinks >= group.totalInternalLinks) {
    run.Note(group.totalSpineUplinks == group.totalInternalLinks ? "equal totals do not block"
                                                                 : "more uplinks do not block");
    return;
  }
  run.Note("suspected blocking configuration");
  run.out += "-W- " + Label(run, group) +
             "suspected blocking configuration  --  total number of spine's uplinks " +
             std::to_string(group.totalSpineUplinks) +
             " is less then total number of internal links " +
             std::to_string(group.totalInternalLinks) + "\n";
  ++run.issues;
}

// The switches that have not the expected count, eight records on a line.
void ListDeviating(Run& run, const std::map<int, std::vector<int>>& byCount,
                   const std::string& linkName) {
  for (auto entry = std::next(byCount.rbegin()); entry != byCount.rend(); ++entry) {
    run.out += "\n\t " + std::to_string(entry->first) + " " + linkName + ": ";
    int written = 0;
    for (const int node : entry->second) {
      run.out += NodeRecord(run, node) + " ";
      ++written;
      if (written % 8 == 0) run.out += "\n\t\t";
    }
    if (written == 8) run.Note("exactly eight deviating switches");
    if (written > 8) run.Note("more than eight deviating switches");
  }
}

void CheckSetLinks(Run& run, const Group& group, bool ofSpines, bool isUp) {
  const std::set<int>& nodes = ofSpines ? group.spines : group.lines;
  const std::size_t rank = ofSpines ? group.rank : group.rank + 1;
  std::map<int, std::vector<int>> byCount;
  for (const int node : nodes) {
    const UpDown counts = CountLinks(run, node, rank);
    byCount[isUp ? counts.up : counts.down].push_back(node);
  }
  if (byCount.empty()) return;

  const std::string setName = ofSpines ? "spines" : "lines";
  const std::string linkName = isUp ? "uplinks" : "downlinks";
  const bool isNeighborhood = AreNeighborhoods(run, group.rank);
  const std::string where = isNeighborhood ? " of a neighborhood" : " of a connectivity group";
  const int greatest = byCount.rbegin()->first;
  if (byCount.size() == 1) {
    run.Note(setName + where + " agree in " + linkName);
    run.out += "-I- " + Label(run, group) + "all " + setName + " have the same number of " +
               linkName + ": " + std::to_string(greatest) + "\n";
    return;
  }
  run.Note(setName + where + " differ in " + linkName);
  if (byCount.size() > 2) run.Note("three or more different counts");
  const bool isWarning = !isUp && isNeighborhood && !ofSpines;
  run.out += (isWarning ? "-W- " : "-E- ") + Label(run, group) + setName +
             " with different number of " + linkName + " (expected  " + std::to_string(greatest) +
             " " + linkName + ")";
  ListDeviating(run, byCount, linkName);
  run.out += "\n";
  run.issues += byCount.size();
}

// A port that the checks of aggregated ports look at.
bool IsEligible(Run& run, const PlainPort& port) {
  if (port.planeMultiplicity <= 1) return false;
  if (!port.inSubFabric) {
    run.Note("plane port outside the sub-fabric passed over");
    return false;
  }
  if (port.fnm || port.fnm1) {
    run.Note(port.fnm ? "plane port of the FNM kind passed over"
                      : "plane port of the FNM1 kind passed over");
    return false;
  }
  if (port.remoteNode < 0) {
    run.Note("plane port without cable passed over");
    return false;
  }
  return true;
}

bool IsAsymmetric(const Run& run, const PlainPort& port) {
  return port.aport >= 0 && run.fabric.aportAsymmetry[static_cast<std::size_t>(port.aport)] != 0;
}

PlainPort RemotePort(const Run& run, const PlainPort& port) {
  const auto& ports = run.Node(port.remoteNode).ports;
  const auto remote = ports.find(port.remotePort);
  return remote == ports.end() ? PlainPort{} : remote->second;
}

void WriteAPortLine(Run& run, const Group& group, int found, const std::string& where) {
  run.issues += static_cast<std::uint64_t>(found);
  run.out += "-W- " + Label(run, group) + "found " + std::to_string(found) + " asymmetric APort" +
             (found == 1 ? "" : "s") + where + "\n";
}

void CheckInternalAPorts(Run& run, const Group& group) {
  int found = 0;
  for (const int spine : group.spines) {
    const PlainNode& here = run.Node(spine);
    for (const auto& [number, port] : here.ports) {
      if (number < 1 || number > here.numPorts || !IsEligible(run, port)) continue;
      if (!group.lines.contains(port.remoteNode)) {
        if (IsAsymmetric(run, port)) run.Note("asymmetric APort out of the group passed over");
        continue;
      }
      if (IsAsymmetric(run, port)) {
        run.Note("asymmetric APort of a spine");
        ++found;
      }
      if (IsAsymmetric(run, RemotePort(run, port))) {
        run.Note("asymmetric APort of a line");
        ++found;
      }
    }
  }
  if (found == 0) return;
  const std::string kind =
      AreNeighborhoods(run, group.rank) ? "neighborhood" : "connectivity group";
  run.Note((found == 1 ? "one asymmetric APort inside a " : "asymmetric APorts inside a ") + kind);
  WriteAPortLine(run, group, found, "");
}

void CheckExternalAPorts(Run& run, const Group& group) {
  int found = 0;
  for (const int line : group.lines) {
    const PlainNode& here = run.Node(line);
    std::set<int> seen;
    for (const auto& [number, port] : here.ports) {
      if (number < 1 || number > here.numPorts || !IsEligible(run, port)) continue;
      if (run.Node(port.remoteNode).type != 1 || !IsAsymmetric(run, port)) continue;
      if (seen.insert(port.aport).second) {
        ++found;
      } else {
        run.Note("asymmetric APort to hosts not counted again");
      }
    }
  }
  if (found == 0) return;
  run.Note(found == 1 ? "one asymmetric APort to hosts" : "asymmetric APorts to hosts");
  WriteAPortLine(run, group, found, " connected to CAs");
}

}  // namespace

void CheckLinkCounts(Run& run, Group& group) {
  run.out += "\n";
  if (group.rank != 0) {
    CheckBlocking(run, group);
    CheckSetLinks(run, group, true, true);
  }
  CheckSetLinks(run, group, true, false);
  CheckSetLinks(run, group, false, true);
  CheckSetLinks(run, group, false, false);
}

void CheckAPorts(Run& run, const Group& group) {
  CheckInternalAPorts(run, group);
  if (AreNeighborhoods(run, group.rank)) CheckExternalAPorts(run, group);
}

void CheckFlids(Run& run) {
  std::map<int, std::set<std::uint64_t>> groupsOfFlid;
  for (const Group& group : run.groups.back()) {
    for (const int line : group.lines) {
      for (const int flid : run.Node(line).flids) {
        if (!groupsOfFlid[flid].insert(group.id).second) {
          run.Note("FLID of two lines of one neighborhood");
        }
      }
    }
  }
  run.out += "\n\n";
  bool isShared = false;
  for (const auto& [flid, ids] : groupsOfFlid) {
    if (ids.size() < 2) {
      run.Note("FLID of one neighborhood");
      continue;
    }
    run.Note(ids.size() == 2 ? "FLID of two neighborhoods" : "FLID of more than two neighborhoods");
    std::string list;
    for (const std::uint64_t id : ids) list += (list.empty() ? "" : ", ") + std::to_string(id);
    run.out += "-W- FLID=" + std::to_string(flid) +
               " appears in the following neighborhoods: " + list + "\n";
    ++run.issues;
    isShared = true;
  }
  if (isShared) {
    run.out +=
        "-I- Additional information related to FLIDs could be found in the fabscope2.flid file "
        "generated by the Router stage\n";
  }
}

}  // namespace fabscope::internal::reference::detail
