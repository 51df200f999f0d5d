// The order of the nodes decides order and numbering of all output. What is found does not depend
// on it, if
//   - the roots are given and stand on one plane (otherwise the first root's plane is kept);
//   - nothing merges: sets merge in their order, and a set that could go into two others goes into
//     the first (a merge percent of 100 forbids all merging);
//   - two switches have at most one cable (of several inside a rank the first is named).
// Without merging even the cross-link check is free of order: a set loses a shared upper switch
// exactly when some set reaches it more than twice as often, and the set that reaches it most often
// never loses it.
//
// One thing remains: an upper switch may stay in several groups, and a record about a cable to it
// names the first of them. So invalid cables are compared by their ends and level, not by group.

#include <algorithm>
#include <gtest/gtest.h>
#include <map>
#include <set>
#include <sstream>
#include <string_view>
#include <utility>

#include "fat_tree/link_errors.h"
#include "property/stage_run.h"
#include "reference/random_source.h"

namespace fabscope::internal {
namespace {

using reference::PlainCase;
using reference::PlainFabric;
using reference::PlainNode;

constexpr std::uint64_t firstSeed = 50'000;
constexpr std::uint64_t seeds = 1'000;

PlainCase CaseFreeOfOrder(std::uint64_t seed) {
  PlainCase what = reference::RandomTreeCase(seed, 6);
  what.options.mergePercent = 100;
  what.options.showGuid = 2;
  for (PlainNode& node : what.fabric.nodes) {
    node.displayName = "n";
    if (node.type == 2) node.flids = {static_cast<int>(node.guid % 7)};
  }
  return what;
}

bool HasParallelCables(const PlainFabric& fabric) {
  for (std::size_t i = 0; i < fabric.nodes.size(); ++i) {
    std::set<int> others;
    for (const auto& [num, port] : fabric.nodes[i].ports) {
      if (port.remoteNode < 0 || port.remoteNode == static_cast<int>(i)) continue;
      if (fabric.nodes[static_cast<std::size_t>(port.remoteNode)].type != 2) continue;
      if (!others.insert(port.remoteNode).second) return true;
    }
  }
  return false;
}

PlainFabric Reordered(const PlainFabric& fabric, std::uint64_t seed) {
  reference::RandomSource random(seed);
  std::vector<std::size_t> order(fabric.nodes.size());
  for (std::size_t i = 0; i < order.size(); ++i) order[i] = i;
  random.Shuffle(order);
  PlainFabric reordered = fabric;
  std::vector<int> placeOf(order.size());
  for (std::size_t place = 0; place < order.size(); ++place) {
    placeOf[order[place]] = static_cast<int>(place);
    reordered.nodes[place] = fabric.nodes[order[place]];
  }
  for (PlainNode& node : reordered.nodes) {
    for (auto& [num, port] : node.ports) {
      if (port.remoteNode >= 0) {
        port.remoteNode = placeOf[static_cast<std::size_t>(port.remoteNode)];
      }
    }
  }
  return reordered;
}

// Findings as texts in which nothing hangs on order or numbering: groups are named by the lowest
// GUID of their lines, lists are sorted.
class Findings {
 public:
  explicit Findings(const StageRun& run) {
    NameGroups(run);
    AddRanksAndGroups(run);
    AddRecords(run);
    AddReport(run.validateText);
    texts_.insert("issues " + std::to_string(run.topology->GetIssuesCount()));
  }
  const std::multiset<std::string>& Texts() const { return texts_; }

 private:
  static std::string Sorted(const std::string& list, const std::string& start) {
    std::multiset<std::string> parts;
    for (std::size_t at = list.find(start); at != std::string::npos;) {
      const std::size_t next = list.find(start, at + 1);
      parts.insert(list.substr(at, next - at));
      at = next;
    }
    std::string sorted = list.substr(0, list.find(start));
    for (const std::string& part : parts) sorted += part;
    return sorted;
  }

  static std::string Guids(const NodeSet& nodes) {
    std::set<std::uint64_t> guids;
    for (const IBNode* node : nodes) guids.insert(node->guid);
    std::string text;
    for (const std::uint64_t guid : guids) text += " " + std::to_string(guid);
    return text;
  }

  void NameGroups(const StageRun& run) {
    for (const FTNeighborhood* group : run.Groups()) {
      const bool isLast = run.topology->IsLastRankNeighborhood(group->GetRank());
      const std::string lines = Guids(group->GetLines());
      const std::string name = "#" + lines.substr(1, lines.find(' ', 1) - 1);
      (isLast ? neighborhoods_ : groups_)[std::to_string(group->GetId())] = name;
    }
  }

  // "Neighborhood 3" and "Connectivity group 3" under their lasting names.
  std::string Named(const std::string& text) const {
    for (const auto& [label, names] : {std::pair{"Neighborhood ", &neighborhoods_},
                                       std::pair{"Connectivity group ", &groups_}}) {
      const std::size_t at = text.find(label);
      if (at == std::string::npos) continue;
      const std::size_t start = at + std::string_view(label).size();
      const std::size_t end = text.find_first_not_of("0123456789", start);
      return text.substr(0, start) + names->at(text.substr(start, end - start)) + text.substr(end);
    }
    return text;
  }

  void AddRanksAndGroups(const StageRun& run) {
    for (const NodeSet& rank : run.topology->GetRanks()) texts_.insert("rank" + Guids(rank));
    for (const FTNeighborhood* group : run.Groups()) {
      texts_.insert("group of" + Guids(group->GetSpines()) + " over" + Guids(group->GetLines()) +
                    ": " + std::to_string(group->GetTotalSpineUplinks()) + " up, " +
                    std::to_string(group->GetTotalInternalLinks()) + " down");
    }
  }

  void AddRecords(const StageRun& run) {
    for (FabricErrGeneral* error : run.errors) {
      const std::string text = error->GetErrorLine();
      if (dynamic_cast<FTMissingLinkError*>(error) != nullptr) {
        texts_.insert(Named(text));
        continue;
      }
      std::multiset<std::string> ends;
      for (std::size_t at = text.find("0x"); at != std::string::npos;
           at = text.find("0x", at + 1)) {
        ends.insert(text.substr(at, text.find(')', at) - at));
      }
      ASSERT_EQ(ends.size(), 2U);
      texts_.insert("invalid " + std::to_string(error->GetLevel()) + ": " + *ends.begin() +
                    " and " + *ends.rbegin());
    }
  }

  // A verdict and its listing are one text.
  void AddReport(const std::string& report) {
    std::string verdict;
    std::istringstream stream(report);
    for (std::string line; std::getline(stream, line);) {
      if (line.starts_with("\t")) {
        verdict += line.substr(line.starts_with("\t\t") ? 2 : 0);
        continue;
      }
      texts_.insert(Finished(verdict));
      verdict = line;
    }
    texts_.insert(Finished(verdict));
  }

  std::string Finished(const std::string& verdict) const {
    const std::string flidLabel = "appears in the following neighborhoods: ";
    if (const std::size_t at = verdict.find(flidLabel); at != std::string::npos) {
      std::set<std::string> names;
      std::istringstream ids(verdict.substr(at + flidLabel.size()));
      for (std::string id; std::getline(ids >> std::ws, id, ',');) {
        names.insert(neighborhoods_.at(id));
      }
      std::string text = verdict.substr(0, at);
      for (const std::string& name : names) text += name + " ";
      return text;
    }
    std::string text;
    std::istringstream entries(Named(verdict));
    for (std::string entry; std::getline(entries, entry, '\t');) text += Sorted(entry, "0x");
    return text;
  }

  std::map<std::string, std::string> neighborhoods_;
  std::map<std::string, std::string> groups_;
  std::multiset<std::string> texts_;
};

TEST(NodeOrder, DecidesOrderAndNumberingOnly) {
  int compared = 0;
  for (std::uint64_t seed = firstSeed; seed < firstSeed + seeds; ++seed) {
    SCOPED_TRACE(seed);
    const PlainCase what = CaseFreeOfOrder(seed);
    if (HasParallelCables(what.fabric)) continue;
    StageRun run(what);
    StageRun reordered({Reordered(what.fabric, seed), what.options, what.kind});
    const bool isValidated = run.RunAll();
    ASSERT_EQ(reordered.RunAll(), isValidated);
    if (!isValidated) continue;
    ++compared;
    ASSERT_EQ(Findings(reordered).Texts(), Findings(run).Texts());
  }
  EXPECT_GE(compared, 400);
}

}  // namespace
}  // namespace fabscope::internal
