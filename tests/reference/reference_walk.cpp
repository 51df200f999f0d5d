#include <cstddef>
#include <cstdint>
#include <iomanip>
#include <sstream>
#include <string>
#include <vector>

#include "reference/reference_run.h"

namespace fabscope::internal::reference::detail {

std::vector<Cable> CountedCables(Run& run, int node) {
  std::vector<Cable> cables;
  const PlainNode& here = run.Node(node);
  for (const auto& [number, port] : here.ports) {
    if (number < 1 || number > here.numPorts || port.remoteNode < 0) continue;
    if (port.fnm) {
      run.Note("cable at an FNM port left out");
    } else if (port.fnm1) {
      run.Note("cable at an FNM1 port left out");
    } else if (!port.symmetric) {
      run.Note("asymmetric cable left out");
    } else {
      cables.push_back({number, port.remoteNode, port.remotePort});
    }
  }
  return cables;
}

std::vector<Cable> SwitchCables(Run& run, int node) {
  std::vector<Cable> cables;
  for (const Cable& cable : CountedCables(run, node)) {
    if (run.Node(cable.remoteNode).type == 2) cables.push_back(cable);
  }
  return cables;
}

bool IsOnPlane(const PlainNode& node, int plane) { return node.planes.contains(plane); }

int RankOf(const Run& run, int node) {
  for (std::size_t rank = 0; rank < run.ranks.size(); ++rank) {
    if (run.ranks[rank].contains(node)) return static_cast<int>(rank);
  }
  return -1;
}

bool AreNeighborhoods(const Run& run, std::size_t rank) { return run.groups.size() == rank + 1; }

std::string Guid(std::uint64_t guid) {
  std::ostringstream text;
  text << "0x" << std::hex << std::setfill('0') << std::setw(16) << guid;
  return text.str();
}

std::string NodeRecord(Run& run, int node) {
  const PlainNode& here = run.Node(node);
  const std::string asic = here.asic.empty() ? "" : "/" + here.asic;
  if (!asic.empty()) run.Note("node text with an ASIC");

  std::string text;
  if (run.options.showGuid == 1) {
    text = Guid(here.systemGuid) + asic + " -- ";
    run.Note("node text with the system GUID");
  } else if (run.options.showGuid == 2) {
    text = Guid(here.guid) + " -- ";
    run.Note("node text with the node GUID");
  } else {
    run.Note("node text without GUID");
  }

  const std::size_t a = here.displayName.find("/A");
  const std::size_t u = here.displayName.find("/U");
  if (a != std::string::npos) {
    run.Note(u < a ? "name cut at /A though /U comes first" : "name cut at /A");
    return text + here.displayName.substr(0, a) + asic;
  }
  if (u != std::string::npos) {
    run.Note("name cut at /U");
    return text + here.displayName.substr(0, u) + asic;
  }
  return text + here.displayName + asic;
}

}  // namespace fabscope::internal::reference::detail
