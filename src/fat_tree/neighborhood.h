#pragma once

#include <cstdint>
#include <list>
#include <map>
#include <ostream>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "fabric/fabric_err_general.h"
#include "fabric/ib_port.h"
#include "fat_tree/containers/node_pairs.h"
#include "fat_tree/containers/node_set.h"
#include "fat_tree/findings.h"

namespace fabscope::internal {

class FTTopology;

// FLIDs, each with the ids of the neighborhoods in which it occurs.
using FLIDMap = std::map<std::uint16_t, std::set<std::uint64_t>>;

// A group of switches that belong together: `spines` on one rank and `lines` on the next rank down.
// Every spine should be cabled to every line, and all members should have equal link counts. It is
// called a neighborhood on the last pair of ranks, a connectivity group above.
//
// The checks write findings to the stream they are given and count them in the topology. They
// answer 0, or 4 for a null switch with the reason in GetErrorText().
class FTNeighborhood {
 public:
  FTNeighborhood(FTTopology* owner, std::uint64_t number, std::uint64_t spinesRank)
      : topology(owner), id(number), rank(spinesRank) {}
  FTNeighborhood(const FTNeighborhood&) = delete;
  FTNeighborhood& operator=(const FTNeighborhood&) = delete;

  void AddNodes(const std::list<const IBNode*>& nodes, bool toSpines);

  // A record for every spine and line that are not among the connected pairs. Always answers 0; a
  // null switch ends the report.
  int MissingLinksReport(std::vector<FabricErrGeneral*>& errors,
                         const NodePairs& connectedPairs) const;

  // Link counts (neighborhood_links.cpp). Nothing is appended to `errors`: these findings are text.
  int CheckUpDownLinks(std::vector<FabricErrGeneral*>& errors, std::ostream& stream);
  // Also sums up the totals below; twice when run twice.
  int CheckBlockingConfiguration(std::vector<FabricErrGeneral*>& errors, std::ostream& stream);
  int CheckSetLinks(const NodeSet& nodes, std::uint64_t nodesRank, bool isUp,
                    std::vector<FabricErrGeneral*>& errors, std::ostream& stream);

  // GUIDs of switches by their link count, in the order in which they were visited.
  using CountMap = std::map<std::int32_t, std::vector<std::uint64_t>>;
  void SetLinksReport(std::ostream& stream, const CountMap& counts, std::uint64_t nodesRank,
                      bool isUp);
  void ReportToStream(std::ostream& stream, const CountMap& counts, unsigned perLine,
                      const std::string& linkName) const;
  // Leaves with different numbers of hosts are normal enough to be a warning only.
  bool IsWarning(std::uint64_t nodesRank, bool isUp) const;

  // Aggregated ports (neighborhood_aports.cpp).
  int CheckAsymmetricAPorts(std::ostream& stream);
  int CheckInternalAPorts(std::ostream& stream);
  int CheckExternalAPorts(std::ostream& stream);

  // Adds the FLIDs of the lines (topology_flids.cpp).
  int CollectFLIDs(FLIDMap& flids);

  // The group with its switches (topology_listing.cpp).
  int DumpToStream(std::ostream& stream) const;
  int DumpNodesToStream(std::ostream& stream, const NodeSet& nodes, const std::string& name) const;

  std::uint64_t GetId() const { return id; }
  std::uint64_t GetRank() const { return rank; }
  const NodeSet& GetSpines() const { return spines; }
  const NodeSet& GetLines() const { return lines; }
  // How many cables all spines have up and down. 0 until CheckBlockingConfiguration and on rank 0.
  std::uint64_t GetTotalSpineUplinks() const { return totalSpineUplinks; }
  std::uint64_t GetTotalInternalLinks() const { return totalInternalLinks; }
  bool Holds(const IBNode* node) const { return spines.contains(node) || lines.contains(node); }
  std::string GetErrorText() const { return errStream.str(); }

 private:
  friend struct TestPeer;

  bool IsNeighborhood() const;
  // The switches of all numbers of links but the greatest, the most first.
  std::vector<LinkCount> OthersOf(const CountMap& counts) const;

  NodeSet spines;
  NodeSet lines;
  FTTopology* topology;  // not owned
  std::uint64_t id;
  std::uint64_t rank;  // of the spines
  // Filled by the blocking test, so both stay 0 on rank 0: roots have no up-links to weigh.
  std::uint64_t totalSpineUplinks = 0;
  std::uint64_t totalInternalLinks = 0;
  std::ostringstream errStream;
};

// Deletes every pointer of a vector of vectors and clears it.
template <typename T>
void release_container_data(std::vector<std::vector<T*>>& container) {
  for (std::vector<T*>& entries : container) {
    for (T* entry : entries) delete entry;
  }
  container.clear();
}

}  // namespace fabscope::internal
