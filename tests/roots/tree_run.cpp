#include "roots/tree_run.h"

#include <algorithm>
#include <limits>
#include <memory>
#include <sstream>
#include <string_view>

#include "check/check.h"
#include "fat_tree/neighborhood.h"
#include "fat_tree/topology.h"

namespace fabscope::internal {
namespace {

// The numbers of groups go up over all topologies of a process, those of neighborhoods and of
// connectivity groups apart.
class FirstGroups {
 public:
  explicit FirstGroups(const FTTopology& topology) {
    for (const auto& groups : topology.GetNeighborhoods()) {
      for (const FTNeighborhood* group : groups) {
        std::uint64_t& least =
            topology.IsLastRankNeighborhood(group->GetRank()) ? neighborhood_ : connectivity_;
        least = std::min(least, group->GetId());
      }
    }
  }

  // The text with the numbers as if the topology were the first.
  std::string NumberFromZero(std::string text) const {
    Renumber(text, "eighborhood", neighborhood_);
    Renumber(text, "onnectivity group", connectivity_);
    return text;
  }

 private:
  // Takes `first` off every number that stands behind the word, with or without a colon.
  static void Renumber(std::string& text, std::string_view word, std::uint64_t first) {
    for (std::size_t at = text.find(word); at != std::string::npos; at = text.find(word, at)) {
      at += word.size();
      if (text.compare(at, 1, ":") == 0) ++at;
      if (text.compare(at, 1, " ") == 0) ++at;
      const std::size_t end = std::min(text.find_first_not_of("0123456789", at), text.size());
      if (end == at) continue;
      const std::string number = std::to_string(std::stoull(text.substr(at, end - at)) - first);
      text.replace(at, end - at, number);
    }
  }

  std::uint64_t neighborhood_ = std::numeric_limits<std::uint64_t>::max();
  std::uint64_t connectivity_ = std::numeric_limits<std::uint64_t>::max();
};

TreeRun Run(const FabricPlan& plan, bool byDefault) {
  const CheckOptions defaults;
  FabricBuilder builder;
  plan.Fill(builder);
  const std::unique_ptr<IBFabric> fabric = builder.Build();
  std::ostringstream stream;
  FTTopology topology(fabric.get(), &stream, defaults.mergePercent);
  std::vector<FabricErrGeneral*> errors;
  TreeRun run;
  const int status = byDefault ? topology.Build(errors, run.message, defaults.retries,
                                                defaults.equalClassifications)
                               : topology.Build(errors, run.message);
  if (status != 0) return run;
  for (const NodeSet& rank : topology.GetRanks()) {
    run.ranks.emplace_back();
    for (const IBNode* node : rank) run.ranks.back().emplace(node->name);
  }
  stream.str(topology.LevelsReport());
  stream.seekp(0, std::ios::end);
  if (topology.Validate(errors, run.message) == 0) topology.Dump();
  for (FabricErrGeneral* error : errors) {
    stream << error->GetErrorLine() << '\n';
    delete error;
  }
  run.report = FirstGroups(topology).NumberFromZero(stream.str());
  return run;
}

}  // namespace

TreeRun RunByDefault(const FabricPlan& plan) { return Run(plan, true); }

TreeRun RunWithTrueRanks(const FabricPlan& plan) {
  FabricPlan ranked = plan;
  for (PlannedNode& node : ranked.nodes) {
    if (node.rank >= 0) node.spec.smdbRank = static_cast<std::uint8_t>(node.rank);
  }
  return Run(ranked, false);
}

RankNames TrueRanks(const FabricPlan& plan) {
  RankNames ranks(static_cast<std::size_t>(plan.levels));
  for (const PlannedNode& node : plan.nodes) {
    if (node.rank < 0 || node.removed) continue;
    ranks[static_cast<std::size_t>(node.rank)].insert(node.spec.name);
  }
  return ranks;
}

}  // namespace fabscope::internal
