#include "roots/tree_run.h"

#include <algorithm>
#include <limits>
#include <memory>
#include <regex>
#include <sstream>

#include "check/check.h"
#include "fat_tree/neighborhood.h"
#include "fat_tree/topology.h"

namespace fabscope {
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
  std::string NumberFromZero(const std::string& text) const {
    static const std::regex numbered("(eighborhood|onnectivity group):? ([0-9]+)");
    std::string result;
    auto rest = text.begin();
    for (std::sregex_iterator match(text.begin(), text.end(), numbered), end; match != end;
         ++match) {
      const std::uint64_t least = match->str(1) == "eighborhood" ? neighborhood_ : connectivity_;
      result.append(rest, text.begin() + match->position(2));
      result += std::to_string(std::stoull(match->str(2)) - least);
      rest = text.begin() + match->position(2) + match->length(2);
    }
    return result.append(rest, text.end());
  }

 private:
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
    for (const IBNode* node : rank) run.ranks.back().insert(node->name);
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

}  // namespace fabscope
