#include "check/repair_run.h"

#include <utility>

#include "check/advice.h"
#include "check/load_input.h"
#include "check/root_names.h"
#include "fat_tree/status.h"
#include "repair/find_repairs.h"

namespace fabscope::internal {
namespace {

class RepairRun {
 public:
  explicit RepairRun(const CheckOptions& options) : options_(options) {
    result_.showGuid = options.showGuid;
  }

  RepairResult Run(const LoadedInput& input) {
    Take(input);
    if (!result_.inputError && FindPlan() && CheckAsItIs()) Prove();
    return std::move(result_);
  }

 private:
  void Take(const LoadedInput& input);
  bool FindPlan();
  bool FindPlanOfNamedRoots();
  bool CheckAsItIs();
  void Prove();

  // A few wrong cables mislead the search by distances, and they are what is looked for.
  RootsFrom MethodUsed() const {
    switch (options_.roots) {
      case RootsFrom::Smdb:
      case RootsFrom::Regex:
        return options_.roots;
      case RootsFrom::Auto:
      case RootsFrom::Search:
      case RootsFrom::Inferred:
        break;
    }
    return RootsFrom::Inferred;
  }
  std::string DoubtOn(const FTTopology& topology) const {
    return AdviceOnTree(topology, MethodUsed());
  }
  bool Fail(std::string message) {
    result_.message = std::move(message);
    return false;
  }

  const CheckOptions& options_;
  RepairResult result_;
};

void RepairRun::Take(const LoadedInput& input) {
  result_.input = input.name;
  result_.inputError = input.error;
  result_.warnings = input.warnings;
  result_.switchesOfSharedName = input.switchesOfSharedName;
  result_.fabric = input.fabric;
  result_.locations = input.locations;
}

bool RepairRun::FindPlan() {
  if (MethodUsed() != RootsFrom::Inferred) return FindPlanOfNamedRoots();
  result_.proven.plan = FindRepairs(*result_.fabric);
  if (result_.proven.plan.ranks.levels > 0) return true;
  result_.advice = AdviceOnSize(*result_.fabric);
  if (result_.advice.empty()) {
    const TreeLinks links(*result_.fabric);
    result_.advice = NameTheRoots(*result_.fabric, links, MethodUsed());
  }
  return Fail("no switch of the fabric has a place in a tree");
}

bool RepairRun::FindPlanOfNamedRoots() {
  const bool isRegex = MethodUsed() == RootsFrom::Regex;
  result_.method = isRegex ? "regex" : "smdb";
  std::vector<FabricErrGeneral*> none;
  std::ostringstream stream;
  FTTopology topology(result_.fabric.get(), &stream, options_.mergePercent);
  std::string message;
  const int status =
      isRegex ? topology.Build(none, message, *options_.rootRegex) : topology.Build(none, message);
  if (status != StatusSuccess) {
    result_.advice = AdviceOnBuilding(topology, options_);
    return Fail(std::move(message));
  }
  result_.proven.plan = FindRepairs(*result_.fabric, RanksOf(topology));
  return true;
}

bool RepairRun::CheckAsItIs() {
  result_.before = CheckTree(*result_.fabric, result_.proven.plan.ranks, options_.mergePercent);
  if (!result_.before.problem.empty()) {
    // What faults keep from being checked may be a tree once they are mended.
    if (!result_.proven.plan.steps.empty()) return true;
    result_.advice = AdviceOnSize(*result_.fabric);
    return Fail(result_.before.problem);
  }
  result_.doubt = DoubtOn(*result_.before.topology);
  return true;
}

void RepairRun::Prove() {
  RepairPlan& plan = result_.proven.plan;
  if (plan.steps.empty()) return;
  ProvenPlan proven = ProvePlan(*result_.fabric, plan, options_.mergePercent);
  if (proven.problem.empty()) {
    result_.doubt = DoubtOn(*proven.after.topology);
    result_.proven = std::move(proven);
    return;
  }
  // What cannot be proven is not proposed.
  plan.status = RepairStatus::Abstained;
  plan.message = proven.problem;
  plan.steps.clear();
  plan.lowerBound = 0;
}

}  // namespace

RepairResult RunRepair(const CheckOptions& options) {
  return RunRepair(LoadInput(options), options);
}

RepairResult RunRepair(const LoadedInput& input, const CheckOptions& options) {
  return RepairRun(options).Run(input);
}

}  // namespace fabscope::internal
