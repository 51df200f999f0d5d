#include "repair_score.h"

#include <algorithm>
#include <map>
#include <set>
#include <sstream>

#include "check/proven_plan.h"
#include "fabric/fabric_builder.h"
#include "fabric/fabric_walk.h"
#include "fat_tree/topology.h"
#include "repair/find_repairs.h"
#include "repair/inferred_ranks.h"

namespace fabscope::internal {
namespace {

constexpr int mergePercent = 70;
constexpr int retries = 10;
constexpr int equalClassifications = 2;

using GuidPair = std::pair<std::uint64_t, std::uint64_t>;
using GuidPairs = std::map<GuidPair, long>;  // how many cables join them; none has 0

GuidPair PairOf(const GuidCable& cable) { return {cable.first.first, cable.second.first}; }

GuidPairs PairsOf(const GuidCables& cables) {
  GuidPairs pairs;
  for (const GuidCable& cable : cables) ++pairs[PairOf(cable)];
  return pairs;
}

long CountOf(const GuidPair& pair, const GuidPairs& pairs) {
  const auto found = pairs.find(pair);
  return found == pairs.end() ? 0 : found->second;
}

GuidCables CablesOf(const IBFabric& fabric) {
  GuidCables cables;
  for (const IBPort& port : fabric.GetPorts()) {
    if (port.node->nodeType != NodeTypeSwitch || GetRemoteSwitch(port) == nullptr) continue;
    if (!IsFirstEnd(port)) continue;
    const IBPort& far = *port.remotePort;
    cables.insert(CableBetween({port.node->guid, port.num}, {far.node->guid, far.num}));
  }
  return cables;
}

// --- Ranks.

struct TrueRank {
  const IBNode* node = nullptr;
  int rank = 0;
};

// Of switches that have lost every cable which was meant nobody can tell the rank.
std::vector<TrueRank> TrueRanks(const LabelledFabric& made, const IBFabric& fabric) {
  const GuidPairs meant = PairsOf(made.truth);
  std::set<std::uint64_t> cabled;
  for (const GuidCable& cable : CablesOf(fabric)) {
    if (CountOf(PairOf(cable), meant) > 0) {
      cabled.insert({cable.first.first, cable.second.first});
    }
  }
  std::vector<TrueRank> ranks;
  for (const PlannedNode& node : made.plan.nodes) {
    if (node.rank < 0 || !cabled.contains(node.spec.guid)) continue;
    ranks.push_back({fabric.getNodeByGuid(node.spec.guid), node.rank});
  }
  return ranks;
}

template <typename RankOf>
bool AreRanksRight(const std::vector<TrueRank>& ranks, RankOf rankOf) {
  return std::all_of(ranks.begin(), ranks.end(),
                     [&](const TrueRank& was) { return rankOf(was.node) == was.rank; });
}

template <typename RankOf>
bool AreRootsRight(const std::vector<TrueRank>& ranks, RankOf rankOf) {
  return std::all_of(ranks.begin(), ranks.end(), [&](const TrueRank& was) {
    return (rankOf(was.node) == 0) == (was.rank == 0);
  });
}

void JudgeRanks(const std::vector<TrueRank>& ranks, const IBFabric& fabric, Marks& marks) {
  const TreeRanks inferred = InferRanks(fabric);
  const auto inferredRank = [&](const IBNode* node) { return inferred.ofNode[node->index]; };
  marks[RanksInferred] = AreRanksRight(ranks, inferredRank);
  marks[RootsInferred] = AreRootsRight(ranks, inferredRank);

  std::ostringstream output;
  std::vector<FabricErrGeneral*> errors;
  std::string message;
  FTTopology topology(&fabric, &output, mergePercent);
  if (topology.Build(errors, message, retries, equalClassifications) != 0) return;
  const auto searchedRank = [&](const IBNode* node) { return topology.GetNodeRank(node); };
  marks[RanksSearched] = AreRanksRight(ranks, searchedRank);
  marks[RootsSearched] = AreRootsRight(ranks, searchedRank);
}

// --- Steps.

GuidPair PairOf(const RepairCable& cable, const IBFabric& fabric) {
  return std::minmax(fabric.GetNodes()[cable.upper.node].guid,
                     fabric.GetNodes()[cable.lower.node].guid);
}

// Whether a step has a part in what is wrong after all steps: a pair it makes has more cables than
// were meant, or one that it parts has fewer.
bool IsWrong(const RepairStep& step, const IBFabric& fabric, const GuidPairs& repaired,
             const GuidPairs& meant) {
  return std::any_of(step.cables.begin(), step.cables.end(), [&](const CableChange& change) {
    if (change.after) {
      const GuidPair made = PairOf(*change.after, fabric);
      if (CountOf(made, repaired) > CountOf(made, meant)) return true;
    }
    if (!change.before) return false;
    const GuidPair parted = PairOf(*change.before, fabric);
    return CountOf(parted, repaired) < CountOf(parted, meant);
  });
}

void JudgeTrust(const RepairPlan& plan, Marks& marks) {
  marks[Abstained] = plan.status == RepairStatus::Abstained;
  marks[ToldClean] = plan.status == RepairStatus::Clean;
  if (plan.status != RepairStatus::Repairs) return;
  RepairClass worst = RepairClass::Sure;
  for (const RepairStep& step : plan.steps) worst = std::max(worst, step.trust);
  marks[ToldSure] = worst == RepairClass::Sure;
  marks[ToldLikely] = worst == RepairClass::Likely;
  marks[ToldAsk] = worst == RepairClass::Ask;
}

void JudgeSteps(const LabelledFabric& made, const IBFabric& fabric, const ProvenPlan& proven,
                Marks& marks) {
  const RepairPlan& plan = proven.plan;
  marks[Needless] = !plan.steps.empty() && CablesOf(fabric) == made.truth;
  marks[CannotBeDone] = proven.repaired == nullptr;
  if (proven.repaired == nullptr) return;
  const GuidCables cables = CablesOf(*proven.repaired);
  const GuidPairs pairs = PairsOf(cables);
  const GuidPairs meant = PairsOf(made.truth);
  marks[PairsRight] = pairs == meant;
  marks[PortsRight] = cables == made.truth;
  marks[Proven] = proven.isProven;
  marks[WrongSure] = std::any_of(plan.steps.begin(), plan.steps.end(), [&](const RepairStep& step) {
    return step.trust == RepairClass::Sure && IsWrong(step, fabric, pairs, meant);
  });
}

// --- Notes.

bool Tells(const RepairNote& note, const Witnesses& witnesses, const IBFabric& fabric) {
  if (note.kind != RepairNote::Kind::DeadSwitch) return false;
  std::set<std::uint64_t> switches;
  for (const std::uint32_t index : note.switches) switches.insert(fabric.GetNodes()[index].guid);
  return switches == witnesses.switches &&
         std::set<std::uint8_t>(note.ports.begin(), note.ports.end()) == witnesses.ports;
}

bool TellsDeadSwitch(const LabelledFabric& made, const IBFabric& fabric, const RepairPlan& plan) {
  return std::any_of(made.witnesses.begin(), made.witnesses.end(), [&](const Witnesses& witnesses) {
    return std::any_of(plan.notes.begin(), plan.notes.end(),
                       [&](const RepairNote& note) { return Tells(note, witnesses, fabric); });
  });
}

}  // namespace

Judged Judge(const LabelledFabric& made, bool ranksOnly) {
  FabricBuilder builder;
  made.plan.Fill(builder);
  Judged judged;
  judged.fabric = builder.Build();
  const std::vector<TrueRank> ranks = TrueRanks(made, *judged.fabric);
  JudgeRanks(ranks, *judged.fabric, judged.marks);
  if (ranksOnly) return judged;

  ProvenPlan proven = ProvePlan(*judged.fabric, FindRepairs(*judged.fabric), mergePercent);
  judged.plan = proven.plan;
  judged.marks[RanksOfPlan] = AreRanksRight(
      ranks, [&](const IBNode* node) { return judged.plan.ranks.ofNode[node->index]; });
  JudgeTrust(judged.plan, judged.marks);
  JudgeSteps(made, *judged.fabric, proven, judged.marks);
  judged.marks[NoteLacking] =
      !made.witnesses.empty() && !TellsDeadSwitch(made, *judged.fabric, judged.plan);
  return judged;
}

std::vector<std::string> FailuresOf(Marks marks, bool ranksOnly) {
  std::vector<std::string> failures;
  const auto tell = [&](bool isSo, const char* words) {
    if (isSo) failures.emplace_back(words);
  };
  tell(!marks[RanksInferred], "inferred ranks");
  if (ranksOnly) return failures;
  tell(!marks[RanksOfPlan], "ranks");
  tell(marks[CannotBeDone], "cannot be done");
  tell(!marks[PairsRight], "pairs");
  tell(marks[PairsRight] && !marks[PortsRight], "ports");
  tell(!marks[Proven], "not proven");
  tell(marks[WrongSure], "sure but wrong");
  tell(marks[Abstained], "abstained");
  tell(marks[Needless], "needless");
  tell(marks[NoteLacking], "no note of the dead switch");
  return failures;
}

}  // namespace fabscope::internal
