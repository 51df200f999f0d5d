#include "repairs/verify_repairs.h"

#include <memory>
#include <utility>

#include "repair/find_repairs.h"
#include "repair/inferred_ranks.h"
#include "repairs/plain_reading.h"
#include "repairs/plan_verifier.h"

namespace fabscope::internal {
namespace {

// What a plan cannot tell of itself.
class Trial {
 public:
  Trial(const IBFabric& fabric, const std::optional<TreeRanks>& known)
      : fabric_(fabric), known_(known) {}

  RepairsVerdict Run() {
    verdict_.plan = Find();
    const RepairPlan& plan = verdict_.plan;
    if (!CheckRanks(plan.ranks)) return std::move(verdict_);
    const plain::Fabric before = ReadFabric(fabric_, plan.ranks);
    const auto repaired = ApplySteps(fabric_, plan.steps);
    std::optional<plain::Fabric> after;
    if (repaired) after = ReadFabric(*repaired, plan.ranks);
    const plain::Verdict verdict =
        plain::VerifyPlan(before, ReadPlan(fabric_, plan), after ? &*after : nullptr);
    for (const std::string& complaint : verdict.complaints) Require(false, complaint);
    verdict_.cuts = verdict.cuts;
    verdict_.isProperAfterwards = verdict.isProperAfterwards;
    Require(CountMisfits(fabric_, plan.ranks) == plan.misfits, "misfits are counted differently");
    CheckAgain(plan);
    if (repaired && verdict.complaints.empty()) CheckRepaired(*repaired, plan);
    return std::move(verdict_);
  }

 private:
  void Require(bool holds, const std::string& complaint) {
    if (!holds) verdict_.complaints += complaint + "\n";
  }
  RepairPlan Find() const { return known_ ? FindRepairs(fabric_, *known_) : FindRepairs(fabric_); }

  bool CheckRanks(const TreeRanks& ranks) {
    Require(ranks.ofNode.size() == fabric_.GetNodes().size(), "a node has no place for its rank");
    if (!verdict_.complaints.empty()) return false;
    for (const IBNode& node : fabric_.GetNodes()) {
      const bool isSwitch = node.nodeType == NodeTypeSwitch;
      Require(isSwitch || ranks.ofNode[node.index] == TreeRanks::none, "a host has a rank");
    }
    if (known_) Require(ranks.ofNode == known_->ofNode, "other ranks are taken than those known");
    return true;
  }

  // The same again gives the same.
  void CheckAgain(const RepairPlan& plan) {
    const RepairPlan again = Find();
    bool isSame = again.status == plan.status && again.misfits == plan.misfits &&
                  again.ranks.ofNode == plan.ranks.ofNode &&
                  again.steps.size() == plan.steps.size();
    for (std::size_t i = 0; isSame && i < plan.steps.size(); ++i) {
      isSame = again.steps[i].cables == plan.steps[i].cables &&
               again.steps[i].trust == plan.steps[i].trust;
    }
    Require(isSame, "looked for again, the repairs are others");
  }

  void CheckRepaired(const IBFabric& repaired, const RepairPlan& plan) {
    const bool isProper = verdict_.isProperAfterwards;
    Require((CountMisfits(repaired, plan.ranks) == 0) == isProper,
            "the repaired fabric has no misfits exactly if it is a proper tree");
    if (!isProper) return;
    Require(FindRepairs(repaired, plan.ranks).status == RepairStatus::Clean,
            "the repaired fabric is not clean");
  }

  const IBFabric& fabric_;
  const std::optional<TreeRanks>& known_;
  RepairsVerdict verdict_;
};

}  // namespace

RepairsVerdict VerifyRepairs(const IBFabric& fabric, const std::optional<TreeRanks>& known) {
  return Trial(fabric, known).Run();
}

}  // namespace fabscope::internal
