#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <ostream>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "fabric/fabric_err_general.h"
#include "fabric/ib_fabric.h"
#include "fat_tree/classification.h"
#include "fat_tree/containers/node_set.h"
#include "fat_tree/containers/node_table.h"
#include "fat_tree/containers/pairs_container.h"
#include "fat_tree/findings.h"
#include "fat_tree/link_errors.h"
#include "fat_tree/ranked_switches.h"
#include "fat_tree/tree_links.h"
#include "fat_tree/up_down_links.h"
#include "platform/reg_exp.h"

namespace fabscope::internal {

class FTNeighborhood;

// A fabric's switches recognised as a fat tree. It is built once (one of the four Build forms),
// validated once, perhaps dumped, and destroyed; it reads the fabric and never changes it.
//
// Unless stated otherwise an operation answers a status (fat_tree/status.h) and, when that is not
// 0, has written its reason to the topology's error stream. Findings in the cabling are no
// failures: they go to the finding sink, or are records in `errors`, which the caller owns, or
// lines on the output stream.
class FTTopology {
 public:
  // How all texts of this tree name switches: see GetNodeRecord. Set before it is built.
  int Show_GUID = 0;

  // Fabric and stream must outlive the topology. `mergePercent` (0 to 100) is how alike
  // two sets of up-links must be to count as one group: see FTUpHopHistogram.
  FTTopology(const IBFabric* builtFabric, std::ostream* reportStream, int mergePercent);
  FTTopology(const FTTopology&) = delete;
  FTTopology& operator=(const FTTopology&) = delete;
  ~FTTopology();

  // Where every finding of the validation goes, in the order in which they are told. With a sink
  // nothing is appended to `errors`: there can be millions of records, and each can be told from
  // its finding. Set before Validate; must outlive it.
  void SetFindingSink(FindingSink sink) { findingSink = std::move(sink); }
  // An error record, for the sink or for `errors`.
  template <RecordKind Kind>
  void Record(const Kind& finding, std::vector<FabricErrGeneral*>& errors) const {
    if (findingSink) {
      findingSink(finding);
    } else {
      std::unique_ptr<FabricErrGeneral> record = MakeRecord(finding, Show_GUID);
      errors.push_back(record.get());
      static_cast<void>(record.release());
    }
  }
  // Writes the finding's lines and counts its issues.
  template <IssueKind Kind>
  void Report(Kind finding, std::ostream& stream) {
    finding.WriteLines(stream, Show_GUID);
    issuesCount += finding.Issues();
    if (findingSink) findingSink(std::move(finding));
  }

  // --- Building the ranks. On failure `message` says why, and the topology must not be validated.

  // Roots: the switches that the subnet manager gave rank 0.
  int Build(std::vector<FabricErrGeneral*>& errors, std::string& message);
  // Roots: the switches whose name the expression matches.
  int Build(std::vector<FabricErrGeneral*>& errors, std::string& message, regExp& rootsRegExp);
  // Roots: the given switches, of which the first one fixes the plane. Writes nothing to the output
  // stream.
  int Build(std::vector<FabricErrGeneral*>& errors, std::string& message,
            const NodeSet& givenRoots);
  // Roots found by themselves: classifies the switches by distance from one leaf after another
  // until `equalClassifications` of them agree, at most `retries` times after the first.
  int Build(std::vector<FabricErrGeneral*>& errors, std::string& message, int retries,
            int equalClassifications);

  // Adds the switches that the subnet manager gave rank 0. The first one fixes the plane, others on
  // other planes are left out.
  int GetRootsBySMDB(NodeSet& roots);
  // Likewise those whose name the expression matches.
  int GetNodes(NodeSet& nodes, regExp& rootsRegExp);
  // Ranks every switch by its hop distance from the roots; `roots` is emptied.
  int FillRanksFromRoots(NodeSet& roots);
  // The switch with most links to hosts, from which the search for roots starts; null if none has
  // any. Keeps the link counts of all such switches.
  const IBNode* GetFirstLeaf();

  // --- Validation.

  // Groups the switches and runs all checks, up to the first failure, which `message` tells.
  int Validate(std::vector<FabricErrGeneral*>& errors, std::string& message);
  // The first step of it: groups on every pair of ranks. Appends all records that there are.
  int CreateNeighborhoods(std::vector<FabricErrGeneral*>& errors);
  // A part of that: the groups of a rank and the next one down.
  int CreateNeighborhoodsOnRank(std::vector<FabricErrGeneral*>& errors, std::uint64_t rank);
  // The number of a new group: neighborhoods and connectivity groups each count from 0.
  std::uint64_t NextGroupId(bool isNeighborhood) {
    return isNeighborhood ? neighborhoodId++ : groupId++;
  }
  // Takes over the groups of a rank; the caller is handed those it had before.
  int SetNeighborhoodsOnRank(std::vector<FTNeighborhood*>& groups, std::size_t rank);
  // The second step: the least ratio of links, then the checks of each group. Appends no records.
  int CheckUpDownLinksAndAPorts(std::vector<FabricErrGeneral*>& errors);
  // The same without the ratio.
  int CheckNeighborhoodsLinksAndAPorts(std::vector<FabricErrGeneral*>& errors);
  // The last step.
  int CheckFLIDs();

  // --- Link accounting.

  // Counts the links of a switch that lies on that rank. With rank 0, rank 1 must exist.
  UpDownLinks CalculateSwitchUpDownLinks(std::uint64_t rank, const IBNode& node) const;
  // The same, counted once for each switch. A later call with another rank answers the first count.
  UpDownLinks GetSwitchLinksData(std::uint64_t rank, const IBNode& node);
  // The least ratio of up-links, weighted by lane speed in Gb/s, to down-links.
  int CalculateUpDownLinksMinRatio();

  // --- Questions.

  // The switches of a rank, or null (with the reason in the error stream) beyond the last.
  const NodeSet* GetNodesOnRank(std::size_t rank);
  // The rank of a switch, or -1 when it has none.
  int GetNodeRank(const IBNode* node) const { return ranks.RankOf(node); }
  const RankedSwitches& GetRankedSwitches() const { return ranks; }
  // Whether groups of that rank are called neighborhoods. True for the last rank that has groups.
  bool IsLastRankNeighborhood(std::size_t rank) const;
  // The number of planes as the first root sees it; 0 without a root. `ranks` must not be empty.
  int GetPlanesNumber() const;
  // Link counts kept by GetFirstLeaf, or null for a switch without hosts.
  const FTClassification::NodeData* GetClassificationNodeData(const IBNode* node) const;
  // Pairs of switches whose faulty link has been recorded, each once over all ranks.
  bool IsReportedLinkIssue(const IBNode* a, const IBNode* b) const;
  void AddNewLinkIssue(const IBNode* a, const IBNode* b);

  const IBFabric& GetFabric() const { return *fabric; }
  // The fabric's tree links, read from its ports when they are first asked for; what becomes of the
  // ports later is not seen.
  const TreeLinks& GetTreeLinks() const;
  // Takes the links that another topology of the same fabric has read.
  void ShareTreeLinks(const FTTopology& other);
  int GetUpHopMergePercent() const { return upHopMergePercent; }
  // The switches by rank, the roots first; empty before a tree is built.
  const std::vector<NodeSet>& GetRanks() const { return ranks.Sets(); }
  // By the rank of their spines. The topology owns them.
  const std::vector<std::vector<FTNeighborhood*>>& GetNeighborhoods() const {
    return neighborhoods;
  }
  // How many findings there are beside the records.
  std::uint64_t GetIssuesCount() const { return issuesCount; }
  void AddIssues(std::uint64_t count) { issuesCount += count; }
  // The reasons of all failures until now.
  std::string GetErrorText() const { return errStream.str(); }

  // --- Reports.

  // The number of levels and the size of each rank, one line each.
  std::string LevelsReport() const;
  // Ranks and groups with their switches, to the output stream.
  int Dump();
  int DumpNodesToStream();
  int DumpNeighborhoodsToStream();

 private:
  friend struct TestPeer;

  int CollectRoots(NodeSet& roots, const std::function<bool(const IBNode&)>& isRoot);

  const IBFabric* fabric;  // not owned
  // By rank, one entry for every rank but the last. Owned.
  std::vector<std::vector<FTNeighborhood*>> neighborhoods;
  NodeTable<UpDownLinks> switchUpDownLinks{{-1, -1}};  // a memo, never cleared
  RankedSwitches ranks;                                // a switch has at most one
  PairsContainer<const IBNode*> linkIssues;
  std::uint64_t neighborhoodId = 0;                                  // of the next group
  std::uint64_t groupId = 0;                                         // likewise
  double minUpDownRatio = 0.0;                                       // 0.0: not set yet
  std::ostream* outStream;                                           // not owned
  NodeTable<FTClassification::NodeData> classificationNodeData{{}};  // of switches with hosts
  int upHopMergePercent;
  std::uint64_t issuesCount = 0;
  FindingSink findingSink;       // may be empty
  std::ostringstream errStream;  // never cleared: a message carries all that went before
  mutable std::shared_ptr<const TreeLinks> treeLinks;  // see GetTreeLinks
};

}  // namespace fabscope::internal
