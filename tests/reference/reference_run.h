#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "reference/plain_fabric.h"
#include "reference/reference_check.h"

// What the parts of the reference share. Switches are indices into PlainFabric::nodes, so that a
// std::set of them is walked in the model's order.
namespace fabscope::internal::reference::detail {

// A finding that becomes a line of the report and of the CSV file.
struct Record {
  bool isMissingLink = false;
  int level = 3;
  std::string description;
};

// A neighborhood or a connectivity group.
struct Group {
  std::uint64_t id = 0;
  std::size_t rank = 0;  // of the spines
  std::set<int> spines;
  std::set<int> lines;
  std::uint64_t totalSpineUplinks = 0;
  std::uint64_t totalInternalLinks = 0;
};

// One run of `check` and all that it has found out so far.
struct Run {
  const PlainFabric& fabric;
  const PlainOptions& options;
  // Both go up whenever a group is made, also for groups that a failure then discards.
  std::uint64_t neighborhoodCount = 0;
  std::uint64_t groupCount = 0;
  std::vector<std::set<int>> ranks = {};           // 0 the roots, the last one the leaves
  std::vector<std::vector<Group>> groups = {};     // by the rank of the spines
  std::set<std::pair<int, int>> faultyPairs = {};  // (smaller, larger), reported once each
  std::vector<Record> records = {};
  std::uint64_t issues = 0;
  std::string out = {};     // what has been written so far
  std::string errors = {};  // reasons of failures
  std::set<std::string> reached = {};

  const PlainNode& Node(int node) const { return fabric.nodes[static_cast<std::size_t>(node)]; }
  int NodeCount() const { return static_cast<int>(fabric.nodes.size()); }
  void Note(const std::string& rule) { reached.insert(rule); }
};

// A cable as one end sees it.
struct Cable {
  int port = 0;
  int remoteNode = 0;
  int remotePort = 0;
};

// The cables, by port number, that count for the tree as seen from this end: not those of FNM ports
// and not asymmetric ones. The far end is any kind of node.
std::vector<Cable> CountedCables(Run& run, int node);
// Those of them that lead to a switch.
std::vector<Cable> SwitchCables(Run& run, int node);

bool IsOnPlane(const PlainNode& node, int plane);
// -1 for a switch without a rank.
int RankOf(const Run& run, int node);
// Whether the groups whose spines lie on that rank are neighborhoods.
bool AreNeighborhoods(const Run& run, std::size_t rank);
std::string Guid(std::uint64_t guid);
// The switch as every report names it.
std::string NodeRecord(Run& run, int node);

// Each step answers whether it succeeded; the reason of a failure is in Run::errors.
// Building gives the whole message instead, or nothing when it succeeded.
std::optional<std::string> Build(Run& run);
std::optional<std::string> BuildByClassification(Run& run);
bool MakeGroups(Run& run, std::size_t rank);
void CheckLinkCounts(Run& run, Group& group);
void CheckAPorts(Run& run, const Group& group);
void CheckFlids(Run& run);

std::string LevelsReport(Run& run);
std::string RecordLines(Run& run);
std::string CsvFile(Run& run);
std::string Dump(Run& run);

}  // namespace fabscope::internal::reference::detail
